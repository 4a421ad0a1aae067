#include "Platform/Storage/CStorageManager.h"
#include "Platform/Storage/StorageVariables.h"
#include "tests/platform/TestFile.h"

#include <gtest/gtest.h>

#include <optional>

namespace
{

class StorageTest : public testing::Test
{
protected:
    StorageTest() { StorageVariables::clear(); }
    void TearDown() override { StorageVariables::clear(); }

    static int32_t* address(const std::string& sName)
    {
        void* pContent = nullptr;
        const EAFResult nResult = CStorageManager_GetVariableContentAddressByName(sName.c_str(), &pContent, 0);
        EXPECT_EQ(nResult, pContent != nullptr ? EAF_OK : EAF_FAILED);
        return static_cast<int32_t*>(pContent);
    }

    static std::optional<int32_t> value(const std::string& sName)
    {
        const int32_t* const pContent = address(sName);
        return pContent != nullptr ? std::optional<int32_t>(*pContent) : std::nullopt;
    }
};

TEST_F(StorageTest, FindsAVariableByItsName)
{
    StorageVariables::set("ChannelSpacing", 7);
    EXPECT_EQ(value("ChannelSpacing"), 7);
    EXPECT_EQ(value("channelspacing"), std::nullopt);
}

TEST_F(StorageTest, RefusesNullArguments)
{
    void* pContent = nullptr;
    EXPECT_EQ(CStorageManager_GetVariableContentAddressByName(nullptr, &pContent, 0), EAF_NULL_POINTER);
    EXPECT_EQ(CStorageManager_GetVariableContentAddressByName("A", nullptr, 0), EAF_NULL_POINTER);
}

TEST_F(StorageTest, KeepsAddressesWhateverIsSet)
{
    StorageVariables::set("M", 1);
    const int32_t* const pContent = address("M");
    for (int nName = 0; nName < 1000; ++nName) {
        StorageVariables::set("N" + std::to_string(nName), nName);
        StorageVariables::set("A" + std::to_string(nName), nName);
    }
    StorageVariables::set("M", -2);
    EXPECT_EQ(address("M"), pContent);
    EXPECT_EQ(*pContent, -2);
}

TEST_F(StorageTest, ForgetsWhatIsCleared)
{
    StorageVariables::set("M", 1);
    StorageVariables::clear();
    EXPECT_EQ(value("M"), std::nullopt);
}

TEST_F(StorageTest, LoadsTheVariablesOfAFile)
{
    const TestFile file("\xEF\xBB\xBF# of channel 0\r\n[variables]\r\n"
                        "ChannelSpacing = 7\r\n"
                        "\"channel.0.tx.rf.number.of.gain.blocks\" = 6\r\n"
                        "Lowest = -2147483648\r\nHighest = 0x7FFFFFFF\r\n");
    StorageVariables::set("ChannelSpacing", 1);
    StorageVariables::loadFile(file.path());
    EXPECT_EQ(value("ChannelSpacing"), 7);
    EXPECT_EQ(value("channel.0.tx.rf.number.of.gain.blocks"), 6);
    EXPECT_EQ(value("Lowest"), INT32_MIN);
    EXPECT_EQ(value("Highest"), INT32_MAX);
}

TEST_F(StorageTest, LoadsATableWithoutVariables)
{
    const TestFile file("[variables]\n");
    EXPECT_NO_THROW(StorageVariables::loadFile(file.path()));
}

TEST_F(StorageTest, TellsWhereAFileIsWrongAndSetsNothing)
{
    const struct
    {
        const char* pContent;
        const char* pError;
    } cases[] = {
        {"", ": has no table [variables]; put the line [variables] above the variables"},
        {"variables = 3\n", ": has no table [variables]; put the line [variables] above the variables"},
        {"Early = 1\n[variables]\n", ":1: unknown key 'Early'; keep only the table [variables]"},
        {"[variables]\nA = 1\n\n[Other]\n", ":4: unknown key 'Other'; keep only the table [variables]"},
        {"[variables]\nA = 1\nB = \"7\"\n",
         ":3: variable 'B' is not an integer; write a whole number without quotation marks"},
        {"[variables]\nA = 1\nB = 7.0\n",
         ":3: variable 'B' is not an integer; write a whole number without quotation marks"},
        {"[variables]\nA = 1\nB = true\n",
         ":3: variable 'B' is not an integer; write a whole number without quotation marks"},
        {"[variables]\nA = 1\nB = 2147483648\n",
         ":3: variable 'B' is 2147483648, which does not fit 32 bits; write a number from -2147483648 to 2147483647"},
        {"[variables]\nA = 1\nB = -2147483649\n",
         ":3: variable 'B' is -2147483649, which does not fit 32 bits; write a number from -2147483648 to 2147483647"},
        {"[variables]\nA = 1\nchannel.0.blocks = 6\n",
         ":3: variable 'channel' is a table; write a name that has dots in quotation marks"},
    };
    for (const auto& bad : cases) {
        const TestFile file(bad.pContent);
        EXPECT_EQ(errorOf([&file] { StorageVariables::loadFile(file.path()); }), file.path() + bad.pError);
        EXPECT_EQ(value("A"), std::nullopt) << bad.pContent;
    }
}

TEST_F(StorageTest, TellsWhereAFileIsNotToml)
{
    const struct
    {
        const char* pContent;
        const char* pPlace;
    } cases[] = {{"[variables]\nA = 1\nB 7\n", ":3: is not TOML ("},
                 {"[variables]\nA = 1\nA = 2\n", ":3: is not TOML ("},
                 {"[variables\n", ":1: is not TOML ("},
                 {"[variables]\nB = 99999999999999999999\n", ":2: is not TOML ("}};
    for (const auto& bad : cases) {
        const TestFile file(bad.pContent);
        const std::string sError = errorOf([&file] { StorageVariables::loadFile(file.path()); });
        EXPECT_EQ(sError.find(file.path() + bad.pPlace), 0U) << sError;
        EXPECT_NE(sError.find("; write lines such as \"ChannelSpacing\" = 7"), std::string::npos) << sError;
        EXPECT_EQ(sError.find('\n'), std::string::npos) << sError;
        EXPECT_EQ(value("A"), std::nullopt);
    }
}

TEST_F(StorageTest, TellsThatAFileCannotBeRead)
{
    EXPECT_EQ(errorOf([] { StorageVariables::loadFile("/tmp/no/such.toml"); }),
              "/tmp/no/such.toml: cannot be read (No such file or directory); give the path of a file that this user "
              "may read");
    EXPECT_EQ(errorOf([] { StorageVariables::loadFile("/tmp"); }),
              "/tmp: cannot be read (Is a directory); give the path of a file that this user may read");
}

} // namespace
