/**
 * Takes points out of a line that it would pass by closely anyway, since each point costs time to draw. From the last
 * point that stays, a corridor is kept that all later ones lie in; the point before the first one outside stays, too.
 * null, which breaks the line, stays as well.
 * @param {readonly number[]} xs ascending
 * @param {(number|null|undefined)[]} values undefined where one was taken out
 * @param {number} tolerance in the values' unit
 */
export function thin(xs, values, tolerance) {
    let anchorX = NaN;
    let anchorValue = NaN;
    let high = Infinity;
    let low = -Infinity;
    let outAt = -1;
    let out = NaN;
    for (let i = 0; i < values.length; ++i) {
        const value = values[i];
        if (value === null || value === undefined) {
            if (outAt >= 0) {
                values[outAt] = out;
            }
            outAt = -1;
            anchorX = NaN;
            continue;
        }
        if (Number.isNaN(anchorX)) {
            [anchorX, anchorValue, high, low] = [xs[i], value, Infinity, -Infinity];
            continue;
        }
        let width = xs[i] - anchorX;
        high = Math.min(high, (value + tolerance - anchorValue) / width);
        low = Math.max(low, (value - tolerance - anchorValue) / width);
        if (!(low <= high) && outAt >= 0) {
            values[outAt] = out;
            [anchorX, anchorValue] = [xs[outAt], out];
            width = xs[i] - anchorX;
            high = (value + tolerance - anchorValue) / width;
            low = (value - tolerance - anchorValue) / width;
        }
        values[i] = undefined;
        outAt = i;
        out = value;
    }
    if (outAt >= 0) {
        values[outAt] = out;
    }
}
