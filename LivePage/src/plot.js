import { AxisRange, errorHalfRange, marks, niceStep } from "./axisRange.js";
import { colour, h, setAttribute, setText } from "./dom.js";
import { paintHoles, paintTags } from "./plotDecor.js";
import { SIGNALS } from "./signals.js";
import { swatch } from "./swatch.js";
import { thin } from "./thin.js";
import { fixed, format, prefixFor, wattsOf } from "./units.js";

/** @typedef {import("./signals.js").Signal} Signal @typedef {import("./decimate.js").Picture} Picture */
/** @typedef {{left: number, right: number}} Margins CSS pixels beside the plotting area */
/** @typedef {"left"|"right"} Side @typedef {(plot: Plot, u: uPlot) => void} Paint */

/**
 * @typedef {{name: import("./signals.js").ChartName, title: string, units: Record<Side, string>, leastSpan: Record<Side, number>,
 *            tags?: readonly string[], halves?: boolean, paintBelow?: Paint, paintOnGrid?: Paint}} PlotSpec tags: signals whose
 *     latest value stands at the right edge; halves: what belongs to the left axis is drawn above what belongs to the right one
 */

const FONT = "11px system-ui, sans-serif";

/** CSS pixels that a line may be off for being drawn with fewer points. */
const THIN_PX = 0.25;

/** One chart: its heading with the legend, and uPlot on the common time axis. */
export class Plot {
    /**
     * @param {PlotSpec} spec @param {import("./store.js").Store} store @param {Margins} margins
     */
    constructor(spec, store, margins) {
        this.spec = spec;
        this.store = store;
        this.margins = margins;
        this.signals = SIGNALS.filter((entry) => entry.chart === spec.name).reverse();
        this.ranges = { left: new AxisRange(spec.leastSpan.left), right: new AxisRange(spec.leastSpan.right) };
        /** @type {Record<Side, [number, number]>} */
        this.limits = { left: [0, 1], right: [0, 1] };
        this.watts = { factor: 1, prefix: "" };
        this.note = "";
        this.height = 100;
        /** @type {(number|null|undefined)[][]} */
        this.data = [[], ...this.signals.map(() => [])];
        /** @type {number[]} */
        this.timeMarks = [];
        this.title = h("h2", {}, spec.title);
        this.unitText = h("span", { class: "plot-unit", title: "Units of the left and the right axis" });
        this.entries = [...this.signals].reverse().map((entry) => this.legendEntry(entry));
        this.head = h(
            "div",
            { class: "plot-head" },
            this.title,
            this.unitText,
            h("div", { class: "legend" }, ...this.entries.map((entry) => entry.button)),
        );
        this.body = h("div", { class: "plot-body" });
        this.element = h("figure", { class: `plot plot-${spec.name}`, "aria-label": spec.title }, this.head, this.body);
        /** @type {uPlot|null} */
        this.u = null;
        this.refit();
    }

    /** @param {Signal} entry */
    legendEntry(entry) {
        const value = h("span", { class: "legend-value figures" });
        const button = h(
            "button",
            {
                class: "legend-entry",
                type: "button",
                "aria-pressed": "true",
                title: `Show or hide ${entry.label}`,
                onclick: () => this.toggle(entry),
            },
            swatch(entry),
            h("span", {}, entry.label),
            value,
        );
        return { entry, button, value };
    }

    /** @param {Signal} entry */
    toggle(entry) {
        const { hidden } = this.store.view;
        this.store.change({
            hidden: hidden.includes(entry.key) ? hidden.filter((key) => key !== entry.key) : [...hidden, entry.key],
        });
    }

