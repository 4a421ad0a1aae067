/** The commands of both logs, given on the page to a running unit. */
import assert from "node:assert/strict";
import { test } from "node:test";
import { withPage } from "./pageRunner.js";
import { until } from "./realUnit.js";

/** @param {import("playwright-core").Page} page @param {string} card @param {string} button */
async function press(page, card, button) {
    const region = page.getByRole("region", { name: card });
    const answered = page.waitForResponse(
        (response) =>
            response.url().endsWith("/RPC2") &&
            /<string>(Start|Stop|ReadAndReset|SaveToSysLog|Enable|Disable)</.test(response.request().postData() ?? ""),
    );
    await region.getByRole("button", { name: button, exact: true }).click();
    assert.doesNotMatch(await (await answered).text(), /<fault>/, `${card}: ${button}`);
}

/** @param {import("./realUnit.js").RealUnit} unit @returns {Promise<any>} the statistics' row of the detected power */
async function detected(unit) {
    const answer = await unit.ctl("log", "opc", "read");
    return answer["Channel.0.TxOutputPowerControlLog"].find(
        (/** @type {any} */ row) => row.ObjectName === "TxRfDetectedPower",
    );
}

test("the statistics start, are shown as the unit holds them, stop, and are read and reset", () =>
    withPage({}, async (page, unit) => {
        assert.equal((await detected(unit)).ActualValue, 0);
        await press(page, "Statistics", "Start");
        await until(async () => (await detected(unit)).ActualValue > 900, "values in the log");
        await press(page, "Statistics", "Stop");
        const held = await detected(unit);
        await page.waitForTimeout(100);
        assert.deepEqual(await detected(unit), held);
        const cells = page.locator("[aria-label=Statistics] tr[title=TxRfDetectedPower] td");
        const shown = [held.MinValue, held.ActualValue, held.MaxValue].map((value) => (value / 100).toFixed(2));
        await until(async () => (await cells.allInnerTexts()).slice(0, 3).join() === shown.join(), shown.join());
        await press(page, "Statistics", "Save");
        await press(page, "Statistics", "Read and reset");
        assert.equal((await detected(unit)).ActualValue, 0);
    }));

test("the transient log records, is drawn, saved and disabled", () =>
    withPage({}, async (page, unit) => {
        const samples = async () =>
            (await unit.ctl("log", "transient", "read").catch(() => ({ OPCLog: [] }))).OPCLog.length;
        assert.equal(await samples(), 0);
        await press(page, "Transient log", "Enable");
        await until(async () => (await samples()) === 200, "200 samples");
        await page.getByRole("region", { name: "Transient log" }).getByRole("button", { name: "Read" }).click();
        await page.locator(".transient-body canvas").waitFor();
        await until(
            async () => /200 of 200/.test(await page.getByRole("region", { name: "Transient log" }).innerText()),
            "200 samples on the page",
        );
        await press(page, "Transient log", "Save");
        await press(page, "Transient log", "Enable");
        await press(page, "Transient log", "Disable");
        const left = await samples();
        await page.waitForTimeout(200);
        assert.ok(left < 200, String(left));
        assert.equal(await samples(), left);
    }));
