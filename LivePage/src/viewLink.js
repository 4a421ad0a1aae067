/**
 * What the address holds of a view, so that a link reproduces it.
 * @typedef {import("./trigger.js").TriggerMode} TriggerMode
 * @typedef {import("./trigger.js").TriggerSource} TriggerSource
 * @typedef {{channel: number, windowS: number, fixed: {fromUs: number, toUs: number}|null, a: number|null, b: number|null,
 *            trigger: import("./trigger.js").TriggerSettings, unit: "dBm"|"W", theme: ""|"dark"|"light", hidden: string[],
 *            errorRange: number, run: string}} View
 */

export const WINDOWS_S = [1, 2, 5, 10, 30, 60];

/** @returns {View} */
export function defaultView() {
    return {
        channel: NaN,
        windowS: 10,
        fixed: null,
        a: null,
        b: null,
        trigger: { mode: "free", source: "step", level: 50 },
        unit: "dBm",
        theme: "",
        hidden: [],
        errorRange: 0,
        run: "",
    };
}

/** @param {View} view @returns {string} without the # ; what is as ever is left out */
export function encodeView(view) {
    const usual = defaultView();
    const parts = new URLSearchParams();
    const put = (
        /** @type {string} */ key,
        /** @type {string|number} */ value,
        /** @type {string|number} */ ordinary,
    ) => {
        if (value !== ordinary) {
            parts.set(key, String(value));
        }
    };
    if (!Number.isNaN(view.channel)) {
        parts.set("ch", String(view.channel));
    }
    put("w", view.windowS, usual.windowS);
    if (view.fixed !== null) {
        parts.set("from", String(Math.round(view.fixed.fromUs)));
        parts.set("to", String(Math.round(view.fixed.toUs)));
        put("run", view.run, "");
    }
    if (view.a !== null) {
        parts.set("a", String(Math.round(view.a)));
    }
    if (view.b !== null) {
        parts.set("b", String(Math.round(view.b)));
    }
    const { mode, source, level } = view.trigger;
    put("trig", `${mode},${source},${level}`, `${usual.trigger.mode},${usual.trigger.source},${usual.trigger.level}`);
    put("unit", view.unit, usual.unit);
    put("theme", view.theme, "");
    put("hide", view.hidden.join(","), "");
    put("err", view.errorRange, 0);
    return parts.toString().replaceAll("%2C", ",");
}

/** @param {string|null} text @returns {number|null} */
function number(text) {
    const value = text === null || text.trim() === "" ? NaN : Number(text);
    return Number.isFinite(value) ? value : null;
}

/** @param {string} hash with or without # @returns {View} what makes no sense is as ever */
export function decodeView(hash) {
    const parts = new URLSearchParams(hash.replace(/^#/, ""));
    const view = defaultView();
    view.channel = number(parts.get("ch")) ?? NaN;
    const windowS = number(parts.get("w"));
    view.windowS = windowS !== null && WINDOWS_S.includes(windowS) ? windowS : view.windowS;
    const from = number(parts.get("from"));
    const to = number(parts.get("to"));
    view.fixed = from !== null && to !== null && to > from ? { fromUs: from, toUs: to } : null;
    view.run = parts.get("run") ?? "";
    view.a = number(parts.get("a"));
    view.b = number(parts.get("b"));
    const [mode, source, level] = (parts.get("trig") ?? "").split(",");
    if (["free", "auto", "normal", "single"].includes(mode) && ["step", "state", "error"].includes(source)) {
        view.trigger = {
            mode: /** @type {TriggerMode} */ (mode),
            source: /** @type {TriggerSource} */ (source),
            level: number(level) ?? 50,
        };
    }
    view.unit = parts.get("unit") === "W" ? "W" : "dBm";
    const theme = parts.get("theme");
    view.theme = theme === "dark" || theme === "light" ? theme : "";
    view.hidden = (parts.get("hide") ?? "").split(",").filter((key) => /^[a-z0-9_]+$/.test(key));
    const errorRange = number(parts.get("err"));
    view.errorRange = errorRange !== null && errorRange > 0 ? errorRange : 0;
    return view;
}
