/** What is seen, saved as files. */
import assert from "node:assert/strict";
import { readFile } from "node:fs/promises";
import { test } from "node:test";
import { withPage } from "./pageRunner.js";
import { untilPill } from "./pageSteps.js";
import { assertSameSamples, rowsOf } from "./samples.js";

/** @param {import("playwright-core").Page} page @param {string} key */
async function saved(page, key) {
    const [file] = await Promise.all([page.waitForEvent("download"), page.keyboard.press(key)]);
    return { name: file.suggestedFilename(), bytes: await readFile(await file.path()) };
}

test("the CSV has every sample of the range as the unit recorded it, the switch-on among them", () =>
    withPage({ hash: "#w=10&ch=1", options: ["--csv", "run.csv"], expected: /ERR_/ }, async (page, unit) => {
        await unit.ctl("power", "15.5", "--channel", "1");
        await page.waitForTimeout(3000);
        await page.keyboard.press(" ");
        const { name, bytes } = await saved(page, "e");
        assert.match(name, /^channel-1-20\d\d-.*\.csv$/);
        await unit.stop();
        assertSameSamples(bytes.toString(), unit.file("run.csv"), 1, 3);
        const rows = rowsOf(bytes.toString());
        assert.deepEqual([rows[0]["state"], rows.at(-1)?.["state"]], ["TX_ON_IN_PROGRESS", "TX_ON"]);
        const spanMs = Date.parse(rows[100]["time_utc"]) - Date.parse(rows[0]["time_utc"]);
        assert.ok(Math.abs(spanMs - 1000 * (Number(rows[100]["time_s"]) - Number(rows[0]["time_s"]))) <= 1);
    }));

test("the picture is a PNG of the charts", () =>
    withPage({}, async (page) => {
        await page.waitForTimeout(1000);
        await page.keyboard.press(" ");
        const { name, bytes } = await saved(page, "p");
        assert.match(name, /\.png$/);
        assert.equal(bytes.subarray(1, 4).toString(), "PNG");
        const width = bytes.readUInt32BE(16);
        assert.ok(width >= 700 && bytes.length > 20000, `${width} pixels, ${bytes.length} bytes`);
    }));

test("history that the page does not hold is asked of the unit, drawn and exported whole", () =>
    withPage({ options: ["--csv", "run.csv"], expected: /ERR_/ }, async (page, unit) => {
        await page.waitForTimeout(2000);
        await page.route(/api\/history/, (route) => route.abort(), { times: 1 });
        await page.reload();
        await untilPill(page, "live");
        await page.getByText("No history:").waitFor();
        await page.keyboard.press("h");
        await page.getByRole("button", { name: "All of it", exact: true }).click();
        await page.getByText("history: every step").waitFor();
        const { bytes } = await saved(page, "e");
        await unit.stop();
        assertSameSamples(bytes.toString(), unit.file("run.csv"), 0, 2);
        assert.equal(rowsOf(bytes.toString())[0]["state"], "TX_ON_IN_PROGRESS");
    }));
