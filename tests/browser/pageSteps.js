/** What is waited for on the page. */
import { until } from "./realUnit.js";

/** @typedef {import("playwright-core").Page} Page */

export const CHROMIUM = process.env["OPC_CHROMIUM"] ?? "/usr/bin/chromium";

/** @param {Page} page @param {string} text of the pill that says how the stream does */
export async function untilPill(page, text) {
    await until(async () => (await page.locator("#connection").textContent()) === text, `"${text}" on the page`);
}

/** @param {Page} page @param {number} channel */
export async function openControls(page, channel) {
    await page.getByRole("tab", { name: "Control" }).click();
    await until(
        async () => (await page.locator(".control-title").textContent()) === `Channel ${channel}`,
        `the controls of channel ${channel}`,
    );
    await until(
        async () => (await page.getByLabel("Gain in percent, on, detector 0").inputValue()) !== "",
        "the channel's gains",
    );
}
