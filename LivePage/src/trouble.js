import { STATE_TX_ON } from "./states.js";
import { fixed } from "./units.js";

/**
 * What an operator has to know of a channel without looking at its charts.
 * @typedef {{level: "none"|"note"|"warning"|"alarm", text: string}} Trouble
 * @typedef {{newestAgeMs: number, state: number|null, result: number|null, errorCdb: number|null, offTargetMs: number,
 *            failedSteps: number}} Condition failedSteps: in the last second
 */

/** Outside this much for longer than the time below a closed loop is off its target. */
export const OFF_TARGET_CDB = 100;
const OFF_TARGET_MS = 250;
const SILENT_MS = 1500;

/** @param {Condition} condition @returns {Trouble} the gravest */
export function troubleOf(condition) {
    if (condition.newestAgeMs > SILENT_MS) {
        return { level: "alarm", text: "no samples" };
    }
    if (condition.result !== null && condition.result !== 0) {
        return { level: "alarm", text: `step failed 0x${(condition.result >>> 0).toString(16)}` };
    }
    if (condition.failedSteps > 0) {
        return {
            level: "warning",
            text: `${condition.failedSteps} failed step${condition.failedSteps === 1 ? "" : "s"}`,
        };
    }
    if (
        condition.state === STATE_TX_ON &&
        condition.errorCdb !== null &&
        Math.abs(condition.errorCdb) > OFF_TARGET_CDB &&
        condition.offTargetMs >= OFF_TARGET_MS
    ) {
        return { level: "warning", text: `off target ${fixed(condition.errorCdb / 100, 1)} dB` };
    }
    return { level: "none", text: "" };
}
