// Files that no person would give: what has no end, what never begins, and what is nested beyond measure.
#include "Platform/FileText.h"
#include "Platform/Storage/StorageVariables.h"
#include "Platform/TomlKeys.h"
#include "tests/platform/TestFile.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{
std::string repeated(const std::string& sText, int nTimes)
{
    std::string sRepeated;
    for (int nTime = 0; nTime < nTimes; ++nTime) {
        sRepeated += sText;
    }
    return sRepeated;
}

std::string keyError(const std::string& sText)
{
    return errorOf([&sText] { refuseLongKeys(sText, "x.toml"); });
}
} // namespace

TEST(HostileFile, OfADeviceIsRefused)
{
    EXPECT_EQ(errorOf([] { (void)readFileText("/dev/zero"); }),
              "/dev/zero: is a pipe or a device; give the path of a plain file");
}

TEST(HostileFile, OfAPipeIsRefusedAndNotWaitedFor)
{
    const std::string sPath = TestFile("").path();
    ASSERT_EQ(mkfifo(sPath.c_str(), 0600), 0);
    EXPECT_EQ(errorOf([&sPath] { (void)readFileBytes(sPath); }),
              sPath + ": is a pipe or a device; give the path of a plain file");
    EXPECT_EQ(unlink(sPath.c_str()), 0);
}

TEST(HostileFile, OfMoreThanAGibibyteIsRefused)
{
    const TestFile file("");
    ASSERT_EQ(truncate(file.path().c_str(), (off_t{1} << 30) + 1), 0); // takes no room on the disk
    EXPECT_EQ(errorOf([&file] { (void)readFileBytes(file.path()); }),
              file.path() + ": has more than 1 GiB; give a smaller file");
}

TEST(HostileFile, WithAKeyOfVeryManyPartsDoesNotEndTheStack)
{
    for (const char* const pPart : {"a.", "\"a\" . ", "'a'."}) {
        for (const char* const pBefore : {"", "[", "b = { "}) {
            const TestFile file(std::string("[variables]\n") + pBefore + repeated(pPart, 300'000) + "a");
            EXPECT_EQ(errorOf([&file] { StorageVariables::loadFile(file.path()); }),
                      file.path() + ":2: a key has more than 32 parts; write a name that has dots in quotation marks")
                << pBefore << pPart;
        }
    }
}

TEST(LongKey, IsRefusedFromTheThirtyThirdPartOn)
{
    EXPECT_EQ(keyError(repeated("a.", 31) + "a = 1"), "");
    EXPECT_NE(keyError(repeated("a.", 32) + "a = 1"), "");
}

TEST(LongKey, IsNoneOfWhatElseHasDots)
{
    for (const std::string& sText :
         {"# " + repeated("a.", 99), "a = \"" + repeated("b.", 99) + "\"", "a = '" + repeated("b.", 99) + "'",
          "a = \"\\\"" + repeated("b.", 99) + "\"", "a = [" + repeated("1.5, ", 99) + "]", repeated("a.b = 1\n", 99),
          "a = \"\"\"\n" + repeated(".", 99) + "\n" + repeated("A word. ", 99) + "\n\"\"\""})
    {
        EXPECT_EQ(keyError(sText), "") << sText;
    }
}

TEST(QuotedText, HasNoControlCharactersOfEitherKind)
{
    EXPECT_EQ(quotedForMessage("a\x1b[2Jb"), "'a?[2Jb'");
    EXPECT_EQ(quotedForMessage("a\xc2\x9b"
                               "2Jb\xc2\xa0"),
              "'a?2Jb\xc2\xa0'");
}

TEST(StorageFile, ThatIsNotTomlIsToldWithoutItsControlCharacters)
{
    const TestFile file("[variables]\na = n\riiy\n");
    const std::string sError = errorOf([&file] { StorageVariables::loadFile(file.path()); });
    EXPECT_EQ(sError.find(file.path() + ":2: is not TOML ("), 0U) << sError;
    EXPECT_EQ(sError.find('\r'), std::string::npos) << sError;
}
