#include "Platform/ConfigurationError.h"

ConfigurationError ConfigurationError::atLine(const std::string& sPath, std::size_t nLine, const std::string& sText)
{
    if (nLine == 0) {
        return ConfigurationError(sPath + ": " + sText);
    }
    return ConfigurationError(sPath + ":" + std::to_string(nLine) + ": " + sText);
}

ConfigurationError ConfigurationError::atColumn(const std::string& sPath, std::size_t nLine, std::size_t nColumn,
                                                const std::string& sText)
{
    if (nLine == 0 || nColumn == 0) {
        return atLine(sPath, nLine, sText);
    }
    return atLine(sPath + ":" + std::to_string(nLine), nColumn, sText);
}
