/** @file
 * A module in C that uses a channel's controller: it finds the controller and its log by name, observes what they say,
 * and sets what a client may set. All of it goes through the C interface broker and the C function tables.
 *
 * The requested power itself is no setting: it comes with every regulator call, from whoever makes these calls.
 * Powers are in hundredths of a dBm.
 */
#include "Control/OutputPowerController/IOutputPowerControlLog_c.h"
#include "Control/OutputPowerController/IOutputPowerController_c.h"
#include "Platform/Broker/CInterfaceBroker.h"
#include "Platform/EAFResult.h"

#include <stdio.h>

enum
{
    CHANNEL_COUNT = 10,
    NOTE_COUNT = 12,
    NAME_LENGTH = 64,
    PMIN_CENTI_DBM = -900,
    PMAX_CENTI_DBM = 2900,
    GAIN_PERCENT = 25
};

/** What there are observers for. */
typedef enum EKind
{
    eKIND_POWER_MODE,
    eKIND_TARGET,
    eKIND_PREDICTED,
    eKIND_CONTROL,
    eKIND_COUNT
} EKind;

static const char* const KIND_NAMES[eKIND_COUNT] = {"power mode", "target", "predicted control power", "control power"};

/** A notification that was received. */
typedef struct Note
{
    EKind eKind;
    int nValue;
} Note;

/** The module of a channel. */
typedef struct Client
{
    const IOutputPowerControllerCStruct* pController;
    const IOutputPowerControlLogCStruct* pLog;
    IOpcPowerModeObserver powerModeObserver;
    IOpcPtargetObserver targetObserver;
    IOpcPredictedPctrlObserver predictedObserver;
    IOpcPctrlObserver controlObserver;
    unsigned int nChannel;
    unsigned int nTold;
    unsigned int anTold[eKIND_COUNT];
    Note notes[NOTE_COUNT]; /**< the first notifications */
} Client;

/* Not allocated: a controller keeps its observers' records for as long as it lives, which may be longer than this
   module does, and nobody can take them out. These are there until the library is unloaded. */
static Client s_clients[CHANNEL_COUNT];

EAF_PUBLIC void Client_Construct(void** ppModule, unsigned int nChannel);
EAF_PUBLIC void Client_Destruct(void* pModule);
EAF_PUBLIC long Client_Initialize(void* pModule);
EAF_PUBLIC long Client_Uninitialize(void* pModule);

/** Runs in the thread that regulates, most of the time: keeps the value, and leaves what may take long for later. */
static void keep(Client* pClient, EKind eKind, int nValue)
{
    if (pClient->nTold < NOTE_COUNT) {
        const Note note = {eKind, nValue};
        pClient->notes[pClient->nTold] = note;
    }
    ++pClient->nTold;
    ++pClient->anTold[eKind];
}

static void onPowerMode(void* vpThis, unsigned int nChannel, ETxPowerMode eMode)
{
    (void)nChannel;
    keep(vpThis, eKIND_POWER_MODE, (int)eMode);
}

static void onTarget(void* vpThis, unsigned int nChannel, int nPtarget)
{
    (void)nChannel;
    keep(vpThis, eKIND_TARGET, nPtarget);
}

static void onPredicted(void* vpThis, unsigned int nChannel, int nPredictedPctrl)
{
    (void)nChannel;
    keep(vpThis, eKIND_PREDICTED, nPredictedPctrl);
}

static void onControl(void* vpThis, unsigned int nChannel, int nPctrl)
{
    (void)nChannel;
    keep(vpThis, eKIND_CONTROL, nPctrl);
}

/** @return the table published for a channel: under the plain name for channel 0, else with "_" and the channel */
static const void* findTable(const char* pName, unsigned int nChannel)
{
    char sName[NAME_LENGTH];
    void* pBroker = NULL;
    void* pTable = NULL;
    if (nChannel == 0) {
        (void)snprintf(sName, sizeof sName, "%s", pName);
    }
    else {
        (void)snprintf(sName, sizeof sName, "%s_%u", pName, nChannel);
    }
    CInterfaceBroker_GetInstance(&pBroker);
    CInterfaceBroker_GetInterface(pBroker, sName, &pTable);
    CInterfaceBroker_DestroyInstance(pBroker);
    if (pTable == NULL) {
        printf("Client: nothing is published as %s\n", sName);
    }
    return pTable;
}

