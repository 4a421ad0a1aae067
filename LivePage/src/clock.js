/** Times on the page: microseconds since the run began, shown as the run's clock or as the time of day. */

const MINUTE_US = 60e6;

/** @param {number} value @returns {string} */
function two(value) {
    return String(value).padStart(2, "0");
}

/**
 * The run's clock: 1:23.456, 2:01:23.456; digits says how many stand after the point.
 * @param {number} us @param {number} digits @returns {string}
 */
export function runClock(us, digits) {
    const unit = 10 ** (6 - digits);
    const whole = Math.round(Math.abs(us) / unit);
    const perSecond = 10 ** digits;
    const seconds = Math.floor(whole / perSecond);
    const minutes = Math.floor(seconds / 60);
    const hours = Math.floor(minutes / 60);
    const fraction = digits > 0 ? `.${String(whole % perSecond).padStart(digits, "0")}` : "";
    const head = hours > 0 ? `${hours}:${two(minutes % 60)}` : `${minutes}`;
    return `${us < 0 && whole > 0 ? "\u2212" : ""}${head}:${two(seconds % 60)}${fraction}`;
}

/** @param {Date} date @param {number} digits of the second, 0 to 3 @returns {string} local time of day */
export function timeOfDay(date, digits) {
    const fraction = digits > 0 ? `.${String(date.getMilliseconds()).padStart(3, "0").slice(0, digits)}` : "";
    return `${two(date.getHours())}:${two(date.getMinutes())}:${two(date.getSeconds())}${fraction}`;
}

/** @param {number} us a length @returns {string} with the unit that fits it */
export function duration(us) {
    const size = Math.abs(us);
    const sign = us < 0 ? "\u2212" : "";
    if (size < 1e6) {
        return `${sign}${(size / 1e3).toFixed(size < 1e4 ? 2 : size < 1e5 ? 1 : 0)} ms`;
    }
    if (size < MINUTE_US) {
        return `${sign}${(size / 1e6).toFixed(3)} s`;
    }
    return `${sign}${runClock(size, size < 60 * MINUTE_US ? 1 : 0)}${size < 60 * MINUTE_US ? " min" : " h"}`;
}

/** Steps between time marks in microseconds; 2.5 s is not among them, since nobody counts so. */
const STEPS_US = [
    1e3, 2e3, 5e3, 1e4, 2e4, 5e4, 1e5, 2e5, 5e5, 1e6, 2e6, 5e6, 1e7, 1.5e7, 3e7, 6e7, 1.2e8, 3e8, 6e8, 9e8, 1.8e9,
    3.6e9, 7.2e9, 1.08e10, 2.16e10, 4.32e10, 8.64e10,
];

/**
 * @param {number} fromUs @param {number} toUs
 * @param {number} most how many marks there can be
 * @param {number} originUs marks stand at multiples of the step from here
 * @returns {{stepUs: number, marksUs: number[]}}
 */
export function timeMarks(fromUs, toUs, most, originUs = 0) {
    const span = toUs - fromUs;
    const wanted = span / Math.max(1, most);
    const stepUs = STEPS_US.find((step) => step >= wanted) ?? Math.ceil(wanted / 8.64e10) * 8.64e10;
    const marksUs = [];
    for (let n = Math.ceil((fromUs - originUs) / stepUs); n * stepUs + originUs <= toUs; ++n) {
        marksUs.push(n * stepUs + originUs);
    }
    return { stepUs, marksUs };
}

/** @param {number} stepUs @returns {number} digits that tell neighbouring marks apart, at most 3 */
export function digitsFor(stepUs) {
    return stepUs >= 1e6 ? 0 : stepUs >= 1e5 ? 1 : stepUs >= 1e4 ? 2 : 3;
}

/** Spans from here on are marked with the time of day. */
export const TIME_OF_DAY_FROM_US = 5 * MINUTE_US;
