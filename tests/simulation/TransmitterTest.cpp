#include "Simulation/Transmitter/Transmitter.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numeric>

namespace
{
/** A cold, continuous transmitter: what is set is what comes out, less the compression. */
TransmitterParameters continuousParameters()
{
    TransmitterParameters parameters;
    parameters.actuatorStepDb = 0.0;
    parameters.selfHeatingDegrees = 0.0;
    return parameters;
}

Transmitter radiating(const TransmitterParameters& parameters, double controlPowerDbm)
{
    Transmitter transmitter(parameters);
    transmitter.setControlPowerDbm(controlPowerDbm);
    transmitter.setRadiating(true);
    return transmitter;
}

struct ChainCase
{
    double controlPowerDbm;
    double amplifiers;
    double ifPowerDbm;
    double rfGainDb;
    double perAmplifierDb;
};

TEST(Transmitter, SpreadsTheReductionEvenlyAndLeavesTheRestToTheIfPower)
{
    // Limit 30 dBm, gain 33 dB, hence an IF power of -3 dBm; up to 12 dB per amplifier.
    const ChainCase cases[] = {
        {30.0, 6.0, -3.0, 33.0, 0.0},   {24.0, 6.0, -3.0, 27.0, 1.0},  {-10.0, 6.0, -3.0, -7.0, 40.0 / 6.0},
        {-10.0, 2.0, -19.0, 9.0, 12.0}, {20.0, 1.0, -3.0, 23.0, 10.0}, {6.0, 2.0, -3.0, 9.0, 12.0},
        {20.0, 0.0, -13.0, 33.0, 0.0},  {35.0, 6.0, 2.0, 33.0, 0.0},   {35.0, 0.0, 2.0, 33.0, 0.0},
        {24.0, 5.6, -3.0, 27.0, 1.0},   {24.0, 0.4, -9.0, 33.0, 0.0},
    };
    for (const ChainCase& c : cases) {
        TransmitterParameters parameters = continuousParameters();
        parameters.amplifierCount = c.amplifiers;
        const Transmitter transmitter = radiating(parameters, c.controlPowerDbm);
        const ChainSetting& setting = transmitter.setting();
        SCOPED_TRACE(testing::Message() << c.controlPowerDbm << " dBm with " << c.amplifiers);
        EXPECT_NEAR(setting.ifPowerDbm, c.ifPowerDbm, 1e-9);
        EXPECT_NEAR(setting.rfGainDb, c.rfGainDb, 1e-9);
        for (std::size_t i = 0; i < MAX_AMPLIFIERS; ++i) {
            const bool bHas = static_cast<double>(i) < std::round(c.amplifiers);
            EXPECT_NEAR(setting.gainReductionDb[i], bHas ? c.perAmplifierDb : 0.0, 1e-9) << i;
        }
    }
}

TEST(Transmitter, SetsTheNearestStepOfTheActuator)
{
    TransmitterParameters parameters = continuousParameters();
    parameters.actuatorStepDb = 0.25;
    const std::pair<double, double> cases[] = {{20.0, 20.0},  {20.12, 20.0},  {20.13, 20.25},
                                               {19.88, 20.0}, {19.87, 19.75}, {30.2, 30.25}};
    for (const auto& [askedDbm, setDbm] : cases) {
        const Transmitter transmitter = radiating(parameters, askedDbm);
        EXPECT_NEAR(transmitter.setting().ifPowerDbm + transmitter.setting().rfGainDb, setDbm, 1e-9) << askedDbm;
    }
}

TEST(Transmitter, RadiatesNothingUntilToldTo)
{
    Transmitter transmitter;
    transmitter.setControlPowerDbm(20.0);
    EXPECT_EQ(transmitter.outputPowerDbm(), -std::numeric_limits<double>::infinity());
    transmitter.setRadiating(true);
    EXPECT_NEAR(transmitter.outputPowerDbm(), 20.0, 0.01);
    transmitter.setRadiating(false);
    EXPECT_EQ(transmitter.outputPowerDbm(), -std::numeric_limits<double>::infinity());
}

TEST(Transmitter, CompressesAsTheAmplifierEquationSays)
{
    // Expected powers from the voltage form v / (1 + (v/vsat)^(2p))^(1/(2p)), saturation 33 dBm and p 2.5.
    const std::pair<double, double> cases[] = {{-10.0, -10.0},    {20.0, 19.999023}, {30.0, 29.715673},
                                               {33.0, 31.795880}, {36.0, 32.715673}, {50.0, 32.999902}};
    for (const auto& [linearDbm, expectedDbm] : cases) {
        EXPECT_NEAR(radiating(continuousParameters(), linearDbm).outputPowerDbm(), expectedDbm, 1e-6) << linearDbm;
    }
    TransmitterParameters soft = continuousParameters();
    soft.psatAboveMaxDb = 1.0;
    soft.rappP = 1.0;
    EXPECT_NEAR(radiating(soft, 30.0).outputPowerDbm(), 27.460981, 1e-6);
}

TEST(Transmitter, IsHalfwayIntoCompressionAtSaturation)
{
    for (const double p : {0.5, 1.0, 2.5, 8.0}) {
        TransmitterParameters parameters = continuousParameters();
        parameters.rappP = p;
        EXPECT_NEAR(radiating(parameters, 33.0).outputPowerDbm(), 33.0 - 10.0 / p * std::log10(2.0), 1e-9) << p;
    }
}

TEST(Transmitter, ApproachesSaturationFromBelowHoweverHardItIsDriven)
{
    TransmitterParameters parameters = continuousParameters();
    parameters.rappP = 20.0;
    double lastDbm = -std::numeric_limits<double>::infinity();
    for (int nHalfDb = -40; nHalfDb <= 120; ++nHalfDb) {
        const double linearDbm = nHalfDb / 2.0;
        const double powerDbm = radiating(parameters, linearDbm).outputPowerDbm();
        EXPECT_GE(powerDbm, lastDbm) << linearDbm;
        EXPECT_LE(powerDbm, 33.0) << linearDbm;
        EXPECT_LE(powerDbm, linearDbm) << linearDbm;
        lastDbm = powerDbm;
    }
    EXPECT_NEAR(radiating(parameters, 1e6).outputPowerDbm(), 33.0, 1e-9);
}

struct MeasuredAmplifier
{
    double psatDbm;
    double rappP;
    double p1dbDbm;
};

TEST(Transmitter, CompressesByOneDecibelWhereMeasuredAmplifiersDo)
{
    // Saturation and smoothness fitted to sweeps of an amplifier over frequency and supply voltage, and the output
    // power at 1 dB of compression read from the same sweeps.
    const MeasuredAmplifier amplifiers[] = {
        {34.54, 3.54, 33.77}, {35.31, 4.01, 34.72}, {35.79, 2.50, 34.27}, {36.85, 2.09, 34.69}, {34.61, 3.43, 33.68},
        {35.61, 2.65, 34.07}, {34.69, 2.50, 33.43}, {35.43, 1.86, 33.32}, {35.94, 1.79, 33.25}, {36.58, 1.39, 32.73}};
    for (const MeasuredAmplifier& amplifier : amplifiers) {
        TransmitterParameters parameters = continuousParameters();
        parameters.psatAboveMaxDb = amplifier.psatDbm - parameters.maxPowerDbm;
        parameters.rappP = amplifier.rappP;
        double lowDbm = 0.0;
        double highDbm = 60.0;
        for (int i = 0; i < 60; ++i) {
            const double middleDbm = (lowDbm + highDbm) / 2.0;
            const double compressionDb = middleDbm - radiating(parameters, middleDbm).outputPowerDbm();
            (compressionDb < 1.0 ? lowDbm : highDbm) = middleDbm;
        }
        EXPECT_NEAR(lowDbm - 1.0, amplifier.p1dbDbm, 0.36) << amplifier.psatDbm;
    }
}

TEST(Transmitter, DriftsWithTemperature)
{
    Transmitter transmitter = radiating(continuousParameters(), 20.0);
    transmitter.setAmbientTemperature(45.0); // -0.05 dB per degree: 19 dBm before compression
    EXPECT_NEAR(transmitter.outputPowerDbm(), 18.999451, 1e-6);
    transmitter.setAmbientTemperature(-15.0); // 22 dBm
    EXPECT_NEAR(transmitter.outputPowerDbm(), radiating(continuousParameters(), 22.0).outputPowerDbm(), 1e-9);
}

TEST(Transmitter, SlopesOverFrequency)
{
    Transmitter transmitter = radiating(continuousParameters(), 20.0);
    transmitter.setFrequencyMhz(7000.0); // -0.5 dB per GHz: 19 dBm before compression
    EXPECT_NEAR(transmitter.outputPowerDbm(), 18.999451, 1e-6);
    transmitter.setFrequencyMhz(3000.0);
    EXPECT_NEAR(transmitter.outputPowerDbm(), radiating(continuousParameters(), 21.0).outputPowerDbm(), 1e-9);
}

TEST(Transmitter, WarmsAndCoolsExponentially)
{
    Transmitter transmitter; // 15 degrees with 60 s
    transmitter.advance(1000.0);
    EXPECT_DOUBLE_EQ(transmitter.amplifierDegrees(), 25.0);
    transmitter.setRadiating(true);
    transmitter.advance(60.0);
    EXPECT_NEAR(transmitter.amplifierDegrees(), 25.0 + 9.481808, 1e-6);
    transmitter.advance(1e6);
    EXPECT_NEAR(transmitter.amplifierDegrees(), 40.0, 1e-9);
    transmitter.setRadiating(false);
    transmitter.setAmbientTemperature(10.0);
    transmitter.advance(30.0);
    EXPECT_NEAR(transmitter.amplifierDegrees(), 10.0 + 15.0 - 5.902040, 1e-6);
}

TEST(Transmitter, WarmsAlikeInManySmallStepsAndInOne)
{
    Transmitter small;
    Transmitter large;
    small.setRadiating(true);
    large.setRadiating(true);
    for (int i = 0; i < 20000; ++i) {
        small.advance(0.006);
    }
    large.advance(120.0);
    EXPECT_NEAR(small.amplifierDegrees(), large.amplifierDegrees(), 1e-9);
}

TEST(Transmitter, StandsStillWhenNoTimePasses)
{
    Transmitter transmitter;
    transmitter.setRadiating(true);
    for (const double seconds : {0.0, -5.0, std::numeric_limits<double>::quiet_NaN()}) {
        transmitter.advance(seconds);
        EXPECT_DOUBLE_EQ(transmitter.amplifierDegrees(), 25.0) << seconds;
    }
}

TEST(Transmitter, GoesOnWarmAndWithItsNoiseWhenItChanges)
{
    TransmitterParameters parameters;
    Transmitter aged(parameters, 5);
    Transmitter young(parameters, 5);
    for (Transmitter* pTransmitter : {&aged, &young}) {
        pTransmitter->setRadiating(true);
        pTransmitter->setControlPowerDbm(10.0);
        pTransmitter->advance(60.0);
    }
    parameters.detectorOffsetDb = 1.0;
    parameters.detectorStepDb = 0.0;
    aged.change(parameters);
    parameters.detectorOffsetDb = 0.0;
    young.change(parameters);
    EXPECT_EQ(aged.amplifierDegrees(), young.amplifierDegrees());
    EXPECT_GT(aged.amplifierDegrees(), 30.0);
    for (int i = 0; i < 10; ++i) {
        EXPECT_NEAR(aged.readDetectorDbm() - young.readDetectorDbm(), 1.0, 1e-9);
    }
}

TEST(Transmitter, GivesLessPowerWhenItsChainHasLostGain)
{
    TransmitterParameters parameters;
    parameters.psatAboveMaxDb = 30.0;
    Transmitter transmitter(parameters);
    transmitter.setRadiating(true);
    transmitter.setControlPowerDbm(10.0);
    const double beforeDbm = transmitter.outputPowerDbm();
    parameters.chainGainDb -= 2.5;
    transmitter.change(parameters);
    EXPECT_NEAR(transmitter.outputPowerDbm(), beforeDbm - 2.5, 1e-6);
    transmitter.setControlPowerDbm(12.5);
    EXPECT_NEAR(transmitter.outputPowerDbm(), beforeDbm, 1e-6);
}
} // namespace
