#include "Unit/Text/Table.h"

#include <fmt/format.h>

#include <algorithm>

namespace
{
constexpr const char* GAP = "  ";

/** @return how many characters of UTF-8 a text has */
std::size_t width(const std::string& sText)
{
    return static_cast<std::size_t>(std::count_if(
        sText.begin(), sText.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xc0U) != 0x80U; }));
}

std::string alignedLine(const std::vector<std::string>& cells, const std::vector<std::size_t>& widths)
{
    std::string sLine;
    for (std::size_t nCell = 0; nCell < cells.size(); ++nCell) {
        const std::string sBlanks(widths[nCell] - width(cells[nCell]), ' ');
        sLine += nCell == 0 ? cells[nCell] + sBlanks : GAP + sBlanks + cells[nCell];
    }
    sLine.erase(sLine.find_last_not_of(' ') + 1);
    return sLine + "\n";
}
} // namespace

std::string alignedText(const Table& table)
{
    std::vector<std::size_t> widths;
    for (std::size_t nColumn = 0; nColumn < table.headings.size(); ++nColumn) {
        std::size_t nWidth = width(table.headings[nColumn]);
        for (const auto& row : table.rows) {
            nWidth = std::max(nWidth, width(row.at(nColumn)));
        }
        widths.push_back(nWidth);
    }
    std::string sText = alignedLine(table.headings, widths);
    for (const auto& row : table.rows) {
        sText += alignedLine(row, widths);
    }
    return sText;
}

std::string csvLine(const std::vector<std::string>& cells)
{
    std::string sLine;
    for (const std::string& sCell : cells) {
        sLine += sLine.empty() && &sCell == &cells.front() ? "" : ",";
        if (sCell.find_first_of(",\"\r\n") == std::string::npos) {
            sLine += sCell;
            continue;
        }
        sLine += '"';
        for (const char c : sCell) {
            sLine += c == '"' ? std::string("\"\"") : std::string(1, c);
        }
        sLine += '"';
    }
    return sLine + "\n";
}
