import { mergeStates } from "./states.js";
import { NONE, SIGNALS } from "./signals.js";

/** @typedef {import("./ring.js").ChannelRing} ChannelRing @typedef {import("./states.js").StateRun} StateRun */

/**
 * What is drawn of a stretch of time. Values are still the unit's integers; null breaks a line.
 * @typedef {{xs: number[], columns: Record<string, (number|null)[]>, extents: Record<string, Extent|null>,
 *            states: StateRun[], holes: {fromUs: number, toUs: number}[], failedUs: number[], samples: number, source: string,
 *            hasRanges: boolean, ring: ChannelRing|null}} Picture failedUs: steps that failed; hasRanges: the values are
 *            extremes, not samples; ring: the samples themselves, where there are
 * @typedef {{low: number, high: number}} Extent
 */

/** @returns {Picture} */
export function emptyPicture() {
    /** @type {Picture} */
    const picture = {
        xs: [],
        columns: {},
        extents: {},
        states: [],
        holes: [],
        failedUs: [],
        samples: 0,
        source: "ring",
        hasRanges: false,
        ring: null,
    };
    for (const { key } of SIGNALS) {
        picture.columns[key] = [];
        picture.extents[key] = null;
    }
    return picture;
}

/**
 * The samples between two times, at most about two for each pixel: the least and the greatest of a pixel in the order
 * in which they came, so that no peak is lost. Pixels stand at multiples of their width from the run's begin, whatever
 * the stretch; otherwise peaks would flicker while the picture moves.
 */
export class Decimator {
    constructor() {
        this.starts = new Int32Array(0);
        /** @type {number[]} */
        this.stateTimes = [];
        /** @type {number[]} */
        this.stateValues = [];
    }

    /**
     * @param {ChannelRing} ring
     * @param {number} fromUs @param {number} toUs
     * @param {number} pixels
     * @param {number} holeUs a longer silence breaks the lines
     * @param {Picture} picture is filled
     */
    fill(ring, fromUs, toUs, pixels, holeUs, picture) {
        const first = Math.max(0, ring.indexFrom(fromUs) - 1);
        const end = Math.min(ring.length, ring.indexFrom(toUs) + 1);
        const count = this.findBins(
            ring,
            first,
            end,
            end - first > 2 * pixels ? (toUs - fromUs) / pixels : 0,
            holeUs,
            picture,
        );
        picture.samples = Math.max(0, end - first);
        picture.ring = ring;
        for (const { key } of SIGNALS) {
            this.fillColumn(ring, key, count, picture);
        }
        this.fillStates(ring, first, end, holeUs, picture);
        this.fillFailures(ring, first, end, (toUs - fromUs) / pixels, picture);
    }

    /** Puts the begins of bins into starts, -1 - begin for one that follows a hole; the last entry is the end.
     * @param {ChannelRing} ring @param {number} first @param {number} end @param {number} binUs 0: each sample is one
     * @param {number} holeUs @param {Picture} picture @returns {number} bins */
    findBins(ring, first, end, binUs, holeUs, picture) {
        if (this.starts.length < end - first + 1) {
            this.starts = new Int32Array(Math.max(1024, 2 * (end - first + 1)));
        }
        const { timesUs, capacity } = ring;
        const xs = picture.xs;
        xs.length = 0;
        picture.holes.length = 0;
        let bins = 0;
        let bin = NaN;
        let place = ring.place(first);
        let beforeUs = NaN;
        for (let i = first; i < end; ++i) {
            const timeUs = timesUs[place];
            const now = binUs > 0 ? Math.floor(timeUs / binUs) : i;
            const hole = timeUs - beforeUs > holeUs;
            if (now !== bin || hole) {
                if (hole) {
                    picture.holes.push({ fromUs: beforeUs, toUs: timeUs });
                }
                this.starts[bins++] = hole ? -1 - i : i;
                bin = now;
            }
            beforeUs = timeUs;
            place = place + 1 === capacity ? 0 : place + 1;
        }
        this.starts[bins] = end;
        for (let b = 0; b < bins; ++b) {
            const start = this.starts[b];
            const begin = start < 0 ? -1 - start : start;
            const after = this.starts[b + 1];
            const last = (after < 0 ? -1 - after : after) - 1;
            const beginUs = timesUs[ring.place(begin)];
            if (start < 0) {
                xs.push((beginUs - 1) / 1e6);
            }
            xs.push(beginUs / 1e6);
            if (last > begin) {
                xs.push(timesUs[ring.place(last)] / 1e6);
            }
        }
        return bins;
    }

