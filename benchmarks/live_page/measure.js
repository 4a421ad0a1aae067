/**
 * What the live page of a unit with eight channels costs its reader and its unit. The browser gives way to the unit, as
 * if it ran elsewhere. Run it as root, for real-time priority. The result goes to standard output as Markdown, progress
 * to standard error.
 */
import { readFileSync } from "node:fs";
import { loadavg } from "node:os";
import { parseArgs } from "node:util";
import { frameTimes, paintTimes, quantile, watchFrames } from "../../LivePage/tests/frameTimes.js";
import { politeBrowser } from "../../tests/browser/politeBrowser.js";
import { RealUnit, sleep } from "../../tests/browser/realUnit.js";
import { rowsOf } from "../../tests/browser/samples.js";

/** @typedef {import("playwright-core").Browser} Browser */

const CHANNELS = 8;
const OPENINGS = 5;
const TICKS_PER_S = 100;
const { values } = parseArgs({ options: { seconds: { type: "string", default: "10" } } });
const SECONDS = Number(values.seconds);

/** @param {string} text */
function progress(text) {
    process.stderr.write(`${text}\n`);
}

/** @param {Browser} browser @param {string} address */
async function openPage(browser, address) {
    const context = await browser.newContext({ viewport: { width: 1600, height: 1000 } });
    const page = await context.newPage();
    await watchFrames(page);
    await page.goto(address);
    return page;
}

/** @param {RealUnit} unit @returns {number} seconds of all its threads */
function cpuSeconds(unit) {
    const stat = readFileSync(`/proc/${unit.process?.pid}/stat`, "utf8");
    const fields = stat.slice(stat.lastIndexOf(")") + 2).split(" ");
    return (Number(fields[11]) + Number(fields[12])) / TICKS_PER_S;
}

/** @param {Browser} browser @returns {Promise<string[]>} */
async function paints(browser) {
    const unit = new RealUnit({ channels: CHANNELS });
    await unit.start();
    const found = [];
    for (let i = 0; i < OPENINGS; ++i) {
        progress(`first paint ${i + 1}/${OPENINGS}`);
        const page = await openPage(browser, unit.address);
        found.push(await paintTimes(page));
        await page.context().close();
    }
    await unit.end();
    const row = (/** @type {string} */ name, /** @type {number[]} */ list) =>
        `| ${name} | ${quantile(list, 0.5).toFixed(0)} ms | ${quantile(list, 0).toFixed(0)} to ${quantile(list, 1).toFixed(0)} ms |`;
    return [
        `| of ${OPENINGS} openings, nothing cached | median | range |`,
        "|---|---|---|",
        row(
            "first paint",
            found.map(({ first }) => first),
        ),
        row(
            "first charts",
            found.map(({ charts }) => charts),
        ),
    ];
}

/** @param {Browser} browser @returns {Promise<string[]>} */
async function frames(browser) {
    const rows = [
        "| window | frames in a second | between frames p50 / p95 / p99 / max | work p50 / p95 / p99 |",
        "|---|---|---|---|",
    ];
    for (const windowS of [1, 10, 60]) {
        progress(`frames, window of ${windowS} s`);
        const unit = new RealUnit({ channels: CHANNELS });
        await unit.start();
        const page = await openPage(browser, `${unit.address}/#w=${windowS}`);
        await sleep(4000);
        const { spans, work } = await frameTimes(page, SECONDS);
        const at = (/** @type {number[]} */ list, /** @type {number[]} */ parts) =>
            `${parts.map((part) => quantile(list, part).toFixed(1)).join(" / ")} ms`;
        rows.push(
            `| ${windowS} s | ${(spans.length / SECONDS).toFixed(1)} | ${at(spans, [0.5, 0.95, 0.99, 1])} | ${at(work, [0.5, 0.95, 0.99])} |`,
        );
        await page.context().close();
        await unit.end();
    }
    return rows;
}

/**
 * With real-time priority a step is late by what the unit itself does, not by what else the machine has to do.
 * @param {Browser} browser @param {number} pages that are open @param {boolean} isRecorded every step, for its lateness
 * @returns {Promise<{cpu: number, late: number[], overruns: number}>} CPU as part of one core, lateness in µs
 */
async function load(browser, pages, isRecorded) {
    const unit = new RealUnit({ channels: CHANNELS, options: isRecorded ? ["--csv", "run.csv"] : [], priority: 1 });
    await unit.start();
    const opened = await Promise.all(Array.from({ length: pages }, () => openPage(browser, unit.address)));
    await Promise.all(opened.map(paintTimes));
    await sleep(3000);
    const before = { cpu: cpuSeconds(unit), status: (await unit.status(0)).unit, atMs: performance.now() };
    await sleep(SECONDS * 1000);
    const spanS = (performance.now() - before.atMs) / 1000;
    const cpu = (cpuSeconds(unit) - before.cpu) / spanS;
    const status = (await unit.status(0)).unit;
    await Promise.all(opened.map((page) => page.context().close()));
    await unit.stop();
    const isWithin = (/** @type {Record<string, string>} */ row) =>
        Number(row["time_s"]) > before.status.UptimeS && Number(row["time_s"]) < before.status.UptimeS + spanS;
    const late = isRecorded
        ? rowsOf(unit.file("run.csv"))
              .filter((row) => row["channel"] === "0" && isWithin(row))
              .map((row) => Number(row["lateness_us"]))
        : [];
    await unit.end();
    return { cpu, late, overruns: status.Overruns - before.status.Overruns };
}

/** @param {Browser} browser @returns {Promise<string[]>} */
async function loads(browser) {
    const rows = [
        "| pages open | CPU of the unit, of one core | lateness of steps p50 / p99 / max | overruns | load before |",
        "|---|---|---|---|---|",
    ];
    for (const pages of [0, 1, 4]) {
        progress(`unit with ${pages} pages`);
        const before = loadavg()[0].toFixed(1);
        const { cpu } = await load(browser, pages, false);
        const { late, overruns } = await load(browser, pages, true);
        const times = [0.5, 0.99, 1].map((part) => (quantile(late, part) / 1000).toFixed(2)).join(" / ");
        rows.push(`| ${pages} | ${(100 * cpu).toFixed(1)} % | ${times} ms | ${overruns} | ${before} |`);
    }
    return rows;
}

const browser = await politeBrowser();
const begin = loadavg()[0].toFixed(1);
for (const part of [paints, frames, loads]) {
    console.log(`${(await part(browser)).join("\n")}\n`);
}
console.log(
    `${CHANNELS} channels at 6 ms; the machine's load was ${begin} before and ${loadavg()[0].toFixed(1)} after.`,
);
await browser.close();
