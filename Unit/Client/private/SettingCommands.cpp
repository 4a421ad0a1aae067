#include "Unit/Client/private/ArgumentChecks.h"
#include "Unit/Client/private/ControlTree.h"

using nlohmann::ordered_json;

namespace
{
constexpr const char* FROM_UNIT_FILE = "unit-file";

/** A method that sets one number. */
struct NumberSetting
{
    const char* pName;
    const char* pDescription;
    const char* pExamples;
    const char* pArgument;
    const char* pMethod;
    const char* pMember;
    EChannelUse eChannelUse;
};

/** Adds a command that takes a whole number. */
void addWholeNumber(CLI::App& control, std::vector<ControlLeaf>& leaves, const NumberSetting& setting)
{
    CLI::App& command = addControlCommand(control, setting.pName, setting.pDescription, setting.pExamples);
    CLI::Option* pValue = command.add_option(setting.pArgument, "The new value")->required();
    onlyWholeNumbers(*pValue, "INT");
    leaves.push_back(
        {&command, [setting, pValue] {
             return ControlRequest{setting.pMethod, {{setting.pMember, wholeNumberOf(*pValue)}}, setting.eChannelUse};
         }});
}

/** Adds a command that takes a number, or the word that gives it back to the unit file. */
void addNumber(CLI::App& control, std::vector<ControlLeaf>& leaves, const NumberSetting& setting)
{
    CLI::App& command = addControlCommand(control, setting.pName, setting.pDescription, setting.pExamples);
    CLI::Option* pValue =
        command.add_option(setting.pArgument, "The new value, or unit-file for what the unit file says")->required();
    onlyNumbers(*pValue, "NUMBER", FROM_UNIT_FILE);
    leaves.push_back({&command, [setting, pValue] {
                          ordered_json members = {{"Source", FROM_UNIT_FILE}};
                          if (pValue->as<std::string>() != FROM_UNIT_FILE) {
                              members = {{setting.pMember, numberOf(*pValue)}};
                          }
                          return ControlRequest{setting.pMethod, members, setting.eChannelUse};
                      }});
}

void addTx(CLI::App& control, std::vector<ControlLeaf>& leaves)
{
    CLI::App& command = addControlCommand(control, "tx", "Switch a channel's transmitter on or off",
                                          "  opc ctl tx on\n"
                                          "  opc ctl tx on --power-mode 1 --channel 2\n"
                                          "  opc ctl tx off");
    CLI::Option* pState = command.add_option("STATE", "What it is to be")->required();
    onlyWords(*pState, {"on", "off"});
    CLI::Option* pMode = command.add_option("--power-mode", "Switch on in this power mode");
    onlyWholeNumbers(*pMode, "N");
    leaves.push_back({&command, [pState, pMode] {
                          ControlRequest request{"Unit.SetTxPower", {{"State", pState->as<std::string>()}}};
                          if (pMode->count() > 0) {
                              request.members["PowerMode"] = wholeNumberOf(*pMode);
                          }
                          return request;
                      }});
}

ControlRequest gainRequest(const CLI::Option& state, const CLI::Option& percent, const CLI::Option& detectorState)
{
    if (state.count() == 0) {
        if (detectorState.count() > 0) {
            throw CLI::ValidationError("--detector-state", "needs a STATE and a PERCENT, too");
        }
        return {"Unit.Gains", ordered_json::object(), EChannelUse::Always, &GAIN_FORM};
    }
    if (percent.count() == 0) {
        throw CLI::RequiredError("PERCENT");
    }
    ControlRequest request{"Unit.SetGain", {{"State", state.as<std::string>()}}};
    if (detectorState.count() > 0) {
        request.members["DetectorState"] = wholeNumberOf(detectorState);
    }
    request.members["GainPercent"] = wholeNumberOf(percent);
    return request;
}

void addGain(CLI::App& control, std::vector<ControlLeaf>& leaves)
{
    CLI::App& command = addControlCommand(control, "gain", "Show a channel's loop gains, or set one",
                                          "  opc ctl gain\n"
                                          "  opc ctl gain on 60\n"
                                          "  opc ctl gain ramping 40 --detector-state 1");
    CLI::Option* pState = command.add_option("STATE", "While the power ramps up, or once it is on");
    onlyWords(*pState, {"ramping", "on"});
    CLI::Option* pPercent = command.add_option("PERCENT", "How much of the error one step corrects");
    onlyWholeNumbers(*pPercent, "INT");
    CLI::Option* pDetector = command.add_option("--detector-state", "Only for this one; otherwise for all three");
    onlyWords(*pDetector, {"0", "1", "2"});
    leaves.push_back({&command, [=] { return gainRequest(*pState, *pPercent, *pDetector); }});
}

void addLimits(CLI::App& control, std::vector<ControlLeaf>& leaves)
{
    CLI::App& command = addControlCommand(control, "limits", "Set the power limits of a channel, in dBm",
                                          "  opc ctl limits 10 47\n"
                                          "  opc ctl limits -5.5 43 --channel 1");
    CLI::Option* pMinimum = command.add_option("PMIN", "The lowest power in dBm")->required();
    onlyNumbers(*pMinimum, "NUMBER");
    CLI::Option* pMaximum = command.add_option("PMAX", "The highest power in dBm")->required();
    onlyNumbers(*pMaximum, "NUMBER");
    leaves.push_back({&command, [=] {
                          return ControlRequest{
                              "Unit.SetLimits",
                              {{"TxPminDbm", numberOf(*pMinimum)}, {"TxPmaxDbm", numberOf(*pMaximum)}}};
                      }});
}

void addProductionTest(CLI::App& control, std::vector<ControlLeaf>& leaves)
{
    CLI::App& command = addControlCommand(control, "production-test", "Switch a channel's production test on or off",
                                          "  opc ctl production-test on --loop-mode 1\n"
                                          "  opc ctl production-test off");
    CLI::Option* pState = command.add_option("STATE", "What it is to be")->required();
    onlyWords(*pState, {"on", "off"});
    CLI::Option* pMode = command.add_option("--loop-mode", "The detector's loop mode");
    onlyWords(*pMode, {"0", "1", "2"});
    leaves.push_back(
        {&command, [=] {
             ControlRequest request{"Unit.SetProductionTest", {{"ProductionTest", pState->as<std::string>() == "on"}}};
             if (pMode->count() > 0) {
                 request.members["LoopMode"] = wholeNumberOf(*pMode);
             }
             return request;
         }});
}
} // namespace

