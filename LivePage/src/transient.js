import { AxisRange, marks, niceStep } from "./axisRange.js";
import { colour, download, h, setText } from "./dom.js";
import { csvText } from "./exportCsv.js";
import { duration } from "./clock.js";
import { swatch } from "./swatch.js";
import { signalOf } from "./signals.js";
import { SETTLED_DB, transientFigures } from "./transientFigures.js";
import { fixed, wattsOf } from "./units.js";

/** @typedef {import("./signals.js").Signal} Signal */

/** The members of a sample and the signals whose looks they share. */
const MEMBERS = /** @type {readonly [string, Signal][]} */ ([
    ["TxRfPowerSet", signalOf("ptarget_cdb")],
    ["TxRfDetectedPower", signalOf("pmeasured_cdb")],
    ["TxRfPowerTarget", signalOf("pctrl_cdb")],
    ["TxRfGain", { ...signalOf("rf_gain_cdb"), colour: "--amplifier-4", dash: [2, 4], axis: "right" }],
    ["TxIfPower", { ...signalOf("if_power_cdb"), axis: "right", colour: "--amplifier-5" }],
]);
const HEIGHT = 170;

/** The transient log's samples as a chart of their own. */
export class TransientPanel {
    /** @param {import("./store.js").Store} store @param {import("./actions.js").UnitActions} actions */
    constructor(store, actions) {
        this.store = store;
        this.actions = actions;
        /** @type {any[]} */
        this.samples = [];
        this.channel = NaN;
        this.note = h("span", { class: "quiet" }, "not read yet");
        this.body = h("div", { class: "transient-body" });
        this.figures = ["Rise 10–90 %", `Settled ±${SETTLED_DB} dB`, "Overshoot", "Steady error"].map((label) => ({
            label,
            value: h("dd", { class: "figures" }, "–"),
        }));
        const button = (/** @type {string} */ text, /** @type {string} */ title, /** @type {() => void} */ onclick) =>
            h("button", { type: "button", title, onclick }, text);
        this.csv = button("CSV", "Export the samples", () => this.exportCsv());
        this.element = h(
            "section",
            { class: "card", "aria-label": "Transient log" },
            h("div", { class: "card-head" }, h("h2", {}, "Transient log"), this.note),
            h(
                "div",
                { class: "legend" },
                ...MEMBERS.map(([name, entry]) =>
                    h("span", { class: "legend-entry", title: name }, swatch(entry), entry.label),
                ),
            ),
            this.body,
            h(
                "dl",
                { class: "figures-row" },
                ...this.figures.map(({ label, value }) => h("div", {}, h("dt", {}, label), value)),
            ),
            h(
                "div",
                { class: "button-row" },
                button("Enable", "Empty the log and let it record the next 200 steps", () => void this.enable()),
                button("Disable", "Stop it; its samples stay", () => void this.command("Disable")),
                button("Read", "Draw what it holds", () => void this.read(false)),
                button("Save", "Write it to the system log", () => void this.command("SaveToSysLog")),
                this.csv,
            ),
        );
        /** @type {uPlot|null} */
        this.u = null;
        this.csv.disabled = true;
        this.intervalUs = 6000;
        this.timer = 0;
        new ResizeObserver(() => this.draw()).observe(this.body);
        store.on("view", () => {
            if (
                this.samples.length > 0 &&
                (this.channel !== store.view.channel || this.drawnUnit !== store.view.unit)
            ) {
                if (this.channel !== store.view.channel) {
                    this.samples = [];
                    setText(this.note, "not read yet");
                }
                this.draw();
            }
        });
        store.on("theme", () => this.draw());
        /** @type {string} */
        this.drawnUnit = "";
    }

    /** @param {string} option */
    command(option) {
        return this.actions.send(
            "TI.ManageOPCTransientLog",
            { RequestOption: option, RadioChannelID: this.store.view.channel },
            `Transient log of channel ${this.store.view.channel}: ${option}`,
        );
    }

    async enable() {
        if ((await this.command("Enable")) !== null) {
            clearInterval(this.timer);
            this.timer = window.setInterval(() => void this.read(true), 1500);
            setText(this.note, "records…");
        }
    }

    /** @param {boolean} isQuiet while it fills */
    async read(isQuiet) {
        const channel = this.store.view.channel;
        try {
            const answer = await this.actions.api.call("TI.ManageOPCTransientLog", {
                RequestOption: "Read",
                RadioChannelID: channel,
            });
            this.samples = answer.OPCLog;
            this.channel = channel;
            this.intervalUs = (this.store.unit?.interval_ms ?? 6) * 1000;
            if (this.samples.length >= 200) {
                clearInterval(this.timer);
            }
            setText(this.note, `${this.samples.length} of 200 steps`);
            this.draw();
        } catch (error) {
            if (!isQuiet) {
                clearInterval(this.timer);
                setText(
                    this.note,
                    error instanceof Error && /empty/.test(error.message)
                        ? "the log is empty"
                        : error instanceof Error
                          ? error.message
                          : String(error),
                );
            }
        }
    }

