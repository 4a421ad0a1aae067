import assert from "node:assert/strict";
import { test } from "node:test";
import { decodeView, defaultView, encodeView } from "../src/viewLink.js";
import { csvField, csvOfPicture, csvOfRing, isoTime } from "../src/exportCsv.js";
import { ChannelRing } from "../src/ring.js";
import { pictureOfRanges } from "../src/decimate.js";

test("what is as ever is not in the link", () => assert.equal(encodeView(defaultView()), ""));

test("a link reproduces the view", () => {
    /** @type {import("../src/viewLink.js").View} */
    const view = {
        channel: 3,
        windowS: 30,
        fixed: { fromUs: 1234567, toUs: 2345678 },
        a: 1300000,
        b: 2000000,
        trigger: { mode: "single", source: "error", level: 25 },
        unit: "W",
        theme: "light",
        hidden: ["ppredicted_cdb", "reduced_6"],
        errorRange: 0.25,
        run: "00ff00ff00ff00ff",
    };
    assert.deepEqual(decodeView(`#${encodeView(view)}`), view);
});

for (const bad of [
    "#",
    "#w=7",
    "#from=5",
    "#from=5&to=4",
    "#trig=x,y,z",
    "#unit=V",
    "#theme=pink",
    "#a=b",
    "#hide=<b>",
    "#err=-1",
    "#%",
]) {
    test(`${bad} leaves the view as ever`, () => assert.deepEqual(decodeView(bad), defaultView()));
}

test("fields are quoted where they have to be", () => {
    assert.deepEqual(["a", "a,b", 'a"b', "a\nb"].map(csvField), ["a", '"a,b"', '"a""b"', '"a\nb"']);
});

test("times of day are exact to the microsecond", () => {
    const started = Date.parse("2026-11-21T15:00:00.123Z");
    assert.equal(isoTime(started, 1000456), "2026-11-21T15:00:01.123456Z");
    assert.equal(isoTime(started, -1), "2026-11-21T15:00:00.122999Z");
});

test("samples are exported with units and both times", () => {
    const ring = new ChannelRing(10);
    ring.append({
        t_us: [0, 6000, 12000],
        state: [8, 8, 2],
        result: [0, 0, 0],
        pmeasured_cdb: [1234, -5, null],
        frequency_khz: [5000000, 5000000, 5000000],
        reduced_gain_cdb: [[1, 2, 3]],
    });
    const rows = csvOfRing(ring, 1, 6000, 12000, 0, ["error_cdb"])
        .trimEnd()
        .split("\n")
        .map((row) => row.split(","));
    assert.equal(rows.length, 3);
    assert.deepEqual(rows[0].slice(0, 6), ["time_utc", "time_s", "relative_s", "channel", "state", "result"]);
    assert.ok(rows[0].includes("measured_dBm") && rows[0].includes("temperature_degC") && rows[0].includes("amp_1_dB"));
    assert.ok(!rows[0].some((name) => name.startsWith("error")));
    assert.deepEqual(rows[1].slice(0, 6), ["1970-01-01T00:00:00.006000Z", "0.006000", "0.000000", "1", "TX_ON", "0"]);
    const measured = rows[0].indexOf("measured_dBm");
    assert.deepEqual([rows[1][measured], rows[2][measured]], ["-0.05", ""]);
    assert.equal(rows[1][rows[0].indexOf("frequency_MHz")], "5000.000");
});

test("stretches are exported with their least and greatest", () => {
    const picture = pictureOfRanges(
        { t_us: [0, 1000000], n: [1, 1], state: [8, 2], pmeasured_cdb: { min: [1, 2], mean: [1, 2], max: [3, 4] } },
        "seconds",
    );
    const rows = csvOfPicture(picture, 0, 0, 2e6, 0, []).trimEnd().split("\n");
    assert.equal(rows.length, 5);
    assert.ok(rows[1].includes("TX_ON") && rows[4].includes("TX_OFF"));
});
