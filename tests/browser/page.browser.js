/** The page of a running unit: what it is made of, and what is looked at. */
import assert from "node:assert/strict";
import { test } from "node:test";
import { withPage } from "./pageRunner.js";
import { untilPill } from "./pageSteps.js";
import { until } from "./realUnit.js";

const ELSEWHERE = "http://192.0.2.1/";

test("the page opens without a complaint and asks nobody but its unit", () =>
    withPage({}, async (page) => {
        await page.locator(".plot-power canvas").waitFor();
        await page.waitForTimeout(2000);
        assert.match(await page.locator("#unit-line").innerText(), /6 ms steps · version \d+\.\d+/);
    }));

test("the page's policy lets nothing go to another host", () =>
    withPage({ expected: /192\.0\.2\.1/ }, async (page) => {
        const refused = await page.evaluate(
            (address) =>
                new Promise((resolve) => {
                    document.addEventListener("securitypolicyviolation", (event) => resolve(event.effectiveDirective));
                    fetch(address).catch(() => {});
                    setTimeout(() => resolve("nothing"), 3000);
                }),
            ELSEWHERE,
        );
        assert.equal(refused, "connect-src");
    }));

test("each of eight channels has a tile that shows its own power, and opens in depth", () =>
    withPage({ channels: 8 }, async (page) => {
        const tiles = page.locator(".tile");
        assert.equal(await tiles.count(), 8);
        for (let n = 0; n < 8; ++n) {
            const near = () =>
                tiles
                    .nth(n)
                    .locator(".tile-measured")
                    .innerText()
                    .then((text) => Math.abs(Number.parseFloat(text) - (10 + n)) < 0.3);
            await until(near, `about ${10 + n} dBm on tile ${n}`);
        }
        await tiles.nth(5).click();
        await until(async () => (await tiles.nth(5).getAttribute("aria-pressed")) === "true", "channel 5 chosen");
        await until(async () => page.url().includes("ch=5"), "channel 5 in the address");
    }));

test("hold stops what is seen while samples keep arriving, and run goes on with the newest", () =>
    withPage({ hash: "#w=5" }, async (page) => {
        const range = () => page.evaluate(() => location.hash);
        await page.waitForTimeout(1000);
        await page.keyboard.press(" ");
        await untilPill(page, "held");
        await page.waitForTimeout(600);
        const held = await range();
        assert.match(held, /from=-?\d+&to=\d+/);
        const unitLine = await page.locator("#unit-line").innerText();
        await until(async () => (await page.locator("#unit-line").innerText()) !== unitLine, "time to pass");
        assert.equal(await range(), held);
        await page.keyboard.press(" ");
        await untilPill(page, "live");
        await until(async () => !page.url().includes("from="), "an address without a fixed range");
    }));

test("what was before the page came is filled in from the unit", () =>
    withPage({}, async (page) => {
        await page.waitForTimeout(3000);
        const filled = page.waitForResponse(/api\/history\?channel=0/);
        await page.reload();
        const { source, channels } = await (await filled).json();
        const times = channels[0].t_us;
        assert.ok(source === "ring" && times[0] < 1e6 && times.at(-1) > 3e6, `${source}, ${times.length} rows`);
    }));
