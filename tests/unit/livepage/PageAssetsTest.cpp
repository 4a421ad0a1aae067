#include "Unit/LivePage/PageAssets.h"

#include "Platform/ConfigurationError.h"
#include "tests/unit/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace
{
std::string errorIn(const TemporaryFolder& folder)
{
    try {
        (void)PageAssets::inFolder(folder.path("")).find("/");
        return "";
    }
    catch (const ConfigurationError& error) {
        return error.what();
    }
}
} // namespace

TEST(PageAssets, AreReadFromAFolderEachTimeTheyAreAskedFor)
{
    const TemporaryFolder folder;
    folder.write("assets.txt", "# the page\n\n/ index.html\n/assets/a.js src/../a.js\n");
    folder.write("index.html", "<p>");
    std::filesystem::create_directory(folder.path("src"));
    const PageAssets assets = PageAssets::inFolder(folder.path(""));
    EXPECT_EQ(assets.find("/")->sContent, "<p>");
    EXPECT_EQ(assets.find("/")->sContentType, "text/html; charset=utf-8");
    folder.write("a.js", "1");
    const PageAsset first = assets.find("/assets/a.js").value();
    folder.write("a.js", "2");
    const PageAsset second = assets.find("/assets/a.js").value();
    EXPECT_EQ(first.sContent, "1");
    EXPECT_EQ(second.sContent, "2");
    EXPECT_EQ(second.sContentType, "text/javascript; charset=utf-8");
    EXPECT_NE(first.sTag, second.sTag);
    EXPECT_FALSE(assets.find("/a.js").has_value()) << "only what the list names is served";
    EXPECT_FALSE(assets.find("/assets/../index.html").has_value());
}

TEST(PageAssets, OfAFolderNameWhatIsWrongWithIt)
{
    const TemporaryFolder folder;
    EXPECT_THAT(errorIn(folder), testing::HasSubstr("assets.txt"));
    folder.write("assets.txt", "/ index.html\nindex.html\n");
    EXPECT_THAT(errorIn(folder), testing::HasSubstr("assets.txt:2: \"index.html\""));
    folder.write("assets.txt", "/ index.html\n");
    EXPECT_THAT(errorIn(folder), testing::HasSubstr("index.html"));
}

TEST(PageAssets, ThatAreBuiltInAreThePageOrNothing)
{
    const PageAssets assets = PageAssets::embedded();
    if (assets.isEmpty()) {
        GTEST_SKIP() << "this build has no page";
    }
    EXPECT_THAT(assets.find("/")->sContent, testing::StartsWith("<!DOCTYPE html>"));
    EXPECT_THAT(assets.find("/")->sContent, testing::HasSubstr("</html>"));
    EXPECT_TRUE(assets.has("/assets/main.js"));
}