void addSettingCommands(CLI::App& control, std::vector<ControlLeaf>& leaves)
{
    addTx(control, leaves);
    addNumber(control, leaves,
              {"power", "Set the power that is requested of a channel, in dBm",
               "  opc ctl power 37.5 --channel 1\n"
               "  opc ctl power unit-file\n"
               "      back to the profile or the value of the unit file",
               "DBM", "Unit.SetRequestedPower", "PowerDbm", EChannelUse::Always});
    addNumber(control, leaves,
              {"frequency", "Set a channel's frequency, in MHz",
               "  opc ctl frequency 28100.5\n"
               "  opc ctl frequency unit-file",
               "MHZ", "Unit.SetFrequency", "FrequencyMhz", EChannelUse::Always});
    addNumber(control, leaves,
              {"temperature", "Set the unit's temperature, in degrees C",
               "  opc ctl temperature -10\n"
               "  opc ctl temperature unit-file",
               "C", "Unit.SetTemperature", "TemperatureC", EChannelUse::Never});
    addWholeNumber(control, leaves,
                   {"mode", "Set a channel's power mode", "  opc ctl mode 1 --channel 2", "N", "Unit.SetPowerMode",
                    "PowerMode", EChannelUse::Always});
    addGain(control, leaves);
    addLimits(control, leaves);
    addProductionTest(control, leaves);
    addWholeNumber(control, leaves,
                   {"interval", "Set the time between two regulation steps, in ms", "  opc ctl interval 12", "MS",
                    "Unit.SetInterval", "IntervalMs", EChannelUse::Never});
}
