/** @file
 * Calibration tables: values over two axes, fetched by name.
 */
#pragma once

#include "Platform/EAFResult.h"

#ifdef __cplusplus
extern "C" {
#endif

/** A calibration table; owned by the platform and valid while the process runs. */
typedef struct CCalibrationTable CCalibrationTable;

/**
 * Fetches a table.
 * @param pName name of the table
 * @param[out] ppTable the table; not written on failure
 * @return EAF_OK; EAF_NULL_POINTER for a null argument; EAF_FAILED when there is no table of that name
 */
EAF_PUBLIC EAFResult CCalibrationHandler_GetTable(const char* pName, CCalibrationTable** ppTable);

/**
 * Tells whether a table holds data.
 * @param pTable the table
 * @param[out] pValid non-zero when it does
 * @return EAF_OK, or EAF_NULL_POINTER for a null argument
 */
EAF_PUBLIC EAFResult CCalibrationTable_IsValid(CCalibrationTable* pTable, int* pValid);

/**
 * Interpolates a table bilinearly. Allocates nothing and takes no lock.
 * @param pTable the table
 * @param nX position on the first axis, in that axis' unit
 * @param nY position on the second axis, in that axis' unit
 * @param[out] pValue the value in the table's unit, rounded to nearest; not written on failure
 * @return EAF_OK; EAF_NULL_POINTER for a null argument; EAF_FAILED when the table holds no data
 */
EAF_PUBLIC EAFResult CCalibrationTable_BiLinearInterpolate(CCalibrationTable* pTable, int nX, int nY, int* pValue);

#ifdef __cplusplus
}
#endif
