import { stateLook } from "../src/states.js";

/** The methods of a fake unit: a handful, with the members of the test interface. */

const OBJECTS = [
    "TxRfPowerSet",
    "TxRfPowerTarget",
    "TxRfDetectedPower",
    "TxIfPower",
    "TxRfGain",
    "TxRfGainInitial",
    ...[1, 2, 3, 4, 5, 6].map((n) => `GainReductionAmplifier${n}`),
];

const OK = { StandardResponse: "OK" };

class Fault extends Error {}

/** @param {any} loop */
function statusOf(loop) {
    const { last } = loop;
    return {
        RadioChannelID: loop.number,
        State: stateLook(loop.state).name,
        TxPower: loop.state === 8 ? "on" : "off",
        PowerMode: loop.mode,
        RequestedPowerDbm: loop.requested / 100,
        RequestedPowerSource: "set",
        TxPminDbm: loop.limits[0] / 100,
        TxPmaxDbm: loop.limits[1] / 100,
        FrequencyMhz: loop.frequencyKhz / 1000,
        FrequencySource: "constant",
        ProductionTest: loop.productionTest,
        LoopMode: loop.loopMode,
        Steps: loop.steps,
        FailedSteps: loop.failed,
        RefusedCalls: 0,
        DetectorState: last?.detector_state ?? 0,
    };
}

/** @param {any} loop @param {any} p */
function transientLog(loop, p) {
    switch (p.RequestOption) {
        case "Enable":
            loop.transient = [];
            loop.transientOn = true;
            return OK;
        case "Disable":
            loop.transientOn = false;
            return OK;
        case "SaveToSysLog":
            return OK;
        case "Read":
            if (loop.transient.length === 0) {
                throw new Fault("eTI_E_FAILED, TI.ManageOPCTransientLog can not read empty log");
            }
            return {
                RadioChannelID: loop.number,
                OPCLog: loop.transient.map((/** @type {number[]} */ row) =>
                    Object.fromEntries(OBJECTS.slice(0, 5).map((name, i) => [name, row[i]])),
                ),
            };
        default:
            throw new Fault("eTI_E_FAILED, TI.ManageOPCTransientLog invalid request option");
    }
}

/** @param {any} loop @param {any} p */
function statisticsLog(loop, p) {
    const read = () => ({
        [`Channel.${loop.number}.TxOutputPowerControlLog`]: OBJECTS.map((name, i) => ({
            ObjectName: name,
            ActualValue: loop.statistics?.[i].actual ?? 0,
            MinValue: loop.statistics?.[i].min ?? 0,
            MaxValue: loop.statistics?.[i].max ?? 0,
        })),
    });
    switch (p.RequestOption) {
        case "Start":
            loop.statistics = null;
            loop.statisticsOn = true;
            return OK;
        case "Stop":
            loop.statisticsOn = false;
            return OK;
        case "SaveToSysLog":
            return OK;
        case "Read":
            return read();
        case "ReadAndReset": {
            const answer = read();
            loop.statistics = null;
            return answer;
        }
        default:
            throw new Fault("eTI_E_FAILED, TI.ManageLogs OpcLog invalid request option");
    }
}

/**
 * @param {any} unit @param {string} method @param {any} p the struct
 * @returns {any}
 */
export function callMethod(unit, method, p) {
    const loop = unit.loops[p.RadioChannelID ?? 0];
    if (loop === undefined) {
        throw new Fault(`eTI_E_FAILED, ${method} unknown radio channel ${p.RadioChannelID}`);
    }
    unit.calls.push({ method, parameters: p });
    const told = (/** @type {string} */ kind, /** @type {string} */ text) => unit.tell(loop.number, kind, text);
    switch (method) {
        case "Unit.Status":
            return {
                IntervalMs: unit.intervalMs,
                UptimeS: unit.nowUs / 1e6,
                TemperatureC: 38,
                TemperatureSource: "profile",
                Overruns: 0,
                LatenessMeanUs: 121,
                LatenessMaxUs: 1936,
                DroppedSamples: 0,
                Commands: unit.calls.length,
                LongestCommandUs: 200,
                Channels: (p.RadioChannelID === undefined ? unit.loops : [loop]).map(statusOf),
            };
        case "Unit.SetTxPower":
            loop.wantOn = p.State === "on";
            loop.mode = p.PowerMode ?? loop.mode;
            told("command", `transmitter ${p.State}`);
            return OK;
        case "Unit.SetPowerMode":
            loop.mode = p.PowerMode;
            told("command", `power mode ${p.PowerMode}`);
            return OK;
        case "Unit.SetRequestedPower":
            if (p.PowerDbm > 100) {
                throw new Fault(`eTI_E_FAILED, Unit.SetRequestedPower PowerDbm is ${p.PowerDbm}; it can be -98 to 100`);
            }
            loop.requested = Math.round((p.PowerDbm ?? 20) * 100);
            told("command", `requested power ${(loop.requested / 100).toFixed(2)} dBm`);
            return OK;
        case "Unit.SetLimits":
            loop.limits = [p.TxPminDbm * 100, p.TxPmaxDbm * 100];
            told("command", `limits ${p.TxPminDbm} to ${p.TxPmaxDbm} dBm`);
            return OK;
        case "Unit.SetFrequency":
            loop.frequencyKhz = (p.FrequencyMhz ?? 5000) * 1000;
            told("command", `frequency ${loop.frequencyKhz / 1000} MHz`);
            return OK;
        case "Unit.SetTemperature":
            unit.loops.forEach((/** @type {any} */ each) => {
                each.temperature = p.TemperatureC === undefined ? NaN : p.TemperatureC * 100;
            });
            return OK;
        case "Unit.SetProductionTest":
            loop.productionTest = p.ProductionTest;
            loop.loopMode = p.LoopMode ?? 0;
            return OK;
        case "Unit.Gains":
            return loop.gains;
        case "Unit.SetGain":
            [0, 1, 2]
                .filter((i) => p.DetectorState === undefined || p.DetectorState === i)
                .forEach((i) => {
                    loop.gains[p.State === "on" ? "On" : "Ramping"][i] = p.GainPercent;
                });
            told("command", `gain ${p.State} ${p.GainPercent} %`);
            return OK;
        case "Unit.SetFault":
            if (p.Kind === "none") {
                loop.faults.delete(p.Operation);
            } else {
                loop.faults.set(p.Operation, p);
            }
            told("command", `${p.Operation}: ${p.Kind}`);
            return OK;
        case "Unit.Faults":
            return {
                Faults: [...loop.faults.values()].map((fault) => ({
                    Times: 0,
                    Value: 0,
                    DelayUs: 0,
                    Probability: 0.5,
                    ...fault,
                })),
            };
        case "Unit.SetInterval":
            return OK;
        case "TI.ManageOPCTransientLog":
            if (p.RequestOption !== "Read") {
                told("command", `transient log: ${p.RequestOption}`);
            }
            return transientLog(loop, p);
        case "TI.ManageLogs":
            if (p.RequestOption !== "Read") {
                told("command", `statistics log: ${p.RequestOption}`);
            }
            return statisticsLog(loop, p);
        default:
            throw new Fault(`unknown method ${method}`);
    }
}

/** @param {string} text @param {number} code @returns {string} */
export function faultXml(text, code = 4) {
    return (
        `<?xml version="1.0"?><methodResponse><fault><value><struct><member><name>faultCode</name><value><int>${code}</int></value></member>` +
        `<member><name>faultString</name><value><string>${text.replace(/[&<>]/g, "?")}</string></value></member></struct></value></fault></methodResponse>`
    );
}
