#include "Simulation/Handlers/HandlerFault.h"

#include <array>

namespace
{
constexpr std::array<const char*, static_cast<std::size_t>(EHandlerOperation::Count)> OPERATION_NAMES = {
    "setOutputPower",
    "setTxState",
    "setProductionTestSettings",
    "getReducedGainFromAmplifier",
    "getTxPowerReadings",
    "calculateDetectorUsage",
    "getPmeasured",
    "setZembraMlmTrafTx",
    "getPctrlLimits",
};

constexpr std::array<const char*, 7> FAULT_NAMES = {"none",        "fail", "fail-times",  "stuck",
                                                    "wrong-value", "slow", "intermittent"};

template <class TEnum, std::size_t COUNT> const char* nameOf(const std::array<const char*, COUNT>& names, TEnum eValue)
{
    const auto nIndex = static_cast<std::size_t>(eValue);
    // cppcheck-suppress CastIntegerToAddressAtReturn ; both are texts
    return nIndex < COUNT ? names[nIndex] : "?";
}

template <class TEnum, std::size_t COUNT>
std::optional<TEnum> valueOf(const std::array<const char*, COUNT>& names, const std::string& sName)
{
    for (std::size_t nIndex = 0; nIndex < COUNT; ++nIndex) {
        if (sName == names[nIndex]) {
            return static_cast<TEnum>(nIndex);
        }
    }
    return std::nullopt;
}
} // namespace

const char* handlerOperationName(EHandlerOperation eOperation)
{
    return nameOf(OPERATION_NAMES, eOperation);
}

std::optional<EHandlerOperation> handlerOperationByName(const std::string& sName)
{
    return valueOf<EHandlerOperation>(OPERATION_NAMES, sName);
}

const char* handlerFaultName(EHandlerFault eKind)
{
    return nameOf(FAULT_NAMES, eKind);
}

std::optional<EHandlerFault> handlerFaultByName(const std::string& sName)
{
    if (sName == "off") {
        return EHandlerFault::Fail;
    }
    if (sName == "wrong") {
        return EHandlerFault::WrongValue;
    }
    return valueOf<EHandlerFault>(FAULT_NAMES, sName);
}
