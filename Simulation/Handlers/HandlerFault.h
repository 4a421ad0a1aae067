/** @file
 * What can go wrong with a simulated handler.
 */
#pragma once

#include <cstdint>
#include <optional>
#include <string>

/** Operations of the output power handler that can be made to fail. */
enum class EHandlerOperation
{
    SetOutputPower,
    SetTxState,
    SetProductionTestSettings,
    GetReducedGainFromAmplifier,
    GetTxPowerReadings,
    CalculateDetectorUsage,
    GetPmeasured,
    SetZembraMlmTrafTx,
    GetPctrlLimits,
    Count
};

/** Kinds of faults. */
enum class EHandlerFault
{
    None,        /**< works */
    Fail,        /**< fails at every call */
    FailTimes,   /**< fails at the next calls, then works again */
    Stuck,       /**< reads the last value again and again, or takes settings without effect */
    WrongValue,  /**< reads a given value, or sets it instead of the value asked for */
    Slow,        /**< works, but takes its time */
    Intermittent /**< fails now and then, by chance */
};

/** A fault of one operation. */
struct HandlerFault
{
    EHandlerFault eKind = EHandlerFault::None;
    unsigned int nTimes = 1;  /**< FailTimes: how many calls fail */
    std::int32_t nValue = 0;  /**< WrongValue: what is read or set */
    unsigned int delayUs = 0; /**< Slow: how long a call takes */
    double probability = 0.5; /**< Intermittent: how likely a call fails, 0 to 1 */
};

/** @return the operation's name as the handler's table has it, such as "getPmeasured" */
const char* handlerOperationName(EHandlerOperation eOperation);

/** @return the operation of that name, if there is one */
std::optional<EHandlerOperation> handlerOperationByName(const std::string& sName);

/** @return the kind's name as people write it: "none", "fail", "fail-times", "stuck", "wrong-value", "slow" or
 * "intermittent" */
const char* handlerFaultName(EHandlerFault eKind);

/** @return the kind of that name, if there is one; "off" is another word for fail, "wrong" for wrong-value */
std::optional<EHandlerFault> handlerFaultByName(const std::string& sName);
