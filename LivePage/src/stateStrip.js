import { colour, h } from "./dom.js";
import { stateLook } from "./states.js";
import { digitsFor, runClock, timeOfDay, TIME_OF_DAY_FROM_US } from "./clock.js";

/** @typedef {import("./store.js").Range} Range @typedef {import("./states.js").Hatch} Hatch */

const STRIP_HEIGHT = 24;
const FONT = "system-ui, sans-serif";

/** The states over time with their names, and the time axis of all charts below. */
export class StateStrip {
    /** @param {import("./store.js").Store} store @param {import("./plot.js").Margins} margins */
    constructor(store, margins) {
        this.store = store;
        this.margins = margins;
        this.canvas = h("canvas", { class: "strip-canvas", role: "img", "aria-label": "States over time" });
        this.note = h("span", { class: "plot-unit" });
        this.element = h(
            "figure",
            { class: "plot plot-strip", "aria-label": "State" },
            h("div", { class: "plot-head" }, h("h2", {}, "State"), this.note),
            this.canvas,
        );
        /** @type {Map<string, CanvasPattern|null>} */
        this.patterns = new Map();
    }

    resize() {
        const ratio = devicePixelRatio;
        this.canvas.width = Math.max(1, Math.round(this.canvas.clientWidth * ratio));
        this.canvas.height = Math.max(1, Math.round(this.canvas.clientHeight * ratio));
        this.patterns.clear();
    }

    forgetPatterns() {
        this.patterns.clear();
    }

    /** @param {import("./decimate.js").Picture} picture @param {Range} range @param {{stepUs: number, marksUs: number[]}} times */
    draw(picture, range, times) {
        const context = /** @type {CanvasRenderingContext2D} */ (this.canvas.getContext("2d"));
        const ratio = devicePixelRatio;
        const width = this.canvas.width / ratio;
        const { left, right } = this.margins;
        const plotWidth = width - left - right;
        const place = (/** @type {number} */ us) =>
            left + ((us - range.fromUs) / (range.toUs - range.fromUs)) * plotWidth;
        context.setTransform(ratio, 0, 0, ratio, 0, 0);
        context.clearRect(0, 0, width, this.canvas.height / ratio);
        context.textBaseline = "middle";
        picture.states.forEach((run, i) => {
            const next = picture.states[i + 1];
            const toUs = next !== undefined && next.fromUs - run.toUs < this.store.holeUs ? next.fromUs : run.toUs;
            const from = Math.max(left, place(run.fromUs));
            const to = Math.min(left + plotWidth, place(toUs));
            if (to > from) {
                this.paintRun(context, run.state, from, to);
            }
        });
        this.paintFailures(
            context,
            picture.failedUs.map(place).filter((x) => x >= left && x <= left + plotWidth),
        );
        context.font = `11px ${FONT}`;
        context.fillStyle = colour("--quiet");
        context.textAlign = "center";
        const asTimeOfDay = range.toUs - range.fromUs >= TIME_OF_DAY_FROM_US;
        for (const us of times.marksUs) {
            const digits = digitsFor(times.stepUs);
            const text = asTimeOfDay ? timeOfDay(new Date(this.store.startedMs + us / 1000), 0) : runClock(us, digits);
            const x = place(us);
            context.fillRect(x, STRIP_HEIGHT, 1, 4);
            const half = context.measureText(text).width / 2;
            if (x - half > 2 && x + half < width - 2) {
                context.fillText(text, x, STRIP_HEIGHT + 12);
            }
        }
        const failed = picture.failedUs.length > 0 ? " · ▼ failed steps" : "";
        this.note.textContent = (asTimeOfDay ? "time of day" : "time since the unit began") + failed;
    }

    /** Failed steps, as teeth at the upper edge. @param {CanvasRenderingContext2D} context @param {number[]} xs */
    paintFailures(context, xs) {
        context.fillStyle = colour("--failed");
        context.strokeStyle = colour("--state-text");
        context.lineWidth = 0.75;
        for (const x of xs) {
            context.beginPath();
            context.moveTo(x - 3.5, 0);
            context.lineTo(x + 3.5, 0);
            context.lineTo(x, 8);
            context.closePath();
            context.fill();
            context.stroke();
        }
    }

    /** @param {CanvasRenderingContext2D} context @param {number} state @param {number} from @param {number} to */
    paintRun(context, state, from, to) {
        const look = stateLook(state);
        const width = Math.max(1, to - from);
        context.fillStyle = colour(look.colour);
        context.fillRect(from, 0, width, STRIP_HEIGHT);
        const pattern = this.pattern(context, look.hatch);
        if (pattern !== null) {
            context.fillStyle = pattern;
            context.fillRect(from, 0, width, STRIP_HEIGHT);
        }
        context.fillStyle = colour("--background");
        context.fillRect(from, 0, Math.min(1, width / 2), STRIP_HEIGHT);
        context.font = `600 11px ${FONT}`;
        context.textAlign = "left";
        const text = [look.name, look.short].find((entry) => context.measureText(entry).width + 14 <= width);
        if (text !== undefined) {
            const textWidth = context.measureText(text).width;
            if (pattern !== null) {
                context.fillStyle = colour(look.colour);
                context.fillRect(from + 4, 4, textWidth + 6, STRIP_HEIGHT - 8);
            }
            context.fillStyle = colour("--state-text");
            context.fillText(text, from + 7, STRIP_HEIGHT / 2 + 0.5);
        }
    }

    /** @param {CanvasRenderingContext2D} context @param {Hatch} hatch @returns {CanvasPattern|null} */
    pattern(context, hatch) {
        if (hatch === "none") {
            return null;
        }
        let pattern = this.patterns.get(hatch);
        if (pattern === undefined) {
            pattern = context.createPattern(hatchTile(hatch), "repeat");
            pattern?.setTransform(new DOMMatrix().scale(1 / devicePixelRatio));
            this.patterns.set(hatch, pattern);
        }
        return pattern;
    }
}

/** @param {Hatch} hatch @returns {HTMLCanvasElement} in device pixels */
export function hatchTile(hatch) {
    const size = Math.round(8 * devicePixelRatio);
    const tile = h("canvas", { width: size, height: size });
    const context = /** @type {CanvasRenderingContext2D} */ (tile.getContext("2d"));
    context.strokeStyle = context.fillStyle = "rgba(255, 255, 255, 0.38)";
    context.lineWidth = size / 6;
    const line = (/** @type {number[]} */ ...points) => {
        context.beginPath();
        context.moveTo(points[0] * size, points[1] * size);
        context.lineTo(points[2] * size, points[3] * size);
        context.stroke();
    };
    const rising = () =>
        [
            [-0.5, 0.5, 0.5, -0.5],
            [-0.25, 1.25, 1.25, -0.25],
            [0.5, 1.5, 1.5, 0.5],
        ].forEach((points) => line(...points));
    const falling = () =>
        [
            [-0.5, 0.5, 0.5, 1.5],
            [-0.25, -0.25, 1.25, 1.25],
            [0.5, -0.5, 1.5, 0.5],
        ].forEach((points) => line(...points));
    if (hatch === "rising") {
        rising();
    } else if (hatch === "falling") {
        falling();
    } else if (hatch === "cross") {
        rising();
        falling();
    } else {
        context.beginPath();
        context.arc(size / 2, size / 2, size / 5, 0, 2 * Math.PI);
        context.fill();
    }
    return tile;
}
