import { duration } from "./clock.js";
import { h } from "./dom.js";

/** @param {HTMLDialogElement} dialog @returns {Promise<string>} what it was closed with */
function ask(dialog) {
    const before = document.activeElement;
    document.body.append(dialog);
    dialog.showModal();
    return new Promise((resolve) =>
        dialog.addEventListener("close", () => {
            dialog.remove();
            if (before instanceof HTMLElement) {
                before.focus();
            }
            resolve(dialog.returnValue);
        }),
    );
}

/** @param {string} title @param {...import("./dom.js").Child} children @returns {HTMLDialogElement} */
function dialogOf(title, ...children) {
    return h("dialog", { "aria-label": title }, h("form", { method: "dialog" }, h("h2", {}, title), ...children));
}

/** Closes its dialog with a value. Not a submit button, since Enter in a field presses the first of those.
 * @param {string} text @param {string} value @param {import("./dom.js").Attributes} [more] */
function closer(text, value, more = {}) {
    return h(
        "button",
        { type: "button", ...more, onclick: (event) => event.target.closest("dialog").close(value) },
        text,
    );
}

/**
 * @param {string} title @param {string} question @param {string} action what the button says
 * @returns {Promise<boolean>}
 */
export async function confirmDialog(title, question, action) {
    return (
        (await ask(
            dialogOf(
                title,
                h("p", {}, question),
                h(
                    "div",
                    { class: "dialog-buttons" },
                    closer("Cancel", "", { autofocus: true }),
                    h("button", { value: "yes", class: "primary" }, action),
                ),
            ),
        )) === "yes"
    );
}

/** @param {boolean} wasWrong @returns {Promise<string|null>} */
export async function tokenDialog(wasWrong) {
    const input = h("input", {
        type: "password",
        autocomplete: "current-password",
        required: true,
        autofocus: true,
        "aria-label": "Token",
    });
    const answer = await ask(
        dialogOf(
            "This unit asks for its token",
            wasWrong && h("p", { class: "wrong" }, "The unit did not take that one."),
            h(
                "p",
                {},
                "The first line of the token file that the unit file names. It is kept until this tab is closed.",
            ),
            input,
            h(
                "div",
                { class: "dialog-buttons" },
                closer("Cancel", ""),
                h("button", { value: "yes", class: "primary" }, "Use it"),
            ),
        ),
    );
    return answer === "yes" ? input.value.trim() : null;
}

const SPANS_MIN = /** @type {const} */ ([
    [5, "5 min"],
    [15, "15 min"],
    [60, "1 h"],
    [360, "6 h"],
    [1440, "24 h"],
    [10080, "7 days"],
]);

/** @param {Date} date @returns {string} as an input for date and time takes it, local time */
function localText(date) {
    return new Date(date.getTime() - date.getTimezoneOffset() * 60e3).toISOString().slice(0, 19);
}

/** @param {import("./store.js").Store} store @param {Date} earliest @param {number} lengthUs @returns {string} */
function historyReach(store, earliest, lengthUs) {
    const source = store.unit?.replay
        ? "The recording reaches back"
        : store.unit?.recording
          ? `${store.unit.recording.file} reaches back`
          : "Nothing is recorded; what the unit and this page hold reaches back";
    return `${source} to ${earliest.toLocaleString()}, ${duration(lengthUs)}. The newest part:`;
}

/** @param {import("./store.js").Store} store @returns {Promise<import("./store.js").Range|null>} */
export async function historyDialog(store) {
    const atMs = (/** @type {number} */ us) => store.startedMs + us / 1000;
    const { fromUs, toUs } = store.shown;
    const earliest = new Date(atMs(store.earliestUs));
    const at = (/** @type {number} */ us) =>
        h("input", {
            type: "datetime-local",
            step: "1",
            min: localText(earliest),
            value: localText(new Date(atMs(Math.max(us, store.earliestUs)))),
        });
    const [from, to] = [at(fromUs), at(toUs)];
    const lengthUs = store.newestUs - store.earliestUs;
    const spans = SPANS_MIN.filter(([minutes]) => minutes * 60e6 < lengthUs);
    const answer = await ask(
        dialogOf(
            "History",
            h("p", {}, historyReach(store, earliest, lengthUs)),
            h(
                "div",
                { class: "button-row" },
                ...spans.map(([minutes, text]) => closer(text, String(minutes))),
                closer("All of it", "all"),
            ),
            h("p", {}, "Or from one moment to another, in local time:"),
            h("div", { class: "field-row" }, h("label", {}, "From", from), h("label", {}, "To", to)),
            h(
                "div",
                { class: "dialog-buttons" },
                closer("Cancel", ""),
                h("button", { value: "range", class: "primary" }, "Show"),
            ),
        ),
    );
    if (answer === "") {
        return null;
    }
    if (answer === "range") {
        const range = {
            fromUs: (Date.parse(from.value) - store.startedMs) * 1000,
            toUs: (Date.parse(to.value) - store.startedMs) * 1000,
        };
        return range.toUs > range.fromUs ? range : null;
    }
    return {
        fromUs: answer === "all" ? store.earliestUs : store.newestUs - Number(answer) * 60e6,
        toUs: store.newestUs,
    };
}

export const KEYS = /** @type {const} */ ([
    ["Space", "hold, or run again"],
    ["1 … 6", "window of 1, 2, 5, 10, 30, 60 s"],
    ["+  −", "zoom in, out (also the wheel, or drag over a chart)"],
    ["←  →", "back, forth; with Shift a whole picture"],
    ["Home  End", "the oldest that the page holds, the newest"],
    ["A  B", "put cursor A or B where the pointer is"],
    ["[  ]", "move the cursor that was put last; with Shift ten steps"],
    ["Esc", "take the cursors away"],
    [",  .", "previous, next channel"],
    ["T", "trigger: free, auto, normal, single"],
    ["R", "arm the trigger again"],
    ["H", "history"],
    ["K  X", "replay: pause or play, speed"],
    ["Page↑  Page↓", "replay: 10 s earlier, later"],
    ["U", "dBm or watts"],
    ["Y", "range of the error axis"],
    ["C", "controls, and back to the monitor"],
    ["E  P", "export CSV, PNG"],
    ["L", "copy a link to this view"],
    ["D", "dark or light"],
    ["?", "this help"],
]);

export async function helpDialog() {
    await ask(
        dialogOf(
            "Keys",
            h(
                "dl",
                { class: "keys" },
                ...KEYS.flatMap(([keys, text]) => [
                    h("dt", {}, ...keys.split("  ").map((key) => h("kbd", {}, key))),
                    h("dd", {}, text),
                ]),
            ),
            h(
                "p",
                { class: "quiet" },
                "In the charts: drag to zoom, Shift and drag to move, double click to run. A cursor can be dragged by its line.",
            ),
            h("div", { class: "dialog-buttons" }, closer("Close", "", { class: "primary", autofocus: true })),
        ),
    );
}
