#include "Platform/Calibration/CCalibrationHandler.h"
#include "Platform/Calibration/CalibrationTables.h"
#include "tests/platform/TestFile.h"
#include "tests/support/AllocationCount.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <random>
#include <set>

namespace
{

constexpr int32_t LOWEST = std::numeric_limits<int32_t>::min();
constexpr int32_t HIGHEST = std::numeric_limits<int32_t>::max();

class CalibrationTest : public testing::Test
{
protected:
    CalibrationTest() { CalibrationTables::clear(); }
    void TearDown() override { CalibrationTables::clear(); }

    static CCalibrationTable* table(const char* pName)
    {
        CCalibrationTable* pTable = nullptr;
        EXPECT_EQ(CCalibrationHandler_GetTable(pName, &pTable), EAF_OK);
        return pTable;
    }

    static int value(CCalibrationTable* pTable, int nX, int nY)
    {
        int nValue = 0;
        EXPECT_EQ(CCalibrationTable_BiLinearInterpolate(pTable, nX, nY, &nValue), EAF_OK);
        return nValue;
    }

    static CCalibrationTable* add(CalibrationGrid grid)
    {
        CalibrationTables::add("T", std::move(grid));
        return table("T");
    }
};

TEST_F(CalibrationTest, RefusesNullArguments)
{
    CCalibrationTable* const pTable = add({{0}, {0}, {1}});
    CCalibrationTable* pFound = nullptr;
    int nValue = 77;
    EXPECT_EQ(CCalibrationHandler_GetTable(nullptr, &pFound), EAF_NULL_POINTER);
    EXPECT_EQ(CCalibrationHandler_GetTable("T", nullptr), EAF_NULL_POINTER);
    EXPECT_EQ(CCalibrationTable_IsValid(nullptr, &nValue), EAF_NULL_POINTER);
    EXPECT_EQ(CCalibrationTable_IsValid(pTable, nullptr), EAF_NULL_POINTER);
    EXPECT_EQ(CCalibrationTable_BiLinearInterpolate(nullptr, 0, 0, &nValue), EAF_NULL_POINTER);
    EXPECT_EQ(CCalibrationTable_BiLinearInterpolate(pTable, 0, 0, nullptr), EAF_NULL_POINTER);
    EXPECT_EQ(nValue, 77);
}

TEST_F(CalibrationTest, LeavesTheResultAloneForAnUnknownName)
{
    CCalibrationTable* const pBefore = add({{0}, {0}, {1}});
    CCalibrationTable* pTable = pBefore;
    EXPECT_EQ(CCalibrationHandler_GetTable("Unknown", &pTable), EAF_FAILED);
    EXPECT_EQ(pTable, pBefore);
}

TEST_F(CalibrationTest, TakesATableWithoutValuesForInvalid)
{
    CCalibrationTable* const pTable = add({});
    int nValid = 1;
    EXPECT_EQ(CCalibrationTable_IsValid(pTable, &nValid), EAF_OK);
    EXPECT_EQ(nValid, 0);
    int nValue = 77;
    EXPECT_EQ(CCalibrationTable_BiLinearInterpolate(pTable, 0, 0, &nValue), EAF_FAILED);
    EXPECT_EQ(nValue, 77);
}

TEST_F(CalibrationTest, ReplacesATableAtItsAddress)
{
    CCalibrationTable* const pTable = add({});
    EXPECT_EQ(add({{0}, {0}, {5}}), pTable);
    int nValid = 0;
    EXPECT_EQ(CCalibrationTable_IsValid(pTable, &nValid), EAF_OK);
    EXPECT_NE(nValid, 0);
    EXPECT_EQ(value(pTable, 9, 9), 5);
}

TEST_F(CalibrationTest, InterpolatesAndClamps)
{
    // Rows are y: at 0 the values 0 and 10, at 100 the values 20 and 40.
    CCalibrationTable* const pTable = add({{-10, 10}, {0, 100}, {0, 10, 20, 40}});
    const struct
    {
        int nX;
        int nY;
        int nValue;
    } cases[] = {{-10, 0, 0},
                 {10, 0, 10},
                 {-10, 100, 20},
                 {10, 100, 40},
                 {0, 0, 5},
                 {0, 100, 30},
                 {-10, 50, 10},
                 {10, 50, 25},
                 {0, 50, 18},
                 {-11, -1, 0},
                 {11, -1, 10},
                 {-11, 101, 20},
                 {11, 101, 40},
                 {0, -1000, 5},
                 {1000, 50, 25},
                 {LOWEST, 50, 10},
                 {HIGHEST, HIGHEST, 40},
                 {LOWEST, LOWEST, 0}};
    for (const auto& point : cases) {
        EXPECT_EQ(value(pTable, point.nX, point.nY), point.nValue) << point.nX << ", " << point.nY;
    }
}

TEST_F(CalibrationTest, RoundsHalvesAwayFromZero)
{
    CCalibrationTable* const pUp = add({{0, 4}, {0}, {0, 6}});
    EXPECT_EQ(value(pUp, 1, 0), 2);
    EXPECT_EQ(value(pUp, 2, 0), 3);
    EXPECT_EQ(value(pUp, 3, 0), 5);
    CCalibrationTable* const pDown = add({{0, 4}, {0}, {0, -6}});
    EXPECT_EQ(value(pDown, 1, 0), -2);
    EXPECT_EQ(value(pDown, 3, 0), -5);
    CCalibrationTable* const pThroughZero = add({{0, 10}, {0}, {-1, 1}});
    EXPECT_EQ(value(pThroughZero, 2, 0), -1);
    EXPECT_EQ(value(pThroughZero, 3, 0), 0);
    EXPECT_EQ(value(pThroughZero, 7, 0), 0);
    EXPECT_EQ(value(pThroughZero, 8, 0), 1);
    CCalibrationTable* const pHalf = add({{0, 2}, {0}, {-1, 0}});
    EXPECT_EQ(value(pHalf, 1, 0), -1);
}

TEST_F(CalibrationTest, ServesASingleRowColumnOrValue)
{
    CCalibrationTable* const pRow = add({{0, 10, 20}, {5}, {0, 100, 50}});
    EXPECT_EQ(value(pRow, 5, -7), 50);
    EXPECT_EQ(value(pRow, 15, 700), 75);
    CCalibrationTable* const pColumn = add({{5}, {0, 10, 20}, {0, 100, 50}});
    EXPECT_EQ(value(pColumn, -7, 5), 50);
    EXPECT_EQ(value(pColumn, 700, 15), 75);
    CCalibrationTable* const pValue = add({{5}, {5}, {-3}});
    EXPECT_EQ(value(pValue, 0, 10), -3);
}

TEST_F(CalibrationTest, AllocatesNothing)
{
    CCalibrationTable* const pTable = add({{-10, 10}, {0, 100}, {0, 10, 20, 40}});
    const std::size_t nBefore = allocationCount();
    int nValue = 0;
    CCalibrationTable_BiLinearInterpolate(pTable, 3, 4, &nValue);
    EXPECT_EQ(allocationCount(), nBefore);
}

TEST_F(CalibrationTest, RefusesAGridThatIsNone)
{
    const struct
    {
        CalibrationGrid grid;
        const char* pError;
    } cases[] = {
        {{{0, 0}, {0}, {1, 2}},
         "calibration table T: x axis does not ascend from 0 to 0; give each position once, in ascending order"},
        {{{0}, {1, 5, 3}, {1, 2, 3}},
         "calibration table T: y axis does not ascend from 5 to 3; give each position once, in ascending order"},
        {{{0, 1}, {0, 1}, {1, 2, 3}},
         "calibration table T: 3 values for 2 by 2 positions; give one value for each pair of positions"},
        {{{}, {}, {1}},
         "calibration table T: 1 values for 0 by 0 positions; give one value for each pair of positions"},
    };
    for (const auto& bad : cases) {
        EXPECT_EQ(errorOf([&bad] { CalibrationTables::add("T", bad.grid); }), bad.pError);
        CCalibrationTable* pTable = nullptr;
        EXPECT_EQ(CCalibrationHandler_GetTable("T", &pTable), EAF_FAILED);
    }
}

#ifdef __SIZEOF_INT128__

__extension__ using Int128 = __int128;

/** The four corners weighed by the areas opposite, in one fraction. */
int32_t weighCorners(const CalibrationGrid& grid, int32_t nX, int32_t nY)
{
    const auto cell = [](const std::vector<int32_t>& axis, int32_t nPosition) {
        std::size_t nCell = 0;
        while (nCell + 2 < axis.size() && axis[nCell + 1] <= nPosition) {
            ++nCell;
        }
        return nCell;
    };
    const std::size_t nColumn = cell(grid.xAxis, nX);
    const std::size_t nRow = cell(grid.yAxis, nY);
    const std::size_t nNextColumn = std::min(nColumn + 1, grid.xAxis.size() - 1);
    const std::size_t nNextRow = std::min(nRow + 1, grid.yAxis.size() - 1);
    const Int128 x1 = grid.xAxis[nColumn];
    const Int128 x2 = nNextColumn == nColumn ? x1 + 1 : Int128{grid.xAxis[nNextColumn]};
    const Int128 y1 = grid.yAxis[nRow];
    const Int128 y2 = nNextRow == nRow ? y1 + 1 : Int128{grid.yAxis[nNextRow]};
    const Int128 x = std::clamp(nX, grid.xAxis.front(), grid.xAxis.back());
    const Int128 y = std::clamp(nY, grid.yAxis.front(), grid.yAxis.back());
    const auto at = [&grid](std::size_t nAtRow, std::size_t nAtColumn) {
        return Int128{grid.values[nAtRow * grid.xAxis.size() + nAtColumn]};
    };
    const Int128 nNumerator = at(nRow, nColumn) * (x2 - x) * (y2 - y) + at(nRow, nNextColumn) * (x - x1) * (y2 - y) +
                              at(nNextRow, nColumn) * (x2 - x) * (y - y1) +
                              at(nNextRow, nNextColumn) * (x - x1) * (y - y1);
    const Int128 nDenominator = (x2 - x1) * (y2 - y1);
    const Int128 nMagnitude = nNumerator < 0 ? -nNumerator : nNumerator;
    const Int128 nRounded = (2 * nMagnitude + nDenominator) / (2 * nDenominator);
    return static_cast<int32_t>(nNumerator < 0 ? -nRounded : nRounded);
}

class RandomGrids
{
public:
    /** @param nReach largest magnitude of axes and values */
    explicit RandomGrids(int64_t nReach) : m_nReach(nReach) {}