    /** Makes the chart anew: after a change of theme, size of margins or what is shown. */
    build() {
        this.u?.destroy();
        const { hidden } = this.store.view;
        for (const { entry, button } of this.entries) {
            setAttribute(button, "aria-pressed", String(!hidden.includes(entry.key)));
        }
        const axis = (/** @type {Side} */ side, /** @type {number} */ size) =>
            /** @type {uPlot.Axis} */ ({
                scale: side,
                side: side === "left" ? 3 : 1,
                size,
                font: FONT,
                gap: 6,
                stroke: colour("--quiet"),
                grid: { show: side === "left", stroke: colour("--grid"), width: 1 },
                ticks: { show: false },
                splits: (u) => this.splits(u, side),
                values: (_u, splits) => this.labels(splits, side),
            });
        const hasRight = this.signals.some((entry) => entry.axis === "right" && !hidden.includes(entry.key));
        this.u = new uPlot(
            {
                width: Math.max(120, this.body.clientWidth),
                height: Math.max(50, this.body.clientHeight),
                padding: [6, hasRight ? 0 : this.margins.right, 4, 0],
                legend: { show: false },
                cursor: { show: false },
                select: { show: false, left: 0, top: 0, width: 0, height: 0 },
                scales: { x: { time: false, auto: false }, left: { auto: false }, right: { auto: false } },
                axes: [
                    {
                        scale: "x",
                        side: 2,
                        size: 0,
                        font: FONT,
                        values: () => [],
                        ticks: { show: false },
                        splits: () => this.timeMarks,
                        grid: { stroke: colour("--grid"), width: 1 },
                    },
                    axis("left", this.margins.left),
                    { ...axis("right", this.margins.right), show: hasRight },
                ],
                series: [
                    {},
                    ...this.signals.map(
                        (entry) =>
                            /** @type {uPlot.Series} */ ({
                                scale: entry.axis,
                                show: !hidden.includes(entry.key),
                                stroke: colour(entry.colour),
                                width: entry.width,
                                dash: entry.dash,
                                points: { show: false },
                                spanGaps: false,
                            }),
                    ),
                ],
                hooks: {
                    drawClear: [
                        (u) => {
                            paintHoles(u, this.store.picture);
                            this.spec.paintBelow?.(this, u);
                        },
                    ],
                    drawAxes: [(u) => this.spec.paintOnGrid?.(this, u)],
                    draw: [(u) => paintTags(this, u)],
                },
            },
            /** @type {uPlot.AlignedData} */ (this.data),
            this.body,
        );
    }

    /** @param {uPlot} u @param {Side} side */
    splits(u, side) {
        let [low, high] = this.limits[side];
        const part = this.spec.halves ? 0.5 : 1;
        const step = niceStep(
            (high - low) * part,
            Math.max(2, (u.bbox.height * part) / devicePixelRatio / (this.spec.halves ? 14 : 20)),
        );
        if (this.spec.halves) {
            const middle = (low + high) / 2;
            [low, high] = side === "left" ? [middle, high] : [low, middle];
        }
        return marks(low, high, step);
    }

    /** @param {number[]} splits @param {Side} side */
    labels(splits, side) {
        const factor = side === "left" && this.isWatts ? this.watts.factor : 1;
        const step = splits.length > 1 ? (splits[1] - splits[0]) / factor : 1;
        const digits = Math.min(4, Math.max(0, Math.ceil(-Math.log10(step) - 1e-6)));
        return splits.map((value) => fixed(value / factor, digits));
    }

    get isWatts() {
        return this.spec.name === "power" && this.store.view.unit === "W";
    }

    resize() {
        if (this.u === null) {
            this.build();
        }
        this.height = Math.max(50, this.body.clientHeight);
        this.u?.setSize({ width: Math.max(120, this.body.clientWidth), height: this.height });
    }

    /** @param {Picture} picture @param {import("./store.js").Range} range @param {number[]} timeMarks seconds */
    draw(picture, range, timeMarks) {
        const { u } = this;
        if (u === null) {
            return;
        }
        this.timeMarks = timeMarks;
        this.data[0] = picture.xs;
        for (const { entry, button } of this.entries) {
            const absent = isAbsent(entry, picture.extents[entry.key]);
            if (button.hidden !== absent) {
                button.hidden = absent;
            }
        }
        this.limits.left = this.findLimits("left", picture);
        this.limits.right = this.findLimits("right", picture);
        this.signals.forEach((entry, i) => this.fill(entry, picture, this.data[i + 1]));
        setText(
            this.unitText,
            [this.unitOf("left"), this.spec.units.right].filter((text) => text !== "").join(" / ") +
                (this.note === "" ? "" : ` · ${this.note}`),
        );
        u.batch(() => {
            u.setData(/** @type {uPlot.AlignedData} */ (this.data), false);
            u.setScale("x", { min: range.fromUs / 1e6, max: range.toUs / 1e6 });
            u.setScale("left", { min: this.limits.left[0], max: this.limits.left[1] });
            u.setScale("right", { min: this.limits.right[0], max: this.limits.right[1] });
        });
    }

