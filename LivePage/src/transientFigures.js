/**
 * Figures of a step of the power, read off the transient log's samples.
 * @typedef {{stepUs: number, fromDbm: number, toDbm: number, riseUs: number|null, settleUs: number|null,
 *            overshootDb: number|null, steadyErrorDb: number|null}} TransientFigures
 */

/** The power counts as settled within this much of the target, in decibels. */
export const SETTLED_DB = 0.1;

/**
 * @param {readonly number[]} target in dBm, one a sample
 * @param {readonly number[]} detected in dBm
 * @param {number} intervalUs between samples
 * @returns {TransientFigures|null} null without at least ten samples
 */
export function transientFigures(target, detected, intervalUs) {
    const count = Math.min(target.length, detected.length);
    if (count < 10) {
        return null;
    }
    const start = startOfChange(target, detected, count);
    const final = target[count - 1];
    const from = detected[start];
    const swing = final - from;
    const tail = Math.max(3, Math.floor(count / 10));
    let sum = 0;
    for (let i = count - tail; i < count; ++i) {
        sum += target[i] - detected[i];
    }
    let settled = count;
    while (settled > start && Math.abs(detected[settled - 1] - final) <= SETTLED_DB) {
        --settled;
    }
    const isStep = Math.abs(swing) > 5 * SETTLED_DB;
    const crossing = (/** @type {number} */ part) => {
        for (let i = start; i < count; ++i) {
            if ((detected[i] - from) / swing >= part) {
                return i;
            }
        }
        return -1;
    };
    const low = crossing(0.1);
    const high = crossing(0.9);
    let peak = 0;
    for (let i = start; i < count; ++i) {
        peak = Math.max(peak, (detected[i] - final) * Math.sign(swing));
    }
    return {
        stepUs: start * intervalUs,
        fromDbm: from,
        toDbm: final,
        riseUs: isStep && low >= 0 && high >= 0 ? (high - low) * intervalUs : null,
        settleUs: isStep && settled < count ? (settled - start) * intervalUs : null,
        overshootDb: isStep ? peak : null,
        steadyErrorDb: sum / tail,
    };
}

/** The sample from which the power has the greatest way to go: after the last large fall away from the target.
 * @param {readonly number[]} target @param {readonly number[]} detected @param {number} count @returns {number} */
function startOfChange(target, detected, count) {
    const final = target[count - 1];
    let start = 0;
    for (let i = 1; i < count; ++i) {
        if (Math.abs(detected[i] - final) > Math.abs(detected[start] - final) + SETTLED_DB) {
            start = i;
        }
    }
    return start;
}
