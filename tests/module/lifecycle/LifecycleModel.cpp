#include "tests/module/lifecycle/LifecycleModel.h"

#include <algorithm>
#include <array>
#include <sstream>

namespace
{
constexpr const char* BANDWIDTH_TABLE = "P.Level.Over.Bandwidth.To.OPC.Target.Offset";
constexpr const char* FREQUENCY_TABLE = "Frequency.Over.Temperature.To.OPC.Target.Offset";
constexpr const char* NO_TABLE = "7 onModuleInit(): could not get cal table, continuing....";

std::string named(const std::string& sBaseName, unsigned int nChannel)
{
    return nChannel == 0 ? sBaseName : sBaseName + "_" + std::to_string(nChannel);
}

std::string logName(unsigned int nChannel)
{
    return named("IOutputPowerControlLog", nChannel);
}

std::array<std::string, 2> recordNames(unsigned int nChannel)
{
    const std::string sChannel = std::to_string(nChannel);
    return {"Channel." + sChannel + ".TxOutputPowerControlLog", "TIManageOPCTransientLogCh" + sChannel};
}

std::string tableName(unsigned int nChannel, const char* pTable)
{
    return "Channel." + std::to_string(nChannel) + "." + pTable;
}

std::string hex(long nValue)
{
    std::ostringstream text;
    text << std::hex << nValue;
    return text.str();
}

Seen failed(Seen seen, const std::string& sTrace)
{
    seen.nResult = EAF_FAILED;
    seen.traces.push_back("1 onModuleInit(): " + sTrace);
    return seen;
}
} // namespace

const char* nameOf(EMoment eMoment)
{
    static constexpr std::array<const char*, 11> NAMES = {"Construct",    "Initialize",   "phase 5",
                                                          "phase 11",     "phase 20",     "phase 16",
                                                          "regulate",     "null handles", "handler comes or goes",
                                                          "Uninitialize", "Destruct"};
    return NAMES[static_cast<std::size_t>(eMoment)];
}

Seen LifecycleModel::live(EMoment eMoment, std::size_t nModule, unsigned int nChannel)
{
    switch (eMoment) {
    case EMoment::Construct:
        return construct(nModule, nChannel);
    case EMoment::Initialize:
        return initialize(nChannel);
    case EMoment::ModuleInit:
        return moduleInit(m_living.at(nModule));
    case EMoment::StorageObjects:
        return storageObjects(m_living.at(nModule));
    case EMoment::FrameFormat:
        return frameFormat(m_living.at(nModule));
    case EMoment::Stop:
        return {EAF_OK, {}, {"5 Enter: onPhaseStop()"}};
    case EMoment::Regulate:
        return regulate(m_living.at(nModule));
    case EMoment::NullHandles:
        return nullHandles();
    case EMoment::PowerHandlerGoes:
        m_bPowerHandlerThere = !m_bPowerHandlerThere;
        return {};
    case EMoment::Uninitialize:
        return uninitialize(nChannel);
    case EMoment::Destruct:
        return destruct(nModule);
    }
    return {};
}

Seen LifecycleModel::construct(std::size_t nModule, unsigned int nChannel)
{
    m_living[nModule].nChannel = nChannel;
    if (m_around.bManagerRegisters) {
        m_modules.push_back(nModule);
    }
    const std::string sName = named("IOutputPowerController", nChannel);
    if (m_around.bBrokerRegisters) {
        m_interfaces.insert(sName); // a name that is taken stays with whom it was
    }
    return {EAF_OK,
            {"ModuleInterface(15000, OutputPowerController, " + std::to_string(nChannel) + ", 0, {5, 11, 20, 16})",
             "RegisterModule", "registerInterface(" + sName + ")"},
            {"5 Enter: OutputPowerController()", "5 Enter: OutputPowerControlLog()"}};
}

Seen LifecycleModel::destruct(std::size_t nModule)
{
    const std::string sName = named("IOutputPowerController", m_living.at(nModule).nChannel);
    m_living.erase(nModule);
    m_modules.erase(std::remove(m_modules.begin(), m_modules.end(), nModule), m_modules.end());
    if (m_around.bBrokerUnregisters) {
        m_interfaces.erase(sName); // by the name, whoever stands there
    }
    return {EAF_OK,
            {"UnRegisterModule", "unregisterInterface(" + sName + ", null)", "ModuleInterface::~ModuleInterface"},
            {"5 Enter: ~OutputPowerController()", "5 Enter: ~OutputPowerControlLog()"}};
}

Seen LifecycleModel::initialize(unsigned int nChannel)
{
    const std::array<std::string, 2> records = recordNames(nChannel);
    const std::string sChannel = std::to_string(nChannel);
    if (m_around.bBrokerRegisters) {
        m_interfaces.insert(logName(nChannel));
    }
    if (m_around.bCBrokerRegisters) {
        m_records.insert(records.begin(), records.end());
    }
    return {EAF_OK,
            {"registerInterface(" + logName(nChannel) + ")", "CInterfaceBroker_GetInstance",
             "CInterfaceBroker_RegisterInterface(" + records[0] + ")",
             "CInterfaceBroker_RegisterInterface(" + records[1] + ")", "CInterfaceBroker_DestroyInstance"},
            {"5 Enter: initialize()", "5 Enter: initialize() for channel " + sChannel,
             "5 Exit: initialize() finished successfully for channel " + sChannel}};
}

