#include "Platform/Calibration/CCalibrationHandler.h"

#include "Platform/Calibration/private/TableRegistry.h"

EAFResult CCalibrationHandler_GetTable(const char* pName, CCalibrationTable** ppTable)
{
    if (pName == nullptr || ppTable == nullptr) {
        return EAF_NULL_POINTER;
    }
    TableRegistry& registry = TableRegistry::get();
    const std::lock_guard<std::mutex> lock(registry.mutex);
    const auto it = registry.tables.find(pName);
    if (it == registry.tables.end()) {
        return EAF_FAILED;
    }
    *ppTable = &it->second;
    return EAF_OK;
}

EAFResult CCalibrationTable_IsValid(CCalibrationTable* pTable, int* pValid)
{
    if (pTable == nullptr || pValid == nullptr) {
        return EAF_NULL_POINTER;
    }
    *pValid = pTable->isValid() ? 1 : 0;
    return EAF_OK;
}

EAFResult CCalibrationTable_BiLinearInterpolate(CCalibrationTable* pTable, int nX, int nY, int* pValue)
{
    if (pTable == nullptr || pValue == nullptr) {
        return EAF_NULL_POINTER;
    }
    if (!pTable->isValid()) {
        return EAF_FAILED;
    }
    *pValue = pTable->interpolate(nX, nY);
    return EAF_OK;
}
