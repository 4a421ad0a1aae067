import { h, setAttribute, setText } from "./dom.js";
import { placeCursor } from "./cursors.js";
import { STATES } from "./states.js";
import { WINDOWS_S } from "./viewLink.js";

/** @typedef {import("./store.js").Store} Store @typedef {import("./trigger.js").TriggerSettings} TriggerSettings */
/** @typedef {{history: () => void, csv: () => void, png: () => void, link: () => void, theme: () => void, help: () => void}} Actions */

const MODES = /** @type {const} */ ([
    ["free", "Free"],
    ["auto", "Auto"],
    ["normal", "Normal"],
    ["single", "Single"],
]);
const SOURCES = /** @type {const} */ ([
    ["step", "target step"],
    ["state", "state"],
    ["error", "|error| above"],
]);
const PHASES = { rolling: "", waiting: "waiting", filling: "triggered", shown: "triggered", done: "done" };
export const ERROR_RANGES = [0, 0.25, 1.25, 5];

/** What is looked at, and how. */
export class Toolbar {
    /** @param {Store} store @param {HTMLElement} host @param {HTMLElement} pageHost for what concerns the whole page @param {Actions} actions */
    constructor(store, host, pageHost, actions) {
        this.store = store;
        const button = (/** @type {string} */ text, /** @type {string} */ title, /** @type {() => void} */ onclick) =>
            h("button", { type: "button", title, onclick }, text);
        this.hold = h("button", {
            type: "button",
            class: "primary hold",
            title: "Hold or run (Space)",
            onclick: () => store.toggleHold(),
        });
        this.windows = WINDOWS_S.map((seconds) => ({
            seconds,
            button: button(`${seconds} s`, `Window of ${seconds} s`, () =>
                store.change({ windowS: seconds, fixed: null }),
            ),
        }));
        this.historyButton = button("History", "What lies further back (H)", actions.history);
        this.mode = h(
            "select",
            { "aria-label": "Trigger mode", onchange: () => this.setTrigger() },
            ...MODES.map(([value, text]) => h("option", { value }, text)),
        );
        this.source = h(
            "select",
            { class: "short", "aria-label": "Trigger source", onchange: () => this.setTrigger(true) },
            ...SOURCES.map(([value, text]) => h("option", { value }, text)),
        );
        this.level = h("input", {
            type: "number",
            step: "0.1",
            min: "0.01",
            "aria-label": "Trigger level in decibels",
            onchange: () => this.setTrigger(),
        });
        this.levelUnit = h("span", { class: "quiet" }, "dB");
        this.state = h(
            "select",
            { "aria-label": "State that triggers", onchange: () => this.setTrigger() },
            h("option", { value: "-1" }, "any change"),
            ...STATES.map((state, i) => h("option", { value: String(i) }, state.name)),
        );
        this.phase = h("span", { class: "phase", role: "status" });
        this.rearm = button("Arm", "Arm the trigger again (R)", () => {
            store.trigger.rearm();
            store.change({ fixed: null });
        });
        this.dbm = button("dBm", "Powers in dBm (U)", () => store.change({ unit: "dBm" }));
        this.watt = button("W", "Powers in watts (U)", () => store.change({ unit: "W" }));
        this.errorRange = h(
            "select",
            {
                "aria-label": "Range of the error axis",
                title: "Range of the error axis (Y)",
                onchange: () => store.change({ errorRange: Number(this.errorRange.value) }),
            },
            ...ERROR_RANGES.map((half) => h("option", { value: String(half) }, half === 0 ? "auto" : `±${half} dB`)),
        );
        this.more = h(
            "button",
            { type: "button", class: "more", "aria-expanded": "false", onclick: () => this.toggleMore(host) },
            "More",
        );
        const group = (/** @type {string} */ label, /** @type {(Node|string)[]} */ ...children) =>
            h(
                "div",
                { class: "group", role: "group", "aria-label": label },
                h("span", { class: "group-label", "aria-hidden": "true" }, label),
                ...children,
            );
        const segments = (/** @type {Node[]} */ ...children) => h("span", { class: "segments" }, ...children);
        host.append(
            this.hold,
            this.more,
            group("Window", segments(...this.windows.map((entry) => entry.button)), this.historyButton),
            group(
                "Zoom",
                segments(
                    button("−", "Zoom out (−)", () => store.zoom(2)),
                    button("+", "Zoom in (+)", () => store.zoom(0.5)),
                    button("‹", "Back (←)", () => store.pan(-0.25)),
                    button("›", "Forth (→)", () => store.pan(0.25)),
                ),
            ),
            group("Trigger", this.mode, this.source, this.level, this.levelUnit, this.state, this.rearm, this.phase),
            group(
                "Cursors",
                segments(
                    button("A", "Put cursor A (A)", () => placeCursor(store, "a")),
                    button("B", "Put cursor B (B)", () => placeCursor(store, "b")),
                ),
            ),
            group("Power", segments(this.dbm, this.watt)),
        );
        const [theme, help] = [button("◐", "Dark or light (D)", actions.theme), button("?", "Keys (?)", actions.help)];
        theme.setAttribute("aria-label", "Dark or light");
        help.setAttribute("aria-label", "Help with keys");
        pageHost.append(
            button("CSV", "Export what is seen as CSV (E)", actions.csv),
            button("PNG", "Export what is seen as a picture (P)", actions.png),
            button("Link", "Copy a link to this view (L)", actions.link),
            theme,
            help,
        );
        store.on("view", () => this.update());
        this.update();
    }

