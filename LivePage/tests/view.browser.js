/** What is looked at, in the system's Chromium against a made-up unit: `npm run browser`. */
import assert from "node:assert/strict";
import { readFile } from "node:fs/promises";
import { test } from "node:test";
import { pill, untilPill, withPage } from "./pageRunner.js";

test("all channels are seen at a glance, and one in depth", () =>
    withPage({}, async (page) => {
        const tiles = page.locator(".tile");
        assert.equal(await tiles.count(), 2);
        await page.waitForFunction(() =>
            [...document.querySelectorAll(".tile-state")].every((tile) => tile.textContent === "ON"),
        );
        await tiles.nth(1).click();
        await page.waitForFunction(() => location.hash.includes("ch=1"));
        assert.equal(await tiles.nth(1).getAttribute("aria-pressed"), "true");
        assert.match(await page.locator(".readout-value").first().innerText(), /^\d+\.\d\d$/);
    }));

test("Space holds and runs, and data keeps arriving", () =>
    withPage({}, async (page) => {
        await page.keyboard.press(" ");
        await untilPill(page, "held");
        const line = await page.locator(".pointer-text").textContent();
        await page.waitForTimeout(500);
        assert.equal(await page.locator(".pointer-text").textContent(), line);
        await page.keyboard.press(" ");
        await untilPill(page, "live");
        await page.waitForFunction((before) => document.querySelector(".pointer-text")?.textContent !== before, line);
    }));

test("a drag zooms, the wheel too, a double click runs again", () =>
    withPage({}, async (page) => {
        const box = /** @type {{x: number, y: number, width: number, height: number}} */ (
            await page.locator(".plot-power .plot-body").boundingBox()
        );
        await page.mouse.move(box.x + box.width * 0.3, box.y + 60);
        await page.mouse.down();
        await page.mouse.move(box.x + box.width * 0.5, box.y + 70, { steps: 4 });
        await page.mouse.up();
        await untilPill(page, "held");
        await page.waitForFunction(() => /from=\d+/.test(location.hash));
        const span = () =>
            page.evaluate(() => {
                const parts = new URLSearchParams(location.hash.slice(1));
                return Number(parts.get("to")) - Number(parts.get("from"));
            });
        const first = await span();
        assert.ok(first > 1e6 && first < 4e6, String(first));
        await page.mouse.wheel(0, -300);
        await page.waitForTimeout(500);
        assert.ok((await span()) < first);
        await page.mouse.dblclick(box.x + box.width * 0.4, box.y + 60);
        await untilPill(page, "live");
    }));

test("cursors tell differences of every signal", () =>
    withPage({ hash: "#w=5" }, async (page) => {
        await page.keyboard.press(" ");
        await page.keyboard.press("a");
        await page.keyboard.press("b");
        await page.waitForFunction(() =>
            /Δt 1\.\d+ s \(\d+ steps\)/.test(document.querySelector(".difference-text")?.textContent ?? ""),
        );
        assert.match(
            await page.locator(".cursor-table tbody tr").nth(1).innerText(),
            /Target dBm\s+\d+\.\d\d\s+\d+\.\d\d\s+[+\u2212]?\d\.\d\d/,
        );
        await page.keyboard.press("]");
        await page.keyboard.press("Escape");
        await page.waitForFunction(() => document.querySelector(".difference-text")?.textContent === "");
    }));

test("a link reproduces the view", () =>
    withPage({}, async (page, _unit, address) => {
        await page.keyboard.press("3");
        await page.keyboard.press("u");
        await page.keyboard.press("a");
        await page.keyboard.press("l");
        await page.waitForFunction(() => location.hash.includes("from="));
        const link = page.url();
        const other = await page.context().newPage();
        await other.goto(address);
        await other.goto(link);
        await untilPill(other, "held");
        await other.waitForFunction(() => document.querySelector(".plot-power .plot-unit")?.textContent?.endsWith("W"));
        assert.equal(
            await other.locator(".pointer-text").textContent(),
            await page.locator(".pointer-text").textContent(),
        );
        assert.equal(
            await other.locator(".cursor-table .time-row td").first().textContent(),
            await page.locator(".cursor-table .time-row td").first().textContent(),
        );
    }));