    /** @param {ChannelRing} ring @param {string} key @param {number} bins @param {Picture} picture */
    fillColumn(ring, key, bins, picture) {
        const values = ring.columns[key];
        const capacity = ring.capacity;
        const out = picture.columns[key];
        let low = Infinity;
        let high = -Infinity;
        let n = 0;
        for (let b = 0; b < bins; ++b) {
            const start = this.starts[b];
            const begin = start < 0 ? -1 - start : start;
            const after = this.starts[b + 1];
            const end = after < 0 ? -1 - after : after;
            if (start < 0) {
                out[n++] = null;
            }
            let least = Infinity;
            let greatest = -Infinity;
            let leastFirst = true;
            let place = ring.place(begin);
            for (let i = begin; i < end; ++i) {
                const value = values[place];
                if (value !== NONE) {
                    if (value < least) {
                        least = value;
                        leastFirst = false;
                    }
                    if (value > greatest) {
                        greatest = value;
                        leastFirst = true;
                    }
                }
                place = place + 1 === capacity ? 0 : place + 1;
            }
            const none = least === Infinity;
            out[n++] = none ? null : leastFirst ? least : greatest;
            if (end - begin > 1) {
                out[n++] = none ? null : leastFirst ? greatest : least;
            }
            low = least < low ? least : low;
            high = greatest > high ? greatest : high;
        }
        out.length = n;
        picture.extents[key] = low <= high ? { low, high } : null;
    }

    /** One for each pixel at most. @param {ChannelRing} ring @param {number} first @param {number} end @param {number} pixelUs @param {Picture} picture */
    fillFailures(ring, first, end, pixelUs, picture) {
        const results = ring.columns["result"];
        picture.failedUs.length = 0;
        let lastUs = -Infinity;
        for (let i = first; i < end; ++i) {
            const place = ring.place(i);
            if (results[place] !== 0 && results[place] !== NONE && ring.timesUs[place] - lastUs >= pixelUs) {
                lastUs = ring.timesUs[place];
                picture.failedUs.push(lastUs);
            }
        }
    }

    /** @param {ChannelRing} ring @param {number} first @param {number} end @param {number} holeUs @param {Picture} picture */
    fillStates(ring, first, end, holeUs, picture) {
        const { stateTimes, stateValues } = this;
        stateTimes.length = 0;
        stateValues.length = 0;
        const states = ring.columns["state"];
        for (let i = first; i < end; ++i) {
            const place = ring.place(i);
            stateTimes.push(ring.timesUs[place]);
            stateValues.push(states[place]);
        }
        picture.states = mergeStates(stateTimes, stateValues, stateTimes.length, holeUs);
    }
}

/**
 * A picture of an answer that has the least and the greatest of each stretch already.
 * @param {any} channel columns of {min, mean, max}
 * @param {string} source
 * @returns {Picture}
 */
export function pictureOfRanges(channel, source) {
    const picture = emptyPicture();
    picture.source = source;
    picture.hasRanges = true;
    /** @type {number[]} */
    const times = channel.t_us;
    const lengthUs = times.length > 1 ? (times[times.length - 1] - times[0]) / (times.length - 1) : 0;
    for (const timeUs of times) {
        picture.xs.push(timeUs / 1e6, (timeUs + lengthUs / 2) / 1e6);
    }
    for (const { key, amplifier } of SIGNALS) {
        const column = amplifier === undefined ? channel[key] : channel.reduced_gain_cdb?.[amplifier];
        const out = picture.columns[key];
        let low = Infinity;
        let high = -Infinity;
        for (let i = 0; i < times.length; ++i) {
            const least = column?.min?.[i] ?? null;
            const greatest = column?.max?.[i] ?? null;
            out.push(least, greatest);
            if (least !== null && greatest !== null) {
                low = Math.min(low, least);
                high = Math.max(high, greatest);
            }
        }
        picture.extents[key] = low <= high ? { low, high } : null;
    }
    picture.states = mergeStates(
        times,
        channel.state ?? [],
        channel.state ? times.length : 0,
        3 * Math.max(1, lengthUs),
    );
    picture.failedUs = times.filter((_timeUs, i) => (channel.failed?.[i] ?? 0) > 0);
    picture.samples = (channel.n ?? []).reduce((/** @type {number} */ sum, /** @type {number} */ n) => sum + n, 0);
    return picture;
}
