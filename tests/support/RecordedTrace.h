/** @file
 * One message or record of the trace, as the recording platform saw it.
 */
#pragma once

#include <cstddef>
#include <string>
#include <vector>

/** A traced message in stream form, or a record in printf form. */
struct RecordedTrace
{
    std::string sGroup; /**< group of the stream form, name of the trace object in printf form */
    int nLevel = 0;
    std::string sSourcePath;
    int nLine = 0;
    std::string sText;                /**< stream form without its final newline; printf form as it was printed */
    bool bWellEnded = true;           /**< ended as its form demands, begun before it was written */
    std::vector<std::string> formats; /**< printf form: the formats, in order */
    std::size_t nCallsBefore = 0;     /**< how many calls had been recorded when it ended */
};
