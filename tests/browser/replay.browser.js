/** A recording on the page: `opc replay` of a run that was recorded before. */
import assert from "node:assert/strict";
import { readFile } from "node:fs/promises";
import { test } from "node:test";
import { withPage } from "./pageRunner.js";
import { sleep, until } from "./realUnit.js";

/** @typedef {import("playwright-core").Page} Page @typedef {import("./realUnit.js").RealUnit} RealUnit */

/** @param {RealUnit} unit @returns {Promise<any>} */
async function replayOf(unit) {
    return (await (await fetch(`${unit.address}/api/unit`)).json()).replay;
}

/** @param {Page} page @returns {Promise<number>} the newest moment that the page says, in seconds */
async function placeOf(page) {
    const text = (await page.locator(".replay .figures").textContent()) ?? "";
    const [, minutes, seconds] = /** @type {RegExpMatchArray} */ (text.match(/^(\d+):([\d.]+) of /));
    return 60 * Number(minutes) + Number(seconds);
}

test("a recording plays from where it is told to and pauses, goes on and is sought", () =>
    withPage({ replay: true, options: ["--from", "1"] }, async (page, unit) => {
        await until(async () => (await replayOf(unit)).position_us > 1.5e6, "a replay that goes on");
        await page.keyboard.press("k");
        await until(async () => (await page.locator("#connection").textContent()) === "paused", "paused");
        const { position_us: paused } = await replayOf(unit);
        await sleep(300);
        assert.equal((await replayOf(unit)).position_us, paused);
        assert.equal(await page.getByRole("button", { name: "Play" }).count(), 1);

        await page.getByLabel("Place in the recording").fill("4000000");
        await until(async () => (await placeOf(page)) === 4, "the place on the page");
        await until(async () => (await replayOf(unit)).position_us === 4e6, "the place in the replay");
        await page.keyboard.press("Tab");
        await page.getByRole("button", { name: "10×" }).click();
        await page.getByRole("button", { name: "Play" }).click();
        await until(async () => {
            const { position_us, to_us, paused: stands } = await replayOf(unit);
            return stands && position_us === to_us;
        }, "the end");
        await until(async () => (await page.locator("#connection").textContent()) === "paused", "paused at the end");
    }));

test("a place that is sought is drawn at once, also while it is paused, for each channel", () =>
    withPage({ replay: true, options: ["--paused", "--from", "3"], pill: "paused" }, async (page) => {
        const drawn = () =>
            page.evaluate(() => document.querySelector("#readouts")?.textContent?.match(/-?\d+\.\d+/g)?.length ?? 0);
        await until(async () => (await drawn()) > 3, "values of a paused recording");
        await page.keyboard.press("PageDown");
        await until(async () => (await placeOf(page)) > 5.9, "the end");
        await page.keyboard.press("PageUp");
        await until(async () => (await placeOf(page)) === 0, "the beginning");
        await page.getByLabel("Place in the recording").fill("5000000");
        await until(async () => (await placeOf(page)) === 5, "5 s");
        for (const channel of [0, 1]) {
            await page.locator(".tile").nth(channel).click();
            await until(async () => {
                const [download] = await Promise.all([page.waitForEvent("download"), page.keyboard.press("e")]);
                const text = await readFile(await download.path(), "utf8");
                return text.trim().split("\n").length > 500;
            }, `the samples of channel ${channel} up to the place`);
        }
    }));

test("there are no controls and no logs of a recording, and the page says why", () =>
    withPage({ replay: true, options: ["--paused"], pill: "paused" }, async (page) => {
        assert.equal(await page.getByRole("tab", { name: "Control" }).count(), 0);
        assert.equal(await page.getByRole("region", { name: "Statistics" }).count(), 0);
        assert.equal(await page.getByRole("region", { name: "Transient log" }).count(), 0);
        await page.getByText("there is no unit to control").waitFor();
        await page.keyboard.press("c");
        assert.equal(await page.locator("#panel-monitor").isVisible(), true);
    }));

test("events come with their kind up to the place, and what was recorded is there as history", () =>
    withPage({ replay: true, options: ["--paused", "--from", "5"], pill: "paused" }, async (page) => {
        const kinds = () => page.locator(".event-kind").allTextContents();
        await until(async () => (await kinds()).includes("state"), "events");
        assert.ok(!(await page.locator(".event-text").allTextContents()).some((text) => /TX_OFF_INITIATED/.test(text)));
        await page.keyboard.press("h");
        await page.getByText("The recording reaches back").waitFor();
        await page.getByRole("button", { name: "All of it" }).click();
        await until(async () => (await page.locator("#connection").textContent()) === "held", "held");
    }));
