import { runClock, timeOfDay } from "./clock.js";
import { h, setText } from "./dom.js";

const KINDS = /** @type {Record<string, string>} */ ({
    state: "state",
    command: "command",
    failure: "failure",
    overrun: "overrun",
    note: "note",
});
const MOST = 60;

/** What happened, newest first; a click shows the moment. */
export class EventsList {
    /** @param {import("./store.js").Store} store */
    constructor(store) {
        this.store = store;
        this.all = h("input", { type: "checkbox", onchange: () => this.update() });
        this.count = h("span", { class: "quiet" });
        this.list = h("ol", { class: "events" });
        this.element = h(
            "section",
            { class: "card card-events", "aria-label": "Events" },
            h(
                "div",
                { class: "card-head" },
                h("h2", {}, "Events"),
                this.count,
                h("label", { class: "check" }, this.all, "all channels"),
            ),
            h(
                "div",
                { class: "events-scroll", tabindex: "0", role: "region", "aria-label": "List of events" },
                this.list,
            ),
        );
        store.on("events", () => this.update());
        this.drawn = "";
    }

    update() {
        const { store } = this;
        const { channel } = store.view;
        const wanted = store.events.filter(
            (event) => this.all.checked || event.channel === null || event.channel === channel,
        );
        const key = `${channel} ${this.all.checked} ${wanted.length} ${wanted[wanted.length - 1]?.id}`;
        if (key === this.drawn) {
            return;
        }
        this.drawn = key;
        setText(this.count, wanted.length > MOST ? `newest ${MOST} of ${wanted.length}` : "");
        this.list.replaceChildren(
            ...wanted
                .slice(-MOST)
                .reverse()
                .map((event) => this.row(event)),
        );
    }

    /** @param {import("./api.js").UnitEvent} event */
    row(event) {
        const { store } = this;
        const time = runClock(event.t_us, 3);
        const show = () => {
            const span = Math.min(store.range.toUs - store.range.fromUs, 60e6);
            store.show(event.t_us - span * 0.2, event.t_us + span * 0.8);
        };
        return h(
            "li",
            {},
            h(
                "button",
                {
                    type: "button",
                    class: `event event-${KINDS[event.kind] ?? "note"}`,
                    onclick: show,
                    title: `Show ${timeOfDay(new Date(store.startedMs + event.t_us / 1000), 3)}`,
                },
                h("span", { class: "event-time figures" }, time),
                h("span", { class: "event-kind" }, event.kind),
                h(
                    "span",
                    { class: "event-text" },
                    this.all.checked && event.channel !== null ? `CH ${event.channel} ` : "",
                    event.text,
                ),
            ),
        );
    }
}
