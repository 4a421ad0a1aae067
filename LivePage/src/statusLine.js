import { byId, h, setAttribute, setText } from "./dom.js";
import { runClock } from "./clock.js";

const SOURCES = /** @type {Record<string, string>} */ ({
    ring: "steps, summed up",
    steps: "steps, summed up",
    seconds: "each second",
    minutes: "each minute",
});

/** @param {import("./decimate.js").Picture|null} picture @returns {string} what a picture was made of; empty: of what the page holds */
function resolutionOf(picture) {
    if (picture === null || (picture.source === "ring" && !picture.hasRanges)) {
        return "";
    }
    return picture.hasRanges ? (SOURCES[picture.source] ?? picture.source) : "every step";
}

/** Which unit this is, how the stream does, and what is recorded. */
export class StatusLine {
    /** @param {import("./store.js").Store} store @param {import("./chartStack.js").ChartStack} stack @param {import("./stream.js").StreamClient} stream @param {import("./historySource.js").HistorySource} history */
    constructor(store, stack, stream, history) {
        this.store = store;
        this.stack = stack;
        this.stream = stream;
        this.history = history;
        this.unitLine = byId("unit-line");
        this.rates = byId("rates");
        this.pill = byId("connection");
        this.badges = byId("badges");
        this.demo = h("span", { class: "badge", title: "The output power handlers are simulated" }, "simulated");
        this.recording = h("span", { class: "badge" });
        this.source = h("span", { class: "badge" });
        this.lost = h("span", { class: "badge warning" });
        this.badges.append(this.demo, this.recording, this.source, this.lost);
        this.before = { atMs: performance.now(), bytes: 0, taken: 0 };
    }

    update() {
        const { store } = this;
        const { unit, connection } = store;
        if (unit !== null) {
            setText(
                this.unitLine,
                `${location.host} · ${unit.interval_ms} ms steps · version ${unit.version} · up ${runClock(store.newestUs, 0)}`,
            );
            this.demo.hidden = !unit.demo;
            this.recording.hidden = unit.recording === null;
            setText(
                this.recording,
                unit.recording === null
                    ? ""
                    : unit.recording.state === "recording"
                      ? `● ${unit.recording.file}`
                      : `recording paused: ${unit.recording.reason}`,
            );
            setAttribute(this.recording, "class", `badge ${unit.recording?.state === "recording" ? "" : "warning"}`);
        }
        const source = resolutionOf(store.picture);
        this.source.hidden = source === "" && this.history.problem === "" && !this.history.isLoading;
        setText(
            this.source,
            this.history.problem !== ""
                ? `history: ${this.history.problem}`
                : this.history.isLoading
                  ? "history…"
                  : `history: ${source}`,
        );
        this.lost.hidden = store.lost === 0;
        setText(this.lost, `${store.lost} samples missed`);
        const isStale = connection === "live" && !store.paused && performance.now() - store.newestAtMs > 1500;
        const state =
            connection === "waiting"
                ? "away"
                : connection === "hidden" || connection === "connecting"
                  ? "connecting"
                  : isStale
                    ? "stale"
                    : store.held
                      ? "held"
                      : store.paused
                        ? "paused"
                        : "live";
        setText(
            this.pill,
            {
                away: "no unit",
                connecting: "connecting",
                stale: "no samples",
                held: "held",
                paused: "paused",
                live: "live",
            }[state],
        );
        setAttribute(this.pill, "class", `pill pill-${state}`);
        this.pill.title = store.connectionReason;
        this.updateRates();
    }

    updateRates() {
        const now = performance.now();
        const seconds = (now - this.before.atMs) / 1000;
        if (seconds >= 1) {
            const taken = this.store.streamed;
            const rate = Math.max(0, taken - this.before.taken) / seconds;
            setText(
                this.rates,
                `${rate.toFixed(0)} samples/s · ${((this.stream.bytes - this.before.bytes) / seconds / 1000).toFixed(0)} kB/s · draw ${this.stack.drawTime(0.5).toFixed(1)} ms`,
            );
            this.before = { atMs: now, bytes: this.stream.bytes, taken };
        }
    }
}
