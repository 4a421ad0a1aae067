#include "Unit/TestServer/XmlRpcService.h"
#include "Unit/XmlRpc/XmlRpcFault.h"
#include "Unit/XmlRpc/XmlRpcText.h"
#include "tests/unit/xmlrpc/Messages.h"
#include "tests/unit/xmlrpc/TestMethods.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <thread>
#include <utility>
#include <vector>

namespace
{
class Service : public testing::Test
{
protected:
    std::string systemCall(const std::string& sMethod, const std::string& sName) const
    {
        return m_service.answer("<methodCall><methodName>" + sMethod + "</methodName><params><param><value>" + sName +
                                "</value></param></params></methodCall>");
    }

    std::string serve(const std::string& sBody)
    {
        return m_service.answer(sBody, [this](const std::string& sWhy) { m_refusals.push_back(sWhy); });
    }

    std::vector<std::string> m_refusals;
    XmlRpcService m_service{testMethods()};
};

std::vector<std::string> textsOf(XMLRPC_VALUE array)
{
    std::vector<std::string> texts;
    for (XMLRPC_VALUE value = XMLRPC_VectorRewind(array); value != nullptr; value = XMLRPC_VectorNext(array)) {
        texts.emplace_back(XMLRPC_GetValueString(value));
    }
    return texts;
}

XmlRpcValue echoStruct(const std::string& sValue)
{
    XmlRpcValue members = makeXmlRpcStruct(nullptr);
    addXmlRpcValue(members.get(), makeXmlRpcString("Value", sValue));
    return members;
}
} // namespace

TEST_F(Service, CarriesOutCalls)
{
    const XmlRpcRequest echo = readAnswer(serve(callWithStruct("Test.Echo", echoStruct("a < b"))));
    EXPECT_STREQ(XMLRPC_GetValueString(XMLRPC_RequestGetData(echo.get())), "a < b");
    const XmlRpcRequest none = readAnswer(serve(callOf("Test.Echo")));
    EXPECT_STREQ(XMLRPC_GetValueString(XMLRPC_RequestGetData(none.get())), "none");
    EXPECT_THAT(m_refusals, testing::IsEmpty());
}

TEST_F(Service, GivesHandlersTheRequest)
{
    XmlRpcValue members = makeXmlRpcStruct(nullptr);
    addXmlRpcValue(members.get(), makeXmlRpcString("RequestOption", "Read"));
    const XmlRpcRequest answer = readAnswer(serve(callWithStruct("Test.Handler", std::move(members))));
    EXPECT_STREQ(XMLRPC_GetValueString(XMLRPC_VectorRewind(XMLRPC_RequestGetData(answer.get()))), "Read");
    expectFault(serve(callOf("Test.Handler")), 2, "eTI_E_REQUIRED_INPUT_MISSING, no RequestOption");
}

TEST_F(Service, TurnsWhatGoesWrongIntoFaults)
{
    expectFault(serve(callOf("Test.Refuse")), eTI_E_FAILED, "eTI_E_FAILED, refused");
    expectFault(serve(callOf("Test.Throw")), eXMLRPC_FAULT_INTERNAL, "Test.Throw: it broke");
    expectFault(serve(callOf("Test.ThrowOther")), eXMLRPC_FAULT_INTERNAL, "Test.ThrowOther: an unknown exception");
    expectFault(serve(callOf("Test.Nothing")), eXMLRPC_FAULT_INTERNAL, "Test.Nothing: no result");
    expectFault(serve(callOf("Test.Unknown")), eXMLRPC_FAULT_UNKNOWN_METHOD, "unknown method Test.Unknown");
    expectFault(serve(callOf("test.echo")), eXMLRPC_FAULT_UNKNOWN_METHOD, "unknown method test.echo");
    EXPECT_THAT(m_refusals, testing::IsEmpty());
}