    /** On a narrow screen the rarer things fold away. @param {HTMLElement} host */
    toggleMore(host) {
        const isOpen = host.classList.toggle("open");
        setAttribute(this.more, "aria-expanded", String(isOpen));
    }

    /** @param {boolean} [isNewSource] */
    setTrigger(isNewSource = false) {
        const source = /** @type {TriggerSettings["source"]} */ (this.source.value);
        const decibels = Math.max(0.01, Number(this.level.value) || 0.5);
        const level =
            source === "state"
                ? isNewSource
                    ? -1
                    : Number(this.state.value)
                : isNewSource
                  ? source === "step"
                      ? 50
                      : 100
                  : Math.round(decibels * 100);
        this.store.change({
            trigger: { mode: /** @type {TriggerSettings["mode"]} */ (this.mode.value), source, level },
            fixed: null,
        });
    }

    update() {
        const { view } = this.store;
        const { trigger } = view;
        setText(this.hold, view.fixed === null ? "❚❚ Hold" : "▶ Run");
        setAttribute(this.hold, "aria-pressed", String(view.fixed !== null));
        for (const { seconds, button } of this.windows) {
            setAttribute(button, "aria-pressed", String(view.fixed === null && seconds === view.windowS));
        }
        const span = view.fixed === null ? 0 : view.fixed.toUs - view.fixed.fromUs;
        setAttribute(this.historyButton, "aria-pressed", String(span > 60e6));
        this.mode.value = trigger.mode;
        this.source.value = trigger.source;
        const isFree = trigger.mode === "free";
        this.source.hidden = isFree;
        this.level.hidden = this.levelUnit.hidden = isFree || trigger.source === "state";
        this.state.hidden = isFree || trigger.source !== "state";
        this.rearm.hidden = isFree;
        if (trigger.source === "state") {
            this.state.value = String(trigger.level);
        } else if (document.activeElement !== this.level) {
            this.level.value = String(trigger.level / 100);
        }
        setAttribute(this.dbm, "aria-pressed", String(view.unit === "dBm"));
        setAttribute(this.watt, "aria-pressed", String(view.unit === "W"));
        this.errorRange.value = String(view.errorRange);
        this.updatePhase();
    }

    updatePhase() {
        const { trigger, held } = this.store;
        setText(this.phase, held ? "" : PHASES[trigger.phase]);
        setAttribute(this.phase, "data-phase", trigger.phase);
    }
}
