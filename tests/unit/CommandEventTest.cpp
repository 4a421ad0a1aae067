#include "Unit/TestServer/private/CommandEvent.h"

#include "Unit/TestServer/XmlRpcService.h"
#include "Unit/XmlRpc/JsonXmlRpc.h"
#include "Unit/XmlRpc/XmlRpcFault.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace
{
using nlohmann::ordered_json;

/** @return a call with these parameters */
XmlRpcRequest requestOf(const ordered_json& parameters)
{
    XmlRpcRequest request(XMLRPC_RequestNew());
    XMLRPC_RequestSetData(request.get(), xmlRpcFromJson(nullptr, parameters).release());
    return request;
}

struct Call
{
    const char* pMethod;
    EMethodChange eChanges;
    ordered_json parameters;
    std::optional<unsigned int> nChannel;
    const char* pText;
};
} // namespace

TEST(CommandEvent, SaysWhatWasSet)
{
    const EMethodChange eChannel = EMethodChange::Channel;
    const std::vector<Call> calls = {
        {"Unit.SetRequestedPower", eChannel, {{{"PowerDbm", 18.0}}}, 0, "requested power 18.00 dBm"},
        {"Unit.SetRequestedPower",
         eChannel,
         {{{"Source", "unit-file"}, {"RadioChannelID", 2}}},
         2,
         "requested power as in the unit file"},
        {"Unit.SetTxPower", eChannel, {{{"RadioChannelID", 1}, {"State", "on"}}}, 1, "tx power on"},
        {"Unit.SetTxPower", eChannel, {{{"State", "on"}, {"PowerMode", 0}}}, 0, "tx power: state on, power mode 0"},
        {"Unit.SetFrequency", eChannel, {{{"FrequencyMhz", 5180}}}, 0, "frequency 5180.000 MHz"},
        {"Unit.SetTemperature",
         EMethodChange::Unit,
         {{{"TemperatureC", -5.5}}},
         std::nullopt,
         "temperature -5.50 \u00b0C"},
        {"Unit.SetLimits",
         eChannel,
         {{{"TxPminDbm", -10}, {"TxPmaxDbm", 30}}},
         0,
         "limits: tx pmin -10.00 dBm, tx pmax 30.00 dBm"},
        {"Unit.SetGain", eChannel, {{{"State", "on"}, {"GainPercent", 40}}}, 0, "gain: state on, 40 %"},
        {"Unit.SetProductionTest",
         eChannel,
         {{{"ProductionTest", true}, {"LoopMode", 2}}},
         0,
         "production test: on, loop mode 2"},
        {"Unit.SetInterval", EMethodChange::Unit, {{{"IntervalMs", 12}}}, std::nullopt, "interval 12 ms"},
        {"Unit.SetFault",
         eChannel,
         {{{"Operation", "getPmeasured"}, {"Kind", "slow"}, {"DelayUs", 50}}},
         0,
         "fault: operation getPmeasured, kind slow, delay 50 \u00b5s"},
        {"Unit.SetTraceLevel", EMethodChange::Unit, {{{"Level", 5}}}, std::nullopt, "trace level 5"},
        {"TI.ManageOPCTransientLog",
         eChannel,
         {{{"RequestOption", "Enable"}, {"RadioChannelID", 3}}},
         3,
         "OPC transient log Enable"},
        {"TI.ManageLogs",
         eChannel,
         {{{"RequestOption", "Start"}, {"LogName", "Channel.4.TxOutputPowerControlLog"}}},
         4,
         "logs Start"},
        {"Unit.ManageTransientLog", eChannel, {"SaveToSysLog", 6}, 6, "transient log SaveToSysLog"},
        // A member that a method does not ask for says nothing of its channel, whatever it is.
        {"Unit.SetTxPower", eChannel, {{{"State", "on"}, {"LogName", 5}, {"RadioChannelID", 2}}}, 2, "tx power on"},
        {"Unit.SetTxPower", eChannel, {{{"State", "on"}, {"LogName", "x"}, {"RadioChannelID", 2}}}, 2, "tx power on"},
        {"Unit.SetTxPower", eChannel, {{{"State", "on"}, {"LogName", "Channel.4."}}}, 0, "tx power on"},
        {"TI.ManageLogs", eChannel, {{{"RequestOption", "Start"}, {"LogName", "x"}}}, 0, "logs Start"},
        {"Unit.SetX", EMethodChange::Unit, {{{"Name", "two\nlines"}}}, std::nullopt, "x two lines"},
    };
    for (const Call& call : calls) {
        Method method;
        method.sName = call.pMethod;
        method.eChanges = call.eChanges;
        const auto event = commandEvent(method, requestOf(call.parameters).get(), {6000, 12});
        ASSERT_TRUE(event) << call.pMethod;
        EXPECT_EQ(event->sText, call.pText);
        EXPECT_EQ(event->nChannelNumber, call.nChannel) << call.pText;
        EXPECT_EQ(event->eEvent, ERunEvent::Command);
        EXPECT_EQ(event->nTimeUs, 6000U);
        EXPECT_EQ(event->nSteps, 12U);
        const ordered_json detail = ordered_json::parse(event->sDetail);
        EXPECT_EQ(detail["method"], call.pMethod);
        EXPECT_EQ(detail["params"], call.parameters.size() == 1 ? call.parameters[0] : call.parameters);
    }
}

