#include "Unit/Http/AccessPolicy.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace
{
using Headers = std::vector<std::pair<std::string, std::string>>;

HttpRequest request(const Headers& headers, const std::string& sMethod = "POST")
{
    HttpRequest head;
    head.sMethod = sMethod;
    head.sPath = "/RPC2";
    head.headers = headers;
    return head;
}

unsigned int statusOf(const AccessPolicy& policy, const HttpRequest& head)
{
    const auto refused = policy.refuseXmlPost(head);
    if (!refused.has_value()) {
        return 200;
    }
    EXPECT_GT(refused->sBody.size(), 1U);
    EXPECT_EQ(std::count(refused->sBody.begin(), refused->sBody.end(), '\n'), 1);
    EXPECT_EQ(refused->sBody.back(), '\n');
    return refused->nStatus;
}

struct HostCase
{
    const char* pListening;
    const char* pHost;
    unsigned int nStatus;
};

class HostHeader : public testing::TestWithParam<HostCase>
{
};

class OriginHeader : public testing::TestWithParam<HostCase>
{
};

struct TypeCase
{
    const char* pType;
    unsigned int nStatus;
};

class ContentType : public testing::TestWithParam<TypeCase>
{
};

struct TokenCase
{
    const char* pAuthorization;
    unsigned int nStatus;
};

class Token : public testing::TestWithParam<TokenCase>
{
};
} // namespace

TEST_P(HostHeader, HasToNameThisServer)
{
    const AccessPolicy policy(GetParam().pListening, 8080, "");
    EXPECT_EQ(statusOf(policy, request({{"Host", GetParam().pHost}, {"Content-Type", "text/xml"}})), GetParam().nStatus)
        << GetParam().pListening << " asked as " << GetParam().pHost;
}

INSTANTIATE_TEST_SUITE_P(
    AccessPolicy, HostHeader,
    testing::Values(
        // on the loopback
        HostCase{"127.0.0.1", "127.0.0.1:8080", 200}, HostCase{"127.0.0.1", "localhost:8080", 200},
        HostCase{"127.0.0.1", "LocalHost:8080", 200}, HostCase{"127.0.0.1", "localhost.:8080", 200},
        HostCase{"127.0.0.1", "[::1]:8080", 200}, HostCase{"127.0.0.1", "127.0.0.2:8080", 200},
        HostCase{"::1", "[::1]:8080", 200}, HostCase{"::1", "[0:0:0:0:0:0:0:1]:8080", 200},
        HostCase{"localhost", "127.0.0.1:8080", 200}, HostCase{"localhost", "localhost:8080", 200},
        HostCase{"127.0.0.1", " localhost:8080\t", 200}, HostCase{"127.0.0.1", "localhost:8081", 403},
        HostCase{"127.0.0.1", "localhost", 403}, HostCase{"127.0.0.1", "localhost:", 403},
        HostCase{"127.0.0.1", "localhost:08080x", 403}, HostCase{"127.0.0.1", "localhost:-8080", 403},
        HostCase{"127.0.0.1", "localhost:73616", 403}, HostCase{"127.0.0.1", "", 403},
        HostCase{"127.0.0.1", ":8080", 403}, HostCase{"127.0.0.1", ".:8080", 403},
        HostCase{"127.0.0.1", "localhost..:8080", 403}, HostCase{"127.0.0.1", "::1:8080", 403},
        HostCase{"127.0.0.1", "[::1:8080", 403}, HostCase{"127.0.0.1", "[::1]8080", 403},
        HostCase{"127.0.0.1", "[localhost]:8080", 403}, HostCase{"127.0.0.1", "[127.0.0.1]:8080", 403},
        HostCase{"127.0.0.1", "[]:8080", 403}, HostCase{"127.0.0.1", "[", 403}, HostCase{"127.0.0.1", "[:8080", 403},
        HostCase{"127.0.0.1", "me@localhost:8080", 403}, HostCase{"127.0.0.1", "me:secret@localhost:8080", 403},
        HostCase{"127.0.0.1", "evil.example:8080", 403}, HostCase{"127.0.0.1", "localhost.evil.example:8080", 403},
        HostCase{"127.0.0.1", "127.0.0.1.evil.example:8080", 403}, HostCase{"127.0.0.1", "192.168.1.5:8080", 403},
        HostCase{"127.0.0.1", "0.0.0.0:8080", 403}, HostCase{"127.0.0.1", "localhost:8080/RPC2", 403},
        // on one address
        HostCase{"192.168.1.5", "192.168.1.5:8080", 200}, HostCase{"192.168.1.5", "[::ffff:192.168.1.5]:8080", 200},
        HostCase{"192.168.1.5", "192.168.1.6:8080", 403}, HostCase{"192.168.1.5", "localhost:8080", 403},
        HostCase{"fe80::1%eth0", "[fe80::1]:8080", 200},
        // on all addresses: names could be anybody's
        HostCase{"0.0.0.0", "192.168.1.5:8080", 200}, HostCase{"0.0.0.0", "[fd00::5]:8080", 200},
        HostCase{"0.0.0.0", "localhost:8080", 200}, HostCase{"::", "192.168.1.5:8080", 200},
        HostCase{"::", "[fd00::5]:8080", 200}, HostCase{"::", "unit7:8080", 403},
        HostCase{"0.0.0.0", "evil.example:8080", 403}, HostCase{"0.0.0.0", "10.0.0.1:80", 403},
        // on a name
        HostCase{"unit7", "unit7:8080", 200}, HostCase{"Unit7", "UNIT7.:8080", 200},
        HostCase{"unit7", "192.168.1.5:8080", 200}, HostCase{"unit7", "unit8:8080", 403},
        HostCase{"unit7", "localhost:8080", 403}));

