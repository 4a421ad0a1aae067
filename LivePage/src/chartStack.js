import { timeMarks, TIME_OF_DAY_FROM_US } from "./clock.js";
import { Decimator, emptyPicture } from "./decimate.js";
import { Overlay } from "./overlay.js";
import { Plot } from "./plot.js";
import { PLOT_SPECS } from "./plotSpecs.js";
import { StateStrip } from "./stateStrip.js";

/** @typedef {import("./store.js").Store} Store */

const WIDE = { left: 52, right: 50 };
const NARROW = { left: 40, right: 48 };

/** All charts on one time axis. Draws when pixels would move, at most once a frame. */
export class ChartStack {
    /** @param {Store} store @param {HTMLElement} host @param {import("./historySource.js").HistorySource} history */
    constructor(store, host, history) {
        this.store = store;
        this.host = host;
        this.history = history;
        this.margins = { ...WIDE };
        this.plots = PLOT_SPECS.map((spec) => new Plot(spec, store, this.margins));
        this.strip = new StateStrip(store, this.margins);
        this.overlay = new Overlay(store, this.margins, host);
        host.append(...this.plots.map((plot) => plot.element), this.strip.element, this.overlay.element);
        this.decimator = new Decimator();
        this.picture = emptyPicture();
        /** CSS pixels of the plotting area; asking the page for it each frame would lay it out anew. */
        this.pixels = 1000;
        this.drawn = "";
        this.isDirty = true;
        /** Milliseconds of the latest draws. */
        this.drawTimes = new Float64Array(240);
        this.draws = 0;
        // A head that wraps into another line takes it from the chart below.
        const resizing = new ResizeObserver(() => this.layOut());
        [host, ...this.plots.map((plot) => plot.body)].forEach((element) => resizing.observe(element));
        store.on("view", () => {
            this.isDirty = true;
        });
        history.onAnswer = () => {
            this.isDirty = true;
        };
    }

    layOut() {
        const isNarrow = this.host.clientWidth < 560;
        Object.assign(this.margins, isNarrow ? NARROW : WIDE);
        this.pixels = Math.max(50, this.host.clientWidth - this.margins.left - this.margins.right);
        this.plots.forEach((plot) => {
            plot.build();
            plot.resize();
        });
        this.strip.resize();
        this.overlay.layOut();
        this.isDirty = true;
    }

    /** After a change of theme, unit or hidden signals. */
    rebuild() {
        this.strip.forgetPatterns();
        this.plots.forEach((plot) => {
            plot.refit();
            plot.build();
        });
        this.isDirty = true;
    }

    /** The axes fit at once, as after a change of channel. */
    refit() {
        this.plots.forEach((plot) => plot.refit());
        this.isDirty = true;
    }

    /** Called each frame. @returns {boolean} whether it drew */
    frame() {
        const { store } = this;
        const range = store.range;
        const pixelUs = (range.toUs - range.fromUs) / this.pixels;
        const ring = store.ring;
        const fills = store.held && ring !== null && range.toUs > ring.newestUs;
        const key = `${Math.floor(range.fromUs / pixelUs)} ${Math.round(range.toUs - range.fromUs)} ${store.held && !fills ? 0 : Math.floor((ring?.newestUs ?? 0) / pixelUs)}`;
        if (!this.isDirty && key === this.drawn) {
            this.overlay.place();
            return false;
        }
        const begin = performance.now();
        this.drawn = key;
        this.isDirty = false;
        store.shown = range;
        store.picture = this.pictureOf(range);
        const origin =
            range.toUs - range.fromUs >= TIME_OF_DAY_FROM_US
                ? -store.startedMs * 1000 - new Date().getTimezoneOffset() * -60e6
                : 0;
        const times = timeMarks(range.fromUs, range.toUs, this.pixels / 84, origin);
        const seconds = times.marksUs.map((us) => us / 1e6);
        for (const plot of this.plots) {
            plot.draw(store.picture, range, seconds);
        }
        this.strip.draw(store.picture, range, times);
        this.overlay.place();
        this.drawTimes[this.draws++ % this.drawTimes.length] = performance.now() - begin;
        store.tell("picture");
        return true;
    }

    /** @param {import("./store.js").Range} range @returns {import("./decimate.js").Picture} */
    pictureOf(range) {
        const { store } = this;
        const ring = store.ring;
        if (ring === null) {
            return this.picture;
        }
        const fromHistory = store.held ? this.history.pictureFor(range, this.pixels, ring) : null;
        if (fromHistory !== null) {
            return fromHistory;
        }
        this.decimator.fill(ring, range.fromUs, range.toUs, this.pixels, store.holeUs, this.picture);
        return this.picture;
    }

    /** @param {number} share 0.5 is the median @returns {number} milliseconds of a draw */
    drawTime(share) {
        const known = [...this.drawTimes.slice(0, Math.min(this.draws, this.drawTimes.length))].sort((a, b) => a - b);
        return known[Math.min(known.length - 1, Math.floor(share * known.length))] ?? 0;
    }
}
