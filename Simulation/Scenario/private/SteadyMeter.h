/** @file
 * How far the output power is off when nothing moves.
 */
#pragma once

#include "Simulation/Scenario/ErrorHistogram.h"
#include "Simulation/Scenario/RunMeasures.h"

/** Sums up the errors of the steady steps. */
class SteadyMeter
{
public:
    /** Takes in a steady step. Errors are output power less reference, and less the requested power. */
    void add(double errorDb, double requestErrorDb);

    /** Writes the measures that are its own. */
    void fill(RunMeasures& measures) const;

private:
    ErrorHistogram m_errors;
    double m_sum = 0.0;
    double m_sumOfSquares = 0.0;
    double m_max = 0.0;
    double m_requestSum = 0.0;
    double m_requestMax = 0.0;
};
