#include "Unit/Simulator/private/Timeline.h"

#include "Unit/Simulator/private/VirtualTime.h"

#include <algorithm>

Timeline::Timeline(const Scenario& scenario)
    : m_pDrive(scenario.drive.sFile.empty() ? nullptr : std::make_unique<Drive>(scenario.drive)),
      m_quantities{{{MovingValue(scenario.channel().requestedPowerDbm), &ProfilePoint::requestedPowerDbm,
                     &TimelinePoint::requestedPowerDbm, false},
                    {MovingValue(scenario.channel().frequencyMhz), &ProfilePoint::frequencyMhz,
                     &TimelinePoint::frequencyMhz, false},
                    {MovingValue(scenario.unit.temperatureDegrees), &ProfilePoint::temperatureDegrees,
                     &TimelinePoint::temperatureDegrees, false}}},
      m_point{}, m_bDriven(m_pDrive != nullptr), m_transmitter(scenario.channel().transmitter)
{
    if (m_bDriven) {
        const ProfilePoint first = m_pDrive->at(0);
        for (Quantity& quantity : m_quantities) {
            quantity.bDriven = (first.*quantity.pInDrive).has_value();
        }
    }
    follow(0);
}

void Timeline::begin(const ScenarioEvent& event, std::int64_t nNs)
{
    follow(nNs); // moves begin where the values are
    begin(m_quantities[0], event.requestedPowerDbm, event, nNs);
    begin(m_quantities[1], event.frequencyMhz, event, nNs);
    begin(m_quantities[2], event.temperatureDegrees, event, nNs);
    m_bDriven = std::any_of(m_quantities.begin(), m_quantities.end(),
                            [](const Quantity& quantity) { return quantity.bDriven; });
    if (event.transmitter.empty()) {
        return;
    }
    moveTransmitter(nNs);
    for (const auto& [pKey, target] : event.transmitter) {
        double TransmitterParameters::*const pField = pKey->pField;
        std::erase_if(m_transmitterMoves, [pField](const auto& move) { return move.first == pField; });
        m_transmitterMoves.emplace_back(pField, MovingValue(target));
        m_transmitterMoves.back().second.move(m_transmitter.*pField, target, nNs, toNs(event.overSeconds));
    }
}

void Timeline::begin(Quantity& quantity, const std::optional<double>& target, const ScenarioEvent& event,
                     std::int64_t nNs)
{
    if (target) {
        quantity.bDriven = false;
        quantity.value.move(m_point.*quantity.pInPoint, *target, nNs, toNs(event.overSeconds));
        m_nStillFromNs = std::max(m_nStillFromNs, quantity.value.endNs());
        m_bMoving = true;
    }
}

const TimelinePoint& Timeline::at(std::int64_t nNs)
{
    if (m_bDriven || m_bMoving) {
        follow(nNs);
        m_bMoving = nNs < m_nStillFromNs;
    }
    return m_point;
}

void Timeline::follow(std::int64_t nNs)
{
    ProfilePoint driven;
    if (m_bDriven) {
        driven = m_pDrive->at(nNs);
    }
    for (const Quantity& quantity : m_quantities) {
        m_point.*quantity.pInPoint = quantity.bDriven ? *(driven.*quantity.pInDrive) : quantity.value.at(nNs);
    }
}

bool Timeline::moveTransmitter(std::int64_t nNs)
{
    if (m_transmitterMoves.empty()) {
        return false;
    }
    for (const auto& [pField, value] : m_transmitterMoves) {
        m_transmitter.*pField = value.at(nNs);
    }
    std::erase_if(m_transmitterMoves, [nNs](const auto& move) { return move.second.endNs() <= nNs; });
    return true;
}