TEST(AccessPolicy, RefusesAMissingOrRepeatedHost)
{
    const AccessPolicy policy("127.0.0.1", 8080, "");
    EXPECT_EQ(statusOf(policy, request({{"Content-Type", "text/xml"}})), 403U);
    EXPECT_EQ(statusOf(policy,
                       request({{"Host", "localhost:8080"}, {"host", "localhost:8080"}, {"Content-Type", "text/xml"}})),
              403U);
}

TEST(AccessPolicy, TakesAHostWithoutPortOnTheUsualPort)
{
    const AccessPolicy policy("127.0.0.1", 80, "");
    EXPECT_EQ(statusOf(policy, request({{"Host", "localhost"}, {"Content-Type", "text/xml"}})), 200U);
    EXPECT_EQ(statusOf(policy, request({{"Host", "[::1]"}, {"Content-Type", "text/xml"}})), 200U);
}

// pHost is the origin here; the request goes to 127.0.0.1, or to 192.168.1.5 where that can be.
TEST_P(OriginHeader, HasToBeThisServersOwn)
{
    const std::string sListening = GetParam().pListening;
    const std::string sHost = sListening == "127.0.0.1" ? "127.0.0.1:8080" : "192.168.1.5:8080";
    const AccessPolicy policy(sListening, 8080, "");
    EXPECT_EQ(statusOf(policy, request({{"Host", sHost}, {"Origin", GetParam().pHost}, {"Content-Type", "text/xml"}})),
              GetParam().nStatus)
        << GetParam().pHost << " at " << sHost;
}

INSTANTIATE_TEST_SUITE_P(
    AccessPolicy, OriginHeader,
    testing::Values(
        HostCase{"127.0.0.1", "http://127.0.0.1:8080", 200}, HostCase{"127.0.0.1", "http://localhost:8080", 200},
        HostCase{"127.0.0.1", "HTTP://LOCALHOST:8080", 200}, HostCase{"127.0.0.1", "http://[::1]:8080", 200},
        HostCase{"127.0.0.1", "null", 403}, HostCase{"127.0.0.1", "", 403}, HostCase{"127.0.0.1", "http://", 403},
        HostCase{"127.0.0.1", "127.0.0.1:8080", 403}, HostCase{"127.0.0.1", "https://127.0.0.1:8080", 403},
        HostCase{"127.0.0.1", "http://127.0.0.1", 403}, HostCase{"127.0.0.1", "http://127.0.0.1:8081", 403},
        HostCase{"127.0.0.1", "http://evil.example", 403}, HostCase{"127.0.0.1", "http://evil.example:8080", 403},
        HostCase{"127.0.0.1", "http://127.0.0.1:8080 http://evil.example", 403},
        HostCase{"192.168.1.5", "http://192.168.1.5:8080", 200},
        HostCase{"192.168.1.5", "http://192.168.1.66:8080", 403}, HostCase{"0.0.0.0", "http://192.168.1.5:8080", 200},
        HostCase{"0.0.0.0", "http://192.168.1.66:8080", 403}, HostCase{"0.0.0.0", "http://evil.example:8080", 403},
        HostCase{"0.0.0.0", "http://localhost:8080", 403}));

TEST(AccessPolicy, RefusesARepeatedOrigin)
{
    const AccessPolicy policy("127.0.0.1", 8080, "");
    EXPECT_EQ(statusOf(policy, request({{"Host", "localhost:8080"},
                                        {"Origin", "http://localhost:8080"},
                                        {"Origin", "http://localhost:8080"},
                                        {"Content-Type", "text/xml"}})),
              403U);
}

