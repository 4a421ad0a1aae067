/** @file
 * Many steps of a run as a few numbers.
 */
#pragma once

#include "Unit/Simulator/VirtualRun.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>

/** What is followed over a run. */
enum class EQuantity : std::size_t
{
    RequestedPower,
    TargetPower,
    ControlPower,
    MeasuredPower,
    OutputPower,  /**< true power */
    ControlError, /**< target less measured power, of closed-loop steps */
    OutputError,  /**< true power less target, of closed-loop steps */
    Temperature,
    Frequency
};

/** A quantity as columns name it. */
struct QuantityKey
{
    const char* pName; /**< the unit comes after what is taken of it: "pctrl", then "_min", then "_dBm" */
    const char* pUnit;
    int nDecimals;
};

inline constexpr std::size_t QUANTITY_COUNT = 9;

/** @return every quantity, in the order of EQuantity */
const std::array<QuantityKey, QUANTITY_COUNT>& quantityKeys();

/** Smallest, largest and mean of values. */
struct ValueRange
{
    double minimum = std::numeric_limits<double>::infinity();
    double maximum = -std::numeric_limits<double>::infinity();
    double sum = 0.0;
    std::uint64_t nValues = 0;

    bool hasValues() const { return nValues > 0; }
    double mean() const { return sum / static_cast<double>(nValues); }
    void add(double value);
    void add(const ValueRange& other);
};

/** How far on a transmitter is. */
enum EOnDegree
{
    eDEGREE_OFF,
    eDEGREE_SWITCHING,
    eDEGREE_RAMPING,
    eDEGREE_ON
};

/** @return how far on a state is @param nState EOPCState */
EOnDegree onDegree(std::int32_t nState);

/** Steps that follow each other. A power that is off has no value. */
struct StepBucket
{
    double firstSeconds = 0.0;
    double lastSeconds = 0.0;
    std::uint64_t nSteps = 0;
    std::uint64_t nFailedSteps = 0;
    std::int32_t nLastState = 0;    /**< EOPCState */
    int nLowestDegree = eDEGREE_ON; /**< EOnDegree of the steps that were furthest from on */
    std::array<ValueRange, QUANTITY_COUNT> ranges;

    const ValueRange& range(EQuantity eQuantity) const { return ranges[static_cast<std::size_t>(eQuantity)]; }
    void add(const VirtualStep& step);
    void add(const StepBucket& later);

private:
    void addPower(EQuantity eQuantity, std::int32_t nCentiDbm);
    ValueRange& range(EQuantity eQuantity) { return ranges[static_cast<std::size_t>(eQuantity)]; }
};
