#include "benchmarks/control_step/rig/Surroundings.h"

#include "Control/FrequencyHandler/IFrequencyHandler.h"
#include "Control/OutputPowerHandler/IOutputPowerHandler.h"
#include "Control/TemperatureHandler/ITemperatureHandler.h"
#include "Platform/Broker/InterfaceBroker.h"
#include "Platform/Calibration/CalibrationTables.h"

#include <dlfcn.h>

#include <algorithm>
#include <stdexcept>
#include <utility>

// What the module calls goes by a pointer, the same way for every kind of table.
struct CCalibrationTable
{
    EAFResult (*pfnIsValid)(CCalibrationTable*, int*);
    EAFResult (*pfnInterpolate)(CCalibrationTable*, int, int, int*);
    const char* pName;
    CCalibrationTable* pOfTheUnit;
};

namespace
{
constexpr int RF_GAIN = 40;

std::vector<std::string> s_calls; // NOLINT: notes of the one thread
ETables s_eTables = ETables::Quiet;
bool s_bRecording = false;

void note(std::string sCall)
{
    s_calls.push_back(std::move(sCall));
}

/** A handler's operation: notes the call when it is to, and does nothing else. */
template <bool bNote> struct Handler
{
    static EOPHResult setOutputPower(void* /*vpThis*/, int32_t /*nPctrl*/, int32_t /*nPtarget*/)
    {
        if constexpr (bNote) {
            note("setOutputPower");
        }
        return EAF_OK;
    }

    static EOPHResult setTxState(void* /*vpThis*/, int32_t nStep)
    {
        if constexpr (bNote) {
            note("setTxState " + std::to_string(nStep));
        }
        return EAF_OK;
    }

    static EOPHResult setProductionTestSettings(void* /*vpThis*/, ERfDetectorLoopMode /*eLoopMode*/) { return EAF_OK; }

    static EOPHResult getReducedGainFromAmplifier(void* /*vpThis*/, uint32_t nAmplifier, int32_t* pReducedGain)
    {
        if constexpr (bNote) {
            note("getReducedGainFromAmplifier " + std::to_string(nAmplifier));
        }
        *pReducedGain = 0;
        return EAF_OK;
    }

    static EOPHResult getTxPowerReadings(void* /*vpThis*/, int32_t* pReading, int32_t* pIfPower, int32_t* pRfGain)
    {
        if constexpr (bNote) {
            note("getTxPowerReadings");
        }
        *pReading = 0;
        *pIfPower = 0;
        *pRfGain = RF_GAIN;
        return EAF_OK;
    }

    static EOPHResult calculateDetectorUsage(void* /*vpThis*/, int32_t /*nPctrl*/, ERfDetectorLoopMode /*eLoopMode*/,
                                             EOPHDetectorState* pDetectorState)
    {
        if constexpr (bNote) {
            note("calculateDetectorUsage");
        }
        *pDetectorState = eOPH_DETECTOR_STATE_0;
        return EAF_OK;
    }

    static EOPHResult getPmeasured(void* /*vpThis*/, int32_t* pPmeasured)
    {
        if constexpr (bNote) {
            note("getPmeasured");
        }
        *pPmeasured = MEASURED_POWER;
        return EAF_OK;
    }

    static EOPHResult setZembraMlmTrafTx(void* /*vpThis*/, bool /*bEnable*/)
    {
        if constexpr (bNote) {
            note("setZembraMlmTrafTx");
        }
        return EAF_OK;
    }

    static EOPHResult getPctrlLimits(void* /*vpThis*/, int32_t* pLower, int32_t* pUpper)
    {
        if constexpr (bNote) {
            note("getPctrlLimits");
        }
        *pLower = OPC_POWER_UNKNOWN;
        *pUpper = 10 * MEASURED_POWER;
        return EAF_OK;
    }

    static IOutputPowerHandlerCStruct table()
    {
        return {nullptr,
                &setOutputPower,
                nullptr,
                nullptr,
                &setTxState,
                &setProductionTestSettings,
                nullptr,
                &getReducedGainFromAmplifier,
                &getTxPowerReadings,
                &calculateDetectorUsage,
                &getPmeasured,
                &setZembraMlmTrafTx,
                nullptr,
                &getPctrlLimits};
    }
};

EAFResult isValid(CCalibrationTable* /*pTable*/, int* pValid)
{
    *pValid = 1;
    return EAF_OK;
}

EAFResult interpolate(CCalibrationTable* /*pTable*/, int /*nX*/, int /*nY*/, int* pValue)
{
    *pValue = 0;
    return EAF_OK;
}

EAFResult isValidNoted(CCalibrationTable* pTable, int* pValid)
{
    note(std::string("IsValid ") + pTable->pName);
    return isValid(pTable, pValid);
}

EAFResult interpolateNoted(CCalibrationTable* pTable, int nX, int nY, int* pValue)
{
    note(std::string("BiLinearInterpolate ") + pTable->pName);
    return interpolate(pTable, nX, nY, pValue);
}

/** @return the unit's own function of a name, which this program's stands before */
template <class TFunction> TFunction ofTheUnit(const char* pName)
{
    auto pFunction = reinterpret_cast<TFunction>(dlsym(RTLD_NEXT, pName));
    if (pFunction == nullptr) {
        throw std::runtime_error(std::string("the unit's platform has no ") + pName);
    }
    return pFunction;
}

using IsValid = decltype(&CCalibrationTable_IsValid);
using Interpolate = decltype(&CCalibrationTable_BiLinearInterpolate);
IsValid s_pfnIsValidOfTheUnit = nullptr;
Interpolate s_pfnInterpolateOfTheUnit = nullptr;

EAFResult isValidOfTheUnit(CCalibrationTable* pTable, int* pValid)
{
    return s_pfnIsValidOfTheUnit(pTable->pOfTheUnit, pValid);
}

EAFResult interpolateOfTheUnit(CCalibrationTable* pTable, int nX, int nY, int* pValue)
{
    return s_pfnInterpolateOfTheUnit(pTable->pOfTheUnit, nX, nY, pValue);
}

std::array<CCalibrationTable, 2> s_tables = {
    {{&isValid, &interpolate, "bandwidth", nullptr}, {&isValid, &interpolate, "temperature", nullptr}}};

/** Gives the tables what the unit's example has: five by three values over two axes, all 0. */
void fetchTablesOfTheUnit()
{
    s_pfnIsValidOfTheUnit = ofTheUnit<IsValid>("CCalibrationTable_IsValid");
    s_pfnInterpolateOfTheUnit = ofTheUnit<Interpolate>("CCalibrationTable_BiLinearInterpolate");
    for (CCalibrationTable& table : s_tables) {
        CalibrationTables::add(table.pName, {{-1000, 0, 1000, 2000, 3000}, {0, 28000, 56000}, std::vector<int>(15, 0)});
        ofTheUnit<decltype(&CCalibrationHandler_GetTable)>("CCalibrationHandler_GetTable")(table.pName,
                                                                                           &table.pOfTheUnit);
    }
}

template <bool bNote> void notify(void* vpThis, unsigned int /*nChannel*/, int /*nValue*/)
{
    if constexpr (bNote) {
        note("notify " + std::to_string(*static_cast<const int*>(vpThis)));
    }
}

/** What tells the observers apart in notes. */
std::array<int, 3 * Surroundings::MAX_OBSERVERS> s_anObserver{};

void fillObservers(Surroundings::Observers& observers, void (*pfnNotify)(void*, unsigned int, int))
{
    int nObserver = 0;
    const auto fill = [&](auto& list) {
        for (auto& observer : list) {
            int& nOwn = s_anObserver.at(static_cast<std::size_t>(nObserver));
            nOwn = nObserver++;
            observer = {&nOwn, pfnNotify};
        }
    };
    fill(observers.predictedPctrl);
    fill(observers.ptarget);
    fill(observers.pctrl);
}

class QuietHandler final : public IOutputPowerHandler
{
public:
    QuietHandler() : m_table(Handler<false>::table()) { m_pCStruct = &m_table; }

