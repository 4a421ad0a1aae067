/**
 * Times between frames and of draws: `node tests/frames.js --channels 8 --windows 2,10,60 --seconds 8`.
 */
import { parseArgs } from "node:util";
import { chromium } from "playwright-core";
import { FakeUnit } from "./fakeUnit.js";
import { frameTimes, paintTimes, quantile, watchFrames } from "./frameTimes.js";

const { values } = parseArgs({
    options: {
        channels: { type: "string", default: "8" },
        windows: { type: "string", default: "10,60" },
        seconds: { type: "string", default: "8" },
        interval: { type: "string", default: "6" },
    },
});
const unit = new FakeUnit({ channels: Number(values.channels), intervalMs: Number(values.interval), history: 70 });
const address = await unit.listen(0);
const browser = await chromium.launch({ executablePath: "/usr/bin/chromium", args: ["--no-sandbox", "--disable-gpu"] });
for (const windowS of values.windows.split(",")) {
    const page = await browser.newPage({ viewport: { width: 1600, height: 1000 }, colorScheme: "dark" });
    await watchFrames(page);
    await page.goto(`${address}/#w=${windowS}`);
    const paint = await paintTimes(page);
    await page.waitForTimeout(3000);
    const { spans, work } = await frameTimes(page, Number(values.seconds));
    const row = (/** @type {string} */ name, /** @type {number[]} */ list) => {
        const [p50, p95, p99, max] = [0.5, 0.95, 0.99, 1].map((part) => quantile(list, part).toFixed(1));
        return `${name} p50 ${p50} p95 ${p95} p99 ${p99} max ${max} ms (${list.length})`;
    };
    console.log(
        `${values.channels} channels at ${values.interval} ms, window ${windowS} s: first paint ${paint.first.toFixed(0)} ms, first charts ${paint.charts.toFixed(0)} ms`,
    );
    console.log(`  ${row("frame spans", spans)}`);
    console.log(`  ${row("frame work", work)}`);
    console.log(
        `  ${row(
            "frames that drew",
            work.filter((ms) => ms > 1),
        )}`,
    );
    await page.close();
}
await browser.close();
unit.close();
