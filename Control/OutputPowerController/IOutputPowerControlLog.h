/** @file
 * The output power control log of a radio channel as C++ callers see it.
 */
#pragma once

#include "Control/OutputPowerController/IOutputPowerControlLog_c.h"
#include "Platform/Broker/IInterface_c.h"

/**
 * Holds a channel's regulation statistics and its transient samples.
 *
 * Published as "IOutputPowerControlLog" for channel 0 and "IOutputPowerControlLog_" followed by the channel otherwise.
 */
class EAF_PUBLIC IOutputPowerControlLog : public IInterface_c
{
public:
    /** Empties whichever of the two logs is recording and lets it go on; one that is not recording is left alone. */
    virtual void logsRestart() = 0;

    /** The C function table's entry. */
    static long staticLogsRestart(void* vpThis);

protected:
    IOutputPowerControlLog();

    IOutputPowerControlLogCStruct m_cStruct;
};
