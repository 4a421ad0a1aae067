#include "tests/abi/ModuleProcess.h"

#include "Platform/TestInterface/TestInterface.h"

ModuleChannel::ModuleChannel(LoadedLibrary& library, unsigned int nChannel) : m_library(library), m_nChannel(nChannel)
{
    RecordingPlatform& platform = RecordingPlatform::get();
    platform.publish("IOutputPowerHandler." + std::to_string(nChannel), &m_handler);
    platform.publish(named("IFrequencyHandler_Tx"), &m_frequency);
    // What is measured is what was sent.
    m_handler.m_measure = [this] { return m_handler.m_nPctrlSent; };
    m_library.construct(&m_pModule, nChannel);
    m_library.initialize(m_pModule);
}

ModuleChannel::~ModuleChannel()
{
    m_library.uninitialize(m_pModule);
    m_library.destruct(m_pModule);
}

IOutputPowerController* ModuleChannel::controller() const
{
    return dynamic_cast<IOutputPowerController*>(
        RecordingPlatform::get().script().interfaces[named("IOutputPowerController")]);
}

IOutputPowerControllerCStruct& ModuleChannel::table() const
{
    return *static_cast<IOutputPowerControllerCStruct*>(controller()->getCStruct());
}

XMLRPC_VALUE ModuleChannel::manageTransientLog(const char* pOption) const
{
    const auto* pRecord = static_cast<TIMethodCStruct*>(
        RecordingPlatform::get().record("TIManageOPCTransientLogCh" + std::to_string(m_nChannel)));
    XMLRPC_REQUEST xRequest = XMLRPC_RequestNew();
    XMLRPC_VALUE xParameters = XMLRPC_CreateVector(nullptr, xmlrpc_vector_array);
    XMLRPC_VALUE xParameter = XMLRPC_CreateVector(nullptr, xmlrpc_vector_struct);
    XMLRPC_AddValueToVector(xParameter, XMLRPC_CreateValueString("RequestOption", pOption, 0));
    XMLRPC_AddValueToVector(xParameters, xParameter);
    XMLRPC_RequestSetData(xRequest, xParameters);
    XMLRPC_VALUE xResponse = pRecord->handle(pRecord->vpThis, nullptr, xRequest, nullptr);
    XMLRPC_RequestFree(xRequest, 1);
    return xResponse;
}

XMLRPC_VALUE ModuleChannel::manageOpcLog(std::string sOption) const
{
    const auto* pRecord = static_cast<ManageLogsCStruct*>(
        RecordingPlatform::get().record("Channel." + std::to_string(m_nChannel) + ".TxOutputPowerControlLog"));
    return pRecord->manageLogs(pRecord->vpThis, sOption.data());
}

std::string ModuleChannel::named(const std::string& sBaseName) const
{
    return m_nChannel == 0 ? sBaseName : sBaseName + "_" + std::to_string(m_nChannel);
}
