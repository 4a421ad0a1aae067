import assert from "node:assert/strict";
import { test } from "node:test";
import { dbmOf, fixed, format, formatDifference, formatWatts, wattsOf } from "../src/units.js";
import { digitsFor, duration, runClock, timeMarks } from "../src/clock.js";
import { AxisRange, errorHalfRange, marks, niceStep, roundOut } from "../src/axisRange.js";
import { transientFigures } from "../src/transientFigures.js";
import { troubleOf } from "../src/trouble.js";

test("dBm and watts are two sides of one power", () => {
    for (const [dbm, watts] of [
        [30, 1],
        [0, 1e-3],
        [40, 10],
        [-30, 1e-6],
        [43, 19.952623],
    ]) {
        assert.ok(Math.abs(wattsOf(dbm) / watts - 1) < 1e-6);
        assert.ok(Math.abs(dbmOf(watts) - dbm) < 1e-6);
    }
});

test("numbers have a true minus and no negative zero", () => {
    assert.deepEqual([fixed(-1.005, 1), fixed(-0.001, 2), fixed(0, 1)], ["\u22121.0", "0.00", "0.0"]);
});

for (const [watts, text] of /** @type {[number, string][]} */ ([
    [0, "0.000 W"],
    [1, "1.000 W"],
    [19.95, "19.95 W"],
    [0.0123, "12.30 mW"],
    [123e-6, "123.0 µW"],
    [2500, "2.500 kW"],
    [-0.5, "\u2212500.0 mW"],
])) {
    test(`${watts} W are ${text}`, () => {
        const shown = formatWatts(watts);
        assert.equal(`${shown.text} ${shown.unit}`, text);
    });
}

test("values are shown in their units", () => {
    assert.deepEqual(format(12.5, "power", 2, "dBm"), { text: "12.50", unit: "dBm" });
    assert.deepEqual(format(40, "power", 2, "W"), { text: "10.00", unit: "W" });
    assert.deepEqual(format(null, "frequency", 3, "W"), { text: "–", unit: "MHz" });
    assert.deepEqual(format(-0.1, "db", 3, "W"), { text: "\u22120.100", unit: "dB" });
});

test("differences have a sign, and of powers they are decibels or watts", () => {
    assert.deepEqual(formatDifference(10, 12, "power", 2, "dBm"), { text: "+2.00", unit: "dB" });
    assert.deepEqual(formatDifference(30, 33.0103, "power", 2, "W"), { text: "+1.000", unit: "W" });
    assert.deepEqual(formatDifference(12, 10, "db", 2, "dBm"), { text: "\u22122.00", unit: "dB" });
    assert.deepEqual(formatDifference(1, 1.0001, "db", 2, "dBm"), { text: "0.00", unit: "dB" });
    assert.equal(formatDifference(null, 1, "db", 2, "dBm").text, "–");
});

test("the run's clock rounds before it carries", () => {
    assert.deepEqual(
        [runClock(0, 0), runClock(59.9996e6, 3), runClock(59.99996e6, 3), runClock(3661.5e6, 1), runClock(-1.5e6, 1)],
        ["0:00", "1:00.000", "1:00.000", "1:01:01.5", "\u22120:01.5"],
    );
});

test("lengths have the unit that fits", () => {
    assert.deepEqual([6000, 210000, 1.5e6, 90e6, -6000].map(duration), [
        "6.00 ms",
        "210 ms",
        "1.500 s",
        "1:30.0 min",
        "\u22126.00 ms",
    ]);
});

test("time marks are counted in steps that people use", () => {
    assert.deepEqual(timeMarks(0, 10e6, 10).marksUs.length, 11);
    for (let spanS = 0.01; spanS < 1e6; spanS *= 1.3) {
        const { stepUs, marksUs } = timeMarks(123456, 123456 + spanS * 1e6, 9);
        assert.ok(marksUs.length <= 10, `${spanS}: ${marksUs.length}`);
        assert.notEqual(stepUs, 2.5e6);
        assert.ok(digitsFor(stepUs) <= 3);
    }
});

test("value marks are whole steps", () => {
    assert.deepEqual([niceStep(10, 5), niceStep(7, 5), niceStep(0.3, 5), niceStep(1, 10)], [2, 2, 0.1, 0.1]);
    assert.deepEqual(marks(-0.25, 0.31, 0.1), [-0.2, -0.1, 0, 0.1, 0.2, 0.3]);
});

