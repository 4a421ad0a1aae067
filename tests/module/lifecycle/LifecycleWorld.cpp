#include "tests/module/lifecycle/LifecycleWorld.h"

#include "Control/OutputPowerController/OutputPowerController_c.h"
#include "Control/OutputPowerController/private/OutputPowerController.h"

#include <sstream>
#include <utility>

namespace
{
constexpr int REQUESTED_POWER = 100;

std::string textOf(const Seen& seen)
{
    std::ostringstream text;
    text << "result " << std::hex << seen.nResult << "; calls:";
    for (const std::string& sCall : seen.calls) {
        text << ' ' << sCall << ';';
    }
    text << " traces:";
    for (const std::string& sTrace : seen.traces) {
        text << " \"" << sTrace << '"';
    }
    return text.str();
}

EAFResult resultOf(bool bSucceeds)
{
    return bSucceeds ? EAF_OK : EAF_FAILED;
}

bool isHandlerName(const std::string& sName)
{
    return sName.rfind("IOutputPowerHandler.", 0) == 0 || sName.rfind("IFrequencyHandler_Tx", 0) == 0 ||
           sName == "ITemperatureHandler";
}
} // namespace

LifecycleWorld::LifecycleWorld(const Surroundings& surroundings, std::vector<unsigned int> channels)
    : m_around(surroundings), m_channels(std::move(channels)), m_model(surroundings), m_handles(m_channels.size())
{
    m_platform.reset();
    setUpSurroundings();
}

LifecycleWorld::~LifecycleWorld()
{
    for (void* pHandle : m_handles) {
        if (pHandle != nullptr) {
            OutputPowerController_Destruct(pHandle);
        }
    }
    m_platform.reset();
}

void LifecycleWorld::setUpSurroundings()
{
    m_powerHandler.setTableOffered(m_around.ePowerHandler != EFound::Unusable);
    m_frequency.m_nRegistrationResult = resultOf(m_around.eFrequencyHandler != EFound::Unusable);
    PlatformScript& script = m_platform.script();
    publish("ITemperatureHandler", m_around.eTemperatureHandler, m_temperature);
    script.nRegisterTemperatureObserver = resultOf(m_around.eTemperatureHandler != EFound::Unusable);
    for (const unsigned int nChannel : m_channels) {
        const std::string sChannel = std::to_string(nChannel);
        publish(("IOutputPowerHandler." + sChannel).substr(0, 21), m_around.ePowerHandler, m_powerHandler);
        publish(nChannel == 0 ? "IFrequencyHandler_Tx" : "IFrequencyHandler_Tx_" + sChannel, m_around.eFrequencyHandler,
                m_frequency);
        if (m_around.bBandwidthTable) {
            m_platform.table("Channel." + sChannel + ".P.Level.Over.Bandwidth.To.OPC.Target.Offset");
        }
        if (m_around.bFrequencyTable) {
            m_platform.table("Channel." + sChannel + ".Frequency.Over.Temperature.To.OPC.Target.Offset");
        }
        script.variables["channel." + sChannel + ".tx.rf.number.of.gain.blocks"] = {
            m_around.nGainBlocksResult, m_around.nGainBlocks, !m_around.bGainBlocksContent};
    }
    script.variables["ChannelSpacing"] = {m_around.nSpacingResult, m_around.nSpacingCode, false};
    script.nRegisterModule = resultOf(m_around.bManagerRegisters);
    script.nUnRegisterModule = resultOf(m_around.bManagerUnregisters);
    script.nRegisterInterface = resultOf(m_around.bBrokerRegisters);
    script.nUnregisterInterface = resultOf(m_around.bBrokerUnregisters);
    script.nCGetInstance = m_around.nCBrokerHandle;
    script.nCRegisterInterface = resultOf(m_around.bCBrokerRegisters);
    script.nCUnregisterInterface = resultOf(m_around.bCBrokerUnregisters);
    script.nCDestroyInstance = m_around.nCBrokerRelease;
}

void LifecycleWorld::publish(const std::string& sName, EFound eFound, IInterface& interface)
{
    if (eFound != EFound::Missing) {
        m_platform.publish(sName, eFound == EFound::OfAnotherType ? &m_plain : &interface);
    }
}

void LifecycleWorld::togglePowerHandlers()
{
    std::map<std::string, IInterface*>& interfaces = m_platform.script().interfaces;
    if (!m_powerHandlersAway.empty()) {
        interfaces.merge(m_powerHandlersAway);
        m_powerHandlersAway.clear();
        return;
    }
    for (auto entry = interfaces.begin(); entry != interfaces.end();) {
        if (entry->first.rfind("IOutputPowerHandler.", 0) == 0) {
            m_powerHandlersAway.insert(interfaces.extract(entry++));
        }
        else {
            ++entry;
        }
    }
}

