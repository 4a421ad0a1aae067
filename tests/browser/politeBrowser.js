/** A browser that gives way to the unit, as if it ran on another machine. */
import { chmodSync, mkdtempSync, rmSync, writeFileSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { chromium } from "playwright-core";
import { CHROMIUM } from "./pageSteps.js";

/** @returns {Promise<import("playwright-core").Browser>} */
export async function politeBrowser() {
    const folder = mkdtempSync(join(tmpdir(), "opc-polite-"));
    const executablePath = join(folder, "chromium");
    writeFileSync(executablePath, `#!/bin/sh\nexec nice -n 15 "${CHROMIUM}" "$@"\n`);
    chmodSync(executablePath, 0o755);
    try {
        return await chromium.launch({ executablePath, args: ["--no-sandbox", "--disable-gpu"] });
    } finally {
        rmSync(folder, { recursive: true });
    }
}
