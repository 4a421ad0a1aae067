import { AMPLIFIERS, COLUMNS, NONE } from "./signals.js";

/**
 * Columns as they come: equal lengths, integers or null; reduced_gain_cdb holds one array per amplifier.
 * @typedef {{t_us: number[], reduced_gain_cdb?: (number|null)[][]} & Record<string, any>} Batch
 */

/** The latest samples of one channel in typed arrays of a fixed size; the oldest give way. */
export class ChannelRing {
    /** @param {number} capacity samples */
    constructor(capacity) {
        this.capacity = capacity;
        this.timesUs = new Float64Array(capacity);
        /** @type {Record<string, Int32Array>} */
        this.columns = {};
        for (const key of COLUMNS) {
            this.columns[key] = new Int32Array(capacity);
        }
        this.length = 0;
        this.next = 0;
        /** Samples that were taken since the page began; tells whether there are new ones. */
        this.taken = 0;
    }

    clear() {
        this.length = 0;
        this.next = 0;
        this.taken = 0;
    }

    /** @param {number} index 0 is the oldest @returns {number} place in the columns */
    place(index) {
        const place = this.next - this.length + index;
        return place < 0 ? place + this.capacity : place;
    }

    /** @returns {number} NaN when empty */
    get oldestUs() {
        return this.length > 0 ? this.timesUs[this.place(0)] : NaN;
    }

    /** @returns {number} NaN when empty */
    get newestUs() {
        return this.length > 0 ? this.timesUs[this.place(this.length - 1)] : NaN;
    }

    /**
     * Takes the samples that are newer than the newest one; the others are known already.
     * @param {Batch} batch
     * @returns {number} how many were taken
     */
    append(batch) {
        const times = batch.t_us;
        const newest = this.length > 0 ? this.newestUs : -Infinity;
        let first = 0;
        while (first < times.length && times[first] <= newest) {
            ++first;
        }
        for (const key of COLUMNS) {
            const amplifier = key.startsWith("reduced_") ? Number(key.slice(8)) - 1 : -1;
            const source = amplifier >= 0 && amplifier < AMPLIFIERS ? batch.reduced_gain_cdb?.[amplifier] : batch[key];
            const target = this.columns[key];
            let place = this.next;
            for (let i = first; i < times.length; ++i) {
                target[place] = source?.[i] ?? NONE;
                place = place + 1 === this.capacity ? 0 : place + 1;
            }
        }
        for (let i = first; i < times.length; ++i) {
            this.timesUs[this.next] = times[i];
            this.next = this.next + 1 === this.capacity ? 0 : this.next + 1;
        }
        const count = times.length - first;
        this.length = Math.min(this.capacity, this.length + count);
        this.taken += count;
        return count;
    }

    /** @param {number} fromUs @param {number} beforeUs @returns {Batch} its samples from one time to before another */
    batch(fromUs, beforeUs) {
        const [first, end] = [this.indexFrom(fromUs), this.indexFrom(beforeUs)];
        const column = (/** @type {string} */ key) =>
            Array.from({ length: end - first }, (_entry, i) => this.value(key, first + i));
        /** @type {Batch} */
        const batch = {
            t_us: Array.from({ length: end - first }, (_entry, i) => this.timesUs[this.place(first + i)]),
            reduced_gain_cdb: [],
        };
        for (const key of COLUMNS) {
            if (key.startsWith("reduced_")) {
                batch.reduced_gain_cdb?.push(/** @type {(number|null)[]} */ (column(key)));
            } else {
                batch[key] = column(key);
            }
        }
        return batch;
    }

    /** @param {number} timeUs @returns {number} index of the first sample at or after that time; length when there is none */
    indexFrom(timeUs) {
        let low = 0;
        let high = this.length;
        while (low < high) {
            const middle = (low + high) >> 1;
            if (this.timesUs[this.place(middle)] < timeUs) {
                low = middle + 1;
            } else {
                high = middle;
            }
        }
        return low;
    }

    /** @param {string} key @param {number} index @returns {number|null} */
    value(key, index) {
        const value = this.columns[key][this.place(index)];
        return value === NONE ? null : value;
    }

    /** @param {string} key @returns {number|null} */
    latest(key) {
        return this.length > 0 ? this.value(key, this.length - 1) : null;
    }
}