test("a range has room around the data and at least its least span", () => {
    for (const [low, high] of [
        [10, 10],
        [10, 12],
        [-55, 40],
        [0.01, 0.02],
        [5000, 5000],
    ]) {
        const [from, to] = roundOut(low, high, 2);
        assert.ok(from < low && to > high && to - from >= 2, `${from} ${to}`);
    }
});

test("a range grows at once and shrinks with patience", () => {
    let now = 0;
    const range = new AxisRange(2, 1000, () => now);
    const [low, high] = range.fit(10, 20);
    assert.deepEqual(range.fit(10.1, 19.9), [low, high]);
    assert.ok(range.fit(10, 30)[1] > 30);
    const wide = range.fit(15, 16);
    now = 900;
    assert.deepEqual(range.fit(15, 16), wide);
    now = 1100;
    assert.ok(range.fit(15, 16)[1] < 20);
    assert.deepEqual(range.fit(null, null), [range.low, range.high]);
});

test("the error axis shows both bands", () => {
    const of = (/** @type {number} */ most) =>
        errorHalfRange(
            Array.from({ length: 10 }, () => most * 100),
            0.01,
        );
    assert.deepEqual([0, 1, -2, 30, 1000].map(of), [1.25, 1.25, 2.5, 50, 250]);
    assert.equal(errorHalfRange([], 0.01), 1.25);
});

test("a short peak does not flatten the error, a longer one counts", () => {
    const values = Array.from({ length: 200 }, (_entry, i) => (i < 9 ? 2000 : i === 50 ? null : 5));
    assert.equal(errorHalfRange(values, 0.01), 2.5 / 2);
    assert.equal(
        errorHalfRange(
            values.map((value, i) => (i < 30 ? 2000 : value)),
            0.01,
        ),
        25,
    );
});

test("figures of a step are read off its samples", () => {
    const target = Array.from({ length: 200 }, () => 20);
    const detected = target.map((_entry, i) => (i < 2 ? 20 : 20 - 30 * Math.exp(-(i - 2) / 10)));
    const figures = /** @type {import("../src/transientFigures.js").TransientFigures} */ (
        transientFigures(target, detected, 6000)
    );
    assert.equal(figures.stepUs, 12000);
    assert.equal(figures.fromDbm, -10);
    assert.equal(figures.riseUs, (24 - 2) * 6000);
    assert.equal(figures.settleUs, 58 * 6000);
    assert.equal(figures.overshootDb, 0);
    assert.ok(Math.abs(/** @type {number} */ (figures.steadyErrorDb)) < 0.001);
    assert.equal(transientFigures([1], [1], 6000), null);
});

test("steady samples have no rise, and an overshoot is told", () => {
    const steady = Array.from({ length: 50 }, () => 10);
    const figures = transientFigures(steady, steady, 1000);
    assert.deepEqual([figures?.riseUs, figures?.settleUs, figures?.overshootDb], [null, null, null]);
    const peaked = steady.map((_entry, i) => (i < 5 ? 0 : i === 10 ? 12 : 10));
    assert.equal(transientFigures(steady, peaked, 1000)?.overshootDb, 2);
});

for (const [name, more, level] of /** @type {[string, object, string][]} */ ([
    ["a quiet channel", {}, "none"],
    ["no samples for long", { newestAgeMs: 2000 }, "alarm"],
    ["a failed step", { result: -2147450880 }, "alarm"],
    ["failed steps a moment ago", { failedSteps: 2 }, "warning"],
    ["a lasting error", { errorCdb: -150, offTargetMs: 300 }, "warning"],
    ["a short error", { errorCdb: -150, offTargetMs: 100 }, "none"],
    ["an error while ramping", { errorCdb: -1500, offTargetMs: 900, state: 7 }, "none"],
])) {
    test(`${name}: ${level}`, () => {
        const quiet = { newestAgeMs: 10, state: 8, result: 0, errorCdb: 1, offTargetMs: 0, failedSteps: 0 };
        assert.equal(troubleOf({ ...quiet, ...more }).level, level);
    });
}
