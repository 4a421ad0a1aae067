import { Backoff } from "./backoff.js";
import { EventStreamParser } from "./eventStream.js";

/**
 * @typedef {"connecting"|"live"|"waiting"|"hidden"} ConnectionState
 * @typedef {{onRun: (run: string) => void, onSteps: (steps: any) => void, onEvents: (events: import("./api.js").UnitEvent[]) => void,
 *            onState: (state: ConnectionState, reason: string) => void}} StreamHandlers
 */

/** The unit says that it is alive every 5 s; a connection that is silent for longer is dead. */
const SILENCE_MS = 12000;

/** Why a stream is over that the unit has ended. */
export const STREAM_ENDED = "the unit closed the stream";

/** Keeps one event stream open while the page can be seen; begins again after any failure. */
export class StreamClient {
    /** @param {import("./api.js").Api} api @param {StreamHandlers} handlers */
    constructor(api, handlers) {
        this.api = api;
        this.handlers = handlers;
        this.backoff = new Backoff(250, 8000);
        this.run = "";
        this.lastId = "";
        this.bytes = 0;
        /** @type {AbortController|null} */
        this.open = null;
        this.timer = 0;
        document.addEventListener("visibilitychange", () => this.onVisibility());
    }

    start() {
        if (document.visibilityState === "hidden") {
            this.onVisibility();
        } else {
            void this.connect();
        }
    }

    onVisibility() {
        if (document.visibilityState === "hidden") {
            this.stop();
            this.handlers.onState("hidden", "");
        } else if (this.open === null) {
            clearTimeout(this.timer);
            this.backoff.reset();
            void this.connect();
        }
    }

    stop() {
        clearTimeout(this.timer);
        this.open?.abort();
        this.open = null;
    }

    /** Opens the stream anew, from the latest step on: what it had is of another run. */
    restart() {
        this.lastId = "";
        this.stop();
        this.backoff.reset();
        void this.connect();
    }

    async connect() {
        if (this.open !== null || document.visibilityState === "hidden") {
            return;
        }
        const control = new AbortController();
        this.open = control;
        this.handlers.onState("connecting", "");
        let reason = STREAM_ENDED;
        try {
            const query =
                this.lastId === ""
                    ? ""
                    : `?run=${encodeURIComponent(this.run)}&after=${encodeURIComponent(this.lastId)}`;
            const response = await this.api.request(`api/stream${query}`, {
                signal: control.signal,
                headers: { Accept: "text/event-stream" },
            });
            await this.read(response, control);
        } catch (error) {
            reason = error instanceof Error ? error.message : String(error);
        }
        if (this.open === control) {
            this.open = null;
            control.abort();
            const waitMs = this.backoff.next();
            this.handlers.onState("waiting", reason);
            this.timer = window.setTimeout(() => void this.connect(), waitMs);
        }
    }

    /** @param {Response} response @param {AbortController} control */
    async read(response, control) {
        const parser = new EventStreamParser((message) => this.take(message));
        const decoder = new TextDecoder();
        const reader = /** @type {ReadableStream<Uint8Array>} */ (response.body).getReader();
        let watchdog = 0;
        const watch = () => {
            clearTimeout(watchdog);
            watchdog = window.setTimeout(() => control.abort(new Error("the unit went silent")), SILENCE_MS);
        };
        try {
            watch();
            for (;;) {
                const { done, value } = await reader.read();
                if (done) {
                    return;
                }
                watch();
                this.bytes += value.byteLength;
                parser.push(decoder.decode(value, { stream: true }));
            }
        } finally {
            clearTimeout(watchdog);
        }
    }

    /** @param {import("./eventStream.js").StreamMessage} message */
    take(message) {
        if (this.open === null) {
            return;
        }
        const data = JSON.parse(message.data);
        if (message.event === "run") {
            if (data.run !== this.run) {
                this.run = data.run;
                this.lastId = "";
                this.handlers.onRun(data.run);
            }
            this.backoff.reset();
            this.handlers.onState("live", "");
        } else if (message.event === "steps") {
            this.lastId = message.id;
            this.handlers.onSteps(data);
        } else if (message.event === "events") {
            this.handlers.onEvents(data.events);
        }
    }
}
