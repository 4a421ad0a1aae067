import { h } from "./dom.js";

/** @param {string} label @param {HTMLElement} control @param {string} [unit] */
export function field(label, control, unit = "") {
    return h(
        "label",
        { class: "field" },
        h("span", {}, label),
        h("span", { class: "field-control" }, control, unit && h("span", { class: "quiet" }, unit)),
    );
}

/** @param {string} label @param {number} min @param {number} max @param {string} step */
export function numberInput(label, min, max, step) {
    return h("input", { type: "number", min, max, step, "aria-label": label, required: true });
}

/** @param {string} title @param {string} note @param {...import("./dom.js").Child} children */
export function section(title, note, ...children) {
    return h(
        "section",
        { class: "card control-card", "aria-label": title },
        h("div", { class: "card-head" }, h("h2", {}, title), note && h("span", { class: "quiet" }, note)),
        ...children,
    );
}
