import { duration, runClock, timeOfDay } from "./clock.js";
import { h, setText } from "./dom.js";
import { SIGNALS } from "./signals.js";
import { format, formatDifference, unitOf } from "./units.js";
import { storeValuesAt } from "./valuesAt.js";
import { swatch } from "./swatch.js";

/** @typedef {import("./store.js").Store} Store */

/** Puts a cursor where the pointer is, or into the picture. @param {Store} store @param {"a"|"b"} which */
export function placeCursor(store, which) {
    const { fromUs, toUs } = store.shown;
    const usual = fromUs + (toUs - fromUs) * (which === "a" ? 0.35 : 0.65);
    store.change({ [which]: Math.round(store.pointerUs ?? usual) });
}

/** @param {Store} store @param {"a"|"b"} which @param {number} steps of a pixel, or of a sample when zoomed in far */
export function nudgeCursor(store, which, steps) {
    const us = store.view[which];
    if (us !== null) {
        const { fromUs, toUs } = store.shown;
        const step = Math.max((toUs - fromUs) / 1000, (store.unit?.interval_ms ?? 6) * 1000);
        store.change({ [which]: Math.round(us + steps * step) });
    }
}

/** The table of both cursors, and the line below the charts. */
export class CursorPanel {
    /** @param {Store} store @param {HTMLElement} line */
    constructor(store, line) {
        this.store = store;
        this.line = line;
        this.pointerText = h("span", { class: "pointer-text" });
        this.differenceText = h("span", { class: "difference-text" });
        line.append(this.pointerText, this.differenceText);
        this.rows = SIGNALS.map((entry) => {
            const cells = [0, 1, 2].map(() => h("td", { class: "figures" }));
            const unit = h("span", { class: "cell-unit" });
            return {
                entry,
                cells,
                unit,
                row: h("tr", {}, h("th", { scope: "row" }, swatch(entry), entry.label, " ", unit), ...cells),
            };
        });
        this.times = [0, 1, 2].map(() => h("td", { class: "figures" }));
        const table = h(
            "table",
            { class: "grid-table cursor-table" },
            h(
                "thead",
                {},
                h("tr", {}, ...["Signal", "A", "B", "B − A"].map((text) => h("th", { scope: "col" }, text))),
            ),
            h(
                "tbody",
                {},
                h("tr", { class: "time-row" }, h("th", { scope: "row" }, "Time"), ...this.times),
                ...this.rows.map((entry) => entry.row),
            ),
        );
        this.element = h(
            "section",
            { class: "card", "aria-label": "Cursors", hidden: true },
            h(
                "div",
                { class: "card-head" },
                h("h2", {}, "Cursors"),
                h("button", { type: "button", onclick: () => store.change({ a: null, b: null }) }, "Clear"),
            ),
            table,
        );
    }

    update() {
        const { store } = this;
        const { view, pointerUs } = store;
        this.updatePointer(pointerUs);
        this.element.hidden = view.a === null && view.b === null;
        if (this.element.hidden) {
            setText(this.differenceText, "");
            return;
        }
        const atA = view.a === null ? () => null : storeValuesAt(store, view.a);
        const atB = view.b === null ? () => null : storeValuesAt(store, view.b);
        setText(this.times[0], view.a === null ? "–" : runClock(view.a, 3));
        setText(this.times[1], view.b === null ? "–" : runClock(view.b, 3));
        const length = view.a === null || view.b === null ? null : view.b - view.a;
        setText(this.times[2], length === null ? "–" : duration(length));
        const parts =
            length === null
                ? []
                : [`Δt ${duration(length)} (${Math.round(length / 1000 / (store.unit?.interval_ms ?? 6))} steps)`];
        for (const { entry, cells, unit, row } of this.rows) {
            const [a, b] = [atA, atB].map((at) => {
                const value = at(entry.key);
                return value === null ? null : value * entry.scale;
            });
            const digits = entry.scale === 0.001 ? 3 : 2;
            const difference = formatDifference(a, b, entry.kind, digits, view.unit);
            row.hidden = view.hidden.includes(entry.key) || (entry.amplifier !== undefined && !a && !b);
            const isWatts = entry.kind === "power" && view.unit === "W";
            setText(unit, isWatts ? "" : unitOf(entry.kind, view.unit));
            [format(a, entry.kind, digits, view.unit), format(b, entry.kind, digits, view.unit), difference].forEach(
                (shown, i) =>
                    setText(cells[i], isWatts && shown.text !== "–" ? `${shown.text} ${shown.unit}` : shown.text),
            );
            if (
                length !== null &&
                ["pmeasured_cdb", "pctrl_cdb", "error_cdb"].includes(entry.key) &&
                difference.text !== "–"
            ) {
                parts.push(`Δ${entry.label.toLowerCase()} ${difference.text} ${difference.unit}`);
            }
        }
        setText(this.differenceText, parts.join("   "));
    }

    /** @param {number|null} us */
    updatePointer(us) {
        const { store } = this;
        if (us === null) {
            const { fromUs, toUs } = store.shown;
            setText(this.pointerText, `${runClock(fromUs, 3)} … ${runClock(toUs, 3)} (${duration(toUs - fromUs)})`);
            return;
        }
        setText(this.pointerText, `${runClock(us, 3)}   ${timeOfDay(new Date(store.startedMs + us / 1000), 3)}`);
    }
}
