/** @file
 * What the test interface has let a channel's logs do.
 */
#pragma once

#include <cstdint>
#include <string_view>

/** Follows the commands of a channel's two logs, which do not tell whether they record. The regulation thread. */
struct LogActivity
{
    bool bTransientLogRuns = false;
    bool bOpcLogRuns = false;
    std::uint64_t nTransientBegins = 0; /**< how often the transient log was emptied */
    std::uint64_t nTransientSteps = 0; /**< closed-loop steps since then while it ran; each adds a sample, until full */

    /** A command of the transient log was carried out. */
    void onTransientLog(std::string_view sOption)
    {
        if (sOption == "Enable") {
            bTransientLogRuns = true;
            ++nTransientBegins;
            nTransientSteps = 0;
        }
        else if (sOption == "Disable") {
            bTransientLogRuns = false;
        }
    }

    /** A command of the OPC log was carried out. */
    void onOpcLog(std::string_view sOption) { bOpcLogRuns = sOption == "Start" || (bOpcLogRuns && sOption != "Stop"); }

    /** The closed loop has taken a step without a failure. */
    void onRegulated() { nTransientSteps += bTransientLogRuns ? 1 : 0; }
};