test("what is seen is exported as CSV and PNG", () =>
    withPage({ hash: "#w=2" }, async (page) => {
        await page.keyboard.press(" ");
        const [csv] = await Promise.all([page.waitForEvent("download"), page.keyboard.press("e")]);
        const rows = (await readFile(/** @type {string} */ (await csv.path()), "utf8")).trimEnd().split("\n");
        assert.match(csv.suggestedFilename(), /^channel-0-20.*\.csv$/);
        assert.ok(rows.length >= 330 && rows.length <= 336, String(rows.length));
        assert.ok(rows[0].startsWith("time_utc,time_s,relative_s,channel,state,result,target_dBm,measured_dBm"));
        const [png] = await Promise.all([page.waitForEvent("download"), page.keyboard.press("p")]);
        const bytes = await readFile(/** @type {string} */ (await png.path()));
        assert.equal(bytes.subarray(1, 4).toString(), "PNG");
        assert.ok(bytes.length > 20000);
    }));

test("a trigger on a step stands at a fifth of the window", () =>
    withPage({ hash: "#w=1&trig=single,step,50" }, async (page, unit) => {
        assert.equal(await page.locator(".phase").textContent(), "waiting");
        await page.waitForTimeout(300);
        unit.loops[0].requested += 200;
        await page.waitForFunction(() => document.querySelector(".phase")?.textContent === "done");
        const [line, overlay] = await Promise.all([
            page.locator(".line-trigger").boundingBox(),
            page.locator(".overlay").boundingBox(),
        ]);
        assert.ok(line !== null && overlay !== null && Math.abs((line.x - overlay.x) / overlay.width - 0.2) < 0.01);
    }));

test("a phone shows the page without scrolling sideways", () =>
    withPage({ size: { width: 360, height: 740 } }, async (page) => {
        for (const key of ["", "c"]) {
            if (key) {
                await page.keyboard.press(key);
                await page.waitForTimeout(300);
            }
            assert.ok(await page.evaluate(() => document.documentElement.scrollWidth <= innerWidth), `with ${key}`);
        }
        await page.getByRole("button", { name: "More" }).click();
        await page.getByLabel("Trigger mode").waitFor();
    }));

test("two fingers spread the time, one moves it", () =>
    withPage({ size: { width: 360, height: 740 } }, async (page) => {
        const touch = await page.context().newCDPSession(page);
        await touch.send("Emulation.setTouchEmulationEnabled", { enabled: true, maxTouchPoints: 2 });
        await page.locator(".plot-power .plot-body").scrollIntoViewIfNeeded();
        const box = /** @type {{x: number, y: number, width: number, height: number}} */ (
            await page.locator(".plot-power .plot-body").boundingBox()
        );
        const fingers = (/** @type {"touchStart"|"touchMove"|"touchEnd"} */ type, /** @type {number[]} */ ...xs) =>
            touch.send("Input.dispatchTouchEvent", {
                type,
                touchPoints: xs.map((x, id) => ({ x: box.x + x, y: box.y + 40, id })),
            });
        await fingers("touchStart", 150);
        await fingers("touchStart", 150, 200);
        for (let spread = 10; spread <= 50; spread += 10) {
            await fingers("touchMove", 150 - spread, 200 + spread);
        }
        await fingers("touchEnd");
        await untilPill(page, "held");
        const range = () =>
            page.evaluate(() => {
                const parts = new URLSearchParams(location.hash.slice(1));
                return [Number(parts.get("from")), Number(parts.get("to"))];
            });
        await page.waitForTimeout(450);
        const [from, to] = await range();
        assert.ok(to - from > 2.5e6 && to - from < 4.5e6, String(to - from));
        await fingers("touchStart", 150);
        for (let x = 160; x <= 220; x += 20) {
            await fingers("touchMove", x);
        }
        await fingers("touchEnd");
        await page.waitForTimeout(450);
        const [movedFrom, movedTo] = await range();
        assert.ok(movedFrom < from && Math.abs(movedTo - movedFrom - (to - from)) < 2);
    }));

test("keys are explained, and each theme is one key away", () =>
    withPage({}, async (page) => {
        await page.keyboard.press("?");
        await page.getByRole("dialog").getByText("hold, or run again").waitFor();
        await page.keyboard.press("Escape");
        const ground = () => page.evaluate(() => getComputedStyle(document.body).color);
        const before = await ground();
        await page.keyboard.press("d");
        await page.waitForFunction((was) => getComputedStyle(document.body).color !== was, before);
        assert.equal(await pill(page), "live");
    }));
