#include "tests/system/ConfigurationValues.h"

void showUnit(const UnitConfiguration& unit)
{
    show("unit", "interval_ms", unit.intervalMs);
    show("unit", "realtime_priority", unit.nRealtimePriority);
    show("unit", "temperature_c", unit.temperatureDegrees);
    show("storage", "file", unit.sStorageFile);
    for (const ModuleConfiguration& module : unit.modules) {
        show("module", "name", module.sName);
        show("module", "library", module.sLibrary);
        show("module", "scope", static_cast<int>(module.eScope));
    }
    for (const CalibrationConfiguration& calibration : unit.calibrations) {
        show("calibration", "name", calibration.sName);
        show("calibration", "file", calibration.sFile);
    }
}

void showInterpolation(const char* pTable, const Profile::Interpolation& interpolation)
{
    show(pTable, "requested_power", static_cast<int>(interpolation.eRequestedPower));
    show(pTable, "temperature", static_cast<int>(interpolation.eTemperature));
    show(pTable, "frequency", static_cast<int>(interpolation.eFrequency));
}

void showChannel(const ChannelConfiguration& channel)
{
    show("channel", "number", channel.nNumber);
    show("channel", "power_mode", channel.nPowerMode);
    show("channel", "tx_pmin_dbm", channel.txPminDbm);
    show("channel", "tx_pmax_dbm", channel.txPmaxDbm);
    show("channel", "requested_power_dbm", channel.requestedPowerDbm);
    show("channel", "frequency_mhz", channel.frequencyMhz);
    show("channel", "gain_percent_ramping", channel.gainPercentRamping);
    show("channel", "gain_percent_on", channel.gainPercentOn);
    show("channel", "production_test", channel.bProductionTest);
    show("channel", "loop_mode", channel.nLoopMode);
    show("channel.transmitter", "seed", channel.nSeed);
    for (const TransmitterKey& key : transmitterKeys()) {
        show("channel.transmitter", key.pName, channel.transmitter.*key.pField);
    }
}

void showFault(const FaultConfiguration& fault)
{
    show("fault", "channel", fault.nChannel);
    show("fault", "operation", handlerOperationName(fault.eOperation));
    show("fault", "kind", handlerFaultName(fault.fault.eKind));
    show("fault", "times", fault.fault.nTimes);
    show("fault", "value", fault.fault.nValue);
    show("fault", "delay_us", fault.fault.delayUs);
    show("fault", "probability", fault.fault.probability);
    show("fault", "at_s", fault.atSeconds);
    show("fault", "for_s", fault.forSeconds);
}
