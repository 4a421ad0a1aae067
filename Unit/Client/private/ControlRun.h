/** @file
 * Carries out what a command line asks of a unit.
 */
#pragma once

#include "Unit/Client/private/ControlTree.h"

#include <optional>
#include <string>

/** The options that all subcommands share. */
struct ControlOptions
{
    std::string sAddress = "http://127.0.0.1:8080";
    std::string sTokenFile;      /**< empty for none */
    std::optional<int> nChannel; /**< none when none is named */
    bool bJson = false;
    std::string sCsvFile;               /**< empty for none, "-" for standard output */
    std::optional<double> watchSeconds; /**< none for once */
    double answerSeconds = 30.0;
};

/** @return an EControlExitCode. @throws ConfigurationError for options that do not go with the request */
int runControl(const ControlOptions& options, const ControlRequest& request);