    /** @param {Side} side */
    unitOf(side) {
        return side === "left" && this.isWatts ? `${this.watts.prefix}W` : this.spec.units[side];
    }

    /** @param {Signal} entry @param {Picture} picture @param {(number|null|undefined)[]} to */
    fill(entry, picture, to) {
        const from = picture.columns[entry.key];
        const { scale } = entry;
        const isWatts = this.isWatts;
        to.length = from.length;
        if (isAbsent(entry, picture.extents[entry.key])) {
            to.fill(null);
            return;
        }
        for (let i = 0; i < from.length; ++i) {
            const value = from[i];
            to[i] = value === null ? null : isWatts ? wattsOf(value * scale) : value * scale;
        }
        const [low, high] = this.limits[entry.axis];
        thin(picture.xs, to, ((high - low) / Math.max(50, this.height)) * THIN_PX);
    }

    /** @param {Side} side @param {Picture} picture @returns {[number, number]} */
    findLimits(side, picture) {
        let low = Infinity;
        let high = -Infinity;
        for (const entry of this.signals) {
            const extent = picture.extents[entry.key];
            if (
                entry.axis === side &&
                extent !== null &&
                !this.store.view.hidden.includes(entry.key) &&
                !isAbsent(entry, extent)
            ) {
                low = Math.min(low, extent.low * entry.scale);
                high = Math.max(high, extent.high * entry.scale);
            }
        }
        const none = low > high;
        if (this.spec.name === "error") {
            const half = this.store.view.errorRange || errorHalfRange(picture.columns["error_cdb"], 0.01);
            const most = none || side === "right" ? 0 : Math.max(-low, high);
            this.note =
                side === "right" ? this.note : most > half ? `peaks to ${fixed(most, 1)} dB lie beyond the axis` : "";
            return [-half, half];
        }
        if (this.isWatts) {
            const [, top] = none ? this.ranges.left.fit(null, null) : this.ranges.left.fit(0, wattsOf(high));
            this.watts = prefixFor(top);
            return [0, top];
        }
        const limits = none ? this.ranges[side].fit(null, null) : this.ranges[side].fit(low, high);
        if (this.spec.halves) {
            const span = limits[1] - limits[0];
            return side === "left" ? [limits[0] - span, limits[1]] : [limits[0], limits[1] + span];
        }
        return limits;
    }

    /** After a change of what is looked at the axes fit at once. */
    refit() {
        this.ranges.left = new AxisRange(this.isWatts ? 1e-12 : this.spec.leastSpan.left);
        this.ranges.right.reset();
    }

    /** @param {(key: string) => number|null} valueOf the unit's integer */
    showValues(valueOf) {
        for (const { entry, value } of this.entries) {
            const integer = valueOf(entry.key);
            const shown = format(
                integer === null ? null : integer * entry.scale,
                entry.kind,
                entry.digits === 3 && entry.scale === 0.01 ? 2 : entry.digits,
                this.store.view.unit,
            );
            setText(
                value,
                entry.kind === "power" && this.store.view.unit === "W" ? `${shown.text} ${shown.unit}` : shown.text,
            );
        }
    }
}

/** A channel has fewer amplifiers than it could: the others reduce nothing, ever.
 * @param {Signal} entry @param {import("./decimate.js").Extent|null} extent @returns {boolean} */
export function isAbsent(entry, extent) {
    return entry.amplifier !== undefined && extent !== null && extent.low === 0 && extent.high === 0;
}
