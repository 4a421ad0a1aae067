#include "Unit/Files/NewFile.h"

#include "Platform/ConfigurationError.h"
#include "tests/unit/TemporaryFolder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <stdexcept>
#include <vector>

namespace
{
std::vector<std::string> namesIn(const TemporaryFolder& folder)
{
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder.path(""))) {
        names.push_back(entry.path().filename().string());
    }
    return names;
}

mode_t modeOf(const std::string& sPath)
{
    struct stat information = {};
    return stat(sPath.c_str(), &information) == 0 ? information.st_mode & 0777 : 0;
}
} // namespace

TEST(NewFile, HasItsNameOnlyWhenFinished)
{
    const TemporaryFolder folder;
    const std::string sPath = folder.write("out.csv", "old");
    {
        NewFile file(sPath);
        file.write("new ");
        ASSERT_EQ(namesIn(folder).size(), 2U);
        for (const std::string& sName : namesIn(folder)) {
            EXPECT_TRUE(sName == "out.csv" || (sName.starts_with(".out.csv.") && sName.size() == 15)) << sName;
        }
        file.write("text");
        EXPECT_EQ(TemporaryFolder::read(sPath), "old");
        file.finish();
    }
    EXPECT_EQ(TemporaryFolder::read(sPath), "new text");
    EXPECT_EQ(namesIn(folder).size(), 1U);
}

TEST(NewFile, LeavesNothingBehindWhenItIsNotFinished)
{
    const TemporaryFolder folder;
    const std::string sPath = folder.write("old.csv", "old");
    {
        NewFile replaced(sPath);
        NewFile fresh(folder.path("fresh.csv"));
        replaced.write(std::string(1'000'000, 'x'));
        fresh.write("new");
    }
    EXPECT_EQ(TemporaryFolder::read(sPath), "old");
    EXPECT_EQ(namesIn(folder), std::vector<std::string>{"old.csv"});
}

TEST(NewFile, TakesContentsOfAnySize)
{
    const TemporaryFolder folder;
    std::string sContents;
    NewFile file(folder.path("big"));
    for (int nPart = 0; nPart < 2000; ++nPart) {
        const std::string sPart(static_cast<std::size_t>(nPart), static_cast<char>('a' + nPart % 26));
        file.write(sPart);
        sContents += sPart;
    }
    file.finish();
    EXPECT_EQ(TemporaryFolder::read(folder.path("big")), sContents);
}

TEST(NewFile, HasTheUsersPermissionsOrThoseOfTheFileItReplaces)
{
    const TemporaryFolder folder;
    const mode_t mask = umask(027);
    writeNewFile(folder.path("fresh"), "x");
    umask(mask);
    EXPECT_EQ(modeOf(folder.path("fresh")), 0640U);
    const std::string sOld = folder.write("old", "x");
    ASSERT_EQ(chmod(sOld.c_str(), 0600), 0);
    writeNewFile(sOld, "y");
    EXPECT_EQ(modeOf(sOld), 0600U);
}

TEST(NewFile, ReplacesWhatASymbolicLinkLeadsTo)
{
    const TemporaryFolder folder;
    const std::string sTarget = folder.write("target", "old");
    std::filesystem::create_symlink("target", folder.path("link"));
    writeNewFile(folder.path("link"), "new");
    EXPECT_EQ(TemporaryFolder::read(sTarget), "new");
    EXPECT_TRUE(std::filesystem::is_symlink(folder.path("link")));
}

TEST(NewFile, WritesToADeviceAsItIs)
{
    writeNewFile("/dev/null", "gone");
    struct stat information = {};
    ASSERT_EQ(stat("/dev/null", &information), 0);
    EXPECT_TRUE(S_ISCHR(information.st_mode));
}

TEST(NewFile, SaysWhichFileCannotBeMade)
{
    const TemporaryFolder folder;
    const std::pair<std::string, const char*> cases[] = {{folder.path("none/out.csv"), "No such file or directory"},
                                                         {folder.path(""), "Is a directory"},
                                                         {folder.path(std::string(250, 'n')), "File name too long"}};
    for (const auto& [sPath, pReason] : cases) {
        try {
            const NewFile file(sPath);
            ADD_FAILURE() << sPath;
        }
        catch (const ConfigurationError& error) {
            EXPECT_EQ(std::string(error.what()),
                      sPath + ": cannot be written: " + pReason + "; name a file in a folder that can be written to");
        }
    }
}

TEST(NewFile, SaysWhichFileCannotBeWritten)
{
    NewFile file("/dev/full");
    file.write("x");
    try {
        file.finish();
        ADD_FAILURE();
    }
    catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "/dev/full: cannot be written: No space left on device");
    }
}

TEST(NewFile, LeavesTheOldFileWhenTheNewOneDoesNotFit)
{
    const TemporaryFolder folder;
    const std::string sPath = folder.write("out.csv", "old");
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    const auto pHandler = std::signal(SIGXFSZ, SIG_IGN);
    rlimit small = before;
    small.rlim_cur = 1000;
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    EXPECT_THROW(writeNewFile(sPath, std::string(5000, 'x')), std::runtime_error);
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
    (void)std::signal(SIGXFSZ, pHandler);
    EXPECT_EQ(TemporaryFolder::read(sPath), "old");
    EXPECT_EQ(namesIn(folder).size(), 1U);
}
