/**
 * What the page draws of a sample. Values are the unit's integers; scale takes them to the unit that is shown.
 * @typedef {"power"|"db"|"temperature"|"frequency"} Kind
 * @typedef {{key: string, label: string, kind: Kind, scale: number, digits: number, colour: string, dash: number[],
 *            width: number, chart: ChartName, axis: "left"|"right", amplifier?: number}} Signal
 * @typedef {"power"|"error"|"gain"|"climate"} ChartName
 */

/** Stands for "none" in columns of integers. */
export const NONE = -0x80000000;

export const AMPLIFIERS = 6;

/**
 * @param {string} key @param {string} label @param {Kind} kind @param {ChartName} chart @param {string} colour
 * @param {number[]} dash @param {Partial<Signal>} more
 * @returns {Signal}
 */
function signal(key, label, kind, chart, colour, dash, more = {}) {
    return { key, label, kind, chart, colour, dash, scale: 0.01, digits: 2, width: 1.5, axis: "left", ...more };
}

const AMPLIFIER_DASHES = [[], [8, 3], [3, 3], [10, 3, 2, 3], [2, 5], [6, 2, 2, 2, 2, 2]];

/** In the order in which they are named; the earlier are drawn over the later. @type {readonly Signal[]} */
export const SIGNALS = [
    signal("ptarget_cdb", "Target", "power", "power", "--target", [8, 5], { width: 1.75 }),
    signal("pmeasured_cdb", "Measured", "power", "power", "--measured", [], { width: 1.75 }),
    signal("ppredicted_cdb", "Predicted", "power", "power", "--predicted", [2, 3]),
    signal("pctrl_cdb", "Control", "power", "power", "--control", [6, 2, 1, 2], { width: 1.25 }),
    signal("error_cdb", "Error", "db", "error", "--error", [], { digits: 3 }),
    signal("rf_gain_cdb", "RF gain", "db", "gain", "--gain", []),
    signal("if_power_cdb", "IF power", "power", "gain", "--if-power", [8, 4], { axis: "right" }),
    ...AMPLIFIER_DASHES.map((dash, index) =>
        signal(`reduced_${index + 1}`, `Amp ${index + 1}`, "db", "gain", `--amplifier-${index + 1}`, dash, {
            axis: "right",
            width: 1.25,
            amplifier: index,
        }),
    ),
    signal("temperature_cc", "Temperature", "temperature", "climate", "--temperature", []),
    signal("frequency_khz", "Frequency", "frequency", "climate", "--frequency", [8, 4], {
        scale: 0.001,
        digits: 3,
        axis: "right",
    }),
];

/** All columns of a sample that are kept, besides its time. */
export const COLUMNS = ["state", "requested_cdb", ...SIGNALS.map((entry) => entry.key), "result", "detector_state"];

/** @param {string} key @returns {Signal} */
export function signalOf(key) {
    const found = SIGNALS.find((entry) => entry.key === key);
    if (found === undefined) {
        throw new Error(`no signal ${key}`);
    }
    return found;
}
