/** @file
 * Rows and columns, for people and for programs.
 */
#pragma once

#include <string>
#include <vector>

/** A table; each row has a cell per heading. */
struct Table
{
    std::vector<std::string> headings;
    std::vector<std::vector<std::string>> rows;
};

/** @return the table in aligned columns, a line per row: the first column to the left, the others to the right */
std::string alignedText(const Table& table);

/** @return cells as a line of comma-separated values, quoted where they need it, with its newline */
std::string csvLine(const std::vector<std::string>& cells);
