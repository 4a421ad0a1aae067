/** @file
 * What a control engineer wants to know of a run, in numbers.
 */
#pragma once

#include <array>
#include <cstddef>
#include <limits>

/** Stands for a measure that a run does not have, such as the settling time of one without a jump. */
inline constexpr double NO_MEASURE = std::numeric_limits<double>::quiet_NaN();

/** The measures of one channel's run. docs/simulation.md defines each. */
struct RunMeasures
{
    double steps = 0.0;
    double failedSteps = 0.0;
    double overruns = 0.0;
    double refusedCalls = NO_MEASURE;
    double safetyViolations = NO_MEASURE;

    double switchOns = 0.0;
    double switchOnsInBand = 0.0;
    double switchOnTo1DbMs = NO_MEASURE; /**< the longest of the run's, as all that come more than once */
    double switchOnTo01DbMs = NO_MEASURE;
    double rampSteps = NO_MEASURE;

    double switchOffs = 0.0;
    double switchOffMs = NO_MEASURE;
    double radiatingOffS = 0.0;

    double jumps = 0.0;
    double jumpsSettled = 0.0;
    double settlingMeanMs = NO_MEASURE;
    double settlingMaxMs = NO_MEASURE;
    double overshootDb = NO_MEASURE;

    double steadySteps = 0.0;
    double steadyMeanDb = NO_MEASURE;
    double steadyRmsDb = NO_MEASURE;
    double steadyP999Db = NO_MEASURE;
    double steadyMaxDb = NO_MEASURE;
    double limitCycleDb = NO_MEASURE; /**< 0 when the output was looked at and none was found */
    double limitCycleMs = NO_MEASURE;

    double largestPctrlStepDb = NO_MEASURE;
    double atUpperClampS = 0.0;
    double atLowerClampS = 0.0;

    double spuriousSteps = 0.0;
    double spuriousMaxDb = NO_MEASURE;
    double outside1DbS = 0.0;
    double outside2DbS = 0.0;

    double detectorState0Share = NO_MEASURE;
    double detectorState1Share = NO_MEASURE;
    double detectorState2Share = NO_MEASURE;

    double requestErrorMeanDb = NO_MEASURE;
    double requestErrorMaxDb = NO_MEASURE;
};

/** Which of two values of a measure is the worse one. */
enum class EWorse
{
    Larger,
    Smaller,
    FartherFromZero
};

/** A measure as people and programs name it. */
struct RunMeasureKey
{
    const char* pName; /**< unit included, such as "settling_max_ms" */
    double RunMeasures::*pField;
    const char* pMeaning; /**< one line for help texts and reports */
    EWorse eWorse = EWorse::Larger;
};

/** Number of keys in runMeasureKeys(). */
inline constexpr std::size_t RUN_MEASURE_COUNT = 37;

/** @return every measure, in the order of RunMeasures */
const std::array<RunMeasureKey, RUN_MEASURE_COUNT>& runMeasureKeys();
