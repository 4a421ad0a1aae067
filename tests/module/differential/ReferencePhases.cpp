// Construction, phases and the end of a controller.
#include "tests/module/differential/ReferenceController.h"

#include <algorithm>

namespace Differential
{
namespace
{
constexpr std::size_t HANDLER_NAME_LENGTH = 21;
constexpr std::array<const char*, 6> PLATFORM_PHASES = {
    "onPhaseActivation",      "onPhaseEndFrameformatLoad", "onPhaseStart",
    "onPhaseFrameformatLoad", "onPhasePreFrameformatLoad", "onPhaseSetRadioChannelNearEndFinished"};
// Whole MHz, but for the two that end in a half.
constexpr std::array<std::int64_t, 30> WHOLE_SPACINGS = {5,   7,   10,  14,  20,  28,   30,   40,   50,   56,
                                                         60,  80,  100, 112, 125, 150,  200,  250,  300,  350,
                                                         400, 450, 500, 600, 750, 1000, 1250, 1500, 1750, 2000};

std::string hex(std::int32_t nResult)
{
    char sDigits[16];
    return {sDigits, std::to_chars(sDigits, sDigits + sizeof sDigits, static_cast<std::uint32_t>(nResult), 16).ptr};
}

std::int64_t spacing(std::int64_t nCode)
{
    if (nCode == 3 || nCode == 62) {
        return nCode * 1000 + 500;
    }
    const bool bWhole = std::find(WHOLE_SPACINGS.begin(), WHOLE_SPACINGS.end(), nCode) != WHOLE_SPACINGS.end();
    return bWhole ? nCode * 1000 : 0;
}
} // namespace

ReferenceController::ReferenceController(Environment& environment, Coverage& coverage, std::uint32_t nChannel,
                                         const Constants& constants)
    : m_environment(environment), m_coverage(coverage), m_constants(constants), m_nChannel(nChannel),
      m_logs(
          [this, nChannel]() -> Environment& {
              m_environment.log().line("ModuleInterface 15000 OutputPowerController ", nChannel, " 0 5 11 20 16");
              trace(5, "Enter: OutputPowerController()");
              m_environment.log().line("RegisterModule");
              return m_environment;
          }(),
          coverage, nChannel, constants)
{
    for (auto& row : m_anGain) {
        row[7] = row[8] = 20;
    }
    m_environment.log().line("registerInterface ", channelName("IOutputPowerController", nChannel));
}

void ReferenceController::destroy()
{
    trace(5, "Enter: ~OutputPowerController()");
    m_environment.log().line("trace 5 RQX.OPCL Control/OutputPowerController/private/OutputPowerControlLog: "
                             "Enter: ~OutputPowerControlLog()");
    m_environment.log().line("UnRegisterModule");
    m_environment.log().line("unregisterInterface ", channelName("IOutputPowerController", m_nChannel));
    m_environment.log().line("~ModuleInterface");
}

std::int64_t ReferenceController::runPhase(std::size_t nPhase)
{
    switch (nPhase) {
    case 0:
        return connect();
    case 1:
        return readGainBlocks();
    case 2:
        return readSpacing();
    case 3:
        trace(5, "Enter: onPhaseStop()");
        return 0;
    default:
        m_environment.log().line("ModuleInterface::", PLATFORM_PHASES[nPhase - 4]);
        return 0;
    }
}

bool ReferenceController::findHandler()
{
    const std::string sName = ("IOutputPowerHandler." + std::to_string(m_nChannel)).substr(0, HANDLER_NAME_LENGTH);
    const EPublished ePublished = m_environment.find(sName);
    if (ePublished == EPublished::Proper || ePublished == EPublished::Tableless) {
        m_bHandler = ePublished == EPublished::Proper;
    }
    else if (m_bHandler) {
        m_coverage.count(ECorner::HandlerKeptFromBefore);
    }
    if (!m_bHandler) {
        m_coverage.count(ECorner::HandlerMissing);
        trace(1, "onModuleInit(): Failed to get interface " + sName);
    }
    return m_bHandler;
}

std::int64_t ReferenceController::connect()
{
    trace(5, "Enter: onModuleInit()");
    if (!findHandler()) {
        return 0x8000;
    }
    if (m_environment.find(channelName("IFrequencyHandler_Tx", m_nChannel)) != EPublished::Proper) {
        m_coverage.count(ECorner::FrequencyHandlerMissing);
        trace(1, "onModuleInit(): Failed to retrieve the FrequencyHandler interface");
        return 0x8000;
    }
    if (isRefused(m_environment.registerFrequencyObserver())) {
        m_coverage.count(ECorner::FrequencyEntryRefused);
        trace(1, "onModuleInit(): Failed to register the DpdController as observer to FrequencyHandler.");
        return 0x8000;
    }
    if (m_environment.find("ITemperatureHandler") != EPublished::Proper) {
        m_coverage.count(ECorner::TemperatureHandlerMissing);
        trace(1, "onModuleInit(): Failed to retrieve the TemperatureHandler interface");
        return 0x8000;
    }
    m_environment.registerTemperatureObserver();
    fetchTable(0, "P.Level.Over.Bandwidth.To.OPC.Target.Offset");
    fetchTable(1, "Frequency.Over.Temperature.To.OPC.Target.Offset");
    return 0;
}

void ReferenceController::fetchTable(std::size_t nTable, const char* pName)
{
    int& nFetched = m_anTable[nTable];
    if (isRefused(m_environment.getTable("Channel." + std::to_string(m_nChannel) + "." + pName, &nFetched))) {
        nFetched = -1;
        trace(7, "onModuleInit(): could not get cal table, continuing....");
    }
}

std::int64_t ReferenceController::readGainBlocks()
{
    const std::string sPhase = "onPhaseModuleStorageObjectsRetreived(): ";
    trace(5, "Enter: onPhaseModuleStorageObjectsRetreived()");
    const std::string sName = "channel." + std::to_string(m_nChannel) + ".tx.rf.number.of.gain.blocks";
    const std::int32_t* pContent = nullptr;
    m_nGainBlocks = 6;
    const std::int32_t nResult = m_environment.getVariable(sName, &pContent);
    if (isRefused(nResult) || pContent == nullptr) {
        m_coverage.count(ECorner::StorageContentMissing);
        trace(1, sPhase + "failed to retrieve variables from database (EAFResult = " + hex(nResult) +
                     ") Default value 6used instead.");
        return nResult;
    }
    if (*pContent == 0 || *pContent > 6) {
        trace(1, sPhase + "variable " + sName + "from the database is wrong " + std::to_string(*pContent) +
                     ". Default value used instead 6");
        return 0x8000;
    }
    m_nGainBlocks = *pContent;
    return nResult;
}

std::int64_t ReferenceController::readSpacing()
{
    trace(5, "Enter: onPhasePostFrameformatLoad()");
    const std::int32_t* pContent = nullptr;
    const std::int32_t nResult = m_environment.getVariable("ChannelSpacing", &pContent);
    if (isRefused(nResult)) {
        trace(1, "onPhasePostFrameformatLoad(): failed to retrieve the variable ChannelSpacing from the database "
                 "(EAFResult = " +
                     hex(nResult));
        return nResult;
    }
    m_nSpacing = spacing(*pContent);
    if (m_nSpacing % 1000 != 0 || m_nSpacing == 0) {
        m_coverage.count(m_nSpacing == 0 ? ECorner::SpacingUnknown : ECorner::SpacingFractional);
    }
    return nResult;
}
} // namespace Differential
