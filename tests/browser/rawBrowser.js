/**
 * Chromium by its own protocol alone. A library that drives browsers keeps every page visible, so that a page that is
 * hidden cannot be had with it.
 */
import { spawn } from "node:child_process";
import { once } from "node:events";
import { mkdtempSync, rmSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { setTimeout } from "node:timers/promises";
import { CHROMIUM } from "./pageSteps.js";

export class RawBrowser {
    constructor() {
        this.folder = mkdtempSync(join(tmpdir(), "opc-chromium-"));
        this.process = spawn(
            CHROMIUM,
            [
                "--headless=new",
                "--remote-debugging-pipe",
                "--no-sandbox",
                "--disable-gpu",
                "--no-first-run",
                `--user-data-dir=${this.folder}`,
            ],
            { stdio: ["ignore", "ignore", "ignore", "pipe", "pipe"] },
        );
        this.commands = /** @type {import("node:stream").Writable} */ (this.process.stdio[3]);
        this.rest = "";
        this.lastId = 0;
        /** @type {Map<number, {resolve: (result: any) => void, reject: (error: Error) => void}>} */
        this.waiting = new Map();
        this.process.stdio[4]?.on("data", (bytes) => this.take(bytes.toString()));
    }

    /** Messages end with a zero byte. @param {string} text */
    take(text) {
        const messages = (this.rest + text).split("\0");
        this.rest = /** @type {string} */ (messages.pop());
        for (const message of messages.map((line) => JSON.parse(line))) {
            const waiter = this.waiting.get(message.id);
            this.waiting.delete(message.id);
            message.error ? waiter?.reject(new Error(message.error.message)) : waiter?.resolve(message.result);
        }
    }

    /** @param {string} method @param {object} [params] @param {string} [sessionId] @returns {Promise<any>} */
    send(method, params = {}, sessionId = undefined) {
        const id = ++this.lastId;
        this.commands.write(`${JSON.stringify({ id, method, params, sessionId })}\0`);
        return new Promise((resolve, reject) => this.waiting.set(id, { resolve, reject }));
    }

    /** @param {string} address */
    async open(address) {
        const { targetId } = await this.send("Target.createTarget", { url: address });
        const { sessionId } = await this.send("Target.attachToTarget", { targetId, flatten: true });
        return new RawPage(this, targetId, sessionId);
    }

    async close() {
        const ended = once(this.process, "exit");
        void this.send("Browser.close");
        await ended;
        await removeLeft(this.folder);
    }
}

/**
 * Removes what processes that end after their browser may still write to. Node's own retries remove a folder again, but
 * not what has come into it.
 * @param {string} folder
 */
async function removeLeft(folder) {
    const TRIES = 50;
    for (let tried = 1; ; ++tried) {
        try {
            return rmSync(folder, { recursive: true });
        } catch (error) {
            if (tried === TRIES) {
                throw error;
            }
            await setTimeout(100);
        }
    }
}

export class RawPage {
    /** @param {RawBrowser} browser @param {string} targetId @param {string} sessionId */
    constructor(browser, targetId, sessionId) {
        this.browser = browser;
        this.targetId = targetId;
        this.sessionId = sessionId;
    }

    /** @param {string} expression @returns {Promise<any>} its value; promises are waited for */
    async value(expression) {
        const { result, exceptionDetails } = await this.browser.send(
            "Runtime.evaluate",
            { expression, awaitPromise: true, returnByValue: true },
            this.sessionId,
        );
        if (exceptionDetails) {
            throw new Error(exceptionDetails.exception?.description ?? exceptionDetails.text);
        }
        return result.value;
    }

    /** Puts another tab before this one. */
    async hide() {
        await this.browser.send("Target.createTarget", { url: "about:blank" });
    }

    async show() {
        await this.browser.send("Target.activateTarget", { targetId: this.targetId });
    }
}
