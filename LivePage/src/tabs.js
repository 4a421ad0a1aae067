import { byId } from "./dom.js";

const NAMES = /** @type {const} */ (["monitor", "control"]);

/**
 * The tabs beside the charts.
 * @param {() => void} onControl when the controls come to be seen
 * @returns {() => void} goes to the other tab
 */
export function listenToTabs(onControl) {
    const tabs = NAMES.map((name) => ({ tab: byId(`tab-${name}`), panel: byId(`panel-${name}`) }));
    const choose = (/** @type {number} */ chosen, /** @type {boolean} */ focus) => {
        tabs.forEach(({ tab, panel }, i) => {
            tab.setAttribute("aria-selected", String(i === chosen));
            tab.tabIndex = i === chosen ? 0 : -1;
            panel.hidden = i !== chosen;
        });
        if (focus) {
            tabs[chosen].tab.focus();
        }
        if (chosen === 1) {
            onControl();
        }
    };
    tabs.forEach(({ tab }, i) => {
        tab.addEventListener("click", () => choose(i, false));
        tab.addEventListener("keydown", (event) => {
            if (event.key === "ArrowLeft" || event.key === "ArrowRight") {
                choose(1 - i, true);
            }
        });
    });
    return () => choose(tabs[0].panel.hidden ? 0 : 1, true);
}