TEST(CommandEvent, IsNoneForWhatChangesNothing)
{
    Method method;
    method.sName = "TI.ManageLogs";
    EXPECT_FALSE(commandEvent(method, requestOf({{{"RequestOption", "Start"}}}).get(), {}));
    method.eChanges = EMethodChange::Channel;
    EXPECT_FALSE(commandEvent(method, requestOf({{{"RequestOption", "Read"}}}).get(), {}));
    EXPECT_FALSE(commandEvent(method, requestOf({"Read", 1}).get(), {}));
    EXPECT_TRUE(commandEvent(method, requestOf({{{"RequestOption", "ReadAndReset"}}}).get(), {}));
}

TEST(CommandEvent, LeavesOutParametersThatAreTooLong)
{
    Method method;
    method.sName = "TI.ManageLogs";
    method.eChanges = EMethodChange::Channel;
    const auto event =
        commandEvent(method, requestOf({{{"RequestOption", "Start"}, {"More", std::string(100'000, 'x')}}}).get(), {});
    ASSERT_TRUE(event);
    EXPECT_EQ(event->sDetail, R"({"method":"TI.ManageLogs","params":null})");
    EXPECT_THAT(event->sText, testing::SizeIs(testing::Lt(250)));
}

TEST(CommandEvent, IsToldOfEachCallAndOfItsFault)
{
    std::vector<std::string> told;
    MethodTable table;
    table.add({"Well", "", {}, [](const MethodCall&) { return makeXmlRpcInt(nullptr, 1); }, EMethodChange::Unit});
    table.add({"Fault", "", {}, [](const MethodCall&) -> XmlRpcValue { throw XmlRpcFault(1, "no"); }});
    const XmlRpcService service(std::move(table), {},
                                [&](const Method& method, XMLRPC_REQUEST, const std::string& sFault) {
                                    told.push_back(method.sName + (sFault.empty() ? "" : ": " + sFault));
                                });
    for (const char* const pName : {"Well", "Fault", "None"}) {
        (void)service.answer(std::string("<methodCall><methodName>") + pName + "</methodName></methodCall>");
    }
    (void)service.answer(
        "<methodCall><methodName>system.multicall</methodName><params><param><value><array><data><value>"
        "<struct><member><name>methodName</name><value>Well</value></member><member><name>params</name>"
        "<value><array><data/></array></value></member></struct></value></data></array></value></param>"
        "</params></methodCall>");
    EXPECT_THAT(told, testing::ElementsAre("Well", "Fault: no", "Well", "system.multicall"));
}

TEST(CommandEvent, SaysWhyACommandFailed)
{
    const Method method{"Unit.SetProductionTest", "", {}, nullptr, EMethodChange::Channel};
    const auto event =
        commandEvent(method, requestOf({{{"ProductionTest", true}}}).get(), {}, "the controller refused");
    ASSERT_TRUE(event);
    EXPECT_EQ(event->sText, "production test on, failed: the controller refused");
    EXPECT_EQ(event->sDetail, R"({"method":"Unit.SetProductionTest","params":{"ProductionTest":true},)"
                              R"("fault":"the controller refused"})");
}
