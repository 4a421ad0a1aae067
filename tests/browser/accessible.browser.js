/** What axe finds on the page of a running unit. It looks for what keeps people from using it. */
import assert from "node:assert/strict";
import { readFileSync } from "node:fs";
import { createRequire } from "node:module";
import { test } from "node:test";
import { withPage } from "./pageRunner.js";
import { openControls } from "./pageSteps.js";

/** @typedef {import("playwright-core").Page} Page */

const AXE = readFileSync(createRequire(import.meta.url).resolve("axe-core/axe.min.js"), "utf8");
const DESK = { width: 1500, height: 950 };
const PHONE = { width: 360, height: 740 };

/** @param {Page} page @param {string} where */
async function assertNothingFound(page, where) {
    // The page's policy lets no script in that is not its own; the browser's protocol does.
    await page.evaluate(AXE);
    const { violations, passes } = await page.evaluate(() => /** @type {any} */ (globalThis).axe.run(document));
    assert.ok(passes.length > 10, `${where}: axe looked at ${passes.length} things`);
    assert.deepEqual(
        violations.map((/** @type {any} */ found) => [
            found.impact,
            found.id,
            found.nodes.map(
                (/** @type {any} */ node) => `${node.html} ${node.any.map((/** @type {any} */ one) => one.message)}`,
            ),
        ]),
        [],
        where,
    );
}

/** @type {readonly [string, (page: Page) => Promise<void>][]} */
const PLACES = [
    ["the monitor", async () => {}],
    ["the controls", (page) => openControls(page, 0)],
    ["a question", (page) => page.getByRole("button", { name: "Switch off", exact: true }).click()],
    [
        "the keys",
        async (page) => {
            await page.getByRole("dialog").getByRole("button", { name: "Cancel" }).click();
            await page.keyboard.press("?");
        },
    ],
    [
        "the history's question",
        async (page) => {
            await page.keyboard.press("Escape");
            await page.keyboard.press("h");
        },
    ],
    [
        "cursors and a refusal",
        async (page) => {
            await page.keyboard.press("Escape");
            await page.locator("#stack").hover();
            await page.keyboard.press("a");
            await page.keyboard.press("b");
            await page.getByLabel("Lower limit in dBm").fill("20");
            await page.getByLabel("Upper limit in dBm").fill("10");
            await page.getByRole("button", { name: "Set limits" }).click();
            await page.getByRole("dialog").locator("button.primary").click();
            await page.locator(".toast.alarm").waitFor();
        },
    ],
];

for (const [scheme, size] of /** @type {const} */ ([
    ["dark", DESK],
    ["light", DESK],
    ["dark", PHONE],
])) {
    test(`axe finds nothing, ${scheme}, ${size.width} pixels wide`, () =>
        withPage({ scheme, size }, async (page) => {
            for (const [name, go] of PLACES) {
                await go(page);
                await page.waitForTimeout(300);
                await assertNothingFound(page, name);
            }
        }));
}

test("axe finds nothing in the question for the token and beside a fault", async () => {
    await withPage({ token: "0123456789abcdef", expected: /401/ }, async (page) => {
        await page.getByLabel("Token", { exact: true }).fill("another-0123456789");
        await page.keyboard.press("Enter");
        await page.getByText("The unit did not take that one.").waitFor();
        await assertNothingFound(page, "token");
    });
    await withPage({}, async (page, unit) => {
        await unit.ctl("fault", "set", "getPmeasured", "fail");
        await unit.ctl("power", "9");
        await page.waitForTimeout(1500);
        await assertNothingFound(page, "fault");
    });
});
