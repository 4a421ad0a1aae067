/** @typedef {import("./signals.js").Kind} Kind @typedef {"dBm"|"W"} PowerUnit */

const MINUS = "\u2212";

/** @param {number} dbm @returns {number} watts */
export function wattsOf(dbm) {
    return 10 ** ((dbm - 30) / 10);
}

/** @param {number} watts above 0 @returns {number} */
export function dbmOf(watts) {
    return 10 * Math.log10(watts) + 30;
}

/** @param {number} value @param {number} digits @returns {string} with a true minus sign and no negative zero */
export function fixed(value, digits) {
    const text = value.toFixed(digits);
    if (!text.startsWith("-")) {
        return text;
    }
    return Number(text) === 0 ? text.slice(1) : MINUS + text.slice(1);
}

const PREFIXES = /** @type {const} */ ([
    [1e9, "G"],
    [1e6, "M"],
    [1e3, "k"],
    [1, ""],
    [1e-3, "m"],
    [1e-6, "µ"],
    [1e-9, "n"],
    [1e-12, "p"],
]);

/** @param {number} watts @returns {{factor: number, prefix: string}} of the greatest prefix that leaves at least 1 */
export function prefixFor(watts) {
    const size = Math.abs(watts);
    for (const [factor, prefix] of PREFIXES) {
        if (size >= factor) {
            return { factor, prefix };
        }
    }
    return size === 0 ? { factor: 1, prefix: "" } : { factor: 1e-12, prefix: "p" };
}

/** @param {number} watts @returns {{text: string, unit: string}} three to four significant figures */
export function formatWatts(watts) {
    const { factor, prefix } = prefixFor(watts);
    const scaled = watts / factor;
    const digits = Math.abs(scaled) >= 100 ? 1 : Math.abs(scaled) >= 10 ? 2 : 3;
    return { text: fixed(scaled, digits), unit: `${prefix}W` };
}

/** @param {Kind} kind @param {PowerUnit} powerUnit @returns {string} */
export function unitOf(kind, powerUnit) {
    switch (kind) {
        case "power":
            return powerUnit;
        case "db":
            return "dB";
        case "temperature":
            return "°C";
        case "frequency":
            return "MHz";
    }
}

/**
 * @param {number|null} value in dBm, dB, °C or MHz
 * @param {Kind} kind @param {number} digits @param {PowerUnit} powerUnit
 * @returns {{text: string, unit: string}}
 */
export function format(value, kind, digits, powerUnit) {
    if (value === null || Number.isNaN(value)) {
        return { text: "–", unit: unitOf(kind, powerUnit) };
    }
    if (kind === "power" && powerUnit === "W") {
        return formatWatts(wattsOf(value));
    }
    return { text: fixed(value, digits), unit: unitOf(kind, powerUnit) };
}

/** The difference of two values, in watts where powers are shown in watts.
 * @param {number|null} from @param {number|null} to @param {Kind} kind @param {number} digits @param {PowerUnit} powerUnit
 * @returns {{text: string, unit: string}} */
export function formatDifference(from, to, kind, digits, powerUnit) {
    if (from === null || to === null) {
        return { text: "–", unit: kind === "power" && powerUnit === "dBm" ? "dB" : unitOf(kind, powerUnit) };
    }
    const signed = (/** @type {{text: string, unit: string}} */ part, /** @type {boolean} */ up) => ({
        text: up ? `+${part.text}` : part.text,
        unit: part.unit,
    });
    if (kind === "power" && powerUnit === "W") {
        const watts = wattsOf(to) - wattsOf(from);
        return signed(formatWatts(watts), watts > 0);
    }
    const text = fixed(to - from, digits);
    return signed({ text, unit: kind === "power" ? "dB" : unitOf(kind, powerUnit) }, to > from && Number(text) !== 0);
}
