import { SIGNALS } from "./signals.js";
import { stateLook } from "./states.js";
import { unitOf } from "./units.js";

/** @typedef {import("./ring.js").ChannelRing} ChannelRing */

/** @param {string} text @returns {string} quoted where it has to be */
export function csvField(text) {
    return /[",\r\n]/.test(text) ? `"${text.replaceAll('"', '""')}"` : text;
}

/** @param {(string|number|null)[][]} rows @returns {string} */
export function csvText(rows) {
    return (
        rows.map((row) => row.map((field) => csvField(field === null ? "" : String(field))).join(",")).join("\n") + "\n"
    );
}

/** @param {number} us @returns {string} seconds, exact to the microsecond */
function seconds(us) {
    return (us / 1e6).toFixed(6);
}

/** The time of day of a moment of the run, exact to the microsecond.
 * @param {number} startedMs @param {number} us @returns {string} ISO 8601 */
export function isoTime(startedMs, us) {
    const milliseconds = Math.floor(us / 1000);
    const rest = Math.round(us - milliseconds * 1000);
    return new Date(startedMs + milliseconds).toISOString().replace("Z", `${String(rest).padStart(3, "0")}Z`);
}

const HEAD = ["time_utc", "time_s", "relative_s", "channel", "state", "result"];

/** @param {import("./signals.js").Signal} entry @returns {string} name and unit, such as measured_dBm */
function columnName(entry) {
    const unit = entry.kind === "power" ? "dBm" : unitOf(entry.kind, "dBm").replace("°", "deg");
    return `${entry.label.toLowerCase().replaceAll(" ", "_")}_${unit}`;
}

/**
 * Every sample of a channel between two times, not what was left of it for the pixels.
 * @param {ChannelRing} ring @param {number} channel @param {number} fromUs @param {number} toUs
 * @param {number} startedMs when the run began
 * @param {readonly string[]} hidden signals that are left out
 * @returns {string}
 */
export function csvOfRing(ring, channel, fromUs, toUs, startedMs, hidden) {
    const shown = SIGNALS.filter((entry) => !hidden.includes(entry.key));
    /** @type {(string|number|null)[][]} */
    const rows = [[...HEAD, ...shown.map(columnName)]];
    for (let i = ring.indexFrom(fromUs); i < ring.length; ++i) {
        const timeUs = ring.timesUs[ring.place(i)];
        if (timeUs > toUs) {
            break;
        }
        const state = ring.value("state", i);
        rows.push([
            isoTime(startedMs, timeUs),
            seconds(timeUs),
            seconds(timeUs - fromUs),
            channel,
            state === null ? null : stateLook(state).name,
            ring.value("result", i),
            ...shown.map((entry) => {
                const value = ring.value(entry.key, i);
                return value === null ? null : (value * entry.scale).toFixed(entry.scale === 0.001 ? 3 : 2);
            }),
        ]);
    }
    return csvText(rows);
}

/**
 * A drawn picture, where it comes from stretches with their least and greatest values: two rows for each.
 * @param {import("./decimate.js").Picture} picture @param {number} channel @param {number} fromUs @param {number} toUs
 * @param {number} startedMs @param {readonly string[]} hidden @returns {string}
 */
export function csvOfPicture(picture, channel, fromUs, toUs, startedMs, hidden) {
    const shown = SIGNALS.filter((entry) => !hidden.includes(entry.key));
    /** @type {(string|number|null)[][]} */
    const rows = [[...HEAD, ...shown.map(columnName)]];
    let run = 0;
    picture.xs.forEach((x, i) => {
        const timeUs = Math.round(x * 1e6);
        if (timeUs < fromUs || timeUs > toUs) {
            return;
        }
        while (run + 1 < picture.states.length && picture.states[run + 1].fromUs <= timeUs) {
            ++run;
        }
        const state = picture.states[run];
        rows.push([
            isoTime(startedMs, timeUs),
            seconds(timeUs),
            seconds(timeUs - fromUs),
            channel,
            state === undefined ? null : stateLook(state.state).name,
            null,
            ...shown.map((entry) => {
                const value = picture.columns[entry.key][i];
                return value === null ? null : (value * entry.scale).toFixed(entry.scale === 0.001 ? 3 : 2);
            }),
        ]);
    });
    return csvText(rows);
}
