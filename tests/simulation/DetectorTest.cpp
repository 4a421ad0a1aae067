#include "Simulation/Transmitter/Transmitter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace
{
/** A detector without noise, steps and drift in front of a cold, continuous transmitter. */
TransmitterParameters idealDetector()
{
    TransmitterParameters parameters;
    parameters.actuatorStepDb = 0.0;
    parameters.selfHeatingDegrees = 0.0;
    parameters.detectorStepDb = 0.0;
    parameters.detectorNoiseDb = 0.0;
    return parameters;
}

Transmitter radiating(const TransmitterParameters& parameters, double controlPowerDbm, std::uint64_t nSeed = 1)
{
    Transmitter transmitter(parameters, nSeed);
    transmitter.setControlPowerDbm(controlPowerDbm);
    transmitter.setRadiating(true);
    return transmitter;
}

TEST(Detector, AddsItsFloorToTheTruePower)
{
    // Floor 40 dB below 30 dBm; sums of powers in milliwatts computed apart.
    EXPECT_NEAR(radiating(idealDetector(), 0.0).readDetectorDbm(), 0.413927, 1e-6);
    EXPECT_NEAR(radiating(idealDetector(), -10.0).readDetectorDbm(), -6.989700, 1e-6);
    EXPECT_NEAR(Transmitter(idealDetector()).readDetectorDbm(), -10.0, 1e-9) << "nothing radiated";
}

TEST(Detector, AddsItsOffsetAndDrift)
{
    TransmitterParameters parameters = idealDetector();
    parameters.gainPerDegreeDb = 0.0;
    parameters.detectorFloorBelowMaxDb = 100.0;
    parameters.detectorOffsetDb = 0.7;
    parameters.detectorDriftPerDegreeDb = 0.01;
    Transmitter transmitter = radiating(parameters, 20.0);
    EXPECT_NEAR(transmitter.readDetectorDbm(), 19.999023 + 0.7, 1e-6);
    transmitter.setAmbientTemperature(75.0);
    EXPECT_NEAR(transmitter.readDetectorDbm(), 19.999023 + 0.7 + 0.5, 1e-6);
    transmitter.setAmbientTemperature(-15.0);
    EXPECT_NEAR(transmitter.readDetectorDbm(), 19.999023 + 0.7 - 0.4, 1e-6);
}

TEST(Detector, DriftsWithTheWarmthOfTheAmplifiers)
{
    TransmitterParameters parameters = idealDetector();
    parameters.gainPerDegreeDb = 0.0;
    parameters.detectorDriftPerDegreeDb = 0.1;
    parameters.selfHeatingDegrees = 15.0;
    Transmitter transmitter = radiating(parameters, 20.0);
    const double coldDbm = transmitter.readDetectorDbm();
    transmitter.advance(1e6);
    EXPECT_NEAR(transmitter.readDetectorDbm() - coldDbm, 1.5, 1e-9);
}

TEST(Detector, HasNoiseOfTheGivenRmsAndNoBias)
{
    constexpr int draws = 100000;
    constexpr double rmsDb = 0.5;
    TransmitterParameters parameters = idealDetector();
    const double truthDbm = radiating(parameters, 20.0).readDetectorDbm();
    parameters.detectorNoiseDb = rmsDb;
    Transmitter transmitter = radiating(parameters, 20.0, 4711);
    double sum = 0.0;
    double squares = 0.0;
    int nBeyondTwoSigma = 0;
    for (int i = 0; i < draws; ++i) {
        const double error = transmitter.readDetectorDbm() - truthDbm;
        sum += error;
        squares += error * error;
        nBeyondTwoSigma += std::abs(error) > 2.0 * rmsDb ? 1 : 0;
    }
    // Four standard deviations of each estimate.
    EXPECT_NEAR(sum / draws, 0.0, 4.0 * rmsDb / std::sqrt(draws));
    EXPECT_NEAR(std::sqrt(squares / draws), rmsDb, 4.0 * rmsDb / std::sqrt(2.0 * draws));
    EXPECT_NEAR(static_cast<double>(nBeyondTwoSigma) / draws, 0.0455, 4.0 * std::sqrt(0.0455 * 0.9545 / draws));
}

TEST(Detector, ReadsWholeSteps)
{
    TransmitterParameters parameters = idealDetector();
    parameters.detectorStepDb = 0.028;
    parameters.detectorNoiseDb = 0.3;
    Transmitter transmitter = radiating(parameters, 20.0);
    for (int i = 0; i < 1000; ++i) {
        const double steps = transmitter.readDetectorDbm() / 0.028;
        ASSERT_NEAR(steps, std::round(steps), 1e-6);
    }
    parameters.detectorNoiseDb = 0.0;
    parameters.detectorFloorBelowMaxDb = 100.0;
    EXPECT_NEAR(radiating(parameters, 10.0).readDetectorDbm(), 357 * 0.028, 1e-9) << "9.99998 dBm is 357.14 steps";
    EXPECT_NEAR(radiating(parameters, 10.02).readDetectorDbm(), 358 * 0.028, 1e-9) << "357.86 steps";
}

std::vector<double> readings(std::uint64_t nSeed)
{
    Transmitter transmitter = radiating(TransmitterParameters{}, 20.0, nSeed);
    std::vector<double> values(200);
    std::generate(values.begin(), values.end(), [&transmitter] { return transmitter.readDetectorDbm(); });
    return values;
}

TEST(Detector, RepeatsItselfForASeedOnly)
{
    EXPECT_EQ(readings(5), readings(5));
    EXPECT_NE(readings(5), readings(6));
}
} // namespace