    draw() {
        this.u?.destroy();
        this.u = null;
        const { samples, intervalUs } = this;
        this.csv.disabled = samples.length === 0;
        this.drawnUnit = this.store.view.unit;
        const column = (/** @type {string} */ name) => samples.map((sample) => sample[name] / 100);
        const found = transientFigures(column("TxRfPowerSet"), column("TxRfDetectedPower"), intervalUs);
        const texts = [found?.riseUs, found?.settleUs].map((us) =>
            us === null || us === undefined ? "–" : duration(us),
        );
        texts.push(
            ...[found?.overshootDb, found?.steadyErrorDb].map((db) =>
                db === null || db === undefined ? "–" : `${fixed(db, 2)} dB`,
            ),
        );
        this.figures.forEach(({ value }, i) => setText(value, texts[i]));
        this.body.classList.toggle("empty", samples.length === 0);
        if (samples.length === 0 || this.body.clientWidth === 0) {
            return;
        }
        const isWatts = this.store.view.unit === "W";
        const data = [
            samples.map((_sample, i) => (i * intervalUs) / 1000),
            ...MEMBERS.map(([name, entry]) =>
                column(name).map((value) => (isWatts && entry.axis === "left" ? wattsOf(value) : value)),
            ),
        ];
        const limits = (/** @type {"left"|"right"} */ side) => {
            const values = data
                .slice(1)
                .filter((_values, i) => MEMBERS[i][1].axis === side)
                .flat();
            return new AxisRange(isWatts && side === "left" ? 1e-9 : 2).fit(
                isWatts && side === "left" ? 0 : Math.min(...values),
                Math.max(...values),
            );
        };
        const ranges = { left: limits("left"), right: limits("right") };
        const axis = (/** @type {"left"|"right"} */ side) =>
            /** @type {uPlot.Axis} */ ({
                scale: side,
                side: side === "left" ? 3 : 1,
                size: 40,
                gap: 4,
                font: "11px system-ui, sans-serif",
                stroke: colour("--quiet"),
                grid: { show: side === "left", stroke: colour("--grid"), width: 1 },
                ticks: { show: false },
                splits: () => marks(ranges[side][0], ranges[side][1], niceStep(ranges[side][1] - ranges[side][0], 5)),
                values: (_u, splits) =>
                    splits.map((value) =>
                        isWatts && side === "left" ? value.toPrecision(2) : fixed(value, 1).replace(/\.0$/, ""),
                    ),
            });
        this.u = new uPlot(
            {
                width: this.body.clientWidth,
                height: HEIGHT,
                legend: { show: false },
                cursor: { show: false },
                padding: [6, 0, 0, 0],
                scales: {
                    x: { time: false },
                    left: { range: () => ranges.left },
                    right: { range: () => ranges.right },
                },
                axes: [
                    {
                        size: 22,
                        gap: 4,
                        font: "11px system-ui, sans-serif",
                        stroke: colour("--quiet"),
                        grid: { stroke: colour("--grid"), width: 1 },
                        ticks: { show: false },
                        incrs: [1, 2, 5, 10, 20, 50, 100, 200, 500, 1000, 2000],
                        space: 60,
                        values: (_u, splits) =>
                            splits.map((value, i) => (i === splits.length - 1 ? `${value} ms` : String(value))),
                    },
                    axis("left"),
                    axis("right"),
                ],
                series: [
                    {},
                    ...MEMBERS.map(
                        ([, entry]) =>
                            /** @type {uPlot.Series} */ ({
                                scale: entry.axis,
                                stroke: colour(entry.colour),
                                width: entry.width,
                                dash: entry.dash,
                                points: { show: false },
                            }),
                    ),
                ],
            },
            /** @type {uPlot.AlignedData} */ (data),
            this.body,
        );
    }

    exportCsv() {
        const head = ["sample", "time_ms", "target_dBm", "control_dBm", "measured_dBm", "if_power_dBm", "rf_gain_dB"];
        const names = ["TxRfPowerSet", "TxRfPowerTarget", "TxRfDetectedPower", "TxIfPower", "TxRfGain"];
        const rows = this.samples.map((sample, i) => [
            i + 1,
            (i * this.intervalUs) / 1000,
            ...names.map((name) => (sample[name] / 100).toFixed(2)),
        ]);
        download(`transient-channel-${this.channel}.csv`, new Blob([csvText([head, ...rows])], { type: "text/csv" }));
    }
}
