#include "Platform/ConfigurationError.h"

ConfigurationError ConfigurationError::atLine(const std::string& sPath, std::size_t nLine, const std::string& sText)
{
    if (nLine == 0) {
        return ConfigurationError(sPath + ": " + sText);
    }
    return ConfigurationError(sPath + ":" + std::to_string(nLine) + ": " + sText);
}
