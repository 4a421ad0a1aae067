#include "tests/abi/layout/ContractLayout.h"

#include "Control/TemperatureHandler/ITemperatureHandler.h"
#include "Platform/ModuleFramework/ModuleInterface.h"

#include <type_traits>

ASSERT_TABLE(ITemperatureObserver, 1);
ASSERT_ENTRY(ITemperatureObserver, pfnNotifyTemperature, 1);

ASSERT_ENUMERATOR(eCALLBACK_PRIORITY_LOW, 0);
ASSERT_ENUMERATOR(eCALLBACK_PRIORITY_NORMAL, 1);
ASSERT_ENUMERATOR(eCALLBACK_PRIORITY_HIGH, 2);
static_assert(sizeof(ECallbackPriority) == 4, "enumerations have 32 bits");

namespace
{
template <class TEnumeration>
constexpr bool carriesAny32Bits = std::is_same_v<std::underlying_type_t<TEnumeration>, std::int32_t>;
}

static_assert(carriesAny32Bits<EOPCState> && carriesAny32Bits<ERequestedTxPowerState>);
static_assert(carriesAny32Bits<ETxPowerActualStatus> && carriesAny32Bits<ETxPowerMode>);
static_assert(carriesAny32Bits<EOPHDetectorState> && carriesAny32Bits<ERfDetectorLoopMode>);
