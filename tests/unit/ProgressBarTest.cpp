#include "Unit/CommandLine/ProgressBar.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <memory>
#include <thread>

namespace
{
/** A file to draw in. */
class Drawing
{
public:
    std::FILE* stream() const { return m_pFile.get(); }

    std::string text() const
    {
        std::string sText(static_cast<std::size_t>(std::ftell(m_pFile.get())), '\0');
        std::rewind(m_pFile.get());
        sText.resize(std::fread(sText.data(), 1, sText.size(), m_pFile.get()));
        return sText;
    }

private:
    struct Close
    {
        void operator()(std::FILE* pFile) const { (void)std::fclose(pFile); }
    };
    std::unique_ptr<std::FILE, Close> m_pFile{std::tmpfile()};
};

Progress halfWay()
{
    Progress progress;
    progress.done = 500.0;
    progress.total = 1000.0;
    progress.sUnit = "steps";
    return progress;
}
} // namespace

TEST(ProgressText, HasBarShareRateAndTimeLeft)
{
    Progress progress = halfWay();
    EXPECT_EQ(progressText(progress, 80), "[####################                    ]  50 %");
    progress.perSecond = 10.0;
    EXPECT_EQ(progressText(progress, 80), "[####################                    ]  50 %  10 steps/s  0:50 left");
    progress.timesRealTime = 0.06;
    EXPECT_EQ(progressText(progress, 60), "[#####     ]  50 %  10 steps/s  0.06 x real time  0:50 left");
}

TEST(ProgressText, StaysBelowTheNumberOfColumns)
{
    Progress progress = halfWay();
    progress.perSecond = 12345678.0;
    progress.timesRealTime = 74074.0;
    for (std::size_t nColumns = 0; nColumns < 130; ++nColumns) {
        EXPECT_LT(progressText(progress, nColumns).size(), nColumns == 0 ? 1 : nColumns) << nColumns;
    }
    EXPECT_EQ(progressText(progress, 30), " 50 %  12.3 M steps/s  74.1 k");
}

TEST(ProgressText, SaysAHundredPercentOnlyWhenAllIsDone)
{
    Progress progress = halfWay();
    progress.done = 999.9;
    EXPECT_NE(progressText(progress, 80).find(" 99 %"), std::string::npos);
    progress.done = 1000.0;
    EXPECT_NE(progressText(progress, 80).find(" 100 %"), std::string::npos);
    progress.done = 2000.0;
    EXPECT_NE(progressText(progress, 80).find(" 100 %"), std::string::npos);
    progress.total = 0.0;
    EXPECT_NE(progressText(progress, 80).find(" 100 %"), std::string::npos);
}

TEST(ShortNumber, HasThreeDigitsAndALetter)
{
    const std::pair<double, const char*> cases[] = {{0.0, "0"},          {7.0, "7"},         {0.5, "0.50"},
                                                    {99.94, "99.9"},     {999.4, "999"},     {999.6, "1.00 k"},
                                                    {12345.0, "12.3 k"}, {5.26e9, "5.26 G"}, {1e18, "1000000 T"}};
    for (const auto& [value, pText] : cases) {
        EXPECT_EQ(shortNumber(value), pText);
    }
}

TEST(DurationText, HasHoursWhereThereAreAny)
{
    const std::pair<double, const char*> cases[] = {{0.0, "0:00"},       {7.4, "0:07"},        {754.0, "12:34"},
                                                    {3599.6, "1:00:00"}, {11229.0, "3:07:09"}, {-5.0, "0:00"}};
    for (const auto& [seconds, pText] : cases) {
        EXPECT_EQ(durationText(seconds), pText);
    }
}

TEST(ProgressBar, DrawsOnATerminalAFewTimesASecondAndErasesItsLine)
{
    const Drawing drawing;
    {
        ProgressBar bar(drawing.stream(), true, {"steps", 1000.0, 0.0, 0.006});
        bar.update(100.0);
        EXPECT_EQ(drawing.text(), "") << "what is over at once shows nothing";
        std::this_thread::sleep_for(std::chrono::milliseconds(120));
        bar.update(500.0);
        bar.update(501.0);
    }
    const std::string sText = drawing.text();
    EXPECT_NE(sText.find("50 %"), std::string::npos) << sText;
    EXPECT_NE(sText.find("x real time"), std::string::npos) << sText;
    EXPECT_EQ(std::count(sText.begin(), sText.end(), '['), 3) << sText; // one bar, and two erasures
    EXPECT_TRUE(sText.ends_with("\r\x1b[K")) << sText;
}

TEST(ProgressBar, ShowsNothingButNotesElsewhere)
{
    const Drawing drawing;
    {
        ProgressBar bar(drawing.stream(), false, {"runs", 10.0});
        std::this_thread::sleep_for(std::chrono::milliseconds(120));
        bar.update(5.0);
        bar.note("a word");
    }
    EXPECT_EQ(drawing.text(), "a word\n");
}
