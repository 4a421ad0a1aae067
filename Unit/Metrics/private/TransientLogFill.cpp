#include "Unit/Metrics/private/TransientLogFill.h"

#include "Platform/Broker/CInterfaceBroker.h"
#include "Platform/TestInterface/TestInterface.h"
#include "Unit/XmlRpc/XmlRpcValue.h"

#include <string>

namespace
{
const TIMethodCStruct* published(unsigned int nChannel)
{
    void* pBroker = nullptr;
    void* pRecord = nullptr;
    CInterfaceBroker_GetInstance(&pBroker);
    CInterfaceBroker_GetInterface(pBroker, ("TIManageOPCTransientLogCh" + std::to_string(nChannel)).c_str(), &pRecord);
    CInterfaceBroker_DestroyInstance(pBroker);
    return static_cast<const TIMethodCStruct*>(pRecord);
}

XmlRpcRequest readRequest()
{
    XmlRpcValue members = makeXmlRpcStruct(nullptr);
    addXmlRpcValue(members.get(), makeXmlRpcString("RequestOption", "Read"));
    XmlRpcValue parameters = makeXmlRpcArray(nullptr);
    addXmlRpcValue(parameters.get(), std::move(members));
    XmlRpcRequest request(XMLRPC_RequestNew());
    XMLRPC_RequestSetData(request.get(), parameters.release());
    return request;
}
} // namespace

std::optional<std::size_t> TransientLogFill::read(CommandQueue& commands, unsigned int nChannel,
                                                  const LogActivity& logs)
{
    const bool bEmptied = logs.nTransientBegins != m_nBegins;
    // Each step adds a sample until the log is full: once it had fewer samples than steps it holds what it can.
    const bool bFull = !bEmptied && m_nSamples < m_nSteps;
    const bool bMore = logs.nTransientSteps > 0 && (bEmptied || logs.nTransientSteps != m_nSteps);
    m_nSamples = bEmptied ? 0 : m_nSamples;
    if (bMore && !bFull) { // a log that is empty would trace a failure
        const std::optional<std::size_t> samples = ask(commands, nChannel);
        if (!samples) {
            return std::nullopt;
        }
        m_nSamples = *samples;
    }
    m_nBegins = logs.nTransientBegins;
    m_nSteps = bFull ? m_nSteps : logs.nTransientSteps;
    return m_nSamples;
}

std::optional<std::size_t> TransientLogFill::ask(CommandQueue& commands, unsigned int nChannel)
{
    const TIMethodCStruct* const pMethod = published(nChannel);
    if (pMethod == nullptr) {
        return std::nullopt;
    }
    const XmlRpcRequest request = readRequest();
    XmlRpcValue answer;
    commands.run([&] { answer.reset(pMethod->handle(pMethod->vpThis, nullptr, request.get(), nullptr)); });
    XMLRPC_VALUE samples = XMLRPC_VectorGetValueWithID(answer.get(), "OPCLog"); // none in a fault
    return samples == nullptr ? 0 : static_cast<std::size_t>(XMLRPC_VectorSize(samples));
}
