#include "Control/OutputPowerController/private/OutputPowerController.h"

int OutputPowerController::getBilinearTableValue(CCalibrationTable* pTable, int nX, int nY, int* pValue) const
{
    int nValue = 0;
    int nValid = 0;
    if (pTable != nullptr && !EAF_isFailure(CCalibrationTable_IsValid(pTable, &nValid)) && nValid != 0) {
        CCalibrationTable_BiLinearInterpolate(pTable, nX, nY, &nValue);
    }
    *pValue = nValue;
    return EAF_OK;
}

unsigned int OutputPowerController::calculateElapsedTimeMillisec(timespec* pStart) const
{
    constexpr long NANOSECONDS_PER_SECOND = 1'000'000'000;
    constexpr long NANOSECONDS_PER_MILLISECOND = 1'000'000;

    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    auto nSeconds = static_cast<std::int64_t>(now.tv_sec) - pStart->tv_sec;
    long nNanoseconds = now.tv_nsec - pStart->tv_nsec;
    if (nNanoseconds < 0) {
        --nSeconds;
        nNanoseconds += NANOSECONDS_PER_SECOND;
    }
    return static_cast<unsigned int>(nSeconds * 1000 + nNanoseconds / NANOSECONDS_PER_MILLISECOND);
}
