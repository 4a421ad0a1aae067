#!/usr/bin/env python3
"""Builds and writes with Python what "Read" of the two logs answers; prints the nanoseconds that each takes, as JSON."""

import json
import statistics
import time
import xmlrpc.client

REPETITIONS = 5
MEMBERS = ("TxRfPowerSet", "TxRfPowerTarget", "TxRfDetectedPower", "TxIfPower", "TxRfGain")
# The numbers of LogCommands.cpp.
SAMPLES = [(500 + n, 7 * n - 400, 500 - n // 10, -1000 - n, 4000 + n % 50) for n in range(200)]
OBJECTS = ("TxRfPowerSet", "TxRfPowerTarget", "TxRfDetectedPower", "TxIfPower", "TxRfGain", "TxRfGainInitial",
           *(f"GainReductionAmplifier{n}" for n in range(1, 7)))


def read_transient_log():
    samples = [dict(zip(MEMBERS, sample)) for sample in SAMPLES]
    return xmlrpc.client.dumps(({"RadioChannelID": 0, "OPCLog": samples},), methodresponse=True)


def read_opc_log():
    objects = [{"ObjectName": name, "ActualValue": 490, "MinValue": 490, "MaxValue": 500} for name in OBJECTS]
    return xmlrpc.client.dumps(({"Channel.0.TxOutputPowerControlLog": objects},), methodresponse=True)


def nanoseconds(function, calls):
    """Returns the median of the processor time of a call."""
    times = []
    for _ in range(REPETITIONS):
        begin = time.process_time_ns()
        for _ in range(calls):
            function()
        times.append((time.process_time_ns() - begin) / calls)
    return statistics.median(times)


if __name__ == "__main__":
    print(json.dumps({"Read of the transient log, Python": nanoseconds(read_transient_log, 100),
                      "Read of the OPC log, Python": nanoseconds(read_opc_log, 1000)}))
