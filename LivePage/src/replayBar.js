import { h, setAttribute, setText } from "./dom.js";
import { runClock } from "./clock.js";

const SPEEDS = [1, 10, 100];
const JUMP_US = 10e6;

/** Pause, speed and place of a recording that is played; not there for a running unit. */
export class ReplayBar {
    /** @param {import("./store.js").Store} store @param {import("./actions.js").UnitActions} actions @param {() => Promise<void>} refresh reads the unit again */
    constructor(store, actions, refresh) {
        this.store = store;
        this.actions = actions;
        this.refresh = refresh;
        this.isDragging = false;
        this.pause = h("button", { type: "button", class: "primary", title: "K", onclick: () => this.toggle() });
        this.speeds = SPEEDS.map((speed) => ({
            speed,
            button: h("button", { type: "button", onclick: () => void this.send({ speed }) }, `${speed}×`),
        }));
        this.seek = h("input", {
            type: "range",
            class: "seek",
            step: "any",
            "aria-label": "Place in the recording",
            oninput: () => {
                this.isDragging = true;
                this.showPlace(Number(this.seek.value));
            },
            onchange: () => {
                this.isDragging = false;
                this.jumpTo(Number(this.seek.value));
            },
        });
        this.place = h("span", { class: "figures quiet" });
        this.problem = h("span", { class: "wrong", role: "alert" });
        this.element = h(
            "div",
            { class: "toolbar replay", role: "toolbar", "aria-label": "Replay", hidden: true },
            h("b", {}, "Replay"),
            this.pause,
            h("span", { class: "segments", title: "X" }, ...this.speeds.map((entry) => entry.button)),
            this.seek,
            this.place,
            this.problem,
        );
        store.on("unit", () => this.update());
    }

    /** @param {{paused?: boolean, position_us?: number, speed?: number}} change */
    async send(change) {
        try {
            await this.actions.api.replay(change);
            setText(this.problem, "");
            await this.refresh();
        } catch (error) {
            setText(this.problem, error instanceof Error ? error.message : String(error));
        }
    }

    /** Pauses or plays on; nothing where a unit runs. */
    toggle() {
        const replay = this.store.unit?.replay;
        if (replay) {
            void this.send({ paused: !replay.paused });
        }
    }

    nextSpeed() {
        const replay = this.store.unit?.replay;
        if (replay) {
            void this.send({ speed: SPEEDS[(SPEEDS.indexOf(replay.speed) + 1) % SPEEDS.length] });
        }
    }

    /** @param {number} direction 1: later, -1: earlier */
    jump(direction) {
        const replay = this.store.unit?.replay;
        if (replay) {
            this.jumpTo(Math.max(replay.position_us, this.store.newestUs) + direction * JUMP_US);
        }
    }

    /** @param {number} timeUs moved into the recording */
    jumpTo(timeUs) {
        const replay = this.store.unit?.replay;
        if (replay) {
            const position_us = Math.round(Math.min(replay.to_us, Math.max(replay.from_us, timeUs)));
            void this.send({ position_us });
        }
    }

    /** @param {number} positionUs */
    showPlace(positionUs) {
        const text = `${runClock(positionUs, 1)} of ${runClock(this.store.unit?.replay?.to_us ?? 0, 1)}`;
        setText(this.place, text);
        setAttribute(this.seek, "aria-valuetext", text);
    }

    update() {
        const replay = this.store.unit?.replay ?? null;
        this.element.hidden = replay === null;
        if (replay !== null) {
            setText(this.pause, replay.paused ? "▶ Play" : "❚❚ Pause");
            this.speeds.forEach(({ speed, button }) =>
                setAttribute(button, "aria-pressed", String(speed === replay.speed)),
            );
            setAttribute(this.seek, "min", String(replay.from_us));
            setAttribute(this.seek, "max", String(replay.to_us));
            if (!this.isDragging) {
                this.seek.value = String(replay.position_us);
                this.showPlace(replay.position_us);
            }
        }
    }
}
