#include "tests/module/matrix/HandlerPlaces.h"

#include "Control/OutputPowerController/IOutputPowerController_c.h"

#include <algorithm>
#include <iomanip>
#include <sstream>

namespace
{
constexpr std::uint32_t bits(std::initializer_list<EMember> members)
{
    std::uint32_t nBits = 0;
    for (const EMember eMember : members) {
        nBits |= std::uint32_t{1} << eMember;
    }
    return nBits;
}

constexpr int ANY = Place::ANY;
using enum EHandlerCall;
using enum ERefusal;

// What every step of the machine has done before its first call.
constexpr std::uint32_t MACHINE = bits({PTARGET, PMEASURED, PREVIOUS_STATE});
constexpr std::uint32_t SWITCH_ON = MACHINE | bits({PCTRL, PCTRL_MIN, PCTRL_MAX});
// The last step of a ramp that ran out of time takes the state and the status with it.
constexpr std::uint32_t RAMP_DETECTOR = MACHINE | bits({RAMP_COUNT, STATE, STATUS, DETECTOR});
constexpr std::uint32_t RAMP_POWER = RAMP_DETECTOR | bits({POWER_ERROR, PCTRL});
constexpr std::uint32_t LOOP_DETECTOR = bits({PTARGET, PMEASURED, DETECTOR});
constexpr std::uint32_t LOOP_POWER = LOOP_DETECTOR | bits({POWER_ERROR, PCTRL, PREDICTED, LAST_PREDICTED});

#define MACHINE_SAYS "handleOPCStateMachine(): failed to "
#define POWER_REFUSED "setPctrl(): Failed to set output power in OPH (eOPHResult = {result}\n"
#define AMPLIFIER_REFUSED                                                                                              \
    "setPctrl(): failed to get Reduced Gain From Amplifier {first}for channel 0 (eOPHResult = {result}"

constexpr Place PLACES[] = {
    {"off: traffic", eOPC_TX_OFF_INITIATED, SetZembraMlmTrafTx, 0, Stops,
     MACHINE_SAYS "disable Zembra Mlm Traf TX in OPH", MACHINE},
    {"off: step 0", eOPC_TX_OFF_INITIATED, SetTxState, 0, Stops, MACHINE_SAYS "set TX state in OPH", MACHINE},
    {"off: step 1", eOPC_TX_OFF_IN_PROGRESS, SetTxState, 1, Stops, MACHINE_SAYS "set TX state in OPH", MACHINE},
    {"on: limits", eOPC_TX_ON_INITIATED, GetPctrlLimits, ANY, IsUnseen, "", SWITCH_ON},
    {"on: step 2", eOPC_TX_ON_INITIATED, SetTxState, 2, Stops, MACHINE_SAYS "set TX state ON initiated in OPH",
     SWITCH_ON},
    {"on: start power", eOPC_TX_ON_INITIATED, SetOutputPower, ANY, Stops, MACHINE_SAYS "set Pctrl in OPH", SWITCH_ON},
    {"on: step 3", eOPC_TX_ON_IN_PROGRESS, SetTxState, 3, Stops, MACHINE_SAYS "set TX state ON in progress in OPH",
     MACHINE},
    {"on: power again", eOPC_TX_ON_IN_PROGRESS, SetOutputPower, ANY, Stops, MACHINE_SAYS "set Pctrl in OPH", MACHINE},
    {"ramp: step 4", eOPC_TX_ON_RAMPING, SetTxState, 4, Stops, MACHINE_SAYS "set TX state ON in OPH", MACHINE},
    {"ramp: detector", eOPC_TX_ON_RAMPING, CalculateDetectorUsage, ANY, Stops,
     MACHINE_SAYS "calculate usage of detector", RAMP_DETECTOR},
    {"ramp: power", eOPC_TX_ON_RAMPING, SetOutputPower, ANY, Stops, POWER_REFUSED MACHINE_SAYS "set Pctrl", RAMP_POWER},
    {"ramp: readings", eOPC_TX_ON_RAMPING, GetTxPowerReadings, ANY, IsUnseen, "", 0},
    {"ramp: amplifier", eOPC_TX_ON_RAMPING, GetReducedGainFromAmplifier, ANY, IsTraced, AMPLIFIER_REFUSED, 0},
    {"ramp: traffic", eOPC_TX_ON_RAMPING, SetZembraMlmTrafTx, 1, IsTraced,
     MACHINE_SAYS "enable Zembra Mlm Traf TX in OPH", 0},
    {"loop: measured power", eOPC_TX_ON, GetPmeasured, ANY, Stops, "regulate(): failed to get P measured",
     bits({PTARGET})},
    {"loop: detector", eOPC_TX_ON, CalculateDetectorUsage, ANY, Stops,
     "regulate(): failed to calculate usage of detector", LOOP_DETECTOR},
    {"loop: power", eOPC_TX_ON, SetOutputPower, ANY, Stops, POWER_REFUSED "regulate(): failed to set Pctrl",
     LOOP_POWER},
    {"loop: readings", eOPC_TX_ON, GetTxPowerReadings, ANY, IsUnseen, "", 0},
    {"loop: amplifier", eOPC_TX_ON, GetReducedGainFromAmplifier, ANY, IsTraced, AMPLIFIER_REFUSED, 0},
    {"production test: loop mode", ANY, SetProductionTestSettings, ANY, Stops,
     "setProductionTestSettings(): failed to set production test settings in OPH", bits({LOOP_MODE, PRODUCTION_TEST})},
};

void replace(std::string& sText, const std::string& sMark, const std::string& sValue)
{
    const std::size_t nAt = sText.find(sMark);
    if (nAt != std::string::npos) {
        sText.replace(nAt, sMark.size(), sValue);
    }
}
} // namespace

