/** What the browser tests share. */
import assert from "node:assert/strict";
import { after, before } from "node:test";
import { chromium } from "playwright-core";
import { FakeUnit } from "./fakeUnit.js";

/** @typedef {import("playwright-core").Page} Page */

/** @type {import("playwright-core").Browser} */
let browser;
before(async () => {
    browser = await chromium.launch({ executablePath: "/usr/bin/chromium", args: ["--no-sandbox", "--disable-gpu"] });
});
after(async () => {
    await browser.close();
});

/**
 * @param {{unit?: object, hash?: string, size?: {width: number, height: number}}} options
 * @param {(page: Page, unit: FakeUnit, address: string) => Promise<void>} act
 */
export async function withPage(options, act) {
    const unit = new FakeUnit({ channels: 2, history: 20, scenario: false, ...options.unit });
    const address = await unit.listen(0);
    const context = await browser.newContext({
        viewport: options.size ?? { width: 1500, height: 950 },
        acceptDownloads: true,
    });
    const page = await context.newPage();
    /** @type {string[]} */
    const problems = [];
    page.on("pageerror", (error) => problems.push(String(error)));
    page.on("console", (message) => {
        if (/Content Security|Refused/.test(message.text())) {
            problems.push(message.text());
        }
    });
    page.on("request", (request) => {
        if (!request.url().startsWith(address) && !/^(blob|data):/.test(request.url())) {
            problems.push(request.url());
        }
    });
    try {
        const filled = unit.token ? Promise.resolve() : page.waitForResponse(/api\/events/);
        await page.goto(`${address}/${options.hash ?? ""}`);
        await filled;
        if (!unit.token) {
            await page.waitForFunction(() => document.querySelector("#connection")?.textContent === "live");
        }
        await act(page, unit, address);
        assert.deepEqual(problems, []);
    } finally {
        await context.close();
        unit.close();
    }
}

/** @param {Page} page */
export function pill(page) {
    return page.locator("#connection").textContent();
}

/** @param {Page} page @param {string} text */
export async function untilPill(page, text) {
    await page.waitForFunction((wanted) => document.querySelector("#connection")?.textContent === wanted, text);
}
