#include "tests/fuzz/FuzzTarget.h"

#include "tests/unit/TemporaryFolder.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstdlib>

namespace
{
const TemporaryFolder& folder()
{
    static const TemporaryFolder FOLDER;
    return FOLDER;
}

bool isControl(char c)
{
    const auto nByte = static_cast<unsigned char>(c);
    return nByte < 0x20 || nByte == 0x7f;
}

/** Cuts ":" and a number off the front of a text. @return the number; 0 when there is none */
std::size_t takeNumber(std::string_view& sText)
{
    std::size_t nNumber = 0;
    if (sText.size() < 2 || sText.front() != ':') {
        return 0;
    }
    const auto result = std::from_chars(sText.data() + 1, sText.data() + sText.size(), nNumber);
    if (result.ec == std::errc()) {
        sText.remove_prefix(static_cast<std::size_t>(result.ptr - sText.data()));
    }
    return nNumber;
}

/** @return the most lines that any reader may see */
std::size_t linesOf(std::string_view sText)
{
    return 1 + static_cast<std::size_t>(
                   std::count_if(sText.begin(), sText.end(), [](char c) { return c == '\n' || c == '\r'; }));
}
} // namespace

std::string inputText(const std::uint8_t* pData, std::size_t nSize)
{
    return nSize == 0 ? std::string() : std::string(reinterpret_cast<const char*>(pData), nSize);
}

void fail(const std::string& sWhat)
{
    (void)std::fprintf(stderr, "fuzz: %s\n", sWhat.c_str());
    std::abort();
}

void require(bool bHolds, const std::string& sWhat)
{
    if (!bHolds) {
        fail(sWhat);
    }
}

void requireOneLine(const std::string& sText)
{
    require(std::none_of(sText.begin(), sText.end(), isControl), "control characters in: " + sText);
    for (std::size_t nAt = sText.find('\xc2'); nAt != std::string::npos; nAt = sText.find('\xc2', nAt + 1)) {
        const bool bControl = nAt + 1 < sText.size() && static_cast<unsigned char>(sText[nAt + 1]) >= 0x80 &&
                              static_cast<unsigned char>(sText[nAt + 1]) < 0xa0;
        require(!bControl, "control characters of eight bits in: " + sText);
    }
}

std::string pathInFolder(const std::string& sName)
{
    return folder().path(sName);
}

std::string writeInFolder(const std::string& sName, std::string_view sText)
{
    std::string sPath = pathInFolder(sName);
    std::FILE* const pFile = std::fopen(sPath.c_str(), "wbe");
    require(pFile != nullptr && std::fwrite(sText.data(), 1, sText.size(), pFile) == sText.size() &&
                std::fclose(pFile) == 0,
            "cannot write " + sPath);
    return sPath;
}

void requireNamesPlace(const ConfigurationError& error, const std::string& sPath, std::string_view sText)
{
    const std::string sMessage = error.what();
    requireOneLine(sMessage);
    std::string_view sRest = sMessage;
    require(sRest.starts_with(sPath), "an error that does not name the file: " + sMessage);
    sRest.remove_prefix(sPath.size());
    const std::size_t nLine = takeNumber(sRest);
    require(nLine <= linesOf(sText), "an error in a line that is not there: " + sMessage);
    (void)takeNumber(sRest);
    require(sRest.starts_with(": ") && sRest.size() > 2, "an error that says nothing: " + sMessage);
}

bool accepts(const std::string& sPath, std::string_view sText, const std::function<void()>& read)
{
    try {
        read();
        return true;
    }
    catch (const ConfigurationError& error) {
        requireNamesPlace(error, sPath, sText);
    }
    catch (const std::exception& error) {
        fail(std::string("an error of another kind: ") + error.what());
    }
    return false;
}

std::vector<std::string> splitText(const std::string& sText, char cSeparator)
{
    std::vector<std::string> parts(1);
    for (const char c : sText) {
        if (c == cSeparator) {
            parts.emplace_back();
        }
        else {
            parts.back() += c;
        }
    }
    return parts;
}

void requireWithin(double value, double minimum, double maximum, const char* pWhat)
{
    require(value >= minimum && value <= maximum,
            fmt::format("{} is {}, not from {} to {}", pWhat, value, minimum, maximum));
}
