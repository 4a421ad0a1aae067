#include "Unit/TestServer/UnitMethods.h"

#include "Unit/Process/RegulationLoop.h"
#include "Unit/TestServer/XmlRpcService.h"
#include "Unit/XmlRpc/XmlRpcText.h"
#include "tests/unit/FakeController.h"

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <ostream>
#include <thread>

namespace
{
std::string member(const std::string& sName, const std::string& sValue)
{
    return "<member><name>" + sName + "</name><value>" + sValue + "</value></member>";
}

/** A channel 7 that regulates with a fake controller, and the methods that reach it. */
class UnitMethods : public testing::Test
{
protected:
    UnitMethods() : m_channel(configuration())
    {
        m_channel.connect();
        m_pLoop = std::make_unique<RegulationLoop>(RunSettings{}, std::vector<RadioChannel*>{&m_channel}, nullptr,
                                                   std::vector<FaultConfiguration>{}, m_queue);
        m_pService = std::make_unique<XmlRpcService>(unitMethods(*m_pLoop));
        m_thread = std::jthread([this] { m_pLoop->run(); });
    }
    ~UnitMethods() override { m_pLoop->requestStop(); }
    UnitMethods(const UnitMethods&) = delete;
    UnitMethods& operator=(const UnitMethods&) = delete;

    static ChannelConfiguration configuration()
    {
        ChannelConfiguration configuration;
        configuration.nNumber = 7;
        configuration.requestedPowerDbm = 3.5;
        return configuration;
    }

    /** @return the text of the response, without its frame */
    std::string call(const std::string& sMethod, const std::string& sMembers)
    {
        const std::string sAnswer = m_pService->answer(
            fmt::format("<methodCall><methodName>{}</methodName><params><param><value><struct>{}</struct></value>"
                        "</param></params></methodCall>",
                        sMethod, sMembers));
        const XmlRpcRequest response = parseXmlRpc(sAnswer, EXmlRpcMessage::Response);
        XMLRPC_VALUE value = XMLRPC_RequestGetData(response.get());
        return XMLRPC_ValueIsFault(value) != 0
                   ? fmt::format("{} {}", XMLRPC_GetValueFaultCode(value), XMLRPC_GetValueFaultString(value))
                   : sAnswer;
    }

    /** Calls for channel 7. */
    std::string callSeven(const std::string& sMethod, const std::string& sMembers)
    {
        return call(sMethod, CHANNEL_SEVEN + sMembers);
    }

    static void expectOk(const std::string& sAnswer)
    {
        EXPECT_THAT(sAnswer, testing::HasSubstr("<name>StandardResponse</name><value><string>OK</string></value>"));
    }

    void betweenSteps(const std::function<void()>& function) { m_pLoop->commands().run(function); }

