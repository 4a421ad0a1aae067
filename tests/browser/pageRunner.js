/** What the browser tests share. */
import assert from "node:assert/strict";
import { after, before } from "node:test";
import { chromium } from "playwright-core";
import { CHROMIUM, untilPill } from "./pageSteps.js";
import { RealReplay, RealUnit } from "./realUnit.js";

/** @typedef {import("playwright-core").Page} Page */

/** @type {import("playwright-core").Browser} */
let browser;
before(async () => {
    browser = await chromium.launch({ executablePath: CHROMIUM, args: ["--no-sandbox", "--disable-gpu"] });
});
after(async () => {
    await browser.close();
});

/**
 * Collects what a page should never do: fail, complain, or ask another host.
 * @param {Page} page @param {string} address
 */
function problemsOf(page, address) {
    /** @type {string[]} */
    const problems = [];
    page.on("pageerror", (error) => problems.push(String(error)));
    page.on("console", (message) => {
        if (["error", "warning"].includes(message.type())) {
            problems.push(`${message.type()}: ${message.text()}`);
        }
    });
    page.on("request", (request) => {
        if (!request.url().startsWith(`${address}/`) && !/^(blob|data):/.test(request.url())) {
            problems.push(`asked ${request.url()}`);
        }
    });
    return problems;
}

/**
 * Opens the page of a unit that runs, and holds the page to having no complaint that the test does not expect.
 * @param {{channels?: number, token?: string, options?: string[], hash?: string, replay?: boolean, pill?: string,
 *          size?: {width: number, height: number}, scheme?: "dark"|"light", expected?: RegExp}} wanted
 * @param {(page: Page, unit: RealUnit) => Promise<void>} act
 */
export async function withPage(wanted, act) {
    const unit = wanted.replay ? new RealReplay(wanted) : new RealUnit(wanted);
    const context = await browser.newContext({
        viewport: wanted.size ?? { width: 1500, height: 950 },
        colorScheme: wanted.scheme ?? "dark",
        acceptDownloads: true,
    });
    try {
        await unit.start();
        const page = await context.newPage();
        const problems = problemsOf(page, unit.address);
        await page.goto(`${unit.address}/${wanted.hash ?? ""}`);
        if (!unit.token) {
            await untilPill(page, wanted.pill ?? "live");
        }
        await act(page, unit);
        const { expected } = wanted;
        assert.deepEqual(expected ? problems.filter((problem) => !expected.test(problem)) : problems, []);
    } finally {
        await context.close();
        await unit.end();
    }
}