TEST_F(Service, TellsOfBodiesThatNeverBecameACall)
{
    expectFault(serve("\n<a>"), eXMLRPC_FAULT_NOT_XMLRPC, "line 2: element <a> has no place here");
    expectFault(serve(""), eXMLRPC_FAULT_NOT_WELL_FORMED, "line 1: no element found");
    expectFault(serve(callWithValue("\xE9")), eXMLRPC_FAULT_BAD_ENCODING, "line 1: not UTF-8");
    EXPECT_THAT(m_refusals, testing::ElementsAre("line 2: element <a> has no place here", "line 1: no element found",
                                                 "line 1: not UTF-8"));
}

TEST_F(Service, KeepsItsLimits)
{
    XmlRpcLimits limits;
    limits.nMaxBytes = callOf("Test.Named").size();
    const XmlRpcService service(testMethods(), limits);
    EXPECT_NO_THROW((void)readAnswer(service.answer(callOf("Test.Named"))));
    expectFault(service.answer(callOf("Test.Named") + " "), eXMLRPC_FAULT_NOT_XMLRPC,
                "line 1: more than " + std::to_string(limits.nMaxBytes) + " bytes in the message");
}

TEST_F(Service, ListsItsMethods)
{
    const XmlRpcRequest answer = readAnswer(serve(callOf("system.listMethods")));
    EXPECT_THAT(textsOf(XMLRPC_RequestGetData(answer.get())),
                testing::ElementsAre("Test.Add", "Test.Echo", "Test.Handler", "Test.Named", "Test.Nothing",
                                     "Test.Parameters", "Test.Refuse", "Test.Samples", "Test.Throw", "Test.ThrowOther",
                                     "system.listMethods", "system.methodHelp", "system.methodSignature",
                                     "system.multicall"));
}

TEST_F(Service, HelpsWithItsMethods)
{
    const XmlRpcRequest answer = readAnswer(systemCall("system.methodHelp", "Test.Add"));
    EXPECT_STREQ(XMLRPC_GetValueString(XMLRPC_RequestGetData(answer.get())), "Adds A and B.");
    expectFault(systemCall("system.methodHelp", "Test.Unknown"), eXMLRPC_FAULT_UNKNOWN_METHOD,
                "system.methodHelp: unknown method Test.Unknown");
}

TEST_F(Service, GivesSignatures)
{
    const XmlRpcRequest answer = readAnswer(systemCall("system.methodSignature", "Test.Add"));
    XMLRPC_VALUE signatures = XMLRPC_RequestGetData(answer.get());
    EXPECT_EQ(XMLRPC_VectorSize(signatures), 1);
    EXPECT_THAT(textsOf(XMLRPC_VectorRewind(signatures)), testing::ElementsAre("int", "struct"));
    const XmlRpcRequest none = readAnswer(systemCall("system.methodSignature", "Test.Parameters"));
    EXPECT_EQ(XMLRPC_GetValueTypeEasy(XMLRPC_RequestGetData(none.get())), xmlrpc_type_array);
    EXPECT_EQ(XMLRPC_VectorSize(XMLRPC_RequestGetData(none.get())), 0);
    expectFault(systemCall("system.methodSignature", "Test.Unknown"), eXMLRPC_FAULT_UNKNOWN_METHOD,
                "system.methodSignature: unknown method Test.Unknown");
}

TEST_F(Service, AsksSystemMethodsForOneName)
{
    for (const std::string sMethod : {"system.methodHelp", "system.methodSignature"}) {
        const std::string sText = sMethod + ": the only parameter must be the name of a method";
        expectFault(serve(callOf(sMethod)), eXMLRPC_FAULT_INVALID_PARAMS, sText);
        expectFault(systemCall(sMethod, "<int>1</int>"), eXMLRPC_FAULT_INVALID_PARAMS, sText);
        expectFault(serve("<methodCall><methodName>" + sMethod + "</methodName><params>" +
                          repeated("<param><value>Test.Add</value></param>", 2) + "</params></methodCall>"),
                    eXMLRPC_FAULT_INVALID_PARAMS, sText);
    }
}