OutputPowerController& LifecycleWorld::module(std::size_t nModule) const
{
    return *static_cast<OutputPowerController*>(m_handles.at(nModule));
}

long LifecycleWorld::act(EMoment eMoment, std::size_t nModule)
{
    switch (eMoment) {
    case EMoment::Construct:
        OutputPowerController_Construct(&m_handles.at(nModule), m_channels.at(nModule));
        return m_handles.at(nModule) != nullptr ? EAF_OK : EAF_NULL_POINTER;
    case EMoment::Initialize:
        return OutputPowerController_Initialize(m_handles.at(nModule));
    case EMoment::ModuleInit:
        return module(nModule).onModuleInit();
    case EMoment::StorageObjects:
        return module(nModule).onPhaseModuleStorageObjectsRetreived();
    case EMoment::FrameFormat:
        return module(nModule).onPhasePostFrameformatLoad();
    case EMoment::Stop:
        return module(nModule).onPhaseStop();
    case EMoment::Regulate:
        return module(nModule).regulate(REQUESTED_POWER);
    case EMoment::NullHandles:
        OutputPowerController_Construct(nullptr, m_channels.at(nModule));
        OutputPowerController_Destruct(nullptr);
        return OutputPowerController_Initialize(nullptr) | OutputPowerController_Uninitialize(nullptr);
    case EMoment::PowerHandlerGoes:
        togglePowerHandlers();
        return EAF_OK;
    case EMoment::Uninitialize:
        return OutputPowerController_Uninitialize(m_handles.at(nModule));
    case EMoment::Destruct:
        OutputPowerController_Destruct(std::exchange(m_handles.at(nModule), nullptr));
        return EAF_OK;
    }
    return EAF_FAILED;
}

std::string LifecycleWorld::live(EMoment eMoment, std::size_t nModule)
{
    m_platform.clearRecords();
    const std::map<std::string, IInterface*> interfacesBefore = m_platform.script().interfaces;
    const std::map<std::string, void*> recordsBefore = m_platform.script().records;
    const Seen actual = takeSeen(act(eMoment, nModule));
    const Seen expected = m_model.live(eMoment, nModule, m_channels.at(nModule));
    if (!(actual == expected)) {
        return "expected " + textOf(expected) + "\n  actual   " + textOf(actual);
    }
    for (const auto& [sName, pInterface] : m_platform.script().interfaces) {
        const auto before = interfacesBefore.find(sName);
        if (before != interfacesBefore.end() && before->second != pInterface) {
            return sName + " has changed hands";
        }
    }
    for (const auto& [sName, pRecord] : m_platform.script().records) {
        const auto before = recordsBefore.find(sName);
        if (pRecord == nullptr || (before != recordsBefore.end() && before->second != pRecord)) {
            return sName + " has changed hands";
        }
    }
    return registrationsDiffer();
}

Seen LifecycleWorld::takeSeen(long nResult) const
{
    Seen seen{nResult, m_platform.calls(), {}};
    for (const RecordedTrace& trace : m_platform.traces()) {
        seen.traces.push_back((trace.bWellEnded ? "" : "NOT ENDED: ") + std::to_string(trace.nLevel) + ' ' +
                              trace.sText);
    }
    return seen;
}

std::string LifecycleWorld::registrationsDiffer() const
{
    std::vector<ModuleInterface*> modules;
    for (const std::size_t nModule : m_model.modules()) {
        modules.push_back(&module(nModule));
    }
    if (m_platform.script().modules != modules) {
        return "expected " + std::to_string(modules.size()) + " registered modules in order, actual " +
               std::to_string(m_platform.script().modules.size());
    }
    Texts expected(m_model.interfaces().begin(), m_model.interfaces().end());
    expected.insert(expected.end(), m_model.records().begin(), m_model.records().end());
    const Texts actual = publishedNames();
    if (actual == expected) {
        return {};
    }
    std::ostringstream text;
    text << "names, expected:";
    for (const std::string& sName : expected) {
        text << ' ' << sName;
    }
    text << "\n  actual:";
    for (const std::string& sName : actual) {
        text << ' ' << sName;
    }
    return text.str();
}

Texts LifecycleWorld::publishedNames() const
{
    Texts names;
    for (const auto& [sName, pInterface] : m_platform.script().interfaces) {
        if (!isHandlerName(sName)) {
            names.push_back(sName);
        }
    }
    for (const auto& [sName, pRecord] : m_platform.script().records) {
        names.push_back(sName);
    }
    return names;
}
