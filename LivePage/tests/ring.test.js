import assert from "node:assert/strict";
import { test } from "node:test";
import { ChannelRing } from "../src/ring.js";
import { Decimator, emptyPicture, pictureOfRanges } from "../src/decimate.js";
import { merged } from "../src/filler.js";
import { thin } from "../src/thin.js";
import { mergeStates } from "../src/states.js";

/** @param {number[]} times @param {(time: number) => number|null} value */
function batch(times, value) {
    return {
        t_us: times,
        state: times.map(() => 8),
        pmeasured_cdb: times.map(value),
        reduced_gain_cdb: [times.map((t) => t + 1)],
    };
}

/** @param {number} from @param {number} to @param {number} step */
function range(from, to, step = 1) {
    return Array.from({ length: Math.ceil((to - from) / step) }, (_entry, i) => from + i * step);
}

test("a ring keeps the newest samples over many turns", () => {
    const ring = new ChannelRing(10);
    for (let from = 0; from < 100; from += 7) {
        ring.append(batch(range(from, from + 7), (t) => 2 * t));
    }
    assert.equal(ring.length, 10);
    assert.deepEqual([ring.oldestUs, ring.newestUs], [95, 104]);
    assert.deepEqual(
        range(0, 10).map((i) => ring.value("pmeasured_cdb", i)),
        range(95, 105).map((t) => 2 * t),
    );
    assert.equal(ring.latest("reduced_1"), 105);
    assert.equal(ring.latest("reduced_2"), null);
});

test("samples that are known are not taken twice", () => {
    const ring = new ChannelRing(100);
    assert.equal(ring.append(batch(range(0, 10), () => 1)), 10);
    assert.equal(ring.append(batch(range(5, 12), () => 2)), 2);
    assert.equal(ring.length, 12);
    assert.equal(ring.value("pmeasured_cdb", 9), 1);
    assert.equal(ring.value("pmeasured_cdb", 10), 2);
});

test("a batch of more than the ring holds leaves its end", () => {
    const ring = new ChannelRing(10);
    ring.append(batch(range(0, 25), (t) => t));
    assert.deepEqual([ring.length, ring.oldestUs, ring.latest("pmeasured_cdb")], [10, 15, 24]);
});

test("null stays null", () => {
    const ring = new ChannelRing(4);
    ring.append(batch([1, 2], (t) => (t === 2 ? null : 0)));
    assert.deepEqual([ring.value("pmeasured_cdb", 0), ring.value("pmeasured_cdb", 1)], [0, null]);
});

test("the first sample from a time on is found", () => {
    const ring = new ChannelRing(8);
    ring.append(batch(range(0, 120, 10), (t) => t));
    assert.deepEqual(
        [-5, 40, 45, 110, 111].map((t) => ring.indexFrom(t)),
        [0, 0, 1, 7, 8],
    );
    assert.equal(new ChannelRing(3).indexFrom(5), 0);
});

test("few samples are drawn as they are, with one beyond either end", () => {
    const ring = new ChannelRing(100);
    ring.append(batch(range(0, 1000, 10), (t) => t));
    const picture = emptyPicture();
    new Decimator().fill(ring, 105, 145, 500, 50, picture);
    assert.deepEqual(
        picture.xs.map((x) => Math.round(x * 1e6)),
        [100, 110, 120, 130, 140, 150],
    );
    assert.deepEqual(picture.columns["pmeasured_cdb"], [100, 110, 120, 130, 140, 150]);
    assert.deepEqual(picture.extents["pmeasured_cdb"], { low: 100, high: 150 });
    assert.equal(picture.extents["ptarget_cdb"], null);
});

test("no peak is lost among many samples, and all columns are as long as the times", () => {
    const ring = new ChannelRing(20000);
    ring.append(batch(range(0, 20000), (t) => (t === 12345 ? 999 : t === 6789 ? -999 : t % 7 === 0 ? null : t % 5)));
    const picture = emptyPicture();
    new Decimator().fill(ring, 0, 20000, 100, 50, picture);
    assert.ok(picture.xs.length <= 204);
    for (const column of Object.values(picture.columns)) {
        assert.equal(column.length, picture.xs.length);
    }
    assert.ok(picture.columns["pmeasured_cdb"].includes(999));
    assert.ok(picture.columns["pmeasured_cdb"].includes(-999));
    assert.ok(picture.xs.every((x, i) => i === 0 || x >= picture.xs[i - 1]));
});

test("a pixel keeps the order of its least and greatest", () => {
    const ring = new ChannelRing(100);
    ring.append(batch(range(0, 40), (t) => (t < 20 ? t : -t)));
    const picture = emptyPicture();
    new Decimator().fill(ring, 0, 40, 2, 50, picture);
    assert.deepEqual(picture.columns["pmeasured_cdb"], [0, 19, -20, -39]);
});

