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
    /**
     * Empties whichever of the two logs is recording and lets it go on; one that is not recording is left alone.
     * Call it in the thread that regulates.
     */
    virtual void logsRestart() = 0;

    /** @copydoc IOutputPowerControlLogCStruct::logsRestart */
    static long staticLogsRestart(void* vpThis);

protected:
    /** Fills the function table and hands it to getCStruct(). */
    IOutputPowerControlLog();

    IOutputPowerControlLogCStruct m_cStruct; /**< the function table; its vpThis is this object */
};
