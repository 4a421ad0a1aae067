import { h, setAttribute, setText } from "./dom.js";
import { signalOf } from "./signals.js";
import { stateLook } from "./states.js";
import { format } from "./units.js";

const KEYS = [
    "ptarget_cdb",
    "pmeasured_cdb",
    "error_cdb",
    "pctrl_cdb",
    "rf_gain_cdb",
    "temperature_cc",
    "frequency_khz",
];

/** The chosen channel's latest values in large figures. */
export class Readouts {
    /** @param {import("./store.js").Store} store @param {HTMLElement} host */
    constructor(store, host) {
        this.store = store;
        this.boxes = KEYS.map((key) => {
            const entry = signalOf(key);
            const value = h("span", { class: "readout-value figures" });
            const unit = h("span", { class: "readout-unit" });
            const box = h(
                "div",
                { class: "readout" },
                h("span", { class: "readout-label" }, entry.label),
                h("span", { class: "readout-line" }, value, unit),
            );
            box.style.setProperty("--mark", `var(${entry.colour})`);
            return { entry, value, unit, box };
        });
        this.state = h("span", { class: "readout-value" });
        this.detector = h("span", { class: "readout-unit" });
        this.stateBox = h(
            "div",
            { class: "readout readout-state" },
            h("span", { class: "readout-label" }, "State"),
            h("span", { class: "readout-line" }, this.state, this.detector),
        );
        host.append(...this.boxes.map((entry) => entry.box), this.stateBox);
    }

    update() {
        const { ring, view } = this.store;
        if (ring === null) {
            return;
        }
        for (const { entry, value, unit } of this.boxes) {
            const integer = ring.latest(entry.key);
            const digits =
                entry.key === "error_cdb" ? 2 : entry.digits === 3 ? 3 : entry.kind === "temperature" ? 1 : 2;
            const shown = format(integer === null ? null : integer * entry.scale, entry.kind, digits, view.unit);
            setText(value, shown.text);
            setText(unit, shown.unit);
        }
        const state = ring.latest("state");
        setText(this.state, state === null ? "–" : stateLook(state).name);
        const detector = ring.latest("detector_state");
        setText(this.detector, detector === null ? "" : `detector ${detector}`);
        this.stateBox.title = state === null ? "" : stateLook(state).meaning;
        setAttribute(this.stateBox, "data-state", String(state));
        this.stateBox.style.setProperty("--mark", `var(${stateLook(state ?? 9).colour})`);
    }
}