    const std::string CHANNEL_SEVEN = member("RadioChannelID", "<int>7</int>");
    FakeController m_controller{"IOutputPowerController_7"};
    RadioChannel m_channel;
    SampleQueue m_queue{100'000};
    std::unique_ptr<RegulationLoop> m_pLoop;
    std::unique_ptr<XmlRpcService> m_pService;
    std::jthread m_thread;
};

struct Refusal
{
    const char* pWhat;
    const char* pMethod;
    std::string sMembers;
    const char* pFault;
};

void PrintTo(const Refusal& refusal, std::ostream* pStream)
{
    *pStream << refusal.pWhat;
}

class UnitMethodRefusal : public UnitMethods, public testing::WithParamInterface<Refusal>
{
};
} // namespace

TEST_F(UnitMethods, SwitchTheTransmitter)
{
    expectOk(callSeven("Unit.SetTxPower", member("State", "on") + member("PowerMode", "<int>0</int>")));
    while (callSeven("Unit.Status", "").find("<string>TX_ON</string>") == std::string::npos) {
        std::this_thread::yield();
    }
    EXPECT_THAT(callSeven("Unit.Status", ""), testing::HasSubstr("<name>TxPower</name><value><string>on</string>"));
    expectOk(callSeven("Unit.SetTxPower", member("State", "off")));
    betweenSteps([this] {
        EXPECT_EQ(m_controller.requests.back(), std::make_pair(eREQUESTED_TX_POWER_OFF, eTX_POWER_MODE_STEP_LIMITED));
    });
}

TEST_F(UnitMethods, SetAndReleaseTheInputs)
{
    expectOk(callSeven("Unit.SetRequestedPower", member("PowerDbm", "<double>12.25</double>")));
    expectOk(callSeven("Unit.SetFrequency", member("FrequencyMhz", "<int>5123</int>"))); // an int will do
    expectOk(call("Unit.SetTemperature", member("TemperatureC", "<double>-3.5</double>")));
    betweenSteps([this] {
        EXPECT_EQ(m_channel.requestedPowerDbm().next(std::nullopt), 12.25);
        EXPECT_EQ(m_channel.frequencyMhz().next(std::nullopt), 5123.0);
        EXPECT_EQ(m_pLoop->temperatureDegrees().next(std::nullopt), -3.5);
    });
    expectOk(callSeven("Unit.SetRequestedPower", member("Source", "unit-file")));
    expectOk(callSeven("Unit.SetFrequency", member("Source", "unit-file")));
    expectOk(call("Unit.SetTemperature", member("Source", "unit-file")));
    betweenSteps([this] {
        EXPECT_EQ(m_channel.requestedPowerDbm().next(std::nullopt), 3.5);
        EXPECT_EQ(m_channel.frequencyMhz().next(std::nullopt), 5000.0);
        EXPECT_EQ(m_pLoop->temperatureDegrees().next(std::nullopt), 25.0);
    });
}

TEST_F(UnitMethods, PassSettingsToTheController)
{
    expectOk(callSeven("Unit.SetLimits",
                       member("TxPminDbm", "<double>-4</double>") + member("TxPmaxDbm", "<double>20.5</double>")));
    expectOk(callSeven("Unit.SetProductionTest",
                       member("ProductionTest", "<boolean>1</boolean>") + member("LoopMode", "<int>2</int>")));
    expectOk(callSeven("Unit.SetPowerMode", member("PowerMode", "<int>1</int>")));
    expectOk(call("Unit.SetInterval", member("IntervalMs", "<int>3</int>")));
    betweenSteps([this] {
        EXPECT_EQ(m_controller.limits, std::make_pair(-400L, 2050L));
        EXPECT_EQ(m_controller.productionTest, std::make_pair(1U, 2));
        EXPECT_EQ(m_controller.requests.back().second, eTX_POWER_MODE_FREE);
        EXPECT_EQ(m_controller.nInterval, 3);
    });
}

TEST_F(UnitMethods, SetOneGainOrAllOfAState)
{
    expectOk(callSeven("Unit.SetGain", member("State", "on") + member("GainPercent", "<int>30</int>")));
    expectOk(callSeven("Unit.SetGain", member("State", "ramping") + member("GainPercent", "<int>15</int>") +
                                           member("DetectorState", "<int>2</int>")));
    betweenSteps([this] {
        EXPECT_THAT(m_channel.gains(eOPC_TX_ON), testing::ElementsAre(30, 30, 30));
        EXPECT_THAT(m_channel.gains(eOPC_TX_ON_RAMPING), testing::ElementsAre(0, 0, 15));
    });
    EXPECT_THAT(callSeven("Unit.Gains", ""),
                testing::HasSubstr("<name>On</name><value><array><data><value><int>30</int></value>"));
}

TEST_F(UnitMethods, TellAndSetTraceLevels)
{
    expectOk(call("Unit.SetTraceLevel", member("Group", "TI") + member("Level", "<int>6</int>")));
    EXPECT_THAT(call("Unit.TraceLevels", ""),
                testing::HasSubstr("<name>Group</name><value><string>TI</string></value></member><member>"
                                   "<name>Level</name><value><int>6</int>"));
    expectOk(call("Unit.SetTraceLevel", member("Level", "<int>1</int>")));
    EXPECT_THAT(call("Unit.TraceLevels", ""), testing::Not(testing::HasSubstr("<int>6</int>")));
}

TEST_F(UnitMethods, LeaveOutPowersThatAreNotKnown)
{
    const std::string sStatus = callSeven("Unit.Status", "");
    EXPECT_THAT(sStatus, testing::Not(testing::HasSubstr("PredictedPowerDbm"))); // nothing was predicted
    EXPECT_THAT(sStatus, testing::HasSubstr("<name>MeasuredPowerDbm</name><value><double>1.040000</double>"));
    EXPECT_THAT(sStatus, testing::Not(testing::HasSubstr("PowerErrorDb"))); // the transmitter is off
    EXPECT_THAT(sStatus, testing::Not(testing::HasSubstr("RefusedCalls"))); // the handler is not a simulated one
}

TEST_F(UnitMethods, AreRefusedWhenTheUnitStops)
{
    m_pLoop->requestStop();
    while (!m_pLoop->isFinished()) {
        std::this_thread::yield();
    }
    EXPECT_EQ(callSeven("Unit.Status", ""), "4 eTI_E_FAILED, Unit.Status the unit is stopping");
}

TEST_F(UnitMethods, TellWhatTheControllerRefuses)
{
    betweenSteps([this] { m_controller.nRequestResult = EAF_NULL_POINTER; });
    EXPECT_EQ(callSeven("Unit.SetPowerMode", member("PowerMode", "<int>1</int>")),
              "4 eTI_E_FAILED, Unit.SetPowerMode the controller of radio channel 7 refused with 0x8002");
}

TEST_P(UnitMethodRefusal, NamesTheMemberAndWhatItCanBe)
{
    EXPECT_EQ(call(GetParam().pMethod, GetParam().sMembers), GetParam().pFault);
}

namespace
{
const std::string SEVEN = member("RadioChannelID", "<int>7</int>");
const std::string BAD = "<int>99999</int>";

const Refusal REFUSALS[] = {
    {"UnknownChannel", "Unit.Gains", "", "4 eTI_E_FAILED, Unit.Gains unknown radio channel 0; RadioChannelID can be 7"},
    {"NegativeChannel", "Unit.Status", member("RadioChannelID", "<int>-7</int>"),
     "4 eTI_E_FAILED, Unit.Status unknown radio channel -7; RadioChannelID can be 7"},
    {"ChannelOfAnotherType", "Unit.Status", member("RadioChannelID", "seven"),
     "-32602 Unit.Status: RadioChannelID must be an int"},
    {"UnknownMember", "Unit.SetInterval", member("IntervalS", "<int>1</int>"),
     "-32602 Unit.SetInterval: unknown member \"IntervalS\"; known members: IntervalMs"},
    {"NoState", "Unit.SetTxPower", SEVEN,
     "2 eTI_E_REQUIRED_INPUT_MISSING, Unit.SetTxPower failed due to missing tag State"},
    {"OtherState", "Unit.SetTxPower", SEVEN + member("State", "up"),
     "4 eTI_E_FAILED, Unit.SetTxPower State is \"up\"; it can be \"on\" or \"off\""},
    {"PowerTooHigh", "Unit.SetRequestedPower", SEVEN + member("PowerDbm", "<double>100.01</double>"),
     "4 eTI_E_FAILED, Unit.SetRequestedPower PowerDbm is 100.01; it can be -98 to 100"},
    {"PowerAndSource", "Unit.SetRequestedPower",
     SEVEN + member("PowerDbm", "<double>1</double>") + member("Source", "unit-file"),
     "4 eTI_E_FAILED, Unit.SetRequestedPower PowerDbm and Source are both given; give one of them"},
    {"OtherSource", "Unit.SetFrequency", SEVEN + member("Source", "profile"),
     "4 eTI_E_FAILED, Unit.SetFrequency Source is \"profile\"; it can be \"unit-file\""},
    {"NoFrequency", "Unit.SetFrequency", SEVEN,
     "2 eTI_E_REQUIRED_INPUT_MISSING, Unit.SetFrequency failed due to missing tag FrequencyMhz"},
    {"TooCold", "Unit.SetTemperature", member("TemperatureC", "<double>-100.5</double>"),
     "4 eTI_E_FAILED, Unit.SetTemperature TemperatureC is -100.5; it can be -100 to 200"},
    {"CrossedLimits", "Unit.SetLimits",
     SEVEN + member("TxPminDbm", "<double>2</double>") + member("TxPmaxDbm", "<double>1</double>"),
     "4 eTI_E_FAILED, Unit.SetLimits TxPminDbm is 2, above TxPmaxDbm, which is 1"},
    {"GainOfNoState", "Unit.SetGain", SEVEN + member("State", "off") + member("GainPercent", "<int>1</int>"),
     "4 eTI_E_FAILED, Unit.SetGain State is \"off\"; it can be \"ramping\" or \"on\""},
    {"GainTooHigh", "Unit.SetGain", SEVEN + member("State", "on") + member("GainPercent", BAD),
     "4 eTI_E_FAILED, Unit.SetGain GainPercent is 99999; it can be 0 to 1000"},
    {"NoSuchDetectorState", "Unit.SetGain",
     SEVEN + member("State", "on") + member("GainPercent", "<int>1</int>") + member("DetectorState", "<int>3</int>"),
     "4 eTI_E_FAILED, Unit.SetGain DetectorState is 3; it can be 0 to 2"},
    {"NoSuchLoopMode", "Unit.SetProductionTest",
     SEVEN + member("ProductionTest", "<boolean>0</boolean>") + member("LoopMode", "<int>3</int>"),
     "4 eTI_E_FAILED, Unit.SetProductionTest LoopMode is 3; it can be 0 to 2"},
    {"IntervalTooLong", "Unit.SetInterval", member("IntervalMs", "<int>25</int>"),
     "4 eTI_E_FAILED, Unit.SetInterval IntervalMs is 25; it can be 1 to 24"},
    {"LevelTooHigh", "Unit.SetTraceLevel", member("Level", "<int>10</int>"),
     "4 eTI_E_FAILED, Unit.SetTraceLevel Level is 10; it can be 0 to 9"},
    {"NoSuchKind", "Unit.SetFault", SEVEN + member("Operation", "getPmeasured") + member("Kind", "odd"),
     "4 eTI_E_FAILED, Unit.SetFault Kind is \"odd\"; it can be none, fail, fail-times, stuck, wrong-value, slow, "
     "intermittent"},
    {"NoSuchProbability", "Unit.SetFault",
     SEVEN + member("Operation", "getPmeasured") + member("Kind", "intermittent") +
         member("Probability", "<double>1.5</double>"),
     "4 eTI_E_FAILED, Unit.SetFault Probability is 1.5; it can be 0 to 1"},
    {"NoSimulatedHandler", "Unit.SetFault", SEVEN + member("Operation", "getPmeasured") + member("Kind", "fail"),
     "4 eTI_E_FAILED, Unit.SetFault the output power handler of radio channel 7 is not a simulated one"},
    {"NoTransientLog", "TI.ManageOPCTransientLog", SEVEN + member("RequestOption", "Read"),
     "4 eTI_E_FAILED, TI.ManageOPCTransientLog no module has published TIManageOPCTransientLogCh7"},
    {"NoLog", "TI.ManageLogs", SEVEN + member("RequestOption", "Read"),
     "4 eTI_E_FAILED, TI.ManageLogs no module has published Channel.7.TxOutputPowerControlLog"},
    {"OtherPublishedName", "TI.ManageLogs",
     member("LogName", "IOutputPowerController_7") + member("RequestOption", "Read"),
     "4 eTI_E_FAILED, TI.ManageLogs unknown log IOutputPowerController_7; LogName can be "
     "Channel.7.TxOutputPowerControlLog"},
    {"NameAndChannel", "TI.ManageLogs", SEVEN + member("LogName", "Channel.7.TxOutputPowerControlLog"),
     "4 eTI_E_FAILED, TI.ManageLogs LogName and RadioChannelID are both given; give one of them"},
};
} // namespace

INSTANTIATE_TEST_SUITE_P(Inputs, UnitMethodRefusal, testing::ValuesIn(REFUSALS),
                         [](const auto& information) { return std::string(information.param.pWhat); });
