/** What a page does when its unit or its reader goes away and comes back, and when the unit wants to know who asks. */
import assert from "node:assert/strict";
import { test } from "node:test";
import { withPage } from "./pageRunner.js";
import { untilPill } from "./pageSteps.js";
import { RawBrowser } from "./rawBrowser.js";
import { RealUnit, sleep, until } from "./realUnit.js";
import { assertSameSamples } from "./samples.js";

const TOKEN = "0123456789abcdef";

test("the page finds back to a unit that was stopped and started again, as another run", () =>
    withPage({ expected: /ERR_CONNECTION_REFUSED|ERR_INCOMPLETE_CHUNKED_ENCODING/ }, async (page, unit) => {
        const run = async () => (await (await page.request.get(`${unit.address}/api/unit`)).json()).run;
        await page.waitForTimeout(3000);
        const before = await run();
        await unit.stop();
        await untilPill(page, "no unit");
        assert.match(await page.locator("#notice").innerText(), /The unit does not answer .*trying again/);
        await unit.start();
        await untilPill(page, "live");
        assert.notEqual(await run(), before);
        await until(async () => /up 0:0[0-9]/.test(await page.locator("#unit-line").innerText()), "the new run's time");
        assert.equal(await page.locator("#notice").isVisible(), false);
    }));

/** Presses keys of the page and returns what it would have saved. @param {import("./rawBrowser.js").RawPage} page */
async function exported(page) {
    await page.value(`{
        const make = URL.createObjectURL;
        URL.createObjectURL = (blob) => {
            globalThis.saved = blob.text();
            return make.call(URL, blob);
        };
        for (const key of [" ", "e"]) {
            document.dispatchEvent(new KeyboardEvent("keydown", { key }));
        }
    }`);
    return page.value("globalThis.saved");
}

test("a hidden page closes its stream, and nothing is missing when it is seen again", async () => {
    const unit = new RealUnit({ channels: 8, options: ["--csv", "run.csv"] });
    const browser = new RawBrowser();
    try {
        await unit.start();
        const page = await browser.open(`${unit.address}/#w=60&ch=3`);
        const pill = () => page.value(`document.querySelector("#connection")?.textContent`);
        // An answer is listed when it has ended, which a stream does when it is closed.
        const ended = () =>
            page.value(
                `performance.getEntriesByType("resource").filter(({ name }) => name.includes("api/stream")).length`,
            );
        await until(async () => (await pill()) === "live", "a live page");
        await sleep(2000);
        assert.equal(await ended(), 0);
        await page.hide();
        await until(async () => (await page.value("document.visibilityState")) === "hidden", "a hidden page");
        await until(async () => (await ended()) === 1, "the stream's end");
        await sleep(4000);
        assert.equal(await ended(), 1, "a hidden page opens no stream");
        await page.show();
        await until(async () => (await pill()) === "live", "a live page again");
        await sleep(1000);
        const csv = await exported(page);
        assert.doesNotMatch(await page.value(`document.querySelector("#badges").innerText`), /missed/);
        await unit.stop();
        assertSameSamples(csv, unit.file("run.csv"), 3, 6);
    } finally {
        await browser.close();
        await unit.end();
    }
});

test("a unit with a token answers nobody without it, and the page asks for it once", () =>
    withPage({ token: TOKEN, expected: /401 \(Unauthorized\)/ }, async (page, unit) => {
        for (const path of ["api/unit", "api/stream", "api/history?channel=0&from_us=0&to_us=1", "api/events"]) {
            assert.equal((await page.request.get(`${unit.address}/${path}`)).status(), 401, path);
        }
        await page.getByLabel("Token", { exact: true }).fill("another-0123456789");
        await page.keyboard.press("Enter");
        await page.getByText("The unit did not take that one.").waitFor();
        await page.getByLabel("Token", { exact: true }).fill(TOKEN);
        await page.keyboard.press("Enter");
        await untilPill(page, "live");
        await page.keyboard.press("c");
        await until(
            async () => (await page.locator(".control-title").textContent()) === "Channel 0",
            "controls, read with the token",
        );
        await page.reload();
        await untilPill(page, "live");
        assert.equal(await page.getByRole("dialog").count(), 0);
    }));
