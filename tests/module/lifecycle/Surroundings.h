/** @file
 * What a module may find around it: the other modules and the platform, in order or not.
 */
#pragma once

#include "Platform/EAFResult.h"

#include <vector>

/** How something that is looked up in the broker is found. */
enum class EFound
{
    Usable,
    Missing,
    OfAnotherType,
    Unusable /**< an output power handler without a table, a frequency handler that refuses observers */
};

struct Surroundings
{
    const char* pName;
    EFound ePowerHandler = EFound::Usable;
    EFound eFrequencyHandler = EFound::Usable;
    EFound eTemperatureHandler = EFound::Usable; /**< Unusable: refuses observers */
    bool bBandwidthTable = true;
    bool bFrequencyTable = true;
    EAFResult nGainBlocksResult = EAF_OK;
    bool bGainBlocksContent = true;
    int nGainBlocks = 3;
    EAFResult nSpacingResult = EAF_OK;
    int nSpacingCode = 28;
    bool bManagerRegisters = true;
    bool bManagerUnregisters = true;
    bool bBrokerRegisters = true;
    bool bBrokerUnregisters = true;
    EAFResult nCBrokerHandle = EAF_OK;
    bool bCBrokerRegisters = true;
    bool bCBrokerUnregisters = true;
    EAFResult nCBrokerRelease = EAF_OK;
};

/** The first has everything in order. */
const std::vector<Surroundings>& allSurroundings();
