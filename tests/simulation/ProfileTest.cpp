#include "Simulation/Scenario/Profile.h"

#include "Platform/ConfigurationError.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <string>

namespace
{
/** A file for as long as a test needs it. */
class ProfileFile
{
public:
    explicit ProfileFile(const std::string& sText) : m_sPath(testing::TempDir() + "profile_XXXXXX")
    {
        const int nFile = mkstemp(m_sPath.data());
        EXPECT_GE(nFile, 0);
        close(nFile);
        std::ofstream(m_sPath) << sText;
    }
    ~ProfileFile() { EXPECT_EQ(std::remove(m_sPath.c_str()), 0); }
    ProfileFile(const ProfileFile&) = delete;
    ProfileFile& operator=(const ProfileFile&) = delete;

    const std::string& path() const { return m_sPath; }

private:
    std::string m_sPath;
};

Profile profileOf(const std::string& sText, const Profile::Interpolation& interpolation = {})
{
    const ProfileFile file(sText);
    return Profile(file.path(), interpolation);
}

TEST(Profile, HoldsOrInterpolatesEachColumnByItsOwnRule)
{
    const Profile profile = profileOf("time_s,requested_power_dBm,temperature_C,frequency_MHz\n"
                                      "10,5,20,5000\n20,15,40,6000\n40,-5,0,5500\n");
    struct Case
    {
        double seconds;
        double powerDbm;
        double degrees;
        double frequencyMhz;
    };
    const Case cases[] = {{0.0, 5.0, 20.0, 5000.0},  {10.0, 5.0, 20.0, 5000.0},  {15.0, 5.0, 30.0, 5000.0},
                          {19.9, 5.0, 39.8, 5000.0}, {20.0, 15.0, 40.0, 6000.0}, {25.0, 15.0, 30.0, 6000.0},
                          {40.0, -5.0, 0.0, 5500.0}, {1e9, -5.0, 0.0, 5500.0},   {-1e9, 5.0, 20.0, 5000.0}};
    for (const Case& c : cases) {
        const ProfilePoint point = profile.at(c.seconds);
        EXPECT_NEAR(point.requestedPowerDbm.value(), c.powerDbm, 1e-9) << c.seconds;
        EXPECT_NEAR(point.temperatureDegrees.value(), c.degrees, 1e-9) << c.seconds;
        EXPECT_NEAR(point.frequencyMhz.value(), c.frequencyMhz, 1e-9) << c.seconds;
    }
    EXPECT_EQ(profile.firstSecond(), 10.0);
    EXPECT_EQ(profile.lastSecond(), 40.0);
}

TEST(Profile, TakesTheRulesThatItIsGiven)
{
    Profile::Interpolation interpolation;
    interpolation.eRequestedPower = EInterpolation::Linear;
    interpolation.eTemperature = EInterpolation::Held;
    interpolation.eFrequency = EInterpolation::Linear;
    const Profile profile = profileOf("time_s,requested_power_dBm,temperature_C,frequency_MHz\n"
                                      "0,0,20,5000\n10,10,40,6000\n",
                                      interpolation);
    EXPECT_NEAR(profile.at(2.5).requestedPowerDbm.value(), 2.5, 1e-9);
    EXPECT_NEAR(profile.at(2.5).temperatureDegrees.value(), 20.0, 1e-9);
    EXPECT_NEAR(profile.at(2.5).frequencyMhz.value(), 5250.0, 1e-9);
}

TEST(Profile, SaysTheSameToOneWhoGoesForward)
{
    const Profile profile = profileOf("time_s,requested_power_dBm,temperature_C\n1,10,20\n2,12,-3\n2.5,7,40\n9,8,1\n");
    std::size_t nRow = 0;
    for (const double seconds : {0.0, 0.5, 1.0, 1.7, 2.0, 2.4, 8.9, 9.0, 100.0, 2.2, 0.0, 2.5}) {
        const ProfilePoint expected = profile.at(seconds);
        const ProfilePoint point = profile.at(seconds, nRow);
        EXPECT_EQ(point.requestedPowerDbm, expected.requestedPowerDbm) << seconds;
        EXPECT_EQ(point.temperatureDegrees, expected.temperatureDegrees) << seconds;
    }
}

TEST(Profile, SaysNothingAboutColumnsThatItDoesNotHave)
{
    const char* const columns[] = {"requested_power_dBm", "temperature_C", "frequency_MHz"};
    for (std::size_t i = 0; i < std::size(columns); ++i) {
        const Profile profile = profileOf(std::string("time_s,") + columns[i] + "\n0,17\n");
        const ProfilePoint point = profile.at(3.0);
        EXPECT_EQ(point.requestedPowerDbm, i == 0 ? std::optional(17.0) : std::nullopt) << columns[i];
        EXPECT_EQ(point.temperatureDegrees, i == 1 ? std::optional(17.0) : std::nullopt) << columns[i];
        EXPECT_EQ(point.frequencyMhz, i == 2 ? std::optional(17.0) : std::nullopt) << columns[i];
    }
}

TEST(Profile, LeavesOtherColumnsCommentsAndEmptyLinesOut)
{
    const Profile profile =
        profileOf("# a drive\n\nspeed,temperature_C,speed,time_s\nfast,20,?,0\n\n# on\nslow,30,-,10\n");
    EXPECT_NEAR(profile.at(5.0).temperatureDegrees.value(), 25.0, 1e-9);
    EXPECT_EQ(profile.lastSecond(), 10.0);
}

TEST(Profile, TakesEitherKindOfLineEndAndBlanksQuotesAndTheEndsOfRanges)
{
    const char* const texts[] = {
        "time_s,requested_power_dBm,temperature_C,frequency_MHz\n0,-98,-100,0\n1000000000,100,200,300000\n",
        "# CRLF\r\n\r\ntime_s,requested_power_dBm,temperature_C,frequency_MHz\r\n0,-98,-100,0\r\n1e9,100,200,3e5\r\n",
        "time_s , \"requested_power_dBm\",temperature_C,\tfrequency_MHz\n 0,\"-98\",-100, 0\n1e9,100,200,300000"};
    for (const char* const pText : texts) {
        const Profile profile = profileOf(pText);
        EXPECT_EQ(profile.firstSecond(), 0.0) << pText;
        EXPECT_EQ(profile.lastSecond(), 1e9) << pText;
        EXPECT_EQ(profile.at(0.0).requestedPowerDbm, -98.0) << pText;
        EXPECT_EQ(profile.at(0.0).temperatureDegrees, -100.0) << pText;
        EXPECT_EQ(profile.at(1e9).frequencyMhz, 300000.0) << pText;
    }
}

struct BadProfile
{
    const char* pName;
    const char* pText;
    const char* pMessage; // behind the path
};

const BadProfile BAD_PROFILES[] = {
    {"Empty", "", ": the file is empty; begin it with a header row that names time_s and the columns to use"},
    {"OnlyComments", "# nothing\n\n",
     ": the file is empty; begin it with a header row that names time_s and the columns to use"},
    {"NoHeader", "0,20\n1,30\n",
     ":1:1: the header row has no column time_s, it begins '0'; name the columns in the first row"},
    {"NoTime", "# first\n temperature_C\n20\n",
     ":2:2: the header row has no column time_s, it begins 'temperature_C'; name the columns in the first row"},
    {"TimeTwice", "time_s,temperature_C,time_s\n0,20,0\n", ":1:22: column time_s is there twice; take one of them out"},
    {"ValueTwice", "time_s,temperature_C,temperature_C\n0,20,20\n",
     ":1:22: column temperature_C is there twice; take one of them out"},
    {"NoValues", "time_s,temperature_c\n0,20\n",
     ":1:1: the header row names no column to use; add requested_power_dBm, temperature_C or frequency_MHz"},
    {"NoRows", "time_s,temperature_C\n\n", ":1:1: there is no row after the header row; add at least one"},
    {"ByteOrderMark", "\xEF\xBB\xBFtime_s,temperature_C\n0,20\n",
     ":1:1: begins with a byte-order mark; save the file as UTF-8 without one"},
    {"CrlfAfterLf", "time_s,temperature_C\n0,20\r\n1,20\n",
     ":2:5: the line ends by CRLF, those before by LF; end every line by LF, or every line by CRLF"},
    {"LfAfterCrlf", "time_s,temperature_C\r\n# on\n0,20\r\n",
     ":2:5: the line ends by LF, those before by CRLF; end every line by LF, or every line by CRLF"},
    {"LoneCr", "time_s,temperature_C\n0,20\r1,20\n",
     ":2:5: a CR stands without an LF; end every line by LF, or every line by CRLF"},
    {"EmptyField", "time_s,temperature_C,requested_power_dBm\n0,20,5\n1, ,5\n",
     ":3:4: column temperature_C: is empty; add a value"},
    {"EmptyLastField", "time_s,requested_power_dBm\n0,\n", ":2:3: column requested_power_dBm: is empty; add a value"},
    {"EmptyFieldOfAnotherColumn", "time_s,speed,temperature_C\n0,,20\n", ":2:3: column speed: is empty; add a value"},
    {"EmptyHeader", "time_s,,temperature_C\n0,1,20\n", ":1:8: column 2: is empty; add a value"},
    {"MissingField", "time_s,temperature_C,requested_power_dBm\n0,20,5\n1,20\n",
     ":3:5: column requested_power_dBm: is missing in a row of 2; add a value"},
    {"TooManyFields", "time_s,temperature_C\n0,20\n1,20, 30,40\n",
     ":3:7: '30' is field 3 of a row that may have 2, as the first row has; take it out or name its column"},
    {"TimeStands", "time_s,temperature_C\n0,20\n1,20\n1.0,30\n",
     ":4:1: column time_s: '1.0' is not later than '1' in the row before; order the rows by ascending time"},
    {"TimeFalls", "temperature_C,time_s\n20,5\n\n# back\n20,4\n",
     ":5:4: column time_s: '4' is not later than '5' in the row before; order the rows by ascending time"},
    {"TextForTime", "time_s,temperature_C\nnoon,20\n",
     ":2:1: column time_s: 'noon' is not a number; write a decimal number such as -3.5"},
    {"TextForValue", "time_s,temperature_C\n0,20\n1,warm\n",
     ":3:3: column temperature_C: 'warm' is not a number; write a decimal number such as -3.5"},
    {"NotANumber", "time_s,frequency_MHz\n0,nan\n",
     ":2:3: column frequency_MHz: 'nan' is not a number; write a decimal number such as -3.5"},
    {"Infinite", "time_s,frequency_MHz\n0,inf\n",
     ":2:3: column frequency_MHz: 'inf' is not a number; write a decimal number such as -3.5"},
    {"Hexadecimal", "time_s,frequency_MHz\n0,0x10\n",
     ":2:3: column frequency_MHz: '0x10' is not a number; write a decimal number such as -3.5"},
    {"TooLarge", "time_s,frequency_MHz\n0,1e999\n",
     ":2:3: column frequency_MHz: '1e999' is too large or too small; write a decimal number such as -3.5"},
    {"NegativeTime", "time_s,temperature_C\n-1,20\n",
     ":2:1: column time_s: '-1' is out of range; write a number from 0 to 1000000000"},
    {"LateTime", "time_s,temperature_C\n0,20\n1e10,20\n",
     ":3:1: column time_s: '1e10' is out of range; write a number from 0 to 1000000000"},
    {"LowPower", "time_s,requested_power_dBm\n0,-99\n",
     ":2:3: column requested_power_dBm: '-99' is out of range; write a number from -98 to 100"},
    {"HighPower", "time_s,requested_power_dBm\n0,100.1\n",
     ":2:3: column requested_power_dBm: '100.1' is out of range; write a number from -98 to 100"},
    {"Cold", "time_s,temperature_C\n0,-101\n",
     ":2:3: column temperature_C: '-101' is out of range; write a number from -100 to 200"},
    {"Hot", "time_s,temperature_C\n0,201\n",
     ":2:3: column temperature_C: '201' is out of range; write a number from -100 to 200"},
    {"NegativeFrequency", "time_s,frequency_MHz\n0,-1\n",
     ":2:3: column frequency_MHz: '-1' is out of range; write a number from 0 to 300000"},
    {"HighFrequency", "time_s,frequency_MHz\n0,300001\n",
     ":2:3: column frequency_MHz: '300001' is out of range; write a number from 0 to 300000"},
};

class BadProfiles : public testing::TestWithParam<BadProfile>
{
};

TEST_P(BadProfiles, AreRefusedWithThePlaceTheReasonAndTheRemedy)
{
    const BadProfile& bad = GetParam();
    const ProfileFile file(bad.pText);
    try {
        const Profile profile(file.path(), {});
        FAIL() << "taken";
    }
    catch (const ConfigurationError& error) {
        EXPECT_EQ(error.what(), file.path() + bad.pMessage);
    }
}

INSTANTIATE_TEST_SUITE_P(All, BadProfiles, testing::ValuesIn(BAD_PROFILES),
                         [](const auto& paramInfo) { return std::string(paramInfo.param.pName); });

TEST(Profile, NamesAFileThatIsNotThere)
{
    try {
        const Profile profile("/nowhere/profile.csv", {});
        FAIL() << "taken";
    }
    catch (const ConfigurationError& error) {
        EXPECT_THAT(error.what(), testing::HasSubstr("/nowhere/profile.csv"));
    }
}
} // namespace
