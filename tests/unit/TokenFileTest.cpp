#include "Unit/Token/TokenFile.h"

#include "Platform/ConfigurationError.h"
#include "tests/unit/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace
{
std::string errorOf(const std::string& sContent)
{
    const TemporaryFolder folder;
    const std::string sFile = folder.write("token", sContent);
    try {
        return "took " + readTokenFile(sFile);
    }
    catch (const ConfigurationError& error) {
        EXPECT_THAT(error.what(), testing::StartsWith(sFile));
        return error.what();
    }
}
} // namespace

TEST(TokenFile, HoldsTheTokenInItsFirstLine)
{
    const std::string sLongest(4096, 'x');
    EXPECT_EQ(errorOf("0123456789abcdef"), "took 0123456789abcdef");
    EXPECT_EQ(errorOf("0123456789abcdef\nsomething else\n"), "took 0123456789abcdef");
    EXPECT_EQ(errorOf("0123456789abcdef\r\n"), "took 0123456789abcdef");
    EXPECT_EQ(errorOf(sLongest), "took " + sLongest);
    EXPECT_EQ(errorOf(sLongest + "\n" + sLongest), "took " + sLongest);
}

TEST(TokenFile, IsRefusedWithoutOne)
{
    for (const std::string& sContent :
         {std::string(), std::string("\n0123456789abcdef\n"), std::string("0123456789abcde"), std::string(4097, 'x'),
          std::string("0123456789 abcdef"), std::string("0123456789abcdef "), std::string("0123456789\0abcdef", 17),
          std::string("0123456789abcd\xc3\xa9"), std::string(100'000, 'x')})
    {
        EXPECT_THAT(errorOf(sContent), testing::HasSubstr("holds no token")) << sContent.substr(0, 30);
    }
    EXPECT_THROW(readTokenFile("/nowhere/token"), ConfigurationError);
    EXPECT_THROW(readTokenFile("/"), ConfigurationError);
}

TEST(TokenFile, IsWarnedAboutWhenEveryoneMayReadOrChangeIt)
{
    const TemporaryFolder folder;
    const std::string sFile = folder.write("token", "0123456789abcdef");
    for (const auto& [nMode, bWarned] :
         {std::pair<mode_t, bool>{0600, false}, {0640, false}, {0660, false}, {0644, true}, {0602, true}, {0666, true}})
    {
        ASSERT_EQ(chmod(sFile.c_str(), nMode), 0);
        EXPECT_EQ(!tokenFileWarning(sFile).empty(), bWarned) << nMode;
    }
    EXPECT_EQ(tokenFileWarning("/nowhere/token"), "");
}