TEST_P(Token, HasToBeRight)
{
    const AccessPolicy policy("127.0.0.1", 8080, "secret");
    EXPECT_EQ(statusOf(policy, request({{"Host", "localhost:8080"},
                                        {"Authorization", GetParam().pAuthorization},
                                        {"Content-Type", "text/xml"}})),
              GetParam().nStatus)
        << GetParam().pAuthorization;
}

INSTANTIATE_TEST_SUITE_P(AccessPolicy, Token,
                         testing::Values(TokenCase{"Bearer secret", 200}, TokenCase{"bearer secret", 200},
                                         TokenCase{"BEARER  secret", 200}, TokenCase{"Bearer Secret", 401},
                                         TokenCase{"Bearer secre", 401}, TokenCase{"Bearer secrets", 401},
                                         TokenCase{"Bearer secretsecret", 401}, TokenCase{"Bearer", 401},
                                         TokenCase{"Bearer ", 401}, TokenCase{"secret", 401}, TokenCase{"", 401},
                                         TokenCase{"Basic secret", 401}, TokenCase{"Bearersecret", 401}));

TEST(AccessPolicy, NamesTheSchemeWhenTheTokenIsMissingOrRepeated)
{
    const AccessPolicy policy("127.0.0.1", 8080, "secret");
    const Headers missing = {{"Host", "localhost:8080"}, {"Content-Type", "text/xml"}};
    Headers repeated = missing;
    repeated.insert(repeated.end(), 2, {"Authorization", "Bearer secret"});
    for (const Headers& headers : {missing, repeated}) {
        const auto refused = policy.refuseXmlPost(request(headers));
        ASSERT_TRUE(refused.has_value());
        EXPECT_EQ(refused->nStatus, 401U);
        EXPECT_EQ(refused->headers, (Headers{{"WWW-Authenticate", "Bearer"}}));
    }
}

TEST(AccessPolicy, LetsOnlyPostIn)
{
    const AccessPolicy policy("127.0.0.1", 8080, "");
    for (const char* pMethod : {"GET", "HEAD", "OPTIONS", "PUT", "post", ""}) {
        const auto refused =
            policy.refuseXmlPost(request({{"Host", "localhost:8080"}, {"Content-Type", "text/xml"}}, pMethod));
        ASSERT_TRUE(refused.has_value()) << pMethod;
        EXPECT_EQ(refused->nStatus, 405U) << pMethod;
        EXPECT_EQ(refused->headers, (Headers{{"Allow", "POST"}})) << pMethod;
    }
}

TEST_P(ContentType, HasToBeXmlInUtf8)
{
    const AccessPolicy policy("127.0.0.1", 8080, "");
    EXPECT_EQ(statusOf(policy, request({{"Host", "localhost:8080"}, {"Content-Type", GetParam().pType}})),
              GetParam().nStatus)
        << GetParam().pType;
}

INSTANTIATE_TEST_SUITE_P(
    AccessPolicy, ContentType,
    testing::Values(TypeCase{"text/xml", 200}, TypeCase{"application/xml", 200}, TypeCase{"Text/XML", 200},
                    TypeCase{"text/xml; charset=utf-8", 200}, TypeCase{"text/xml;charset=\"UTF-8\"", 200},
                    TypeCase{"text/xml ; Charset = us-ascii", 200}, TypeCase{"text/xml; version=1", 200},
                    TypeCase{"text/xml;", 200}, TypeCase{"text/xml; a=\"; charset=latin1\"; charset=utf-8", 200},
                    TypeCase{"text/xml; charset=iso-8859-1", 415}, TypeCase{"text/xml; charset=utf-16", 415},
                    TypeCase{"text/xml; charset=utf-8; charset=utf-16", 415}, TypeCase{"text/xml; charset", 415},
                    TypeCase{"text/xml; charset=", 415}, TypeCase{"text/xml; charset=\"utf-8", 415},
                    TypeCase{"text/xml; a=\"\\\"; charset=utf-16", 200}, TypeCase{"text/plain", 415},
                    TypeCase{"application/x-www-form-urlencoded", 415}, TypeCase{"text/xmlx", 415},
                    TypeCase{"text/xml, text/plain", 415}, TypeCase{"application/json", 415}, TypeCase{"", 415},
                    TypeCase{"; text/xml", 415}));

