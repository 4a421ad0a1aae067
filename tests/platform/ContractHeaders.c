#include "tests/platform/ContractHeaders.h"

#include "Control/OutputPowerController/IOutputPowerControlLog_c.h"
#include "Control/OutputPowerController/IOutputPowerController_c.h"
#include "Control/OutputPowerController/OutputPowerController_c.h"
#include "Control/OutputPowerHandler/IOutputPowerHandler_c.h"
#include "Platform/Broker/CInterfaceBroker.h"
#include "Platform/Calibration/CCalibrationHandler.h"
#include "Platform/EAFResult.h"
#include "Platform/ModuleFramework/PhaseDriver_c.h"
#include "Platform/Storage/CStorageManager.h"
#include "Platform/TestInterface/TestInterface.h"
#include "Platform/Trace/GtTrace.h"

#include <stddef.h>

static long restart(void* vpThis)
{
    ++*(int*)vpThis;
    return EAF_OK;
}

int useBrokerFromC(void)
{
    int nRestarts = 0;
    IOutputPowerControlLogCStruct log = {&nRestarts, restart};
    void* pBroker = NULL;
    if (CInterfaceBroker_GetInstance(&pBroker) != EAF_OK) {
        return 1;
    }
    if (CInterfaceBroker_RegisterInterface(pBroker, "FromC", &log) != EAF_OK) {
        return 2;
    }
    if (restartLogsFromC("FromC") != EAF_OK || nRestarts != 1) {
        return 3;
    }
    if (CInterfaceBroker_UnregisterInterface(pBroker, "FromC", &log) != EAF_OK) {
        return 4;
    }
    if (restartLogsFromC("FromC") != -1 || nRestarts != 1) {
        return 5;
    }
    return EAF_isFailure(CInterfaceBroker_DestroyInstance(pBroker)) ? 6 : 0;
}

long restartLogsFromC(const char* pName)
{
    void* pBroker = NULL;
    void* pFound = NULL;
    if (EAF_isFailure(CInterfaceBroker_GetInstance(&pBroker)) ||
        EAF_isFailure(CInterfaceBroker_GetInterface(pBroker, pName, &pFound)))
    {
        return -1;
    }
    const IOutputPowerControlLogCStruct* const pLog = pFound;
    return pLog->logsRestart(pLog->vpThis);
}
