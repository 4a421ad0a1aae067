// A profile: values at any time lie in their ranges, and are the same however one gets to the time.
#include "Simulation/Scenario/DriveRanges.h"
#include "Simulation/Scenario/Profile.h"
#include "tests/fuzz/FuzzTarget.h"

#include <optional>

namespace
{
void checkPoint(const ProfilePoint& point)
{
    requireWithin(point.requestedPowerDbm.value_or(0), LOWEST_POWER_DBM, HIGHEST_POWER_DBM, "requested_power_dBm");
    requireWithin(point.temperatureDegrees.value_or(0), COLDEST_DEGREES, HOTTEST_DEGREES, "temperature_C");
    requireWithin(point.frequencyMhz.value_or(0), 0, HIGHEST_FREQUENCY_MHZ, "frequency_MHz");
    require(point.requestedPowerDbm || point.temperatureDegrees || point.frequencyMhz, "a profile of nothing");
}

bool isSame(const ProfilePoint& a, const ProfilePoint& b)
{
    return a.requestedPowerDbm == b.requestedPowerDbm && a.temperatureDegrees == b.temperatureDegrees &&
           a.frequencyMhz == b.frequencyMhz;
}

void checkProfile(const Profile& profile)
{
    constexpr int STEPS = 16;
    requireWithin(profile.firstSecond(), 0, profile.lastSecond(), "the first time");
    requireWithin(profile.lastSecond(), 0, LONGEST_RUN_SECONDS, "the last time");
    std::size_t nRow = 0;
    for (int nStep = -1; nStep <= STEPS + 1; ++nStep) {
        const double seconds = profile.firstSecond() + (profile.lastSecond() - profile.firstSecond()) * nStep / STEPS;
        const ProfilePoint point = profile.at(seconds);
        checkPoint(point);
        require(isSame(point, profile.at(seconds, nRow)), "another value for one who goes forward");
    }
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize)
{
    const std::string sText = inputText(pData, nSize);
    const std::string sPath = writeInFolder("profile.csv", sText);
    const Profile::Interpolation linear{EInterpolation::Linear, EInterpolation::Linear, EInterpolation::Linear};
    for (const Profile::Interpolation& interpolation : {Profile::Interpolation(), linear}) {
        std::optional<Profile> profile;
        if (accepts(sPath, sText, [&] { profile.emplace(sPath, interpolation); })) {
            checkProfile(*profile);
        }
    }
    return 0;
}
