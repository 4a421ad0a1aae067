/**
 * The ten states of a controller, by number. Each has a colour and a hatch, so that none is told by its colour alone.
 * @typedef {"none"|"rising"|"falling"|"cross"|"dots"} Hatch
 * @typedef {{name: string, short: string, colour: string, hatch: Hatch, meaning: string}} StateLook
 */

/** @type {readonly StateLook[]} */
export const STATES = [
    {
        name: "TX_OFF_INITIATED",
        short: "OFF INIT",
        colour: "--state-stopping",
        hatch: "falling",
        meaning: "modulation and transmitter go off next",
    },
    {
        name: "TX_OFF_IN_PROGRESS",
        short: "OFF PROG",
        colour: "--state-stopping",
        hatch: "cross",
        meaning: "the power is reported as off next",
    },
    { name: "TX_OFF", short: "OFF", colour: "--state-off", hatch: "none", meaning: "off" },
    {
        name: "DELAYED_TX_ON_INITIATED",
        short: "DELAYED INIT",
        colour: "--state-delayed",
        hatch: "dots",
        meaning: "off, a delayed switch-on begins",
    },
    {
        name: "DELAYED_TX_ON_IN_PROGRESS",
        short: "DELAYED",
        colour: "--state-delayed",
        hatch: "rising",
        meaning: "off, waits before it switches on",
    },
    {
        name: "TX_ON_INITIATED",
        short: "ON INIT",
        colour: "--state-starting",
        hatch: "dots",
        meaning: "limits are read, the start power is set",
    },
    {
        name: "TX_ON_IN_PROGRESS",
        short: "ON PROG",
        colour: "--state-starting",
        hatch: "cross",
        meaning: "waits for the transmitter to settle",
    },
    {
        name: "TX_ON_RAMPING",
        short: "RAMPING",
        colour: "--state-ramping",
        hatch: "rising",
        meaning: "the power moves towards the target",
    },
    { name: "TX_ON", short: "ON", colour: "--state-on", hatch: "none", meaning: "closed loop" },
    { name: "UNDEFINED", short: "UNDEFINED", colour: "--state-undefined", hatch: "cross", meaning: "never acted in" },
];

export const STATE_TX_OFF = 2;
export const STATE_TX_ON_RAMPING = 7;
export const STATE_TX_ON = 8;

/** @param {number} state @returns {StateLook} */
export function stateLook(state) {
    return (
        STATES[state] ?? {
            ...STATES[9],
            name: `STATE ${state}`,
            short: `STATE ${state}`,
            meaning: "not a state that this page knows",
        }
    );
}

/**
 * A stretch of equal states; times in microseconds since the run began.
 * @typedef {{state: number, fromUs: number, toUs: number}} StateRun
 */

/**
 * Merges neighbouring samples of equal state. A hole longer than holeUs ends a run.
 * @param {ArrayLike<number>} timesUs ascending
 * @param {ArrayLike<number|null>} states
 * @param {number} length
 * @param {number} holeUs
 * @returns {StateRun[]}
 */
export function mergeStates(timesUs, states, length, holeUs) {
    /** @type {StateRun[]} */
    const runs = [];
    /** @type {StateRun|null} */
    let last = null;
    for (let i = 0; i < length; ++i) {
        const state = states[i];
        const timeUs = timesUs[i];
        if (state === null) {
            last = null;
            continue;
        }
        if (last !== null && timeUs - last.toUs <= holeUs) {
            last.toUs = timeUs;
            if (last.state === state) {
                continue;
            }
        }
        last = { state, fromUs: timeUs, toUs: timeUs };
        runs.push(last);
    }
    return runs;
}
