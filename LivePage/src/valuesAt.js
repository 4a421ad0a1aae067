/**
 * Values of the picture at a moment.
 * @param {import("./decimate.js").Picture} picture @param {number} us
 * @returns {(key: string) => number|null} the unit's integer
 */
export function valuesAt(picture, us) {
    const { xs, columns } = picture;
    const x = us / 1e6;
    let low = 0;
    let high = xs.length;
    while (low < high) {
        const middle = (low + high) >> 1;
        if (xs[middle] <= x) {
            low = middle + 1;
        } else {
            high = middle;
        }
    }
    const near = low > 0 && (low === xs.length || x - xs[low - 1] <= xs[low] - x) ? low - 1 : low;
    return (key) => columns[key]?.[near] ?? null;
}

/**
 * The sample of a ring next to a moment, exact where a picture has only the extremes of a pixel.
 * @param {import("./ring.js").ChannelRing} ring @param {number} us @param {number} holeUs
 * @returns {number} index; -1 when none is near
 */
export function indexAt(ring, us, holeUs) {
    const after = ring.indexFrom(us);
    const candidates = [after - 1, after].filter((index) => index >= 0 && index < ring.length);
    const distance = (/** @type {number} */ index) => Math.abs(ring.timesUs[ring.place(index)] - us);
    const best = candidates.sort((a, b) => distance(a) - distance(b))[0];
    return best !== undefined && distance(best) <= holeUs ? best : -1;
}

/**
 * @param {import("./store.js").Store} store @param {number} us
 * @returns {(key: string) => number|null} from the ring where it holds that moment, else from what is drawn
 */
export function storeValuesAt(store, us) {
    const { ring, picture } = store;
    const index = ring === null ? -1 : indexAt(ring, us, store.holeUs);
    if (ring !== null && index >= 0) {
        return (key) => ring.value(key, index);
    }
    return picture === null || us < store.shown.fromUs || us > store.shown.toUs ? () => null : valuesAt(picture, us);
}
