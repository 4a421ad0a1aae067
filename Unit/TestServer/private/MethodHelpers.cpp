#include "Unit/TestServer/private/MethodHelpers.h"

#include <fmt/format.h>

#include <utility>

XmlRpcFault failure(const MethodCall& call, const std::string& sText)
{
    return XmlRpcFault(eTI_E_FAILED, fmt::format("eTI_E_FAILED, {} {}", call.method(), sText));
}

RadioChannel& channelOf(const MethodCall& call, const RegulationLoop& loop)
{
    const int nChannel = call.integer(CHANNEL).value_or(0);
    std::string sKnown;
    for (RadioChannel* pChannel : loop.channels()) {
        if (nChannel >= 0 && pChannel->number() == static_cast<unsigned int>(nChannel)) {
            return *pChannel;
        }
        sKnown += fmt::format("{}{}", sKnown.empty() ? "" : ", ", pChannel->number());
    }
    throw failure(call, fmt::format("unknown radio channel {}; RadioChannelID can be {}", nChannel, sKnown));
}

double numberInRange(const MethodCall& call, const char* pMember, double minimum, double maximum)
{
    const double value = call.requiredNumber(pMember);
    if (!(value >= minimum && value <= maximum)) {
        throw failure(call, fmt::format("{} is {}; it can be {} to {}", pMember, value, minimum, maximum));
    }
    return value;
}

int integerInRange(const MethodCall& call, const char* pMember, int minimum, int maximum)
{
    const int nValue = call.requiredInteger(pMember);
    if (nValue < minimum || nValue > maximum) {
        throw failure(call, fmt::format("{} is {}; it can be {} to {}", pMember, nValue, minimum, maximum));
    }
    return nValue;
}

void betweenSteps(const MethodCall& call, RegulationLoop& loop, const std::function<void()>& function)
{
    try {
        loop.commands().run([&] {
            function();
            loop.noteCommand();
        });
    }
    catch (const RegulationOver& over) {
        throw failure(call, over.what());
    }
}

void tellChannel(const MethodCall& call, RegulationLoop& loop, const std::function<long(RadioChannel&)>& function)
{
    RadioChannel& channel = channelOf(call, loop);
    long nResult = EAF_OK;
    betweenSteps(call, loop, [&] { nResult = function(channel); });
    if (EAF_isFailure(nResult)) {
        throw failure(call,
                      fmt::format("the controller of radio channel {} refused with {:#x}", channel.number(), nResult));
    }
}

XmlRpcValue standardResponse()
{
    XmlRpcValue response = makeXmlRpcStruct(nullptr);
    addXmlRpcValue(response.get(), makeXmlRpcString("StandardResponse", "OK"));
    return response;
}

void addStructMethod(MethodTable& table, const char* pName, const char* pHelp,
                     std::function<XmlRpcValue(const MethodCall&)> call, EMethodChange eChanges)
{
    table.add({pName, pHelp, {{"struct", "struct"}}, std::move(call), eChanges});
}