TEST(AccessPolicy, RefusesAMissingOrRepeatedContentType)
{
    const AccessPolicy policy("127.0.0.1", 8080, "");
    EXPECT_EQ(statusOf(policy, request({{"Host", "localhost:8080"}})), 415U);
    EXPECT_EQ(
        statusOf(policy,
                 request({{"Host", "localhost:8080"}, {"Content-Type", "text/xml"}, {"Content-Type", "text/plain"}})),
        415U);
}

TEST(AccessPolicy, KnowsTheLoopback)
{
    for (const char* pAddress : {"127.0.0.1", "127.1.2.3", "::1", "localhost", "LOCALHOST", "::ffff:127.0.0.1"}) {
        EXPECT_TRUE(isLoopback(pAddress)) << pAddress;
    }
    for (const char* pAddress : {"0.0.0.0", "::", "128.0.0.1", "192.168.1.5", "unit7", "localhost.evil.example", ""}) {
        EXPECT_FALSE(isLoopback(pAddress)) << pAddress;
    }
}

TEST(AccessPolicyOfReading, TakesGetAndHeadOnly)
{
    const AccessPolicy policy("127.0.0.1", 8080, "");
    const Headers headers = {{"Host", "localhost:8080"}};
    for (const EHttpContent eContent : {EHttpContent::Public, EHttpContent::Unit}) {
        EXPECT_FALSE(policy.refuseGet(request(headers, "GET"), eContent).has_value());
        EXPECT_FALSE(policy.refuseGet(request(headers, "HEAD"), eContent).has_value());
        for (const char* pMethod : {"POST", "PUT", "get", "OPTIONS"}) {
            const auto refused = policy.refuseGet(request(headers, pMethod), eContent);
            ASSERT_TRUE(refused.has_value()) << pMethod;
            EXPECT_EQ(refused->nStatus, 405U) << pMethod;
            EXPECT_EQ(refused->headers.front().second, "GET, HEAD");
        }
    }
}

TEST(AccessPolicyOfReading, RefusesStrangersWhateverTheyAskFor)
{
    const AccessPolicy policy("127.0.0.1", 8080, "");
    for (const EHttpContent eContent : {EHttpContent::Public, EHttpContent::Unit}) {
        EXPECT_EQ(policy.refuseGet(request({}, "GET"), eContent)->nStatus, 403U);
        EXPECT_EQ(policy.refuseGet(request({{"Host", "evil.example:8080"}}, "GET"), eContent)->nStatus, 403U);
        EXPECT_EQ(policy
                      .refuseGet(request({{"Host", "localhost:8080"}, {"Origin", "http://evil.example:8080"}}, "GET"),
                                 eContent)
                      ->nStatus,
                  403U);
    }
}

TEST(AccessPolicyOfReading, RefusesWhatAForeignPageLoadsWithoutSayingWhoseItIs)
{
    const AccessPolicy policy("127.0.0.1", 8080, "");
    for (const char* const pSite : {"cross-site", "same-site", "", "same-origin, none"}) {
        const Headers headers = {{"Host", "localhost:8080"}, {"Sec-Fetch-Site", pSite}};
        const auto refused = policy.refuseGet(request(headers, "GET"), EHttpContent::Unit);
        ASSERT_TRUE(refused.has_value()) << pSite;
        EXPECT_EQ(refused->nStatus, 403U) << pSite;
        EXPECT_FALSE(policy.refuseGet(request(headers, "GET"), EHttpContent::Public).has_value()) << pSite;
    }
    for (const char* const pSite : {"same-origin", "none"}) {
        const Headers headers = {{"Host", "localhost:8080"}, {"Sec-Fetch-Site", pSite}};
        EXPECT_FALSE(policy.refuseGet(request(headers, "GET"), EHttpContent::Unit).has_value()) << pSite;
    }
    const Headers twice = {{"Host", "localhost:8080"}, {"Sec-Fetch-Site", "none"}, {"sec-fetch-site", "none"}};
    EXPECT_EQ(policy.refuseGet(request(twice, "GET"), EHttpContent::Unit)->nStatus, 403U);
}

TEST(AccessPolicyOfReading, AsksForTheTokenOnlyWhereTheUnitIsRead)
{
    const AccessPolicy policy("127.0.0.1", 8080, "0123456789abcdef");
    Headers headers = {{"Host", "localhost:8080"}};
    EXPECT_FALSE(policy.refuseGet(request(headers, "GET"), EHttpContent::Public).has_value());
    EXPECT_EQ(policy.refuseGet(request(headers, "GET"), EHttpContent::Unit)->nStatus, 401U);
    headers.emplace_back("Authorization", "Bearer 0123456789abcdef");
    EXPECT_FALSE(policy.refuseGet(request(headers, "GET"), EHttpContent::Unit).has_value());
}
