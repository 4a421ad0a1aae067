/** @file
 * The unit's temperature as its handler tells it.
 */
#pragma once

#include "Simulation/Handlers/ISimulatedTemperature.h"
#include "Unit/Text/PowerText.h"

#include <optional>

/** Tells a simulated temperature handler the whole degrees, when they have changed. */
class NotifiedTemperature
{
public:
    /** @param pTemperature null for none; must outlive this */
    explicit NotifiedTemperature(ISimulatedTemperature* pTemperature) : m_pTemperature(pTemperature) {}

    void set(double degreesCelsius)
    {
        const int nTemperature = nearestInteger(degreesCelsius);
        if (m_pTemperature != nullptr && m_nNotified != nTemperature) {
            m_pTemperature->setTemperature(nTemperature);
            m_nNotified = nTemperature;
        }
    }

private:
    ISimulatedTemperature* m_pTemperature;
    std::optional<int> m_nNotified;
};
