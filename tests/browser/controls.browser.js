/** Each control of the page against a running unit; what came of it is asked by `opc ctl`. */
import assert from "node:assert/strict";
import { test } from "node:test";
import { withPage } from "./pageRunner.js";
import { openControls } from "./pageSteps.js";
import { until } from "./realUnit.js";

/** @typedef {import("playwright-core").Page} Page @typedef {import("./realUnit.js").RealUnit} RealUnit */

const CHANNEL = 1;

/** @param {Page} page @param {string} label @param {string} value @param {string} button */
async function fill(page, label, value, button) {
    await page.getByLabel(label, { exact: true }).fill(value);
    await page.getByRole("button", { name: button, exact: true }).click();
}

/** Says yes to what the page asks. @param {Page} page */
async function confirm(page) {
    const dialog = page.getByRole("dialog");
    await dialog.waitFor();
    await dialog.locator("button.primary").click();
    await dialog.waitFor({ state: "detached" });
}

/**
 * What is done on the page, and what the unit then says of itself.
 * @type {readonly [string, (page: Page) => Promise<void>, (found: {unit: any, channel: any}) => boolean][]}
 */
const SETTINGS = [
    [
        "off",
        (page) => page.getByRole("button", { name: "Switch off", exact: true }).click(),
        ({ channel }) => channel.State === "TX_OFF" && channel.TxPower === "off",
    ],
    [
        "on with power mode 0",
        async (page) => {
            await page.getByLabel("Power mode").first().selectOption("0");
            await page.getByRole("button", { name: "Switch on", exact: true }).click();
        },
        ({ channel }) => channel.State === "TX_ON" && channel.PowerMode === 0,
    ],
    [
        "mode",
        async (page) => {
            await page.getByLabel("Power mode").first().selectOption("1");
            await page.getByRole("button", { name: "Set mode" }).click();
        },
        ({ channel }) => channel.PowerMode === 1,
    ],
    [
        "requested power",
        (page) => fill(page, "Requested power in dBm", "17.25", "Set power"),
        ({ channel }) => channel.RequestedPowerDbm === 17.25 && Math.abs(channel.MeasuredPowerDbm - 17.25) < 0.3,
    ],
    [
        "requested power as the unit file says",
        (page) =>
            page
                .getByRole("region", { name: "Power and limits" })
                .getByRole("button", { name: "As the unit file says" })
                .click(),
        ({ channel }) => channel.RequestedPowerDbm === 11 && channel.RequestedPowerSource === "constant",
    ],
    [
        "limits",
        async (page) => {
            await page.getByLabel("Upper limit in dBm").fill("25");
            await fill(page, "Lower limit in dBm", "-5", "Set limits");
        },
        ({ channel }) => channel.TxPminDbm === -5 && channel.TxPmaxDbm === 25,
    ],
    [
        "production test",
        async (page) => {
            await page.getByLabel("production test", { exact: true }).check();
            await page.getByLabel("Loop mode").first().selectOption("1");
            await page.getByRole("button", { name: "Set test" }).click();
        },
        ({ channel }) => channel.ProductionTest === true && channel.LoopMode === 1,
    ],
    [
        "frequency",
        (page) => fill(page, "Frequency in MHz", "5100.5", "Set frequency"),
        ({ channel }) => channel.FrequencyMhz === 5100.5,
    ],
    [
        "temperature",
        (page) => fill(page, "Temperature in degrees Celsius", "41.5", "Set temperature"),
        ({ unit }) => unit.TemperatureC === 41.5,
    ],
    [
        "interval",
        (page) => fill(page, "Regulator interval in milliseconds", "12", "Set interval"),
        ({ unit }) => unit.IntervalMs === 12,
    ],
];

test("each setting asks first, and then the unit has it", () =>
    withPage({ hash: `#ch=${CHANNEL}` }, async (page, unit) => {
        await openControls(page, CHANNEL);
        for (const [name, act, isSet] of SETTINGS) {
            await act(page);
            await page.getByRole("dialog").waitFor();
            assert.ok(!isSet(await unit.status(CHANNEL)), `${name} was set before anybody said yes`);
            await confirm(page);
            await until(async () => isSet(await unit.status(CHANNEL)), name);
            // The page reads back what it has set; the next field is to be filled after that.
            await page.waitForTimeout(300);
        }
        const other = (await unit.status(0)).channel;
        assert.deepEqual([other.RequestedPowerDbm, other.PowerMode, other.ProductionTest], [10, 1, false]);
    }));

test("who does not confirm changes nothing", () =>
    withPage({}, async (page, unit) => {
        await openControls(page, 0);
        await page.getByRole("button", { name: "Switch off", exact: true }).click();
        await page.getByRole("dialog").getByRole("button", { name: "Cancel" }).click();
        await page.waitForTimeout(300);
        assert.equal((await unit.status(0)).channel.State, "TX_ON");
    }));

test("gains are set one by one", () =>
    withPage({ hash: `#ch=${CHANNEL}` }, async (page, unit) => {
        await openControls(page, CHANNEL);
        for (const [state, detector, percent] of [
            ["on", 2, 31],
            ["ramping", 0, 12],
        ]) {
            await page.getByLabel(`Gain in percent, ${state}, detector ${detector}`).fill(String(percent));
            await page.keyboard.press("Tab");
            await confirm(page);
            await page.waitForTimeout(300);
        }
        assert.deepEqual(await unit.ctl("gain", "--channel", String(CHANNEL)), {
            Ramping: [12, 20, 20],
            On: [20, 20, 31],
        });
        assert.deepEqual((await unit.ctl("gain")).On, [20, 20, 20]);
    }));

test("a fault is met by the loop, shown on the tile, and cleared", () =>
    withPage({}, async (page, unit) => {
        await openControls(page, 0);
        await page.getByLabel("Kind of fault").selectOption("intermittent");
        await page.getByLabel("Value of the fault").fill("0.5");
        await page.getByRole("button", { name: "Set fault" }).click();
        await confirm(page);
        await until(async () => (await unit.status(0)).channel.FailedSteps > 5, "failed steps");
        const [fault] = (await unit.ctl("fault", "list")).Faults;
        assert.deepEqual([fault.Operation, fault.Kind, fault.Probability], ["getPmeasured", "intermittent", 0.5]);
        await until(
            async () => (await page.locator(".tile-trouble").first().innerText()) !== "",
            "trouble on the tile",
        );
        await page.getByRole("button", { name: "Clear the fault of getPmeasured" }).click();
        await confirm(page);
        await until(async () => (await unit.ctl("fault", "list")).Faults.length === 0, "no fault");
        await until(
            async () => (await page.locator(".tile-trouble").first().innerText()) === "",
            "a tile without trouble",
        );
    }));

test("a refusal is told in the unit's words", () =>
    withPage({}, async (page) => {
        await openControls(page, 0);
        await page.getByLabel("Lower limit in dBm").fill("20");
        await page.getByLabel("Upper limit in dBm").fill("10");
        await page.getByRole("button", { name: "Set limits" }).click();
        await confirm(page);
        await page.locator(".toast.alarm").waitFor();
        assert.match(await page.locator(".toast.alarm").innerText(), /TxPm(in|ax)Dbm/);
    }));
