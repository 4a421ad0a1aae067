#include "Platform/Calibration/private/CCalibrationTable.h"

#include <algorithm>
#include <cstddef>

namespace
{

/** Where a position lies on an axis: between two of its points, nPart of nWhole away from the lower one. */
struct AxisPosition
{
    std::size_t nLower;
    std::size_t nUpper;
    int64_t nPart;
    int64_t nWhole;
};

AxisPosition locate(const std::vector<int32_t>& axis, int32_t nPosition)
{
    const auto itAbove = std::upper_bound(axis.begin(), axis.end(), nPosition);
    if (itAbove == axis.begin()) {
        return {0, 0, 0, 1};
    }
    const auto nLower = static_cast<std::size_t>(itAbove - axis.begin()) - 1;
    if (itAbove == axis.end()) {
        return {nLower, nLower, 0, 1};
    }
    return {nLower, nLower + 1, int64_t{nPosition} - axis[nLower], int64_t{*itAbove} - axis[nLower]};
}

/** A number as a whole part and a remainder of 0 or more, in units of one divisor. */
struct Quotient
{
    int64_t nWhole;
    int64_t nRemainder;
};

Quotient divideDownwards(int64_t nDividend, int64_t nDivisor)
{
    Quotient result{nDividend / nDivisor, nDividend % nDivisor};
    if (result.nRemainder < 0) {
        result.nRemainder += nDivisor;
        --result.nWhole;
    }
    return result;
}

/**
 * Weighs two numbers.
 * @tparam TNumber int64_t for values, which fit when they and the axes have 32 bits; uint64_t for remainders, whose
 *                 sum stays below the product of two axis spacings
 */
template <class TNumber> TNumber weigh(int64_t nLower, int64_t nUpper, const AxisPosition& position)
{
    return static_cast<TNumber>(nLower) * static_cast<TNumber>(position.nWhole - position.nPart) +
           static_cast<TNumber>(nUpper) * static_cast<TNumber>(position.nPart);
}

} // namespace

// The value is a fraction whose numerator may need 96 bits. Taking whole parts out after each axis keeps every
// number within 64 bits and the result exact, on 32-bit machines too.
int32_t CCalibrationTable::interpolate(int32_t nX, int32_t nY) const
{
    const AxisPosition x = locate(grid.xAxis, nX);
    const AxisPosition y = locate(grid.yAxis, nY);
    const auto rowValue = [this, &x](std::size_t nRow) {
        const std::size_t nFirst = nRow * grid.xAxis.size();
        return divideDownwards(weigh<int64_t>(grid.values[nFirst + x.nLower], grid.values[nFirst + x.nUpper], x),
                               x.nWhole);
    };
    const Quotient lower = rowValue(y.nLower);
    const Quotient upper = rowValue(y.nUpper);

    const Quotient whole = divideDownwards(weigh<int64_t>(lower.nWhole, upper.nWhole, y), y.nWhole);
    // What is left over is two proper fractions of one denominator.
    const uint64_t nDenominator = static_cast<uint64_t>(x.nWhole) * static_cast<uint64_t>(y.nWhole);
    const uint64_t nFirst = static_cast<uint64_t>(whole.nRemainder) * static_cast<uint64_t>(x.nWhole);
    const auto nSecond = weigh<uint64_t>(lower.nRemainder, upper.nRemainder, y);

    int64_t nValue = whole.nWhole;
    uint64_t nFraction = nFirst + nSecond;
    if (nFirst >= nDenominator - nSecond) {
        ++nValue;
        nFraction = nFirst - (nDenominator - nSecond);
    }
    const uint64_t nRest = nDenominator - nFraction;
    if (nFraction > nRest || (nFraction == nRest && nValue >= 0)) {
        ++nValue;
    }
    return static_cast<int32_t>(nValue);
}
