/** @file
 * The quantities of a scenario that move.
 */
#pragma once

#include "Simulation/Transmitter/TransmitterParameters.h"
#include "Unit/Simulator/Scenario.h"
#include "Unit/Simulator/private/Drive.h"
#include "Unit/Simulator/private/MovingValue.h"

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

/** What a run gives its channel at a time. */
struct TimelinePoint
{
    double requestedPowerDbm;
    double frequencyMhz;
    double temperatureDegrees;
};

/** Requested power, frequency, temperature and transmitter over a run: from the drive until an event moves them. */
class Timeline
{
public:
    /** @throws ConfigurationError when the drive cannot be read */
    explicit Timeline(const Scenario& scenario);

    /** Begins the moves of an event that happens now. */
    void begin(const ScenarioEvent& event, std::int64_t nNs);

    /** @param nNs never goes back */
    const TimelinePoint& at(std::int64_t nNs);

    /** Brings the transmitter's parameters up to a time. @return whether they have moved since the last call */
    bool moveTransmitter(std::int64_t nNs);

    const TransmitterParameters& transmitter() const { return m_transmitter; }

private:
    /** A quantity, and where it is in the drive and in what is given to the channel. */
    struct Quantity
    {
        MovingValue value;
        std::optional<double> ProfilePoint::*pInDrive;
        double TimelinePoint::*pInPoint;
        bool bDriven;
    };

    void begin(Quantity& quantity, const std::optional<double>& target, const ScenarioEvent& event, std::int64_t nNs);
    void follow(std::int64_t nNs);

    std::unique_ptr<Drive> m_pDrive;
    std::array<Quantity, 3> m_quantities;
    TimelinePoint m_point;
    bool m_bDriven;
    bool m_bMoving = false;
    std::int64_t m_nStillFromNs = 0; // when the last move will have ended
    TransmitterParameters m_transmitter;
    std::vector<std::pair<double TransmitterParameters::*, MovingValue>> m_transmitterMoves;
};