Seen LifecycleModel::uninitialize(unsigned int nChannel)
{
    const std::array<std::string, 2> records = recordNames(nChannel);
    if (m_around.bBrokerUnregisters) {
        m_interfaces.erase(logName(nChannel));
    }
    if (m_around.bCBrokerUnregisters) {
        m_records.erase(records[0]);
        m_records.erase(records[1]);
    }
    return {EAF_OK,
            {"CInterfaceBroker_GetInstance", "CInterfaceBroker_UnregisterInterface(" + records[0] + ", null)",
             "CInterfaceBroker_UnregisterInterface(" + records[1] + ", null)",
             "unregisterInterface(" + logName(nChannel) + ", null)"},
            {"5 Enter: unInitialize()", "5 Enter: unInitialize() for channel " + std::to_string(nChannel)}};
}

Seen LifecycleModel::moduleInit(Module& module) const
{
    Seen seen{EAF_OK, {}, {"5 Enter: onModuleInit()"}};
    // The name is cut after one digit of the channel.
    const std::string sHandler = ("IOutputPowerHandler." + std::to_string(module.nChannel)).substr(0, 21);
    seen.calls.push_back("getInterface(" + sHandler + ")");
    const EFound ePowerHandler = m_bPowerHandlerThere ? m_around.ePowerHandler : EFound::Missing;
    if (ePowerHandler == EFound::Usable || ePowerHandler == EFound::Unusable) {
        module.bConnected = ePowerHandler == EFound::Usable;
    }
    if (!module.bConnected) {
        return failed(seen, "Failed to get interface " + sHandler);
    }
    seen.calls.push_back("getInterface(" + named("IFrequencyHandler_Tx", module.nChannel) + ")");
    if (m_around.eFrequencyHandler == EFound::Missing || m_around.eFrequencyHandler == EFound::OfAnotherType) {
        return failed(seen, "Failed to retrieve the FrequencyHandler interface");
    }
    seen.calls.emplace_back("IFrequencyHandler::registerObserver");
    if (m_around.eFrequencyHandler == EFound::Unusable) {
        return failed(seen, "Failed to register the DpdController as observer to FrequencyHandler.");
    }
    seen.calls.emplace_back("getInterface(ITemperatureHandler)");
    if (m_around.eTemperatureHandler == EFound::Missing || m_around.eTemperatureHandler == EFound::OfAnotherType) {
        return failed(seen, "Failed to retrieve the TemperatureHandler interface");
    }
    seen.calls.emplace_back("ITemperatureHandler::registerObserver");
    seen.calls.push_back("GetTable(" + tableName(module.nChannel, BANDWIDTH_TABLE) + ")");
    seen.calls.push_back("GetTable(" + tableName(module.nChannel, FREQUENCY_TABLE) + ")");
    module.bBandwidthTable = m_around.bBandwidthTable;
    module.bFrequencyTable = m_around.bFrequencyTable;
    seen.traces.insert(seen.traces.end(), (module.bBandwidthTable ? 0U : 1U) + (module.bFrequencyTable ? 0U : 1U),
                       NO_TABLE);
    return seen;
}

Seen LifecycleModel::storageObjects(const Module& module) const
{
    static const std::string s_operation = "onPhaseModuleStorageObjectsRetreived()";
    const std::string sName = "channel." + std::to_string(module.nChannel) + ".tx.rf.number.of.gain.blocks";
    Seen seen{m_around.nGainBlocksResult, {"GetVariable(" + sName + ", 0)"}, {"5 Enter: " + s_operation}};
    if (seen.nResult != EAF_OK || !m_around.bGainBlocksContent) {
        seen.traces.push_back("1 " + s_operation + ": failed to retrieve variables from database (EAFResult = " +
                              hex(seen.nResult) + ") Default value 6used instead.");
    }
    else if (m_around.nGainBlocks == 0 || m_around.nGainBlocks > 6) {
        seen.nResult = EAF_FAILED;
        seen.traces.push_back("1 " + s_operation + ": variable " + sName + "from the database is wrong " +
                              std::to_string(m_around.nGainBlocks) + ". Default value used instead 6");
    }
    return seen;
}

Seen LifecycleModel::frameFormat(Module& module) const
{
    Seen seen{m_around.nSpacingResult, {"GetVariable(ChannelSpacing, 0)"}, {"5 Enter: onPhasePostFrameformatLoad()"}};
    if (seen.nResult != EAF_OK) {
        seen.traces.push_back("1 onPhasePostFrameformatLoad(): failed to retrieve the variable ChannelSpacing from the "
                              "database (EAFResult = " +
                              hex(seen.nResult));
        return seen;
    }
    module.nSpacingKhz = m_around.nSpacingCode == 28 ? 28000 : 0;
    return seen;
}

Seen LifecycleModel::regulate(Module& module)
{
    Seen seen;
    const auto lookUp = [&](const char* pTable, int nX, int nY) {
        const std::string sName = tableName(module.nChannel, pTable);
        seen.calls.push_back("IsValid(" + sName + ")");
        seen.calls.push_back("BiLinearInterpolate(" + sName + ", " + std::to_string(nX) + ", " + std::to_string(nY) +
                             ")");
    };
    if (module.bBandwidthTable) {
        lookUp(BANDWIDTH_TABLE, 100, module.nSpacingKhz);
    }
    if (module.bFrequencyTable) {
        lookUp(FREQUENCY_TABLE, 0, 0);
    }
    if (!module.bHasStepped) {
        seen.traces.emplace_back("5 handleOPCStateMachine(): OPC state changed. New state 2, Old state 9");
    }
    module.bHasStepped = true;
    return seen;
}

Seen LifecycleModel::nullHandles()
{
    return {EAF_NULL_POINTER, Texts(4, "DmLevel2GtLevel(0x8002)"),
            Texts(4, "1 Null pointer in argument      code: 0x8002\n")};
}
