/**
 * A unit made up for tests and for work on the page: serves the page as a real one does, and loops that are not the
 * controller. `node tests/fakeUnit.js --port 8090 --channels 4 --token secret --scenario true`.
 */
import { readFileSync } from "node:fs";
import { createServer } from "node:http";
import { dirname, extname, join } from "node:path";
import { fileURLToPath } from "node:url";
import { parseArgs } from "node:util";
import { decodeCall, encodeValue } from "../src/xmlRpc.js";
import { stateLook } from "../src/states.js";
import { FakeLoop } from "./fakeLoop.js";
import { callMethod, faultXml } from "./fakeMethods.js";

const ROOT = dirname(dirname(fileURLToPath(import.meta.url)));
const TYPES = /** @type {Record<string, string>} */ ({
    ".html": "text/html; charset=utf-8",
    ".js": "text/javascript; charset=utf-8",
    ".css": "text/css; charset=utf-8",
    ".svg": "image/svg+xml",
});
export const CONTENT_SECURITY_POLICY =
    "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self' data: blob:; " +
    "connect-src 'self'; base-uri 'none'; form-action 'none'; frame-ancestors 'none'";
const MESSAGE_MS = 33;
const COLUMNS = [
    "t_us",
    "state",
    "requested_cdb",
    "ptarget_cdb",
    "pctrl_cdb",
    "pmeasured_cdb",
    "ppredicted_cdb",
    "error_cdb",
    "rf_gain_cdb",
    "if_power_cdb",
    "temperature_cc",
    "frequency_khz",
    "result",
    "detector_state",
];

/** @returns {Map<string, string>} address to file, as the list of assets says */
export function assetFiles() {
    const lines = readFileSync(join(ROOT, "assets.txt"), "utf8")
        .split("\n")
        .filter((line) => line !== "" && !line.startsWith("#"));
    return new Map(lines.map((line) => /** @type {[string, string]} */ (line.split(/\s+/))));
}

/** @param {import("node:http").IncomingMessage} request @returns {Promise<string>} */
async function bodyOf(request) {
    let body = "";
    for await (const piece of request) {
        body += piece;
    }
    return body;
}

/** @param {any[]} samples of one channel @param {number} channel */
function columnsOf(samples, channel) {
    /** @type {Record<string, any>} */
    const columns = { c: channel };
    for (const key of COLUMNS) {
        columns[key] = samples.map((sample) => sample[key]);
    }
    columns["reduced_gain_cdb"] = [0, 1, 2, 3, 4, 5].map((i) => samples.map((sample) => sample.reduced[i]));
    return columns;
}

export class FakeUnit {
    /** @param {{channels?: number, intervalMs?: number, token?: string, scenario?: boolean, history?: number, replay?: boolean}} options */
    constructor(options = {}) {
        this.intervalMs = options.intervalMs ?? 6;
        this.token = options.token ?? "";
        this.scenario = options.scenario ?? true;
        this.run = Math.floor(Math.random() * 2 ** 48)
            .toString(16)
            .padStart(16, "0");
        const count = options.channels ?? 4;
        this.loops = Array.from({ length: count }, (_entry, number) => new FakeLoop(number, this.intervalMs * 1000));
        this.nowUs = 0;
        this.startedMs = Date.now() - (options.history ?? 0) * 1000;
        /** @type {any[]} */
        this.samples = [];
        this.firstId = 1;
        /** @type {any[]} */
        this.events = [];
        /** @type {any[]} */
        this.calls = [];
        /** @type {any} */
        this.replay = options.replay
            ? { from_us: 0, to_us: 3600e6, position_us: 60e6, speed: 1, paused: false, history_from_us: 0 }
            : null;
        this.server = createServer((request, response) => void this.answer(request, response));
        while (this.nowUs < (Date.now() - this.startedMs) * 1000) {
            this.step();
        }
        this.timer = setInterval(() => this.catchUp(), 10);
    }

    /** @param {number} channel @param {string} kind @param {string} text */
    tell(channel, kind, text) {
        this.events.push({ id: this.events.length + 1, t_us: this.nowUs, channel, kind, text });
    }

    catchUp() {
        if (this.replay?.paused) {
            this.startedMs = Date.now() - this.nowUs / 1000;
        }
        const dueUs = (Date.now() - this.startedMs) * 1000;
        while (this.nowUs < dueUs) {
            this.step();
        }
        const most = Math.ceil(600e3 / this.intervalMs) * this.loops.length;
        if (this.samples.length > 1.2 * most) {
            const gone = this.samples.length - most;
            this.samples.splice(0, gone);
            this.firstId += gone;
        }
    }

