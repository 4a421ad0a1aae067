/** @file
 * A step's arithmetic written a second time: in 64 bits, with the wrap to 32 bits as an explicit modulus.
 */
#pragma once

#include "Control/OutputPowerController/private/RegulatorStep.h"

#include <cstdint>
#include <string>

namespace StepModel
{
/** @return the value modulo 2^32, as a signed 32-bit integer would hold it */
std::int64_t wrapped(std::int64_t nValue);

/** @return the upper limit above it, else the lower limit below it, else the value */
std::int64_t limited(std::int64_t nValue, std::int64_t nLower, std::int64_t nUpper);

std::int64_t gainStep(std::int64_t nGainPercent, std::int64_t nPowerError);

std::int64_t rampPctrl(std::int64_t nPctrl, std::int64_t nGainPercent, std::int64_t nPowerError, std::int64_t nTxPmin,
                       std::int64_t nPctrlMax);

RegulatorStep::ClosedLoopResult closedLoop(const RegulatorStep::ClosedLoopInput& input);

bool isSame(const RegulatorStep::ClosedLoopResult& a, const RegulatorStep::ClosedLoopResult& b);

/** @return a readable form for failure messages */
std::string textOf(const RegulatorStep::ClosedLoopInput& input);
/** @copydoc textOf */
std::string textOf(const RegulatorStep::ClosedLoopResult& result);
} // namespace StepModel
