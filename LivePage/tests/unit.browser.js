/** Controls, logs, tokens and returns, in the system's Chromium against a made-up unit: `npm run browser`. */
import assert from "node:assert/strict";
import { readFile } from "node:fs/promises";
import { test } from "node:test";
import { FakeUnit } from "./fakeUnit.js";
import { untilPill, withPage } from "./pageRunner.js";

/** @typedef {import("playwright-core").Page} Page */

/** @type {readonly [string, (page: Page) => Promise<void>, string, object][]} */
const COMMANDS = [
    [
        "switch off",
        (page) => page.getByRole("button", { name: "Switch off" }).first().click(),
        "Unit.SetTxPower",
        { RadioChannelID: 0, State: "off" },
    ],
    [
        "switch on",
        (page) => page.getByRole("button", { name: "Switch on" }).first().click(),
        "Unit.SetTxPower",
        { RadioChannelID: 0, State: "on", PowerMode: 1 },
    ],
    [
        "mode",
        async (page) => {
            await page.getByLabel("Power mode").first().selectOption("0");
            await page.getByRole("button", { name: "Set mode" }).click();
        },
        "Unit.SetPowerMode",
        { RadioChannelID: 0, PowerMode: 0 },
    ],
    [
        "requested power",
        async (page) => {
            await page.getByLabel("Requested power in dBm").fill("18.5");
            await page.getByRole("button", { name: "Set power" }).click();
        },
        "Unit.SetRequestedPower",
        { RadioChannelID: 0, PowerDbm: 18.5 },
    ],
    [
        "limits",
        async (page) => {
            await page.getByLabel("Lower limit in dBm").fill("-5");
            await page.getByRole("button", { name: "Set limits" }).click();
        },
        "Unit.SetLimits",
        { RadioChannelID: 0, TxPminDbm: -5, TxPmaxDbm: 40 },
    ],
    [
        "gain",
        async (page) => {
            await page.getByLabel("Gain in percent, on, detector 1").fill("30");
            await page.keyboard.press("Tab");
        },
        "Unit.SetGain",
        { RadioChannelID: 0, State: "on", GainPercent: 30, DetectorState: 1 },
    ],
    [
        "production test",
        async (page) => {
            await page.getByLabel("production test", { exact: true }).check();
            await page.getByLabel("Loop mode").first().selectOption("1");
            await page.getByRole("button", { name: "Set test" }).click();
        },
        "Unit.SetProductionTest",
        { RadioChannelID: 0, ProductionTest: true, LoopMode: 1 },
    ],
    [
        "frequency",
        async (page) => {
            await page.getByLabel("Frequency in MHz").fill("5100");
            await page.getByRole("button", { name: "Set frequency" }).click();
        },
        "Unit.SetFrequency",
        { RadioChannelID: 0, FrequencyMhz: 5100 },
    ],
    [
        "temperature",
        async (page) => {
            await page.getByLabel("Temperature in degrees").fill("41.5");
            await page.getByRole("button", { name: "Set temperature" }).click();
        },
        "Unit.SetTemperature",
        { TemperatureC: 41.5 },
    ],
    [
        "interval",
        async (page) => {
            await page.getByLabel("Regulator interval").fill("12");
            await page.getByRole("button", { name: "Set interval" }).click();
        },
        "Unit.SetInterval",
        { IntervalMs: 12 },
    ],
    [
        "fault",
        async (page) => {
            await page.getByLabel("Kind of fault").selectOption("fail-times");
            await page.getByRole("button", { name: "Set fault" }).click();
        },
        "Unit.SetFault",
        { RadioChannelID: 0, Operation: "getPmeasured", Kind: "fail-times", Times: 3 },
    ],
];