    step() {
        this.nowUs += this.intervalMs * 1000;
        for (const loop of this.loops) {
            if (this.scenario) {
                this.play(loop);
            }
            const before = loop.state;
            const sample = loop.step(this.nowUs + 7 * loop.number);
            if (loop.state !== before) {
                this.tell(loop.number, "state", `${stateLook(before).name} → ${stateLook(loop.state).name}`);
            }
            this.samples.push({ channel: loop.number, ...sample });
        }
    }

    /** Steps of the requested power, fades and a switch-off now and then. @param {FakeLoop} loop */
    play(loop) {
        const phase = (this.nowUs / 1e6 + 3.1 * loop.number) % 24;
        const at = (/** @type {number} */ second) => phase >= second && phase < second + this.intervalMs / 1000;
        if (at(4) || at(12)) {
            loop.requested += at(4) ? 300 : -300;
            this.tell(loop.number, "command", `requested power ${(loop.requested / 100).toFixed(2)} dBm`);
        }
        loop.fade = phase > 8 && phase < 9.4 ? 250 * Math.sin(((phase - 8) / 1.4) * Math.PI) : 0;
        if (loop.number % 4 === 1 && (at(16) || at(17.5))) {
            loop.wantOn = at(17.5);
            this.tell(loop.number, "command", `transmitter ${loop.wantOn ? "on" : "off"}`);
        }
    }

    /** @param {import("node:http").IncomingMessage} request @param {import("node:http").ServerResponse} response */
    async answer(request, response) {
        const url = new URL(request.url ?? "/", "http://unit");
        const file = assetFiles().get(url.pathname);
        if (file !== undefined) {
            response.writeHead(200, {
                "Content-Type": TYPES[extname(file)],
                "Content-Security-Policy": CONTENT_SECURITY_POLICY,
                "Cache-Control": "no-cache",
            });
            response.end(readFileSync(join(ROOT, file)));
            return;
        }
        if (this.token !== "" && request.headers.authorization !== `Bearer ${this.token}`) {
            response
                .writeHead(401, { "Content-Type": "text/plain" })
                .end('send the header "Authorization: Bearer" with the unit\'s token');
            return;
        }
        const json = (/** @type {any} */ value) =>
            response.writeHead(200, { "Content-Type": "application/json" }).end(JSON.stringify(value));
        switch (url.pathname) {
            case "/api/unit":
                json(this.about());
                break;
            case "/api/history":
                json(this.history(url.searchParams));
                break;
            case "/api/events":
                json({ events: this.eventsBetween(url.searchParams) });
                break;
            case "/api/stream":
                this.stream(url.searchParams, request, response);
                break;
            case "/api/replay":
                json(Object.assign(this.replay, JSON.parse(await bodyOf(request))));
                break;
            case "/RPC2":
                await this.call(request, response);
                break;
            default:
                response.writeHead(404, { "Content-Type": "text/plain" }).end("nothing is here");
        }
    }

    about() {
        return {
            run: this.run,
            interval_ms: this.intervalMs,
            version: "1.2",
            started: new Date(this.startedMs).toISOString(),
            clock_us: this.nowUs,
            demo: true,
            replay: this.replay,
            recording: this.replay ? null : { file: "unit.db", state: "recording", reason: "", from_us: 0 },
            channels: this.loops.map((loop) => ({ number: loop.number, index: loop.number, limits_cdb: loop.limits })),
            quantities: [],
        };
    }

    /** @param {URLSearchParams} query */
    eventsBetween(query) {
        const from = Number(query.get("from_us") ?? 0);
        const to = Number(query.get("to_us") ?? Infinity);
        return this.events
            .filter((event) => event.t_us >= from && event.t_us <= to)
            .slice(-Number(query.get("limit") ?? 200));
    }