std::string differencesOf(const Members& before, const Members& after)
{
    static constexpr std::array<const char*, MEMBER_COUNT> NAMES = {
        "state",      "previous state", "status",     "power mode",     "Pctrl",     "Ptarget",         "Pmeasured",
        "predicted",  "last Ptarget",   "last Pctrl", "last predicted", "TxPmin",    "PctrlMin",        "PctrlMax",
        "wait count", "ramp count",     "detector",   "power error",    "loop mode", "production test", "delay start"};
    std::ostringstream text;
    for (std::size_t i = 0; i < MEMBER_COUNT; ++i) {
        if (before[i] != after[i]) {
            text << ' ' << NAMES[i] << ": " << before[i] << " | " << after[i] << ';';
        }
    }
    return text.str();
}

std::uint32_t changesOf(const Members& before, const Members& after)
{
    std::uint32_t nBits = 0;
    for (std::size_t i = 0; i < MEMBER_COUNT; ++i) {
        nBits |= before[i] != after[i] ? std::uint32_t{1} << i : 0;
    }
    return nBits;
}

std::span<const Place> handlerPlaces()
{
    return PLACES;
}

const Place* findPlace(int nStateAtBegin, const Event& call)
{
    const auto* const pPlace = std::find_if(std::begin(PLACES), std::end(PLACES), [&](const Place& place) {
        return place.eCall == call.eCall && (place.nState == ANY || place.nState == nStateAtBegin) &&
               (place.nArgument == ANY || place.nArgument == call.nFirst);
    });
    return pPlace == std::end(PLACES) ? nullptr : pPlace;
}

std::vector<std::string> tracesOf(const Place& place, const Event& call)
{
    std::ostringstream result;
    result << std::hex << call.nResult;
    std::vector<std::string> texts;
    std::istringstream lines(place.pTraces);
    for (std::string sLine; std::getline(lines, sLine);) {
        replace(sLine, "{result}", result.str());
        replace(sLine, "{first}", std::to_string(call.nFirst));
        texts.push_back(sLine);
    }
    return texts;
}