static void observe(Client* pClient)
{
    const IOutputPowerControllerCStruct* pController = pClient->pController;
    const IOpcPowerModeObserver powerMode = {pClient, onPowerMode};
    const IOpcPtargetObserver target = {pClient, onTarget};
    const IOpcPredictedPctrlObserver predicted = {pClient, onPredicted};
    const IOpcPctrlObserver control = {pClient, onControl};
    pClient->powerModeObserver = powerMode;
    pClient->targetObserver = target;
    pClient->predictedObserver = predicted;
    pClient->controlObserver = control;
    pController->staticRegisterPowerModeObserver(pController->vpThis, &pClient->powerModeObserver);
    pController->staticRegisterPtargetObserver(pController->vpThis, &pClient->targetObserver);
    pController->staticRegisterPredictedPctrlObserver(pController->vpThis, &pClient->predictedObserver);
    pController->staticRegisterPctrlObserver(pController->vpThis, &pClient->controlObserver);
}

/** Sets limits, gains and the power mode, and asks for the transmitter to be on. @return EAF_OK or the first failure */
static long set(const IOutputPowerControllerCStruct* pController)
{
    void* vpThis = pController->vpThis;
    long nGainPercent = 0;
    pController->staticSetTxPminPmax(vpThis, PMIN_CENTI_DBM, PMAX_CENTI_DBM);
    pController->staticSetGain(vpThis, eOPH_DETECTOR_STATE_0, eOPC_TX_ON, GAIN_PERCENT);
    pController->staticGetGain(vpThis, eOPH_DETECTOR_STATE_0, eOPC_TX_ON, &nGainPercent);
    printf("Client: gain of detector state 0 is %ld %%\n", nGainPercent);
    return pController->staticSetRequestedTxPowerState(vpThis, eREQUESTED_TX_POWER_ON, eTX_POWER_MODE_STEP_LIMITED);
}

void Client_Construct(void** ppModule, unsigned int nChannel)
{
    *ppModule = NULL;
    if (nChannel < CHANNEL_COUNT) {
        const Client fresh = {.nChannel = nChannel};
        s_clients[nChannel] = fresh;
        *ppModule = &s_clients[nChannel];
    }
}

/* A controller is published when it is constructed, its log when it is initialised: a module that stands behind the
   controller in the loader's list finds both here. Nobody regulates yet, so that this thread may use the tables. */
long Client_Initialize(void* pModule)
{
    Client* pClient = pModule;
    pClient->pController = findTable("IOutputPowerController", pClient->nChannel);
    pClient->pLog = findTable("IOutputPowerControlLog", pClient->nChannel);
    if (pClient->pController == NULL || pClient->pLog == NULL) {
        return EAF_FAILED;
    }
    observe(pClient);
    if (EAF_isFailure(pClient->pLog->logsRestart(pClient->pLog->vpThis))) {
        return EAF_FAILED;
    }
    return set(pClient->pController);
}

/* Nobody regulates any more, the controller is still there. */
long Client_Uninitialize(void* pModule)
{
    const Client* pClient = pModule;
    printf("Client: channel %u was told %u times\n", pClient->nChannel, pClient->nTold);
    for (unsigned int i = 0; i < pClient->nTold && i < NOTE_COUNT; ++i) {
        printf("Client:   %s %d\n", KIND_NAMES[pClient->notes[i].eKind], pClient->notes[i].nValue);
    }
    for (int nKind = 0; nKind < eKIND_COUNT; ++nKind) {
        printf("Client: %u times the %s\n", pClient->anTold[nKind], KIND_NAMES[nKind]);
    }
    return EAF_OK;
}

void Client_Destruct(void* pModule)
{
    (void)pModule;
}