    IOutputPowerHandlerCStruct m_table;
};

class QuietFrequencyHandler final : public IFrequencyHandler
{
public:
    int getTxFrequency() const override { return 0; }
    EAFResult registerObserver(Observer<IFrequencyHandler>* /*pObserver*/) override { return EAF_OK; }
};

class QuietTemperatureHandler final : public ITemperatureHandler
{
};

QuietHandler s_handler;
QuietFrequencyHandler s_frequency;
QuietTemperatureHandler s_temperature;

/** Calls a function with each name that the channels look up, and what they are to find. */
template <class TCall> void forEachName(unsigned int nChannels, TCall call)
{
    constexpr unsigned int HANDLER_NAMES = 10; // a handler's name has room for one digit
    call("ITemperatureHandler", &s_temperature);
    for (unsigned int nChannel = 0; nChannel < nChannels; ++nChannel) {
        const std::string sChannel = std::to_string(nChannel);
        if (nChannel < HANDLER_NAMES) {
            call("IOutputPowerHandler." + sChannel, &s_handler);
        }
        call(nChannel == 0 ? "IFrequencyHandler_Tx" : "IFrequencyHandler_Tx_" + sChannel, &s_frequency);
    }
}
} // namespace

// The program's, which the module meets before those of the platform.
EAFResult CCalibrationHandler_GetTable(const char* pName, CCalibrationTable** ppTable)
{
    if (s_eTables == ETables::None) {
        return EAF_FAILED;
    }
    const bool bBandwidth = std::string(pName).find("Bandwidth") != std::string::npos;
    *ppTable = &s_tables.at(bBandwidth ? 0 : 1);
    return EAF_OK;
}