test("each control asks first and then sends what it says", () =>
    withPage({}, async (page, unit) => {
        await page.keyboard.press("c");
        await page.waitForFunction(() => document.querySelector(".control-title")?.textContent === "Channel 0");
        await page.waitForFunction(
            () => /** @type {HTMLInputElement|null} */ (document.querySelector(".gains input"))?.value === "20",
        );
        for (const [name, act, method, parameters] of COMMANDS) {
            const sent = () => unit.calls.filter((call) => call.method === method);
            const count = sent().length;
            await act(page);
            const dialog = page.getByRole("dialog");
            await dialog.waitFor();
            await page.waitForTimeout(50);
            assert.equal(sent().length, count, `${name} was sent unasked`);
            await dialog.getByRole("button").nth(1).click();
            await page.locator(".toast.well").last().waitFor();
            for (let i = 0; sent().length === count && i < 40; ++i) {
                await page.waitForTimeout(25);
            }
            assert.deepEqual(sent().at(-1)?.parameters, parameters, name);
            await page.waitForTimeout(100);
        }
        const count = unit.calls.filter((call) => call.method === "Unit.SetTxPower").length;
        await page.getByRole("button", { name: "Switch off" }).first().click();
        await page.getByRole("button", { name: "Cancel" }).click();
        await page.waitForTimeout(200);
        assert.equal(unit.calls.filter((call) => call.method === "Unit.SetTxPower").length, count);
    }));

test("both logs' commands are sent, and the transient log is drawn", () =>
    withPage({}, async (page, unit) => {
        for (const [card, button, method, option] of [
            ["Statistics", "Start", "TI.ManageLogs", "Start"],
            ["Statistics", "Read and reset", "TI.ManageLogs", "ReadAndReset"],
            ["Statistics", "Save", "TI.ManageLogs", "SaveToSysLog"],
            ["Statistics", "Stop", "TI.ManageLogs", "Stop"],
            ["Transient log", "Enable", "TI.ManageOPCTransientLog", "Enable"],
            ["Transient log", "Save", "TI.ManageOPCTransientLog", "SaveToSysLog"],
            ["Transient log", "Disable", "TI.ManageOPCTransientLog", "Disable"],
        ]) {
            await page.getByRole("region", { name: card }).getByRole("button", { name: button, exact: true }).click();
            for (
                let i = 0;
                i < 40 &&
                !unit.calls.some((call) => call.method === method && call.parameters.RequestOption === option);
                ++i
            ) {
                await page.waitForTimeout(25);
            }
            assert.ok(
                unit.calls.some((call) => call.method === method && call.parameters.RequestOption === option),
                `${card}: ${button}`,
            );
            await page.waitForTimeout(100);
        }
        await page
            .getByRole("region", { name: "Transient log" })
            .getByRole("button", { name: "Read", exact: true })
            .click();
        await page.locator(".transient-body canvas").waitFor();
    }));

test("a refusal is told in the unit's words", () =>
    withPage({}, async (page) => {
        await page.keyboard.press("c");
        await page.waitForFunction(() => document.querySelector(".control-title")?.textContent === "Channel 0");
        await page.getByLabel("Operation").waitFor();
        await page.evaluate(() => {
            /** @type {HTMLInputElement} */ (document.querySelector("[aria-label='Requested power in dBm']")).max =
                "300";
        });
        await page.getByLabel("Requested power in dBm").fill("200");
        await page.getByRole("button", { name: "Set power" }).click();
        await page.getByRole("dialog").getByRole("button", { name: "Set power" }).click();
        await page.locator(".toast.alarm").waitFor();
        assert.match(await page.locator(".toast.alarm").innerText(), /PowerDbm is 200; it can be -98 to 100/);
    }));

test("a unit that demands a token is asked with it", () =>
    withPage({ unit: { token: "a-token-of-sixteen" } }, async (page) => {
        await page.getByLabel("Token", { exact: true }).fill("a wrong one");
        await page.getByRole("button", { name: "Use it" }).click();
        await page.getByText("The unit did not take that one.").waitFor();
        await page.getByLabel("Token", { exact: true }).fill("a-token-of-sixteen");
        await page.keyboard.press("Enter");
        await untilPill(page, "live");
        assert.equal(await page.evaluate(() => sessionStorage.getItem("unit-token")), "a-token-of-sixteen");
        await page.reload();
        await untilPill(page, "live");
    }));