    /** @param {URLSearchParams} query */
    history(query) {
        const channel = Number(query.get("channel") ?? 0);
        const [from, to, points] = ["from_us", "to_us", "points"].map((key) => Number(query.get(key)));
        const found = this.samples.filter(
            (sample) => sample.channel === channel && sample.t_us >= from && sample.t_us <= to,
        );
        if (found.length <= points) {
            return { run: this.run, source: "steps", channels: [columnsOf(found, channel)] };
        }
        const size = Math.ceil(found.length / points);
        const groups = Array.from({ length: Math.ceil(found.length / size) }, (_entry, i) =>
            found.slice(i * size, (i + 1) * size),
        );
        /** @type {Record<string, any>} */
        const columns = {
            c: channel,
            t_us: groups.map((group) => group[0].t_us),
            n: groups.map((group) => group.length),
            state: groups.map((group) => group[group.length - 1].state),
        };
        const ranges = (/** @type {(sample: any) => number|null} */ value) => {
            const each = groups.map((group) => group.map(value).filter((entry) => entry !== null));
            return {
                min: each.map((values) => (values.length > 0 ? Math.min(...values) : null)),
                mean: each.map((values) =>
                    values.length > 0 ? values.reduce((sum, entry) => sum + entry, 0) / values.length : null,
                ),
                max: each.map((values) => (values.length > 0 ? Math.max(...values) : null)),
            };
        };
        for (const key of COLUMNS.slice(2)) {
            columns[key] = ranges((sample) => sample[key]);
        }
        columns["reduced_gain_cdb"] = [0, 1, 2, 3, 4, 5].map((i) => ranges((sample) => sample.reduced[i]));
        return { run: this.run, source: "seconds", channels: [columns] };
    }

    /** @param {URLSearchParams} query @param {import("node:http").IncomingMessage} request @param {import("node:http").ServerResponse} response */
    stream(query, request, response) {
        response.writeHead(200, { "Content-Type": "text/event-stream", "Cache-Control": "no-store" });
        response.write(`event: run\ndata: ${JSON.stringify({ run: this.run })}\n\n`);
        const end = () => this.firstId + this.samples.length;
        let next = query.get("run") === this.run && query.has("after") ? Number(query.get("after")) + 1 : end();
        let nextEvent = this.events.length;
        const timer = setInterval(() => {
            const gap = Math.max(0, this.firstId - next);
            next += gap;
            const fresh = this.samples.slice(next - this.firstId);
            next = end();
            if (fresh.length > 0) {
                const channels = this.loops.map((loop) =>
                    columnsOf(
                        fresh.filter((sample) => sample.channel === loop.number),
                        loop.number,
                    ),
                );
                response.write(
                    `id: ${next - 1}\nevent: steps\ndata: ${JSON.stringify({ run: this.run, gap, dropped: 0, channels })}\n\n`,
                );
            }
            if (nextEvent < this.events.length) {
                response.write(`event: events\ndata: ${JSON.stringify({ events: this.events.slice(nextEvent) })}\n\n`);
                nextEvent = this.events.length;
            }
        }, MESSAGE_MS);
        request.on("close", () => clearInterval(timer));
    }

    /** @param {import("node:http").IncomingMessage} request @param {import("node:http").ServerResponse} response */
    async call(request, response) {
        const body = await bodyOf(request);
        response.writeHead(200, { "Content-Type": "text/xml" });
        try {
            const { method, parameters } = decodeCall(body);
            const result = callMethod(this, method, parameters[0] ?? {});
            response.end(
                `<?xml version="1.0"?><methodResponse><params><param>${encodeValue(result)}</param></params></methodResponse>`,
            );
        } catch (error) {
            response.end(faultXml(error instanceof Error ? error.message : String(error)));
        }
    }

    /** @param {number} port 0: any @returns {Promise<string>} where it is */
    listen(port) {
        return new Promise((resolve) =>
            this.server.listen(port, "127.0.0.1", () =>
                resolve(
                    `http://127.0.0.1:${/** @type {import("node:net").AddressInfo} */ (this.server.address()).port}`,
                ),
            ),
        );
    }

    close() {
        clearInterval(this.timer);
        this.server.closeAllConnections();
        this.server.close();
    }
}

if (process.argv[1] === fileURLToPath(import.meta.url)) {
    const { values } = parseArgs({
        options: {
            port: { type: "string", default: "8090" },
            channels: { type: "string", default: "4" },
            interval: { type: "string", default: "6" },
            token: { type: "string", default: "" },
            history: { type: "string", default: "120" },
        },
    });
    const unit = new FakeUnit({
        channels: Number(values.channels),
        intervalMs: Number(values.interval),
        token: values.token,
        history: Number(values.history),
    });
    console.log(`fake unit at ${await unit.listen(Number(values.port))}`);
}
