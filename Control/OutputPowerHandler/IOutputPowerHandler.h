/** @file
 * The hardware-side output power handler of a radio channel.
 */
#pragma once

#include "Control/OutputPowerHandler/IOutputPowerHandler_c.h"
#include "Platform/Broker/IInterface_c.h"

/**
 * A handler, published as "IOutputPowerHandler." followed by the channel, formatted into 22 bytes.
 *
 * Its operations are reached through getCStruct(), which gives an IOutputPowerHandlerCStruct.
 */
class EAF_PUBLIC IOutputPowerHandler : public IInterface_c
{
};
