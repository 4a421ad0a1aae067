/**
 * Pictures of the page for the eyes: `node tests/look.js [name …]` puts them into looks/. Chromium comes from the system.
 */
import { mkdirSync } from "node:fs";
import { chromium } from "playwright-core";
import { FakeUnit } from "./fakeUnit.js";

const OUT = new URL("../looks/", import.meta.url).pathname;
const DESK = { width: 1600, height: 1000 };
/** @typedef {import("playwright-core").Page} Page */

/** @type {Record<string, {unit?: object, size?: {width: number, height: number}, scheme?: "light"|"dark", hash?: string, act?: (page: Page, unit: FakeUnit) => Promise<void>}>} */
const SCENES = {
    "switch-on": {
        hash: "#ch=1&w=2&trig=normal,state,7",
        act: async (page, unit) => {
            unit.scenario = false;
            await page.getByRole("button", { name: "Enable" }).click();
            unit.loops[1].wantOn = false;
            await page.waitForTimeout(300);
            unit.loops[1].wantOn = true;
            await page.waitForTimeout(2600);
        },
    },
    fade: {
        hash: "#ch=0&w=5",
        act: async (page, unit) => {
            unit.scenario = false;
            for (let i = 0; i < 14; ++i) {
                unit.loops[0].fade = 260 * Math.sin((i / 14) * Math.PI);
                await page.waitForTimeout(100);
            }
            unit.loops[0].fade = 0;
            await page.waitForTimeout(1400);
            await page.keyboard.press(" ");
            const box = /** @type {{x: number, y: number, width: number, height: number}} */ (
                await page.locator("#stack").boundingBox()
            );
            await page.mouse.move(box.x + box.width * 0.42, box.y + 100);
            await page.keyboard.press("a");
            await page.mouse.move(box.x + box.width * 0.62, box.y + 100);
            await page.keyboard.press("b");
            await page.mouse.move(box.x + box.width * 0.75, box.y + 100);
            await page.waitForTimeout(500);
        },
    },
    fault: {
        hash: "#ch=2&w=10",
        act: async (page, unit) => {
            await page.keyboard.press("c");
            await page.waitForTimeout(600);
            unit.loops[2].faults.set("getPmeasured", {
                Operation: "getPmeasured",
                Kind: "intermittent",
                Probability: 0.5,
            });
            unit.tell(2, "fault", "getPmeasured: intermittent, probability 0.5");
            await page.waitForTimeout(2500);
        },
    },
    history: {
        unit: { history: 500 },
        hash: "#ch=1",
        act: async (page) => {
            await page.waitForTimeout(800);
            await page.keyboard.press("h");
            await page.getByRole("button", { name: "5 min", exact: true }).click();
            await page.keyboard.press("-");
            await page.waitForTimeout(1500);
        },
    },
    phone: { size: { width: 360, height: 780 }, act: async (page) => page.waitForTimeout(1500).then(() => {}) },
    light: { scheme: "light", hash: "#w=30&unit=W", act: async (page) => page.waitForTimeout(1500).then(() => {}) },
    eight: { unit: { channels: 8 }, hash: "#w=60&ch=5", act: async (page) => page.waitForTimeout(2500).then(() => {}) },
    laptop: { size: { width: 1366, height: 768 }, act: async (page) => page.waitForTimeout(1000).then(() => {}) },
    tablet: { size: { width: 820, height: 1180 }, act: async (page) => page.waitForTimeout(1000).then(() => {}) },
    confirm: {
        act: async (page) => {
            await page.keyboard.press("c");
            await page.waitForTimeout(500);
            await page.getByRole("button", { name: "Switch off" }).click();
            await page.waitForTimeout(300);
        },
    },
    help: {
        act: async (page) => {
            await page.keyboard.press("?");
            await page.waitForTimeout(300);
        },
    },
};

mkdirSync(OUT, { recursive: true });
const wanted = process.argv.length > 2 ? process.argv.slice(2) : Object.keys(SCENES);
const browser = await chromium.launch({ executablePath: "/usr/bin/chromium", args: ["--no-sandbox", "--disable-gpu"] });
for (const name of wanted) {
    const scene = SCENES[name];
    const unit = new FakeUnit({ channels: 4, history: 70, ...scene.unit });
    const address = await unit.listen(0);
    const page = await browser.newPage({ viewport: scene.size ?? DESK, colorScheme: scene.scheme ?? "dark" });
    page.on("console", (message) =>
        ["error", "warning"].includes(message.type()) ? console.log(`${name}: ${message.text()}`) : undefined,
    );
    page.on("pageerror", (error) => console.log(`${name}: ${error.stack}`));
    await page.goto(`${address}/${scene.hash ?? ""}`);
    await page.waitForTimeout(1200);
    await scene.act?.(page, unit);
    await page.screenshot({ path: `${OUT}${name}.png`, fullPage: name === "phone" });
    await page.close();
    unit.close();
    console.log(`looks/${name}.png`);
}
await browser.close();
