#include "Unit/TestServer/XmlRpcService.h"
#include "Unit/XmlRpc/XmlRpcText.h"
#include "tests/unit/xmlrpc/Messages.h"
#include "tests/unit/xmlrpc/TestMethods.h"

#include <gtest/gtest.h>
#include <malloc.h>

#include <array>
#include <random>
#include <string_view>
#include <vector>

namespace
{
constexpr int BODIES = 20000;

/** Spoils calls in ways that depend on the seed only. */
class Mutator
{
public:
    explicit Mutator(unsigned nSeed) : m_random(nSeed) {}

    std::string next()
    {
        std::string sBody = anySeed();
        for (std::size_t nTimes = below(3) + 1; nTimes > 0; --nTimes) {
            mutate(sBody);
        }
        return sBody;
    }

private:
    std::size_t below(std::size_t nEnd) { return nEnd == 0 ? 0 : m_random() % nEnd; }

    const std::string& anySeed() { return SEEDS[below(SEEDS.size())]; }

    void mutate(std::string& sBody)
    {
        const std::size_t nAt = below(sBody.size());
        const std::string& sOther = anySeed();
        switch (below(7)) {
        case 0:
            sBody.resize(nAt);
            break;
        case 1:
            flip(sBody);
            break;
        case 2:
            sBody.insert(nAt, sOther, below(sOther.size()), below(80));
            break;
        case 3:
            sBody.erase(nAt, below(30));
            break;
        case 4:
            sBody.insert(nAt, WORDS[below(WORDS.size())]);
            break;
        case 5:
            nest(sBody);
            break;
        default:
            exchangeDigits(sBody);
            break;
        }
    }

    void flip(std::string& sBody)
    {
        if (!sBody.empty()) {
            char& c = sBody[below(sBody.size())];
            c = static_cast<char>(static_cast<unsigned char>(c) ^ (1U << below(8)));
        }
    }

    void nest(std::string& sBody)
    {
        const int nLevels = static_cast<int>(below(30));
        const std::size_t nAt = sBody.find("<value>");
        const std::size_t nEnd = sBody.rfind("</value>");
        if (nAt != std::string::npos && nEnd != std::string::npos && nAt < nEnd) {
            sBody.insert(nEnd, repeated("</value></data></array>", nLevels));
            sBody.insert(nAt + 7, repeated("<array><data><value>", nLevels));
        }
    }

    /** Keeps the form, so that most of these become calls. */
    void exchangeDigits(std::string& sBody)
    {
        for (char& c : sBody) {
            if (c >= '0' && c <= '9' && below(2) == 0) {
                c = "0123456789-.eT"[below(14)];
            }
        }
    }

    static std::string inner(const std::string& sMethod)
    {
        return "<value><struct><member><name>methodName</name><value>" + sMethod +
               "</value></member><member><name>params</name><value><array><data><value><struct><member><name>Count"
               "</name><value><int>3</int></value></member></struct></value></data></array></value></member></struct>"
               "</value>";
    }

    static std::string call(const std::string& sMethod, const std::string& sContent)
    {
        return "<?xml version=\"1.0\"?><methodCall><methodName>" + sMethod + "</methodName><params><param><value>" +
               sContent + "</value></param></params></methodCall>";
    }

    static std::string member(const std::string& sName, const std::string& sContent)
    {
        return "<member><name>" + sName + "</name><value>" + sContent + "</value></member>";
    }

    const std::vector<std::string> SEEDS = {
        call("Test.Echo", "<struct>" + member("Value", "a text \xC3\xA9 &lt; b") + "</struct>"),
        call("Test.Add", "<struct>" + member("A", "<int>12</int>") + member("B", "<i4>-7</i4>") + "</struct>"),
        call("Test.Samples", "<struct>" + member("Count", "<int>2</int>") + "</struct>"),
        call("Test.Handler", "<struct>" + member("RequestOption", "<string>Read</string>") + "</struct>"),
        call("Test.Parameters", "<array><data><value><double>1.5e3</double></value><value><boolean>1</boolean></value>"
                                "<value><dateTime.iso8601>19980717T14:08:55</dateTime.iso8601></value>"
                                "<value><base64>aGVsbG8=</base64></value></data></array>"),
        call("system.methodHelp", "Test.Add"),
        call("system.multicall",
             "<array><data>" + inner("Test.Samples") + inner("Test.Throw") + inner("Test.Echo") + "</data></array>"),
        callOf("system.listMethods"),
        callOf("Test.Nothing"),
    };
    static constexpr std::array<std::string_view, 14> WORDS = {
        "<value>",
        "</value>",
        "<struct>",
        "<nil/>",
        "<!DOCTYPE x [<!ENTITY e \"e\">]>",
        "&e;",
        "<![CDATA[",
        "]]>",
        "<?x y?>",
        "<!--",
        "&#0;",
        "\xC3",
        "<int>1</int>",
        "<member><name>Count</name><value><int>3</int></value></member>"};
    std::mt19937 m_random;
};

std::size_t bytesInUse()
{
    return mallinfo2().uordblks;
}
} // namespace

TEST(XmlRpcMutation, EveryBodyGetsAWholeResponse)
{
    int nRefusals = 0;
    int nResults = 0;
    const XmlRpcService service(testMethods());
    const auto onRefusal = [&](const std::string& sWhy) {
        ++nRefusals;
        EXPECT_EQ(sWhy.find('\n'), std::string::npos) << sWhy;
    };
    Mutator mutator(20240229);
    for (int i = 0; i < BODIES; ++i) {
        const std::string sBody = mutator.next();
        const std::string sAnswer = service.answer(sBody, onRefusal);
        const auto refusal = checkXmlRpc(sAnswer, EXmlRpcMessage::Response);
        ASSERT_FALSE(refusal) << refusal->sText << "\n" << sBody << "\n" << sAnswer;
        nResults += sAnswer.find("<fault>") == std::string::npos ? 1 : 0;
    }
    // Bodies of each sort, or the test would say little.
    EXPECT_GT(nRefusals, BODIES / 4);
    EXPECT_GT(nResults, BODIES / 40);
    EXPECT_GT(BODIES - nRefusals - nResults, BODIES / 40);
}

TEST(XmlRpcMutation, KeepsNothingOfBodies)
{
    const XmlRpcService service(testMethods());
    const auto serve = [&] {
        Mutator mutator(7);
        for (int i = 0; i < BODIES / 20; ++i) {
            (void)service.answer(mutator.next());
        }
    };
    serve();
    const std::size_t nBefore = bytesInUse();
    for (int i = 0; i < 20; ++i) {
        serve();
    }
    // The least that could be kept of a body, an empty value, would come to a megabyte.
    EXPECT_LT(bytesInUse(), nBefore + std::size_t{128} * 1024);
}