test("who has no token is not asked again and again", () =>
    withPage({ unit: { token: "a-token-of-sixteen" } }, async (page) => {
        await page.getByRole("button", { name: "Cancel" }).click();
        await page.waitForFunction(() => document.querySelector("#notice")?.textContent?.includes("demands its token"));
        await page.waitForTimeout(1500);
        assert.equal(await page.getByRole("dialog").count(), 0);
    }));

test("the page finds back to a unit that went away and came back as another run", () =>
    withPage({}, async (page, unit, address) => {
        const port = Number(new URL(address).port);
        unit.close();
        await untilPill(page, "no unit");
        const again = new FakeUnit({ channels: 3, history: 5, scenario: false });
        try {
            await again.listen(port);
            await untilPill(page, "live");
            await page.waitForFunction(() => document.querySelectorAll(".tile").length === 3);
        } finally {
            again.close();
        }
    }));

test("a hidden page closes its stream, and nothing is missing when it is seen again", () =>
    withPage({ hash: "#w=10" }, async (page, unit) => {
        let open = 0;
        const stream = unit.stream.bind(unit);
        unit.stream = (query, request, response) => {
            ++open;
            request.on("close", () => {
                --open;
            });
            stream(query, request, response);
        };
        await page.evaluate(() => {
            Object.defineProperty(document, "visibilityState", { configurable: true, get: () => "hidden" });
            document.dispatchEvent(new Event("visibilitychange"));
        });
        await page.waitForTimeout(1500);
        const calls = open;
        await page.evaluate(() => {
            Object.defineProperty(document, "visibilityState", { configurable: true, get: () => "visible" });
            document.dispatchEvent(new Event("visibilitychange"));
        });
        await untilPill(page, "live");
        await page.waitForTimeout(400);
        assert.deepEqual([calls, open], [0, 1]);
        await page.keyboard.press(" ");
        const [csv] = await Promise.all([page.waitForEvent("download"), page.keyboard.press("e")]);
        const rows = (await readFile(/** @type {string} */ (await csv.path()), "utf8")).trimEnd().split("\n").slice(1);
        const times = rows.map((row) => Number(row.split(",")[1]));
        const widest = Math.max(...times.slice(1).map((time, i) => time - times[i]));
        assert.ok(times.length > 1600 && widest < 0.007, `${times.length} rows, widest ${widest}`);
    }));

test("history is asked of the unit for what the page does not hold", () =>
    withPage({ unit: { history: 400 } }, async (page) => {
        await page.keyboard.press("h");
        await page.getByRole("button", { name: "5 min", exact: true }).click();
        await page.waitForFunction(() =>
            [...document.querySelectorAll("#badges .badge")].some(
                (badge) => badge.textContent === "history: each second",
            ),
        );
    }));

test("a recording is paused, sped up and sought", () =>
    withPage({ unit: { replay: true } }, async (page, unit) => {
        await page.getByRole("button", { name: "Pause" }).click();
        await untilPill(page, "paused");
        await page.waitForTimeout(1800);
        assert.equal(await page.locator(".tile-trouble.alarm").count(), 0);
        await page.getByRole("button", { name: "100×" }).click();
        await page.getByLabel("Place in the recording").fill("120000000");
        await page.waitForFunction(
            () => document.querySelector(".replay .segments [aria-pressed=true]")?.textContent === "100×",
        );
        await page.getByRole("button", { name: "Play" }).click();
        await untilPill(page, "live");
        assert.deepEqual([unit.replay.speed, unit.replay.position_us, unit.replay.paused], [100, 120e6, false]);
    }));
