/**
 * The pictures of docs/, of a running unit: `node pictures.js FOLDER [NAME...]`, all of them without names. Look at
 * them before they go anywhere. Run it as root, so that other work on the machine leaves no gaps in them.
 */
import { join } from "node:path";
import { openControls, untilPill } from "./pageSteps.js";
import { politeBrowser } from "./politeBrowser.js";
import { RealReplay, RealUnit, sleep } from "./realUnit.js";

/** @typedef {import("playwright-core").Page} Page */
/** @typedef {{options?: string[], profile?: string, replaySeconds?: number, hash?: string,
 *             size?: {width: number, height: number}, scheme?: "dark"|"light",
 *             act: (page: Page, unit: RealUnit) => Promise<void>}} Scene replaySeconds: of the run that is replayed */

const DESK = { width: 1600, height: 1000 };
const PHONE = { width: 390, height: 844 };
/** Four times as fast as the profile has it: half a decibel four times a second. */
const FADE = ["--speed", "4", "--start", "24"];

/** @param {number} beganMs @param {number} seconds after it */
async function sleepUntil(beganMs, seconds) {
    await sleep(beganMs + 1000 * seconds - performance.now());
}

/** @param {Page} page @param {string} key nothing for the pointer alone @param {number} part of the charts' width */
async function point(page, key, part) {
    const box = await page.locator(".plot-power .u-over").boundingBox();
    if (box !== null) {
        await page.mouse.move(box.x + box.width * part, box.y + 40);
        await sleep(100);
        if (key !== "") {
            await page.keyboard.press(key);
        }
    }
}

/** @type {Record<string, Scene>} */
const SCENES = {
    "switch-on": {
        hash: "#ch=1&w=1&trig=single,state,7",
        act: async (page, unit) => {
            await unit.ctl("tx", "off", "--channel", "1");
            await unit.ctl("power", "24", "--channel", "1");
            await sleep(500);
            await unit.ctl("log", "opc", "start", "--channel", "1");
            await page.getByRole("button", { name: "Enable" }).click();
            await unit.ctl("tx", "on", "--channel", "1");
            await sleep(4500);
        },
    },
    fade: {
        options: FADE,
        hash: "#ch=0&w=5",
        act: async (page, unit) => {
            await unit.ctl("log", "opc", "start");
            await unit.ctl("log", "transient", "enable");
            await sleep(4500);
            await page.getByRole("region", { name: "Transient log" }).getByRole("button", { name: "Read" }).click();
            await page.locator("#charts").focus();
            await page.keyboard.press(" ");
            await untilPill(page, "held");
            await point(page, "a", 0.42);
            await point(page, "b", 0.62);
            await point(page, "", 0.75);
        },
    },
    fault: {
        options: FADE,
        hash: "#ch=2&w=5",
        act: async (page, unit) => {
            await openControls(page, 2);
            await sleep(2000);
            await unit.ctl("fault", "set", "getPmeasured", "intermittent", "--probability", "0.3", "--channel", "2");
            await sleep(1300);
            await openControls(page, 2);
            await sleep(500);
        },
    },
    history: {
        options: ["--speed", "2", "--record", "unit.db"],
        profile: "shower",
        hash: "#ch=0",
        act: async (page, unit) => {
            const beganMs = performance.now();
            await sleepUntil(beganMs, 30);
            await unit.ctl("tx", "off");
            await sleepUntil(beganMs, 36);
            await unit.ctl("tx", "on");
            await sleepUntil(beganMs, 95);
            await unit.ctl("fault", "set", "getPmeasured", "intermittent", "--probability", "0.3");
            await sleepUntil(beganMs, 105);
            await unit.ctl("fault", "clear", "getPmeasured");
            await sleepUntil(beganMs, 145);
            await unit.ctl("power", "20");
            await sleepUntil(beganMs, 160);
            await unit.ctl("frequency", "5100");
            await sleepUntil(beganMs, 178);
            await page.goto("about:blank");
            await page.goto(`${unit.address}/#ch=0&from=0&to=180000000`);
            await sleep(6000);
        },
    },
    replay: {
        options: ["--from", "14"],
        replaySeconds: 60,
        hash: "#ch=1&w=10",
        act: async (page) => {
            await sleep(9000);
            await page.getByRole("button", { name: "Pause" }).click();
            await sleep(1000);
        },
    },
    phone: { options: FADE, size: PHONE, act: () => sleep(10000).then(() => {}) },
    light: {
        options: FADE,
        scheme: "light",
        hash: "#w=10&unit=W&ch=3",
        act: async (_page, unit) => {
            await unit.ctl("log", "opc", "start", "--channel", "3");
            await unit.ctl("log", "transient", "enable", "--channel", "3");
            await sleep(9000);
        },
    },
};

const [folder, ...names] = process.argv.slice(2);
const browser = await politeBrowser();
for (const name of names.length > 0 ? names : Object.keys(SCENES)) {
    const scene = SCENES[name];
    const profile = new URL(`../../examples/profiles/${scene.profile ?? "fade"}.csv`, import.meta.url).pathname;
    const wanted = {
        channels: 4,
        options: scene.options ?? [],
        more: scene.options ? `[profile]\nfile = "${profile}"\n` : "",
        priority: 1,
        seconds: scene.replaySeconds ?? 0,
    };
    const unit = scene.replaySeconds ? new RealReplay(wanted) : new RealUnit(wanted);
    await unit.start();
    const isPhone = scene.size === PHONE;
    const page = await browser.newPage({
        viewport: scene.size ?? DESK,
        deviceScaleFactor: isPhone ? 2 : 1,
        colorScheme: scene.scheme ?? "dark",
    });
    await page.goto(`${unit.address}/${scene.hash ?? ""}`);
    await sleep(1500);
    await scene.act(page, unit);
    await page.screenshot({ path: join(folder, `live-page-${name}.png`) });
    await page.close();
    await unit.end();
    console.log(`live-page-${name}.png`);
}
await browser.close();
