import { ChannelRing } from "./ring.js";

/** How far back a channel is filled: what the longest window shows. */
const SPAN_US = 60e6;

/**
 * Fills rings with what the stream did not bring: before the page was opened, while it was hidden, after a gap. One
 * channel at a time, the one that is looked at, since a minute of all of them is a lot at a step a millisecond.
 */
export class Filler {
    /** @param {import("./api.js").Api} api @param {import("./store.js").Store} store @param {(problem: string) => void} onProblem */
    constructor(api, store, onProblem) {
        this.api = api;
        this.store = store;
        this.onProblem = onProblem;
        /** @type {Set<number>} channels without holes */
        this.filled = new Set();
        this.isBusy = false;
        this.needsEvents = true;
    }

    /** Something is missing from here on. */
    forget() {
        this.filled.clear();
        this.needsEvents = true;
    }

    /** Called with samples at hand, so that what is asked for reaches up to them. */
    async fill() {
        const { store } = this;
        const { channel } = store.view;
        const ring = store.rings.get(channel);
        if (this.isBusy || ring === undefined || ring.length === 0 || this.filled.has(channel)) {
            return;
        }
        this.isBusy = true;
        this.filled.add(channel);
        const run = store.unit?.run;
        try {
            const toUs = ring.newestUs;
            const answer = await this.api.history(channel, Math.max(0, toUs - SPAN_US), toUs, ring.capacity);
            const columns = answer.channels.find((entry) => entry.c === channel);
            if (answer.run === run && run === store.unit?.run && columns !== undefined && columns.n === undefined) {
                store.replaceRing(channel, merged(store.rings.get(channel) ?? ring, columns));
            }
            if (this.needsEvents) {
                this.needsEvents = false;
                store.takeEvents(
                    await this.api.events(Math.max(0, toUs - 3600e6), toUs + (store.unit?.replay ? 0 : SPAN_US), 300),
                );
            }
        } catch (error) {
            this.onProblem(error instanceof Error ? error.message : String(error));
        }
        this.isBusy = false;
    }
}

/**
 * @param {ChannelRing} ring @param {import("./ring.js").Batch} columns
 * @returns {ChannelRing} what both hold, in order
 */
export function merged(ring, columns) {
    if (columns.t_us.length === 0) {
        return ring;
    }
    const fresh = new ChannelRing(ring.capacity);
    fresh.append(ring.batch(-Infinity, columns.t_us[0]));
    fresh.append(columns);
    fresh.append(ring.batch(columns.t_us[columns.t_us.length - 1] + 0.5, Infinity));
    fresh.taken = ring.taken;
    return fresh;
}
