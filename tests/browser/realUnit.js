/** A running unit for a test: `opc run` with a unit file of its own, and `opc ctl` to see what became of it. */
import assert from "node:assert/strict";
import { execFile, spawn } from "node:child_process";
import { mkdtempSync, readFileSync, rmSync, writeFileSync } from "node:fs";
import { tmpdir } from "node:os";
import { join, resolve } from "node:path";
import { promisify } from "node:util";

const PROGRAM = resolve(process.env["OPC_PROGRAM"] ?? "build/release/bin/opc");
const START_MS = 30000;
const MODULES = ["TemperatureHandler", "FrequencyHandler", "OutputPowerHandler", "OutputPowerController"];
const run = promisify(execFile);

/** Units that a test which failed would leave behind. @type {Set<import("node:child_process").ChildProcess>} */
const running = new Set();
process.once("exit", () => running.forEach((unit) => unit.kill("SIGKILL")));

/** @param {number} ms */
export function sleep(ms) {
    return new Promise((done) => setTimeout(done, ms));
}

/** @param {(() => boolean|Promise<boolean>)} isSo @param {string} what it waits for @param {number} [atMostMs] */
export async function until(isSo, what, atMostMs = 15000) {
    const endMs = performance.now() + atMostMs;
    while (!(await isSo())) {
        assert.ok(performance.now() < endMs, `waited in vain for: ${what}`);
        await sleep(50);
    }
}

/** @param {number} channels @param {string} tokenFile @param {number} priority @returns {string} */
function unitFile(channels, tokenFile, priority) {
    const modules = MODULES.map(
        (name, i) => `[[module]]\nname = "${name}"\nlibrary = "lib${name}.so"\n${i === 0 ? 'scope = "unit"\n' : ""}`,
    );
    const numbers = Array.from({ length: channels }, (_none, i) => i);
    return [
        `[unit]\ninterval_ms = 6\nrealtime_priority = ${priority}\n`,
        ...modules,
        "[trace]\ndefault = 0\nsystem_log = false\n",
        `[test_interface]\nport = 0\n${tokenFile === "" ? "" : `token_file = "${tokenFile}"\n`}`,
        ...numbers.map((n) => `[[channel]]\nnumber = ${n}\nrequested_power_dbm = ${10 + n}.0\n`),
    ].join("\n");
}

export class RealUnit {
    /**
     * @param {{channels?: number, token?: string, options?: string[], more?: string, priority?: number}} wanted
     *        more: tables of its file; priority: of the thread that regulates, which needs the right to it
     */
    constructor({ channels = 2, token = "", options = [], more = "", priority = 0 } = {}) {
        this.folder = mkdtempSync(join(tmpdir(), "opc-browser-"));
        this.token = token;
        this.options = options;
        if (token !== "") {
            writeFileSync(join(this.folder, "unit.token"), `${token}\n`);
        }
        writeFileSync(
            join(this.folder, "unit.toml"),
            unitFile(channels, token === "" ? "" : "unit.token", priority) + more,
        );
        this.output = "";
        this.address = "";
        /** @type {import("node:child_process").ChildProcess|null} */
        this.process = null;
    }

    /** Starts it, at the port that it had before. */
    async start() {
        const port = this.address === "" ? "0" : new URL(this.address).port;
        await this.launch(["run", "unit.toml", "--port", port, ...this.options], /test interface: .*\/RPC2\n[^]*steps/);
    }

    /** @param {string[]} words @param {RegExp} ready what it says once it is worth asking */
    async launch(words, ready) {
        const unit = spawn(PROGRAM, words, { cwd: this.folder });
        this.process = unit;
        this.output = "";
        running.add(unit);
        const take = (/** @type {Buffer} */ bytes) => {
            this.output += bytes.toString();
        };
        unit.stdout.on("data", take);
        unit.stderr.on("data", take);
        await until(
            () => {
                assert.equal(unit.exitCode, null, this.output);
                return ready.test(this.output);
            },
            `${ready} from opc ${words[0]}`,
            START_MS,
        );
        this.address = /** @type {RegExpMatchArray} */ (this.output.match(/live page: (http:\/\/\S+?)\/?\n/))[1];
    }

    async stop() {
        const unit = this.process;
        this.process = null;
        if (unit === null) {
            return;
        }
        running.delete(unit);
        if (unit.exitCode === null) {
            const ended = new Promise((done) => unit.once("exit", done));
            unit.kill("SIGTERM");
            assert.equal(await ended, 0, this.output);
        }
    }

    async end() {
        await this.stop();
        rmSync(this.folder, { recursive: true });
    }

    /** @param {string} name of a file that it wrote @returns {string} */
    file(name) {
        return readFileSync(join(this.folder, name), "utf8");
    }

    /** @param {...string} words of a command @returns {Promise<any>} what the unit answered */
    async ctl(...words) {
        const token = this.token === "" ? [] : ["--token-file", join(this.folder, "unit.token")];
        const { stdout } = await run(PROGRAM, ["ctl", "--unit", this.address, "--json", ...token, ...words]);
        return JSON.parse(stdout);
    }

    /** @param {number} channel @returns {Promise<{unit: any, channel: any}>} */
    async status(channel) {
        const unit = await this.ctl("status");
        return { unit, channel: unit.Channels[channel] };
    }
}

/** The recording of a run that is over, played: its address is that of `opc replay`. */
export class RealReplay extends RealUnit {
    /** @param {{channels?: number, options?: string[], more?: string, seconds?: number}} wanted options: of the replay */
    constructor(wanted = {}) {
        super(wanted);
        this.seconds = wanted.seconds ?? 6;
    }

    async start() {
        await run(PROGRAM, ["run", "unit.toml", "--record", "unit.db", "--duration", String(this.seconds)], {
            cwd: this.folder,
        });
        await this.launch(["replay", "unit.db", "--port", "0", ...this.options], /live page: .*\n[^]*steps from/);
    }
}
