/** Ranges of value axes: whole steps, and no jitter while the data moves a little. */

const MANTISSAS = [1, 2, 5, 10];

/** @param {number} span above 0 @param {number} most steps @returns {number} 1, 2 or 5 times a power of ten */
export function niceStep(span, most) {
    const raw = span / Math.max(1, most);
    const power = 10 ** Math.floor(Math.log10(raw));
    const mantissa = /** @type {number} */ (MANTISSAS.find((entry) => entry * power >= raw * (1 - 1e-9)) ?? 10);
    return mantissa * power;
}

/** @param {number} low @param {number} high @param {number} step @returns {number[]} multiples of the step between both */
export function marks(low, high, step) {
    const found = [];
    const digits = Math.max(0, Math.ceil(-Math.log10(step) + 1e-9));
    for (let n = Math.ceil(low / step - 1e-6); n * step <= high + step * 1e-6; ++n) {
        found.push(Number((n * step).toFixed(digits)));
    }
    return found;
}

/** Grows at once and shrinks only when the data has needed much less for a while. */
export class AxisRange {
    /** @param {number} leastSpan @param {number} patienceMs @param {() => number} now */
    constructor(leastSpan, patienceMs = 1200, now = () => performance.now()) {
        this.leastSpan = leastSpan;
        this.patienceMs = patienceMs;
        this.now = now;
        this.low = -leastSpan / 2;
        this.high = leastSpan / 2;
        this.roomySinceMs = NaN;
        this.fresh = true;
    }

    /** @param {number|null} low @param {number|null} high @returns {[number, number]} */
    fit(low, high) {
        if (low === null || high === null) {
            return [this.low, this.high];
        }
        const wanted = roundOut(low, high, this.leastSpan);
        const inside = low >= this.low && high <= this.high;
        const roomy = wanted[1] - wanted[0] < 0.72 * (this.high - this.low);
        if (this.fresh || !inside) {
            const grown = this.fresh
                ? wanted
                : roundOut(Math.min(low, this.low), Math.max(high, this.high), this.leastSpan);
            [this.low, this.high] = wanted[1] - wanted[0] < 0.6 * (grown[1] - grown[0]) ? wanted : grown;
            this.fresh = false;
            this.roomySinceMs = NaN;
        } else if (!roomy) {
            this.roomySinceMs = NaN;
        } else if (Number.isNaN(this.roomySinceMs)) {
            this.roomySinceMs = this.now();
        } else if (this.now() - this.roomySinceMs > this.patienceMs) {
            [this.low, this.high] = wanted;
            this.roomySinceMs = NaN;
        }
        return [this.low, this.high];
    }

    /** The next fit takes just what it is given. */
    reset() {
        this.fresh = true;
    }
}

/** @param {number} low @param {number} high @param {number} leastSpan @returns {[number, number]} with room around both */
export function roundOut(low, high, leastSpan) {
    const middle = (low + high) / 2;
    const half = Math.max(leastSpan, (high - low) * 1.12) / 2;
    const step = niceStep(2 * half, 5) / 2;
    return [Math.floor((middle - half) / step + 1e-9) * step, Math.ceil((middle + half) / step - 1e-9) * step];
}

/** Half ranges of the error axis in decibels; the first shows both bands. */
const ERROR_RANGES = [1.25, 2.5, 6, 12, 25, 50, 120, 250];

/** Part of the values that may lie beyond the axis: the way up from nothing would flatten all that follows. */
const BEYOND = 0.05;

/** @param {readonly (number|null)[]} values @param {number} scale to decibels @returns {number} half the axis */
export function errorHalfRange(values, scale) {
    let known = 0;
    const beyond = ERROR_RANGES.map(() => 0);
    for (const value of values) {
        if (value !== null) {
            ++known;
            const size = Math.abs(value) * scale;
            for (let i = 0; i < beyond.length && size > ERROR_RANGES[i] * 0.98; ++i) {
                ++beyond[i];
            }
        }
    }
    const fits = beyond.findIndex((count) => count <= known * BEYOND);
    return ERROR_RANGES[fits < 0 ? ERROR_RANGES.length - 1 : fits];
}
