#include "Unit/CommandLine/CommandLine.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace
{
struct Outcome
{
    int nExitCode;
    std::string sOutput;
    std::string sErrors;
};

Outcome runWith(std::vector<const char*> arguments)
{
    arguments.insert(arguments.begin(), "opc");
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const int nExitCode = runCommandLine(static_cast<int>(arguments.size()), arguments.data());
    (void)std::fflush(stdout);
    return {nExitCode, testing::internal::GetCapturedStdout(), testing::internal::GetCapturedStderr()};
}
} // namespace

TEST(CommandLine, HelpsOnStandardOutput)
{
    const Outcome outcome = runWith({"run", "--help"});
    EXPECT_EQ(outcome.nExitCode, eEXIT_OK);
    EXPECT_EQ(outcome.sErrors, "");
    EXPECT_THAT(outcome.sOutput, testing::HasSubstr("opc run examples/unit.toml --duration 10 --csv run.csv"));
}

TEST(CommandLine, SaysItsVersion)
{
    const Outcome outcome = runWith({"--version"});
    EXPECT_EQ(outcome.nExitCode, eEXIT_OK);
    EXPECT_EQ(outcome.sOutput, "opc " OPC_VERSION "\n");
    EXPECT_EQ(outcome.sErrors, "");
}

TEST(CommandLine, RefusesWrongArgumentsInOneLine)
{
    struct Case
    {
        std::vector<const char*> arguments;
        const char* pError;
    };
    const std::vector<Case> cases = {
        {{},
         "opc: no command of opc is given; the commands are run, ctl, fit-amplifier, simulate, sweep, "
         "sweep-merge, sweep-report, export, replay, completion; see opc --help, or try: opc run examples/unit.toml\n"},
        {{"run", "x.toml", "--duration", "0"},
         "opc: --duration: \"0\" is not a number greater than 0 and at most 1000000000; see opc run --help\n"},
        {{"run", "x.toml", "--duration", "nan"},
         "opc: --duration: \"nan\" is not a number greater than 0 and at most 1000000000; see opc run --help\n"},
        {{"run", "x.toml", "--start", "-0.1"},
         "opc: --start: \"-0.1\" is not a number of at least 0 and at most 1000000000; see opc run --help\n"},
        {{"run", "x.toml", "--speed", "20000"},
         "opc: --speed: \"20000\" is not a number greater than 0 and at most 10000; see opc run --help\n"},
        {{"run", "/nowhere/x.toml"},
         "opc: /nowhere/x.toml: cannot be read (No such file or directory); give the path of a file that this user may "
         "read\n"},
    };
    for (const Case& wrong : cases) {
        const Outcome outcome = runWith(wrong.arguments);
        EXPECT_EQ(outcome.nExitCode, eEXIT_BAD_INPUT);
        EXPECT_EQ(outcome.sErrors, wrong.pError);
        EXPECT_EQ(outcome.sOutput, "");
    }
}

TEST(CommandLine, NamesTheArgumentThatItDoesNotKnow)
{
    for (const char* pArgument : {"walk", "--fast"}) {
        const Outcome outcome = runWith({pArgument});
        EXPECT_EQ(outcome.nExitCode, eEXIT_BAD_INPUT);
        EXPECT_THAT(outcome.sErrors, testing::HasSubstr(pArgument));
        EXPECT_EQ(std::count(outcome.sErrors.begin(), outcome.sErrors.end(), '\n'), 1);
    }
}