TEST_F(Service, ServesSeveralThreadsAtOnce)
{
    constexpr int THREADS = 4;
    constexpr int CALLS = 200;
    std::atomic<int> nRefusals = 0;
    std::atomic<int> nRight = 0;
    const XmlRpcService service(testMethods());
    const auto serve = [&](int nThread) {
        for (int i = 0; i < CALLS; ++i) {
            const std::string sValue = std::to_string(nThread) + "/" + std::to_string(i);
            const std::string sAnswer = service.answer(callWithStruct("Test.Echo", echoStruct(sValue)));
            nRight += sAnswer.find("<string>" + sValue + "</string>") != std::string::npos ? 1 : 0;
            nRight += service.answer(callOf("system.listMethods")).find("Test.Add") != std::string::npos ? 1 : 0;
            nRight += service.answer("<" + sValue, [&](const std::string&) { ++nRefusals; }).find("<fault>") !=
                              std::string::npos
                          ? 1
                          : 0;
        }
    };
    std::vector<std::thread> threads;
    threads.reserve(THREADS);
    for (int nThread = 0; nThread < THREADS; ++nThread) {
        threads.emplace_back(serve, nThread);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(nRight, 3 * THREADS * CALLS);
    EXPECT_EQ(nRefusals, THREADS * CALLS);
}

TEST(ServiceOfSlowMethods, CarriesOutOneCallAtATime)
{
    std::atomic<int> nInside = 0;
    std::atomic<int> nMostInside = 0;
    MethodTable methods;
    methods.add({"Test.Slow", "", {{"string"}}, [&](const MethodCall&) {
                     nMostInside = std::max<int>(nMostInside, ++nInside);
                     std::this_thread::sleep_for(std::chrono::milliseconds(2));
                     --nInside;
                     return makeXmlRpcString(nullptr, "done");
                 }});
    const XmlRpcService service(std::move(methods));
    std::vector<std::jthread> threads;
    threads.reserve(4);
    for (int nThread = 0; nThread < 4; ++nThread) {
        threads.emplace_back([&service] {
            for (int i = 0; i < 10; ++i) {
                (void)service.answer(callOf("Test.Slow"));
            }
        });
    }
    threads.clear();
    EXPECT_EQ(nMostInside, 1);
}

TEST_F(Service, CountsCallsByMethodAndFault)
{
    using testing::ElementsAre;
    using testing::Pair;
    EXPECT_EQ(m_service.calls().at("Test.Echo").nCalls, 0U) << "known before the first call";
    serve(callOf("Test.Echo"));
    serve(callOf("Test.Echo"));
    serve(callOf("Test.Refuse"));
    serve(callOf("Test.Throw"));
    serve(callOf("No.Such"));
    serve(callOf("No.Other"));
    serve("<no call>");
    const std::map<std::string, CallCounts> calls = m_service.calls();
    EXPECT_EQ(calls.at("Test.Echo").nCalls, 2U);
    EXPECT_THAT(calls.at("Test.Echo").faults, testing::IsEmpty());
    EXPECT_EQ(calls.at("Test.Refuse").nCalls, 1U);
    EXPECT_THAT(calls.at("Test.Refuse").faults, ElementsAre(Pair(4, 1U)));
    EXPECT_THAT(calls.at("Test.Throw").faults, ElementsAre(Pair(eXMLRPC_FAULT_INTERNAL, 1U)));
    EXPECT_THAT(calls.at(CallCounter::UNKNOWN_METHOD).faults, ElementsAre(Pair(eXMLRPC_FAULT_UNKNOWN_METHOD, 2U)));
    EXPECT_THAT(calls.at(CallCounter::NO_CALL).faults, ElementsAre(Pair(eXMLRPC_FAULT_NOT_WELL_FORMED, 1U)));
    EXPECT_FALSE(calls.contains("No.Such")) << "clients would fill the table";
}
