// A calibration table: valid when it is accepted, exact at its points, and nowhere beyond its values.
#include "Platform/Calibration/CCalibrationHandler.h"
#include "Platform/Calibration/CalibrationTables.h"
#include "Platform/Csv/CsvFile.h"
#include "tests/fuzz/FuzzTarget.h"

#include <algorithm>
#include <cstring>

namespace
{
constexpr const char* NAME = "Table";

int valueAt(CCalibrationTable* pTable, int nX, int nY)
{
    int nValue = 0;
    require(CCalibrationTable_BiLinearInterpolate(pTable, nX, nY, &nValue) == EAF_OK, "a value that cannot be had");
    return nValue;
}

CCalibrationTable* table()
{
    CCalibrationTable* pTable = nullptr;
    int nValid = 0;
    require(CCalibrationHandler_GetTable(NAME, &pTable) == EAF_OK, "no table");
    require(CCalibrationTable_IsValid(pTable, &nValid) == EAF_OK && nValid == 1, "an invalid table");
    return pTable;
}

void checkTable(const std::string& sPath, const std::string& sText)
{
    const CsvFile file(sPath);
    CCalibrationTable* const pTable = table();
    int nLowest = file.integer(file.rows().at(1), 1);
    int nHighest = nLowest;
    for (auto row = file.rows().begin() + 1; row != file.rows().end(); ++row) {
        for (std::size_t nColumn = 1; nColumn < row->fields.size(); ++nColumn) {
            const int nValue = file.integer(*row, nColumn);
            nLowest = std::min(nLowest, nValue);
            nHighest = std::max(nHighest, nValue);
            require(valueAt(pTable, file.integer(file.rows().front(), nColumn), file.integer(*row, 0)) == nValue,
                    "a table that is not exact at its points");
        }
    }
    int anPosition[2] = {0, 0}; // anywhere
    std::memcpy(anPosition, sText.data(), std::min(sizeof(anPosition), sText.size()));
    for (const int nX : {anPosition[0], anPosition[0] % 1000, 0}) {
        for (const int nY : {anPosition[1], anPosition[1] % 1000, 0}) {
            requireWithin(valueAt(pTable, nX, nY), nLowest, nHighest, "a value between");
        }
    }
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize)
{
    const std::string sText = inputText(pData, nSize);
    const std::string sPath = writeInFolder("table.csv", sText);
    CalibrationTables::clear();
    if (accepts(sPath, sText, [&] { CalibrationTables::loadFile(NAME, sPath); })) {
        checkTable(sPath, sText);
    }
    else {
        CCalibrationTable* pTable = nullptr;
        require(CCalibrationHandler_GetTable(NAME, &pTable) != EAF_OK, "a table of a file that was refused");
    }
    return 0;
}
