import { h, setText } from "./dom.js";
import { format } from "./units.js";

/** @typedef {import("./signals.js").Kind} Kind */

/** The objects of the statistics log: what the page calls them, and what they are. */
const OBJECTS = /** @type {readonly [string, string, Kind][]} */ ([
    ["TxRfPowerSet", "Target", "power"],
    ["TxRfPowerTarget", "Control", "power"],
    ["TxRfDetectedPower", "Measured", "power"],
    ["TxIfPower", "IF power", "power"],
    ["TxRfGain", "RF gain", "db"],
    ["TxRfGainInitial", "Initial gain", "db"],
    ...[1, 2, 3, 4, 5, 6].map(
        (n) => /** @type {[string, string, Kind]} */ ([`GainReductionAmplifier${n}`, `Amp ${n}`, "db"]),
    ),
]);

const READ_EACH_MS = 1000;

/** The statistics log of the chosen channel, read again while it can be seen. */
export class Statistics {
    /** @param {import("./store.js").Store} store @param {import("./actions.js").UnitActions} actions */
    constructor(store, actions) {
        this.store = store;
        this.actions = actions;
        this.note = h("span", { class: "quiet" });
        const button = (/** @type {string} */ text, /** @type {string} */ option, /** @type {string} */ title) =>
            h("button", { type: "button", title, onclick: () => void this.command(option) }, text);
        this.rows = OBJECTS.map(([name, label, kind]) => {
            const cells = [0, 1, 2].map((i) => h("td", { class: i === 1 ? "figures actual" : "figures" }));
            const mark = h("span", { class: "range-mark" });
            const unit = h("span", { class: "cell-unit" });
            const row = h(
                "tr",
                { title: name },
                h("th", { scope: "row" }, label, " ", unit),
                ...cells,
                h("td", { class: "range-cell" }, h("span", { class: "range-bar", "aria-hidden": "true" }, mark)),
            );
            return { name, kind, cells, mark, unit, row };
        });
        this.element = h(
            "section",
            { class: "card", "aria-label": "Statistics" },
            h("div", { class: "card-head" }, h("h2", {}, "Statistics"), this.note),
            h(
                "table",
                { class: "grid-table" },
                h(
                    "thead",
                    {},
                    h(
                        "tr",
                        {},
                        ...["Quantity", "Min", "Actual", "Max", "Range"].map((text) => h("th", { scope: "col" }, text)),
                    ),
                ),
                h("tbody", {}, ...this.rows.map((entry) => entry.row)),
            ),
            h(
                "div",
                { class: "button-row" },
                button("Start", "Start", "Empty the log and let it record"),
                button("Stop", "Stop", "Stop it; its values stay"),
                button("Read and reset", "ReadAndReset", "Read it once more, then empty it"),
                button("Save", "SaveToSysLog", "Write it to the system log"),
            ),
        );
        this.isReading = false;
        setInterval(() => void this.read(), READ_EACH_MS);
        store.on("view", () => {
            if (this.channel !== store.view.channel) {
                void this.read();
            }
        });
        this.channel = NaN;
    }

    /** @param {string} option */
    async command(option) {
        const answer = await this.actions.send(
            "TI.ManageLogs",
            { RequestOption: option, RadioChannelID: this.store.view.channel },
            `Statistics of channel ${this.store.view.channel}: ${option}`,
        );
        if (answer !== null && option === "ReadAndReset") {
            this.show(answer, "before the reset");
        }
    }

    async read() {
        if (
            this.isReading ||
            this.element.offsetParent === null ||
            document.hidden ||
            this.store.unit === null ||
            this.store.connection !== "live"
        ) {
            return;
        }
        this.isReading = true;
        this.channel = this.store.view.channel;
        try {
            this.show(
                await this.actions.api.call("TI.ManageLogs", { RequestOption: "Read", RadioChannelID: this.channel }),
                "",
            );
        } catch (error) {
            setText(this.note, error instanceof Error ? error.message : String(error));
        }
        this.isReading = false;
    }

    /** @param {any} answer @param {string} note */
    show(answer, note) {
        const objects = /** @type {any[]} */ (Object.values(answer)[0]);
        const isEmpty = objects.every(
            (entry) => entry.ActualValue === 0 && entry.MinValue === 0 && entry.MaxValue === 0,
        );
        setText(this.note, isEmpty ? "empty: start the log" : note || "as the unit's log holds them");
        for (const { name, kind, cells, mark, unit } of this.rows) {
            const found = objects.find((entry) => entry.ObjectName === name);
            const values = [found?.MinValue, found?.ActualValue, found?.MaxValue].map((value) =>
                value === undefined || isEmpty ? null : value / 100,
            );
            const shown = values.map((value) => format(value, kind, 2, this.store.view.unit));
            const isWatts = kind === "power" && this.store.view.unit === "W";
            setText(unit, isWatts ? "" : shown[1].unit);
            shown.forEach((part, i) =>
                setText(cells[i], isWatts && part.text !== "–" ? `${part.text} ${part.unit}` : part.text),
            );
            const [low, actual, high] = values;
            const part =
                low === null || actual === null || high === null || high <= low ? 0.5 : (actual - low) / (high - low);
            mark.style.left = `${(part * 100).toFixed(1)}%`;
            mark.hidden = low === null || high === null || high <= low;
        }
    }
}