    CalibrationGrid next()
    {
        CalibrationGrid grid{axis(), axis(), {}};
        grid.values.resize(grid.xAxis.size() * grid.yAxis.size());
        for (int32_t& nValue : grid.values) {
            nValue = number(m_nReach);
        }
        return grid;
    }

    /** @return a number a little beyond the reach, so that edges are met */
    int32_t position() { return number(m_nReach + m_nReach / 8 + 1); }

private:
    int32_t number(int64_t nReach)
    {
        const int64_t nLowest = std::max<int64_t>(-nReach - 1, LOWEST);
        const int64_t nHighest = std::min<int64_t>(nReach, HIGHEST);
        return static_cast<int32_t>(std::uniform_int_distribution<int64_t>(nLowest, nHighest)(m_random));
    }

    std::vector<int32_t> axis()
    {
        std::set<int32_t> positions;
        const auto nPositions = std::uniform_int_distribution<std::size_t>(1, 5)(m_random);
        while (positions.size() < nPositions) {
            positions.insert(number(m_nReach));
        }
        return {positions.begin(), positions.end()};
    }

    int64_t m_nReach;
    std::mt19937_64 m_random{20160316};
};

TEST_F(CalibrationTest, AgreesWithTheWeightedCorners)
{
    for (const int64_t nReach : {int64_t{4}, int64_t{50}, int64_t{10000}, int64_t{HIGHEST}}) {
        RandomGrids grids(nReach);
        for (int nGrid = 0; nGrid < 300; ++nGrid) {
            const CalibrationGrid grid = grids.next();
            CCalibrationTable* const pTable = add(grid);
            for (int nPoint = 0; nPoint < 50; ++nPoint) {
                const int32_t nX = grids.position();
                const int32_t nY = grids.position();
                ASSERT_EQ(value(pTable, nX, nY), weighCorners(grid, nX, nY)) << nX << ", " << nY;
            }
        }
    }
}

TEST_F(CalibrationTest, IsExactAtTheExtremes)
{
    const int32_t extremes[] = {LOWEST, LOWEST + 1, -1, 0, 1, HIGHEST - 1, HIGHEST};
    for (const int32_t nFirst : extremes) {
        for (const int32_t nSecond : extremes) {
            for (const int32_t nThird : extremes) {
                const CalibrationGrid grid{{LOWEST, HIGHEST}, {LOWEST, HIGHEST}, {nFirst, nSecond, nThird, HIGHEST}};
                CCalibrationTable* const pTable = add(grid);
                for (const int32_t nX : extremes) {
                    for (const int32_t nY : extremes) {
                        ASSERT_EQ(value(pTable, nX, nY), weighCorners(grid, nX, nY))
                            << nFirst << ", " << nSecond << ", " << nThird << " at " << nX << ", " << nY;
                    }
                }
            }
        }
    }
}

#endif

} // namespace
