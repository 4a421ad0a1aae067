/** How long a page takes between frames and for the work of each. */

/** @typedef {import("playwright-core").Page} Page */

/** Before the page is opened. @param {Page} page */
export async function watchFrames(page) {
    await page.addInitScript(() => {
        const taken = { spans: /** @type {number[]} */ ([]), work: /** @type {number[]} */ ([]) };
        /** @type {any} */ (globalThis).taken = taken;
        const ask = globalThis.requestAnimationFrame;
        let before = 0;
        globalThis.requestAnimationFrame = (/** @type {FrameRequestCallback} */ callback) =>
            ask((now) => {
                if (before > 0 && now > before) {
                    taken.spans.push(now - before);
                }
                before = now;
                const begin = performance.now();
                callback(now);
                taken.work.push(performance.now() - begin);
            });
    });
}

/** @param {Page} page @returns {Promise<{first: number, charts: number}>} milliseconds from the beginning on */
export async function paintTimes(page) {
    await page.waitForFunction(() => performance.getEntriesByName("first-charts").length > 0);
    return page.evaluate(() => ({
        first: performance.getEntriesByName("first-contentful-paint")[0]?.startTime ?? NaN,
        charts: performance.getEntriesByName("first-charts")[0].startTime,
    }));
}

/** @param {Page} page @param {number} seconds @returns {Promise<{spans: number[], work: number[]}>} milliseconds */
export async function frameTimes(page, seconds) {
    await page.evaluate(() => {
        Object.values(/** @type {any} */ (globalThis).taken).forEach((list) => {
            list.length = 0;
        });
    });
    await page.waitForTimeout(seconds * 1000);
    return page.evaluate(() => /** @type {any} */ (globalThis).taken);
}

/** @param {number[]} values @param {number} part from 0 to 1 @returns {number} */
export function quantile(values, part) {
    const sorted = [...values].sort((a, b) => a - b);
    return sorted[Math.min(sorted.length - 1, Math.floor(part * sorted.length))] ?? NaN;
}
