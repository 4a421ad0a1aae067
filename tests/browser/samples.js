/** What a page exports beside what its unit recorded itself. */
import assert from "node:assert/strict";

/** A column of the page and that of the unit's own recording. */
const COLUMNS = [
    ["state", "state"],
    ["result", "result"],
    ["target_dBm", "ptarget_dBm"],
    ["measured_dBm", "pmeasured_dBm"],
    ["predicted_dBm", "ppredicted_dBm"],
    ["control_dBm", "pctrl_dBm"],
    ["error_dB", "error_dB"],
    ["temperature_degC", "temperature_C"],
    ["frequency_MHz", "frequency_MHz"],
];
/** Below this a recorded power says that there is none; an error says so with the power. */
const NO_POWER_DBM = -99;

/** @param {string} csv without quotes @returns {Record<string, string>[]} */
export function rowsOf(csv) {
    const [head, ...lines] = csv
        .trimEnd()
        .split("\n")
        .map((line) => line.split(","));
    return lines.map((fields) => Object.fromEntries(head.map((name, i) => [name, fields[i]])));
}

/** @param {Record<string, string>} row of the recording @param {string} name @returns {string} as the page writes it */
function wanted(row, name) {
    const isNone = name.endsWith("_dBm") && Number(row[name]) <= NO_POWER_DBM;
    const hasNoError = name === "error_dB" && Number(row["pmeasured_dBm"]) <= NO_POWER_DBM;
    return isNone || hasNoError ? "" : row[name];
}

/**
 * Every sample that the unit recorded between the first and the last of the page's is there, with the same values.
 * @param {string} exported by the page @param {string} recorded by the unit @param {number} channel
 * @param {number} atLeastS the page has to show
 */
export function assertSameSamples(exported, recorded, channel, atLeastS) {
    const shown = rowsOf(exported);
    assert.ok(shown.length > 0, "the page exported nothing");
    const timeOf = (/** @type {Record<string, string>} */ row) => Number(row["time_s"]).toFixed(3);
    const [from, to] = [Number(timeOf(shown[0])), Number(timeOf(/** @type {any} */ (shown.at(-1))))];
    assert.ok(to - from >= atLeastS, `${from} to ${to} s are shown`);
    const own = rowsOf(recorded).filter(
        (row) => row["channel"] === String(channel) && Number(row["time_s"]) >= from && Number(row["time_s"]) <= to,
    );
    assert.deepEqual(shown.map(timeOf), own.map(timeOf), "the page's samples and those of the unit");
    shown.forEach((row, i) => {
        for (const [ours, theirs] of COLUMNS) {
            assert.equal(row[ours], wanted(own[i], theirs), `${ours} at ${timeOf(row)} s`);
        }
    });
}
