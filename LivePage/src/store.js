import { ChannelRing } from "./ring.js";
import { Trigger } from "./trigger.js";
import { decodeView } from "./viewLink.js";

/**
 * @typedef {import("./viewLink.js").View} View
 * @typedef {"unit"|"samples"|"view"|"theme"|"events"|"connection"|"pointer"|"picture"} Topic
 * @typedef {{fromUs: number, toUs: number}} Range
 */

/** A minute at a step a millisecond. */
const RING_CAPACITY = 60000;

/** How far back a unit holds its steps. */
const HELD_US = 60e6;

/** What the parts of the page share: the unit, its samples, and what is looked at. */
export class Store {
    constructor() {
        /** @type {View} */
        this.view = decodeView(location.hash);
        /** @type {import("./api.js").UnitInfo|null} */
        this.unit = null;
        /** @type {Map<number, ChannelRing>} */
        this.rings = new Map();
        /** @type {import("./api.js").UnitEvent[]} newest last */
        this.events = [];
        this.trigger = new Trigger(this.view.trigger, this.view.windowS * 1e6);
        this.newestUs = 0;
        this.newestAtMs = performance.now();
        this.lost = 0;
        /** Samples that came by the stream. */
        this.streamed = 0;
        this.connection = /** @type {import("./stream.js").ConnectionState} */ ("connecting");
        this.connectionReason = "";
        /** @type {number|null} where the pointer is on the time axis */
        this.pointerUs = null;
        /** @type {import("./decimate.js").Picture|null} what is drawn */
        this.picture = null;
        /** @type {Range} what is drawn */
        this.shown = { fromUs: 0, toUs: this.view.windowS * 1e6 };
        /** @type {Map<Topic, (() => void)[]>} */
        this.listeners = new Map();
    }

    /** @param {Topic} topic @param {() => void} listener */
    on(topic, listener) {
        this.listeners.set(topic, [...(this.listeners.get(topic) ?? []), listener]);
    }

    /** @param {Topic} topic */
    tell(topic) {
        for (const listener of this.listeners.get(topic) ?? []) {
            listener();
        }
    }

    /** @param {Partial<View>} change */
    change(change) {
        const before = this.view;
        this.view = { ...this.view, ...change };
        if (this.view.trigger !== before.trigger || this.view.channel !== before.channel) {
            this.trigger.configure(this.view.trigger);
        }
        this.trigger.setWindow(this.view.windowS * 1e6);
        this.tell("view");
    }

    /** @param {import("./api.js").UnitInfo} unit */
    takeUnit(unit) {
        const isOther = this.unit !== null && this.unit.run !== unit.run;
        this.unit = unit;
        if (isOther) {
            this.rings.clear();
            this.events = [];
            this.newestUs = 0;
            this.lost = 0;
            this.trigger.rearm();
        }
        for (const { number } of unit.channels) {
            if (!this.rings.has(number)) {
                this.rings.set(number, new ChannelRing(RING_CAPACITY));
            }
        }
        if (!this.rings.has(this.view.channel)) {
            this.change({ channel: unit.channels[0]?.number ?? 0 });
        }
        if (isOther && (this.view.fixed !== null || this.view.a !== null || this.view.b !== null)) {
            this.change({ fixed: null, a: null, b: null });
        }
        this.tell("unit");
    }

    /** @param {{gap?: number, dropped?: number, channels: any[]}} steps */
    takeSteps(steps) {
        this.lost += (steps.gap ?? 0) + (steps.dropped ?? 0);
        for (const batch of steps.channels) {
            const ring = this.rings.get(batch.c);
            if (ring === undefined) {
                continue;
            }
            const count = ring.append(batch);
            this.streamed += count;
            if (batch.c === this.view.channel) {
                this.feedTrigger(ring, count);
            }
            if (ring.newestUs > this.newestUs) {
                this.newestUs = ring.newestUs;
                this.newestAtMs = performance.now();
            }
        }
        this.tell("samples");
    }

    /** @param {number} channel @param {ChannelRing} ring */
    replaceRing(channel, ring) {
        this.rings.set(channel, ring);
        this.tell("view");
    }

    /** @param {ChannelRing} ring @param {number} count */
    feedTrigger(ring, count) {
        for (let i = Math.max(0, ring.length - count); i < ring.length; ++i) {
            this.trigger.feed({
                timeUs: ring.timesUs[ring.place(i)],
                target: ring.value("ptarget_cdb", i),
                error: ring.value("error_cdb", i),
                state: ring.value("state", i),
            });
        }
    }

    /** @param {import("./api.js").UnitEvent[]} events */
    takeEvents(events) {
        const known = new Set(this.events.map((event) => event.id));
        this.events.push(...events.filter((event) => !known.has(event.id)));
        this.events.sort((a, b) => a.id - b.id);
        this.events.splice(0, Math.max(0, this.events.length - 1000));
        this.tell("events");
    }

    /** @returns {ChannelRing|null} of the chosen channel */
    get ring() {
        return this.rings.get(this.view.channel) ?? null;
    }

    /** @returns {number} a longer silence between samples is a hole */
    get holeUs() {
        return Math.max(5 * (this.unit?.interval_ms ?? 6), 150) * 1000;
    }

    /** @returns {number} milliseconds since 1970 */
    get startedMs() {
        return this.unit === null ? 0 : Date.parse(this.unit.started);
    }

    /** @returns {Range} what is to be drawn now */
    get range() {
        if (this.view.fixed !== null) {
            return this.view.fixed;
        }
        const windowUs = this.view.windowS * 1e6;
        return this.trigger.stretch ?? { fromUs: this.newestUs - windowUs, toUs: this.newestUs };
    }

    /** The earliest that can be asked for: what is recorded, else what the unit or the page holds. */
    get earliestUs() {
        const { unit, ring } = this;
        const heldUs = Math.max(0, this.newestUs - HELD_US);
        const ownUs = ring === null || ring.length === 0 ? heldUs : Math.min(heldUs, ring.oldestUs);
        return unit?.replay?.history_from_us ?? unit?.recording?.from_us ?? ownUs;
    }

    /** Whether no samples are to be expected: a recording that was paused. */
    get paused() {
        return this.unit?.replay?.paused ?? false;
    }

    get held() {
        return this.view.fixed !== null;
    }

    toggleHold() {
        if (this.held) {
            this.trigger.rearm();
            this.change({ fixed: null });
        } else {
            this.change({ fixed: { ...this.range }, run: this.unit?.run ?? "" });
        }
    }

    /** @param {number} fromUs @param {number} toUs */
    show(fromUs, toUs) {
        const span = Math.max(5000, toUs - fromUs);
        this.change({
            fixed: { fromUs: Math.round(fromUs), toUs: Math.round(fromUs + span) },
            run: this.unit?.run ?? "",
        });
    }

    /** Narrows or widens the stretch around a moment. @param {number} factor below 1 narrows @param {number} [aroundUs] */
    zoom(factor, aroundUs) {
        const { fromUs, toUs } = this.range;
        const around = aroundUs ?? this.pointerUs ?? (fromUs + toUs) / 2;
        const span = Math.min(400 * 86400e6, Math.max(5000, (toUs - fromUs) * factor));
        const from = around - ((around - fromUs) / (toUs - fromUs)) * span;
        const late = toUs <= this.newestUs ? Math.max(0, from + span - this.newestUs) : 0;
        this.show(from - late, from - late + span);
    }

    /** @param {number} part of the stretch, negative: back */
    pan(part) {
        const { fromUs, toUs } = this.range;
        const by = (toUs - fromUs) * part;
        this.show(fromUs + by, toUs + by);
    }
}
