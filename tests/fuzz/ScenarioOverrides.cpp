// The values that a command line puts over a scenario: a line each, such as channel.gain_percent_on=40.
#include "Unit/Simulator/Scenario.h"
#include "tests/fuzz/FuzzTarget.h"

#include <optional>

namespace
{
constexpr const char* SCENARIO = "duration_s = 5\nseed = 3\n[channel]\ngain_percent_on = 50\n"
                                 "[[event]]\nat_s = 1\nrequest = \"off\"\n[[event]]\nat_s = 2\nover_s = 1\n"
                                 "requested_power_dbm = 12\ntransmitter = { detector_noise_db = 0.1 }\n"
                                 "[[fault]]\noperation = \"getPmeasured\"\nkind = \"fail\"\nat_s = 1\n"
                                 "[expect]\nsettling_max_ms = { max = 900 }\n";

/** Errors name either the file or the override. */
template <class TCall> bool succeeds(const std::string& sPath, const TCall& call)
{
    try {
        call();
        return true;
    }
    catch (const ConfigurationError& error) {
        const std::string sMessage = error.what();
        requireOneLine(sMessage);
        if (!sMessage.starts_with("--set ")) {
            requireNamesPlace(error, sPath, SCENARIO);
        }
    }
    catch (const std::exception& error) {
        fail(std::string("an error of another kind: ") + error.what());
    }
    return false;
}

bool namesFile(const std::string& sText)
{
    return sText.find("file") != std::string::npos || sText.find('/') != std::string::npos ||
           sText.find("unit") != std::string::npos || sText.find("drive") != std::string::npos;
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize)
{
    const std::string sText = inputText(pData, nSize);
    if (namesFile(sText)) {
        return 0;
    }
    static const std::string PATH = writeInFolder("scenario.toml", SCENARIO);
    std::vector<ScenarioOverride> overrides;
    for (const std::string& sLine : splitText(sText, '\n')) {
        (void)succeeds(PATH, [&] { overrides.push_back(parseOverride(sLine)); });
    }
    std::optional<Scenario> scenario;
    if (succeeds(PATH, [&] { scenario = loadScenario(PATH, overrides); })) {
        require(scenario->durationSeconds > 0.0 && scenario->unit.channels.size() == 1, "a scenario of nothing");
        require(succeeds(PATH, [&] { (void)loadScenario(PATH, overrides); }), "accepted once only");
    }
    return 0;
}