test("pixels stay the same while the stretch moves", () => {
    const ring = new ChannelRing(10000);
    ring.append(batch(range(0, 10000), (t) => (t * 7919) % 1000));
    const first = emptyPicture();
    const second = emptyPicture();
    new Decimator().fill(ring, 1000, 5000, 40, 50, first);
    new Decimator().fill(ring, 1100, 5100, 40, 50, second);
    const known = new Map(first.xs.map((x, i) => [x, first.columns["pmeasured_cdb"][i]]));
    const same = second.xs.filter((x, i) => known.get(x) === second.columns["pmeasured_cdb"][i]);
    assert.ok(same.length >= 72, `${same.length} of ${second.xs.length}`);
});

test("a hole breaks the line and is told", () => {
    const ring = new ChannelRing(100);
    ring.append(batch([...range(0, 100, 10), ...range(500, 600, 10)], () => 1));
    const picture = emptyPicture();
    new Decimator().fill(ring, 0, 1000, 500, 50, picture);
    assert.deepEqual(picture.holes, [{ fromUs: 90, toUs: 500 }]);
    assert.equal(picture.columns["pmeasured_cdb"].indexOf(null), 10);
    assert.equal(picture.columns["pmeasured_cdb"].length, 21);
    assert.equal(picture.states.length, 2);
});

test("an empty ring gives an empty picture", () => {
    const picture = emptyPicture();
    new Decimator().fill(new ChannelRing(5), 0, 100, 10, 50, picture);
    assert.deepEqual([picture.xs, picture.states, picture.samples], [[], [], 0]);
});

test("ranges of stretches become their least and greatest", () => {
    const picture = pictureOfRanges(
        {
            t_us: [0, 1e6],
            n: [166, 167],
            state: [8, 2],
            pmeasured_cdb: { min: [1, null], mean: [2, null], max: [3, null] },
        },
        "seconds",
    );
    assert.deepEqual(picture.xs, [0, 0.5, 1, 1.5]);
    assert.deepEqual(picture.columns["pmeasured_cdb"], [1, 3, null, null]);
    assert.deepEqual([picture.samples, picture.source, picture.states.length], [333, "seconds", 2]);
});

test("equal states are merged and reach to the next", () => {
    assert.deepEqual(mergeStates([0, 10, 20, 30, 40], [2, 2, 5, 5, 8], 5, 50), [
        { state: 2, fromUs: 0, toUs: 20 },
        { state: 5, fromUs: 20, toUs: 40 },
        { state: 8, fromUs: 40, toUs: 40 },
    ]);
    assert.deepEqual(mergeStates([0, 10, 200], [2, 2, 2], 3, 50), [
        { state: 2, fromUs: 0, toUs: 10 },
        { state: 2, fromUs: 200, toUs: 200 },
    ]);
});

test("older and missing samples are merged with those that a ring holds", () => {
    const ring = new ChannelRing(100);
    ring.append(batch([...range(0, 30, 10), ...range(60, 90, 10)], (t) => t));
    const whole = merged(
        ring,
        batch(range(20, 70, 10), (t) => t + 1),
    );
    assert.deepEqual(
        range(0, whole.length).map((i) => whole.timesUs[whole.place(i)]),
        range(0, 90, 10),
    );
    assert.deepEqual(
        range(0, whole.length).map((i) => whole.value("pmeasured_cdb", i)),
        [0, 10, 21, 31, 41, 51, 61, 70, 80],
    );
    assert.equal(whole.value("reduced_1", 8), 81);
    assert.equal(
        merged(
            ring,
            batch([], () => 0),
        ),
        ring,
    );
});

test("a thinned line passes by all points closely", () => {
    const xs = range(0, 3000);
    const values = xs.map((x) => 10 * Math.sin(x / 200) + Math.sin(x * x) * 0.05 + (x > 1500 ? 4 : 0));
    const thinned = [...values];
    thin(xs, thinned, 0.1);
    const kept = xs.filter((x) => thinned[x] !== undefined);
    assert.ok(kept.length < 600, String(kept.length));
    for (let k = 1; k < kept.length; ++k) {
        const [from, to] = [kept[k - 1], kept[k]];
        for (let x = from; x <= to; ++x) {
            assert.ok(
                Math.abs(values[from] + ((values[to] - values[from]) * (x - from)) / (to - from) - values[x]) <= 0.21,
                `at ${x}`,
            );
        }
    }
});

test("points that do not move the line are taken out, ends of flat stretches stay", () => {
    const out = undefined;
    for (const [values, expected] of /** @type {(number|null|undefined)[][][]} */ ([
        [
            [1, 1, 1, 1],
            [1, out, out, 1],
        ],
        [
            [1, 1.05, 0.95, 1, 5, 5, 5],
            [1, out, out, 1, 5, out, 5],
        ],
        [
            [1, 2, 1, 2],
            [1, 2, 1, 2],
        ],
        [
            [1, 1, null, 1, 1, 1],
            [1, 1, null, 1, out, 1],
        ],
        [
            [null, null],
            [null, null],
        ],
        [
            [1, 1.04, 1.08, 1.12, 1.16],
            [1, out, out, out, 1.16],
        ],
        [
            [1, null, 1, 9],
            [1, null, 1, 9],
        ],
        [[], []],
    ])) {
        thin(range(0, values.length), values, 0.1);
        assert.deepEqual(values, expected);
    }
});