EAFResult CCalibrationTable_IsValid(CCalibrationTable* pTable, int* pValid)
{
    return pTable->pfnIsValid(pTable, pValid);
}

EAFResult CCalibrationTable_BiLinearInterpolate(CCalibrationTable* pTable, int nX, int nY, int* pValue)
{
    return pTable->pfnInterpolate(pTable, nX, nY, pValue);
}

IOutputPowerHandlerCStruct& Surroundings::handler()
{
    return s_handler.m_table;
}

Surroundings::Observers& Surroundings::observers()
{
    static Observers s_observers = [] {
        Observers observers{};
        fillObservers(observers, &notify<false>);
        return observers;
    }();
    return s_observers;
}

std::array<CCalibrationTable*, 2> Surroundings::tables()
{
    if (s_eTables == ETables::None) {
        return {nullptr, nullptr};
    }
    return {s_tables.data(), s_tables.data() + 1};
}

void Surroundings::setTables(ETables eTables)
{
    s_eTables = eTables;
    setRecording(s_bRecording);
}

void Surroundings::setRecording(bool bRecording)
{
    s_bRecording = bRecording;
    handler() = bRecording ? Handler<true>::table() : Handler<false>::table();
    fillObservers(observers(), bRecording ? &notify<true> : &notify<false>);
    const bool bOfTheUnit = s_eTables == ETables::OfTheUnit && !bRecording;
    if (bOfTheUnit && s_pfnIsValidOfTheUnit == nullptr) {
        fetchTablesOfTheUnit();
    }
    for (CCalibrationTable& table : s_tables) {
        table.pfnIsValid = bRecording ? &isValidNoted : (bOfTheUnit ? &isValidOfTheUnit : &isValid);
        table.pfnInterpolate = bRecording ? &interpolateNoted : (bOfTheUnit ? &interpolateOfTheUnit : &interpolate);
    }
}

std::vector<std::string> Surroundings::takeCalls()
{
    return std::exchange(s_calls, {});
}

void Surroundings::publish(unsigned int nChannels)
{
    forEachName(nChannels, [](const std::string& sName, IInterface* pInterface) {
        if (EAF_isFailure(InterfaceBroker::getInstance().registerInterface(sName, pInterface))) {
            throw std::runtime_error(sName + " is published already");
        }
    });
}

void Surroundings::withdraw(unsigned int nChannels)
{
    forEachName(nChannels, [](const std::string& sName, IInterface* pInterface) {
        InterfaceBroker::getInstance().unregisterInterface(sName, pInterface);
    });
}
