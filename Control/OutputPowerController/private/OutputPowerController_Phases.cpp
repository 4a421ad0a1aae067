#include "Control/OutputPowerController/private/InterfaceName.h"
#include "Control/OutputPowerController/private/OutputPowerController.h"
#include "Platform/Broker/IInterface_c.h"
#include "Platform/Broker/InterfaceBroker.h"
#include "Platform/Storage/CStorageManager.h"

#include <algorithm>
#include <array>

namespace
{

// The name is cut here, which leaves room for one digit of the channel; handlers publish themselves under the cut name.
constexpr std::size_t HANDLER_NAME_LENGTH = 21;

/** The spacings in whole MHz that storage may hold. */
constexpr std::array WHOLE_SPACINGS_MHZ = {5,   7,   10,  14,  20,  28,   30,   40,   50,   56,
                                           60,  80,  100, 112, 125, 150,  200,  250,  300,  350,
                                           400, 450, 500, 600, 750, 1000, 1250, 1500, 1750, 2000};

/** @return the spacing in kHz of a stored code, 0 for a code that there is not */
int channelSpacingKhz(int nCode)
{
    // The two fractional spacings are stored without their half.
    if (nCode == 3) {
        return 3500;
    }
    if (nCode == 62) {
        return 62500;
    }
    const bool bKnown = std::binary_search(WHOLE_SPACINGS_MHZ.begin(), WHOLE_SPACINGS_MHZ.end(), nCode);
    return bKnown ? nCode * 1000 : 0;
}

} // namespace

long OutputPowerController::onModuleInit()
{
    traceEntry("onModuleInit");
    for (auto connect :
         {&OutputPowerController::connectOutputPowerHandler, &OutputPowerController::connectFrequencyHandler,
          &OutputPowerController::connectTemperatureHandler})
    {
        const long nResult = (this->*connect)();
        if (EAF_isFailure(nResult)) {
            return nResult;
        }
    }
    fetchCalibrationTable("P.Level.Over.Bandwidth.To.OPC.Target.Offset",
                          &m_calTablePtargetOverBandwidthToPTargetOffset);
    fetchCalibrationTable("Frequency.Over.Temperature.To.OPC.Target.Offset",
                          &m_calTableFrequencyOverTemperatureToPTargetOffset);
    m_bModuleInitDone = true;
    return EAF_OK;
}

long OutputPowerController::connectOutputPowerHandler()
{
    const std::string sName = ("IOutputPowerHandler." + std::to_string(m_nChannel)).substr(0, HANDLER_NAME_LENGTH);
    auto* pHandler = dynamic_cast<IInterface_c*>(InterfaceBroker::getInstance().getInterface(sName));
    if (pHandler != nullptr) {
        m_pOutputPowerHandler = static_cast<IOutputPowerHandlerCStruct*>(pHandler->getCStruct());
    }
    // Without a usable entry, a handler found by an earlier onModuleInit() still serves.
    if (m_pOutputPowerHandler == nullptr) {
        beginTrace(1) << "onModuleInit"
                      << "(): Failed to get interface " << sName << std::endl;
        return EAF_FAILED;
    }
    return EAF_OK;
}

long OutputPowerController::connectFrequencyHandler()
{
    const std::string sName = interfaceName("IFrequencyHandler_Tx", m_nChannel);
    auto* pHandler = dynamic_cast<IFrequencyHandler*>(InterfaceBroker::getInstance().getInterface(sName));
    if (pHandler == nullptr) {
        return traceFailure("onModuleInit", "(): Failed to retrieve the FrequencyHandler interface");
    }
    if (EAF_isFailure(pHandler->registerObserver(this))) {
        // The text names another controller; tools that read the trace know it so.
        return traceFailure("onModuleInit",
                            "(): Failed to register the DpdController as observer to FrequencyHandler.");
    }
    return EAF_OK;
}

long OutputPowerController::connectTemperatureHandler()
{
    // Only its presence is checked: registration goes to the unit's one handler.
    auto* pHandler =
        dynamic_cast<ITemperatureHandler*>(InterfaceBroker::getInstance().getInterface("ITemperatureHandler"));
    if (pHandler == nullptr) {
        return traceFailure("onModuleInit", "(): Failed to retrieve the TemperatureHandler interface");
    }
    ITemperatureHandler::registerObserver(&m_temperatureObserver);
    return EAF_OK;
}

void OutputPowerController::fetchCalibrationTable(const char* pTableName, CCalibrationTable** ppTable) const
{
    const std::string sName = "Channel." + std::to_string(m_nChannel) + "." + pTableName;
    if (EAF_isFailure(CCalibrationHandler_GetTable(sName.c_str(), ppTable))) {
        *ppTable = nullptr;
        beginTrace(7) << "onModuleInit"
                      << "(): could not get cal table, continuing...." << std::endl;
    }
}

long OutputPowerController::onPhaseModuleStorageObjectsRetreived()
{
    static constexpr const char* OPERATION = "onPhaseModuleStorageObjectsRetreived";
    traceEntry(OPERATION);
    const std::string sName = "channel." + std::to_string(m_nChannel) + ".tx.rf.number.of.gain.blocks";
    m_nNumberOfGainBlocks = MAX_GAIN_BLOCKS;
    void* pContent = nullptr;
    const EAFResult nResult = CStorageManager_GetVariableContentAddressByName(sName.c_str(), &pContent, 0);
    if (EAF_isFailure(nResult) || pContent == nullptr) {
        // The blank missing before "used" is part of the text.
        beginTrace(1) << OPERATION << "(): failed to retrieve variables from database (EAFResult = " << std::hex
                      << nResult << std::dec << ") Default value " << MAX_GAIN_BLOCKS << "used instead." << std::endl;
        return nResult;
    }
    const int nValue = *static_cast<const std::int32_t*>(pContent);
    // Negative numbers pass on purpose: they stand for no amplifiers to read.
    if (nValue == 0 || nValue > MAX_GAIN_BLOCKS) {
        // The blank missing before "from" is part of the text.
        beginTrace(1) << OPERATION << "(): variable " << sName << "from the database is wrong " << nValue
                      << ". Default value used instead " << MAX_GAIN_BLOCKS << std::endl;
        return EAF_FAILED;
    }
    m_nNumberOfGainBlocks = nValue;
    return nResult;
}

long OutputPowerController::onPhasePostFrameformatLoad()
{
    traceEntry("onPhasePostFrameformatLoad");
    void* pContent = nullptr;
    const EAFResult nResult = CStorageManager_GetVariableContentAddressByName("ChannelSpacing", &pContent, 0);
    if (EAF_isFailure(nResult)) {
        // The parenthesis is never closed; that is part of the text.
        beginTrace(1) << "onPhasePostFrameformatLoad"
                      << "(): failed to retrieve the variable ChannelSpacing from the database (EAFResult = "
                      << std::hex << nResult << std::dec << std::endl;
        return nResult;
    }
    // A successful look-up of this variable always gives its content; unlike the gain blocks' it is not tested.
    m_nChannelSpacing = channelSpacingKhz(*static_cast<const std::int32_t*>(pContent));
    return nResult;
}

long OutputPowerController::onPhaseStop()
{
    traceEntry("onPhaseStop");
    m_bModuleInitDone = false;
    return EAF_OK;
}
