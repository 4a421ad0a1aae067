import assert from "node:assert/strict";
import { test } from "node:test";
import { Trigger } from "../src/trigger.js";

/** @typedef {import("../src/trigger.js").TriggerSettings} TriggerSettings */

const WINDOW_US = 1e6;

/** @param {Trigger} trigger @param {number} fromMs @param {number} toMs @param {Partial<import("../src/trigger.js").TriggerSample>} more */
function feed(trigger, fromMs, toMs, more = {}) {
    for (let ms = fromMs; ms < toMs; ms += 10) {
        trigger.feed({ timeUs: ms * 1000, target: 1000, error: 0, state: 8, ...more });
    }
}

/** @param {Partial<TriggerSettings>} settings */
function triggerOf(settings) {
    return new Trigger({ mode: "normal", source: "step", level: 50, ...settings }, WINDOW_US);
}

test("a free one never holds", () => {
    const trigger = triggerOf({ mode: "free" });
    feed(trigger, 0, 100);
    feed(trigger, 100, 200, { target: 2000 });
    assert.equal(trigger.stretch, null);
    assert.equal(trigger.phase, "rolling");
});

test("a step stands at a fifth of the window", () => {
    const trigger = triggerOf({});
    feed(trigger, 0, 1000);
    assert.equal(trigger.phase, "waiting");
    feed(trigger, 1000, 1500, { target: 1100 });
    assert.equal(trigger.phase, "filling");
    assert.deepEqual(trigger.stretch, { fromUs: 0.8e6, toUs: 1.8e6 });
    feed(trigger, 1500, 2000, { target: 1100 });
    assert.equal(trigger.phase, "shown");
});

for (const [name, settings, sample, fires] of /** @type {[string, Partial<TriggerSettings>, object, boolean][]} */ ([
    ["a step of the level", {}, { target: 1050 }, true],
    ["a step downwards", {}, { target: 900 }, true],
    ["a smaller step", {}, { target: 1049 }, false],
    ["a target that goes away", {}, { target: null }, false],
    ["any change of state", { source: "state", level: -1 }, { state: 7 }, true],
    ["the state that is awaited", { source: "state", level: 2 }, { state: 2 }, true],
    ["another state", { source: "state", level: 2 }, { state: 1 }, false],
    ["an error above the level", { source: "error", level: 100 }, { error: 101 }, true],
    ["an error below minus the level", { source: "error", level: 100 }, { error: -101 }, true],
    ["an error of the level", { source: "error", level: 100 }, { error: 100 }, false],
])) {
    test(`${name} ${fires ? "fires" : "does not fire"}`, () => {
        const trigger = triggerOf(settings);
        feed(trigger, 0, 500);
        feed(trigger, 500, 510, sample);
        assert.equal(trigger.foundUs, fires ? 500000 : null);
    });
}

test("nothing fires again before the window is full, then the next does", () => {
    const trigger = triggerOf({});
    feed(trigger, 0, 100);
    feed(trigger, 100, 500, { target: 2000 });
    feed(trigger, 500, 1000);
    assert.equal(trigger.foundUs, 100000);
    feed(trigger, 1000, 1100, { target: 2000 });
    assert.equal(trigger.foundUs, 1000000);
});

test("a single one stays until it is armed again", () => {
    const trigger = triggerOf({ mode: "single" });
    feed(trigger, 0, 100);
    feed(trigger, 100, 1500, { target: 2000 });
    assert.equal(trigger.phase, "done");
    feed(trigger, 1500, 1600);
    assert.equal(trigger.foundUs, 100000);
    trigger.rearm();
    assert.equal(trigger.phase, "waiting");
    feed(trigger, 1600, 1700);
    feed(trigger, 1700, 1800, { target: 2000 });
    assert.equal(trigger.foundUs, 1700000);
});

test("an automatic one rolls when nothing comes, a normal one waits", () => {
    for (const mode of /** @type {const} */ (["auto", "normal"])) {
        const trigger = triggerOf({ mode });
        feed(trigger, 0, 2500);
        assert.equal(trigger.phase, mode === "auto" ? "rolling" : "waiting");
        feed(trigger, 2500, 3500, { target: 2000 });
        assert.notEqual(trigger.stretch, null);
        feed(trigger, 3500, 6500, { target: 2000 });
        assert.equal(trigger.stretch === null, mode === "auto");
    }
});

test("a lasting error fires once", () => {
    const trigger = triggerOf({ source: "error", level: 100 });
    feed(trigger, 0, 100);
    feed(trigger, 100, 5000, { error: 300 });
    assert.equal(trigger.foundUs, 100000);
});
