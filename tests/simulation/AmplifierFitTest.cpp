#include "Simulation/Transmitter/AmplifierFit.h"

#include "Simulation/Transmitter/RappAmplifier.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <string>

namespace
{
struct Amplifier
{
    double gainDb;
    double saturatedDbm;
    double p;
};

std::vector<AmplifierPoint> sweep(const Amplifier& amplifier, double fromDbm, double toDbm, double stepDb,
                                  double noiseDb = 0.0)
{
    std::mt19937_64 random(7);
    std::normal_distribution<double> noise(0.0, 1.0);
    std::vector<AmplifierPoint> points;
    const auto nPoints = static_cast<int>(std::lround((toDbm - fromDbm) / stepDb)) + 1;
    for (int nPoint = 0; nPoint < nPoints; ++nPoint) {
        const double inputDbm = fromDbm + nPoint * stepDb;
        points.push_back({inputDbm, rappOutputDbm(inputDbm + amplifier.gainDb, amplifier.saturatedDbm, amplifier.p) +
                                        noiseDb * noise(random)});
    }
    return points;
}

/** Sweeps from 25 dB below saturation to an overdrive in steps of 1 dB. */
std::vector<AmplifierPoint> sweepTo(const Amplifier& amplifier, double overdriveDb, double noiseDb = 0.0)
{
    const double saturatingDbm = amplifier.saturatedDbm - amplifier.gainDb;
    return sweep(amplifier, saturatingDbm - 25.0, saturatingDbm + overdriveDb, 1.0, noiseDb);
}

/** @return what is said about points that cannot be fitted; empty when they can */
std::string refusalOf(const std::vector<AmplifierPoint>& points)
{
    try {
        fitAmplifier(points);
    }
    catch (const AmplifierFitError& error) {
        return error.what();
    }
    return {};
}

TEST(AmplifierFit, RecoversTheAmplifierBehindCleanPoints)
{
    for (const double gainDb : {-3.0, 12.0, 33.0, 60.0}) {
        for (const double saturatedDbm : {-10.0, 23.5, 47.0}) {
            for (const double p : {0.5, 0.8, 1.4, 2.5, 4.0, 8.0, 20.0}) {
                SCOPED_TRACE(testing::Message() << gainDb << " dB, " << saturatedDbm << " dBm, p " << p);
                const AmplifierFit fit = fitAmplifier(sweepTo({gainDb, saturatedDbm, p}, 5.0));
                EXPECT_NEAR(fit.gainDb, gainDb, 1e-5);
                EXPECT_NEAR(fit.saturatedDbm, saturatedDbm, 1e-5);
                EXPECT_NEAR(fit.rappP / p, 1.0, 1e-4);
                EXPECT_LT(fit.rmsResidualDb, 1e-5);
                EXPECT_LT(fit.maxResidualDb, 1e-5);
            }
        }
    }
}

TEST(AmplifierFit, NeedsNoOrderAndNoEvenSteps)
{
    std::vector<AmplifierPoint> points = sweepTo({33.0, 33.0, 2.5}, 4.0);
    points.erase(points.begin() + 3, points.begin() + 9);
    std::shuffle(points.begin(), points.end(), std::mt19937_64(3));
    const AmplifierFit fit = fitAmplifier(points);
    EXPECT_NEAR(fit.gainDb, 33.0, 1e-5);
    EXPECT_NEAR(fit.saturatedDbm, 33.0, 1e-5);
    EXPECT_NEAR(fit.rappP, 2.5, 1e-4);
}

TEST(AmplifierFit, GivesTheOutputThatHasCompressedByOneDecibel)
{
    for (const double p : {0.5, 1.4, 2.5, 8.0}) {
        const AmplifierFit fit = fitAmplifier(sweepTo({30.0, 35.0, p}, 6.0));
        // The output is 1 dB below the linear power that is 1 dB above it.
        EXPECT_NEAR(rappOutputDbm(fit.compressedDbm + 1.0, 35.0, p), fit.compressedDbm, 1e-4) << p;
    }
}

TEST(AmplifierFit, ComesCloseThroughNoise)
{
    for (const double p : {1.4, 2.5, 4.0}) {
        SCOPED_TRACE(p);
        const AmplifierFit fit = fitAmplifier(sweepTo({33.0, 35.0, p}, 4.0, 0.1));
        EXPECT_NEAR(fit.gainDb, 33.0, 0.1);
        EXPECT_NEAR(fit.saturatedDbm, 35.0, 0.25);
        EXPECT_NEAR(fit.rappP / p, 1.0, 0.3);
        EXPECT_NEAR(fit.rmsResidualDb, 0.1, 0.04);
        EXPECT_GT(fit.maxResidualDb, fit.rmsResidualDb);
        EXPECT_LT(fit.maxResidualDb, 0.4);
    }
}

TEST(AmplifierFit, ItsResidualsAreThoseOfTheCurveThatItGives)
{
    const std::vector<AmplifierPoint> points = sweepTo({33.0, 35.0, 2.5}, 4.0, 0.2);
    const AmplifierFit fit = fitAmplifier(points);
    double squares = 0.0;
    double largest = 0.0;
    for (const AmplifierPoint& point : points) {
        const double off = point.outputDbm - rappOutputDbm(point.inputDbm + fit.gainDb, fit.saturatedDbm, fit.rappP);
        squares += off * off;
        largest = std::max(largest, std::abs(off));
    }
    EXPECT_NEAR(fit.rmsResidualDb, std::sqrt(squares / static_cast<double>(points.size())), 1e-9);
    EXPECT_NEAR(fit.maxResidualDb, largest, 1e-9);
}

TEST(AmplifierFit, NoOtherAmplifierNearbyIsBetter)
{
    const std::vector<AmplifierPoint> points = sweepTo({33.0, 35.0, 1.8}, 3.0, 0.15);
    const AmplifierFit fit = fitAmplifier(points);
    const auto sumOfSquares = [&points](double gainDb, double saturatedDbm, double p) {
        double sum = 0.0;
        for (const AmplifierPoint& point : points) {
            sum += std::pow(point.outputDbm - rappOutputDbm(point.inputDbm + gainDb, saturatedDbm, p), 2);
        }
        return sum;
    };
    const double best = sumOfSquares(fit.gainDb, fit.saturatedDbm, fit.rappP);
    for (const double step : {-0.01, 0.01}) {
        EXPECT_LT(best, sumOfSquares(fit.gainDb + step, fit.saturatedDbm, fit.rappP));
        EXPECT_LT(best, sumOfSquares(fit.gainDb, fit.saturatedDbm + step, fit.rappP));
        EXPECT_LT(best, sumOfSquares(fit.gainDb, fit.saturatedDbm, fit.rappP + step));
    }
}

TEST(AmplifierFit, FourPointsAreEnough)
{
    const AmplifierFit fit = fitAmplifier(sweep({20.0, 30.0, 2.0}, -10.0, 14.0, 8.0));
    EXPECT_NEAR(fit.saturatedDbm, 30.0, 1e-3);
}

TEST(AmplifierFit, RefusesTooFewPoints)
{
    EXPECT_THAT(refusalOf({}), testing::HasSubstr("has 0 points; at least 4"));
    EXPECT_THAT(refusalOf(sweep({20.0, 30.0, 2.0}, 6.0, 14.0, 4.0)), testing::HasSubstr("has 3 points; at least 4"));
}

TEST(AmplifierFit, RefusesWhatIsNotFinite)
{
    const std::vector<AmplifierPoint> good = sweepTo({33.0, 35.0, 2.5}, 4.0);
    for (const double wrong : {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity(),
                               -std::numeric_limits<double>::infinity()})
    {
        std::vector<AmplifierPoint> points = good;
        points[5].inputDbm = wrong;
        EXPECT_THAT(refusalOf(points), testing::HasSubstr("not finite"));
        points = good;
        points[5].outputDbm = wrong;
        EXPECT_THAT(refusalOf(points), testing::HasSubstr("not finite"));
    }
}

TEST(AmplifierFit, InventsNoSaturationForASweepThatDoesNotCompress)
{
    for (const double noiseDb : {0.0, 0.05, 0.2}) {
        for (const double belowSaturationDb : {5.0, 10.0, 30.0, 200.0}) {
            SCOPED_TRACE(testing::Message() << belowSaturationDb << " dB below, noise " << noiseDb);
            const std::vector<AmplifierPoint> points =
                sweep({33.0, 35.0, 2.5}, -30.0 - belowSaturationDb, 2.0 - belowSaturationDb, 1.0, noiseDb);
            EXPECT_THAT(refusalOf(points), testing::HasSubstr("saturated power open"));
        }
    }
}

TEST(AmplifierFit, SaysThatASweepWhoseGainRisesDoesNotCompress)
{
    std::vector<AmplifierPoint> points;
    points.reserve(23);
    for (int nPoint = 0; nPoint < 23; ++nPoint) {
        points.push_back({-30.0 + nPoint, 2.5 + 1.01 * nPoint});
    }
    EXPECT_THAT(refusalOf(points), testing::HasSubstr("compresses by 0.0"));
}

TEST(AmplifierFit, InventsNoSaturationFromOnePower)
{
    EXPECT_THAT(refusalOf(std::vector<AmplifierPoint>(10, {0.0, 30.0})), testing::HasSubstr("saturated power open"));
}

TEST(AmplifierFit, InventsNoSmoothnessForALimiter)
{
    std::vector<AmplifierPoint> points;
    points.reserve(30);
    for (int nPoint = 0; nPoint < 30; ++nPoint) {
        points.push_back({-20.0 + nPoint, std::min(10.0 + nPoint, 33.5)});
    }
    EXPECT_NE(refusalOf(points), "");
}

TEST(AmplifierFit, RefusesPointsThatNoAmplifierGives)
{
    std::vector<AmplifierPoint> falling;
    falling.reserve(20);
    for (int nPoint = 0; nPoint < 20; ++nPoint) {
        falling.push_back({static_cast<double>(nPoint), -3.0 * nPoint});
    }
    EXPECT_NE(refusalOf(falling), "");
    std::vector<AmplifierPoint> huge = sweepTo({33.0, 35.0, 2.5}, 4.0);
    huge[0].outputDbm = 1e300;
    EXPECT_NE(refusalOf(huge), "");
}
} // namespace
