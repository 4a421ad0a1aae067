import { nudgeCursor, placeCursor } from "./cursors.js";
import { ERROR_RANGES } from "./toolbar.js";
import { WINDOWS_S } from "./viewLink.js";

/** @typedef {import("./toolbar.js").Actions & {control: () => void, replay: import("./replayBar.js").ReplayBar}} Actions */

const MODES = /** @type {const} */ (["free", "auto", "normal", "single"]);

/**
 * One key for each thing. Fields and open dialogs keep their keys, and Space presses a button that has the focus.
 * @param {import("./store.js").Store} store @param {Actions} actions
 */
export function listenToKeys(store, actions) {
    /** @type {"a"|"b"} */
    let last = "a";
    const channelBy = (/** @type {number} */ by) => {
        const numbers = [...store.rings.keys()];
        const at = numbers.indexOf(store.view.channel);
        store.change({ channel: numbers[(at + by + numbers.length) % numbers.length] });
    };
    const cursor = (/** @type {"a"|"b"} */ which) => {
        last = which;
        placeCursor(store, which);
    };
    const spanUs = () => store.range.toUs - store.range.fromUs;
    /** @type {Record<string, (event: KeyboardEvent) => void>} */
    const keys = {
        " ": () => store.toggleHold(),
        "+": () => store.zoom(0.5),
        "=": () => store.zoom(0.5),
        "-": () => store.zoom(2),
        _: () => store.zoom(2),
        ArrowLeft: (event) => store.pan(event.shiftKey ? -1 : -0.1),
        ArrowRight: (event) => store.pan(event.shiftKey ? 1 : 0.1),
        Home: () => {
            const from = store.ring?.oldestUs ?? 0;
            store.show(from, from + spanUs());
        },
        End: () => store.change({ fixed: null }),
        a: () => cursor("a"),
        b: () => cursor("b"),
        "[": () => nudgeCursor(store, last, -1),
        "]": () => nudgeCursor(store, last, 1),
        "{": () => nudgeCursor(store, last, -10),
        "}": () => nudgeCursor(store, last, 10),
        Escape: () => store.change({ a: null, b: null }),
        ",": () => channelBy(-1),
        ".": () => channelBy(1),
        t: () =>
            store.change({
                trigger: {
                    ...store.view.trigger,
                    mode: MODES[(MODES.indexOf(store.view.trigger.mode) + 1) % MODES.length],
                },
                fixed: null,
            }),
        r: () => {
            store.trigger.rearm();
            store.change({ fixed: null });
        },
        u: () => store.change({ unit: store.view.unit === "W" ? "dBm" : "W" }),
        y: () =>
            store.change({
                errorRange: ERROR_RANGES[(ERROR_RANGES.indexOf(store.view.errorRange) + 1) % ERROR_RANGES.length],
            }),
        k: () => actions.replay.toggle(),
        x: () => actions.replay.nextSpeed(),
        PageUp: () => actions.replay.jump(-1),
        PageDown: () => actions.replay.jump(1),
        h: actions.history,
        c: actions.control,
        e: actions.csv,
        p: actions.png,
        l: actions.link,
        d: actions.theme,
        "?": actions.help,
    };
    WINDOWS_S.forEach((windowS, i) => {
        keys[String(i + 1)] = () => store.change({ windowS, fixed: null });
    });
    document.addEventListener("keydown", (event) => {
        const target = event.target instanceof Element ? event.target : null;
        const isField = target?.closest("input, select, textarea") ?? null;
        const isOwn =
            event.key === " " &&
            target?.closest("button, summary, a") !== null &&
            target !== document.body &&
            target !== null;
        const isTab = event.key.startsWith("Arrow") && target?.closest("[role=tablist]") != null;
        if (
            event.ctrlKey ||
            event.metaKey ||
            event.altKey ||
            isField !== null ||
            isOwn ||
            isTab ||
            document.querySelector("dialog[open]") !== null
        ) {
            return;
        }
        const action = keys[event.key.length === 1 ? event.key.toLowerCase() : event.key];
        const isReplayKey = ["PageUp", "PageDown"].includes(event.key); // else they move the page
        if (action !== undefined && !(isReplayKey && !store.unit?.replay)) {
            event.preventDefault();
            action(event);
        }
    });
}
