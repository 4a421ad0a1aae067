#include "Platform/Calibration/CCalibrationHandler.h"
#include "Platform/Calibration/CalibrationTables.h"
#include "tests/platform/TestFile.h"

#include <gtest/gtest.h>

namespace
{

class CalibrationFileTest : public testing::Test
{
protected:
    CalibrationFileTest() { CalibrationTables::clear(); }
    void TearDown() override { CalibrationTables::clear(); }

    static CCalibrationTable* table()
    {
        CCalibrationTable* pTable = nullptr;
        CCalibrationHandler_GetTable("T", &pTable);
        return pTable;
    }
};

TEST_F(CalibrationFileTest, LoadsAGrid)
{
    const TestFile file(
        "# offsets in cdB\r\ntemperature \\ frequency,7100,7200,7300\r\n-40,10,20,30\r\n85,-10,-20,-31\r\n");
    CalibrationTables::loadFile("T", file.path());
    const struct
    {
        int nX;
        int nY;
        int nValue;
    } cases[] = {{7100, -40, 10}, {7300, -40, 30}, {7100, 85, -10}, {7300, 85, -31}, {7250, 85, -26}, {7200, 0, 7}};
    for (const auto& point : cases) {
        int nValue = 0;
        EXPECT_EQ(CCalibrationTable_BiLinearInterpolate(table(), point.nX, point.nY, &nValue), EAF_OK);
        EXPECT_EQ(nValue, point.nValue) << point.nX << ", " << point.nY;
    }
}

TEST_F(CalibrationFileTest, TellsWhereAFileIsWrongAndAddsNothing)
{
    const struct
    {
        const char* pContent;
        const char* pError;
    } cases[] = {
        {"", ": holds no table; begin with a row of a corner text and the x axis"},
        {"\ncorner\n1,2\n", ":2: has no x axis; write a corner text and at least one position"},
        {"corner,1,2\n", ":1: no values follow the x axis; add rows of a y position and its values"},
        {"corner,1,x\n", ":1: column 3: 'x' is not an integer; write a whole number such as -350"},
        {"corner,1,2,2\n0,1,2,3\n", ":1: column 4: 2 does not lie above 2 before it; give the axis in ascending order"},
        {"corner,1,2\n5,1,2\n\n4,1,2\n",
         ":4: column 1: 4 does not lie above 5 before it; give the axis in ascending order"},
        {"corner,1,2\n5,1\n", ":2: column 3: is missing in a row of 2; add a value"},
        {"corner,1,2\n5,1,2,3\n", ":2: column 4 has no position on the x axis of the first row; take the field out"},
        {"corner,1,2\n5,1,2.5\n", ":2: column 3: '2.5' is not an integer; write a whole number such as -350"},
        {"corner,1,2\n5,1,3000000000\n",
         ":2: column 3: '3000000000' does not fit 32 bits; write a number from -2147483648 to 2147483647"},
        {"corner,1,\"2\n", ":1: a quoted field of the row that begins here has no end; add the closing quotation mark"},
    };
    for (const auto& bad : cases) {
        const TestFile file(bad.pContent);
        EXPECT_EQ(errorOf([&file] { CalibrationTables::loadFile("T", file.path()); }), file.path() + bad.pError);
        EXPECT_EQ(table(), nullptr);
    }
}

TEST_F(CalibrationFileTest, TellsThatAFileCannotBeRead)
{
    EXPECT_EQ(errorOf([] { CalibrationTables::loadFile("T", "/tmp/no/such.csv"); }),
              "/tmp/no/such.csv: cannot be read (No such file or directory); give the path of a file that this user "
              "may read");
}

} // namespace
