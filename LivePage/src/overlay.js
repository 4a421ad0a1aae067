import { h } from "./dom.js";

const GRAB_PX = 8;

/** What lies over all charts: pointer, both cursors, trigger, and the hand that drags them or a stretch to zoom into. */
export class Overlay {
    /** @param {import("./store.js").Store} store @param {import("./plot.js").Margins} margins @param {HTMLElement} host holds the charts */
    constructor(store, margins, host) {
        this.store = store;
        this.margins = margins;
        this.pointer = h("div", { class: "line line-pointer" });
        this.a = h("div", { class: "line line-cursor" }, h("span", { class: "flag" }, "A"));
        this.b = h("div", { class: "line line-cursor" }, h("span", { class: "flag" }, "B"));
        this.between = h("div", { class: "between" });
        this.trigger = h("div", { class: "line line-trigger" }, h("span", { class: "flag flag-trigger" }, "T"));
        this.selection = h("div", { class: "selection" });
        this.element = h(
            "div",
            { class: "overlay" },
            this.between,
            this.trigger,
            this.pointer,
            this.a,
            this.b,
            this.selection,
        );
        this.width = 1;
        /** @type {{kind: "a"|"b"|"zoom"|"pan", fromX: number, x: number, range: import("./store.js").Range}|null} */
        this.drag = null;
        /** @type {Map<number, number>} where touching fingers are */
        this.fingers = new Map();
        /** @type {{leftUs: number, rightUs: number}|null} the moments that two fingers hold */
        this.pinched = null;
        /** @type {Map<HTMLElement, string>} where each line stands */
        this.places = new Map();
        this.listen(host);
    }

    /** The overlay lets the pointer through to the legends; so the charts' host is listened to. @param {HTMLElement} host */
    listen(host) {
        this.host = host;
        const onCharts = (/** @type {Event} */ event) =>
            event.target instanceof Element && event.target.closest(".plot-head") === null;
        host.addEventListener("pointerdown", (event) => {
            if (onCharts(event)) {
                this.down(event);
            }
        });
        host.addEventListener("pointermove", (event) => this.move(event));
        host.addEventListener("pointerup", (event) => this.up(event));
        host.addEventListener("pointercancel", (event) => {
            this.fingers.delete(event.pointerId);
            this.drag = this.pinched = null;
            this.place();
        });
        host.addEventListener("pointerleave", () => this.leave());
        host.addEventListener("wheel", (event) => this.wheel(event), { passive: false });
        host.addEventListener("dblclick", (event) => {
            if (onCharts(event)) {
                this.store.trigger.rearm();
                this.store.change({ fixed: null });
            }
        });
    }

    layOut() {
        this.element.style.left = `${this.margins.left}px`;
        this.element.style.right = `${this.margins.right}px`;
        this.width = Math.max(1, this.element.clientWidth);
        this.place();
    }

    /** @param {number} us @returns {number} CSS pixels */
    toX(us) {
        const { fromUs, toUs } = this.store.shown;
        return ((us - fromUs) / (toUs - fromUs)) * this.width;
    }

    /** @param {number} x @returns {number} */
    toUs(x) {
        const { fromUs, toUs } = this.store.shown;
        return fromUs + (x / this.width) * (toUs - fromUs);
    }

    /** @param {MouseEvent} event @returns {number} */
    x(event) {
        return event.clientX - this.element.getBoundingClientRect().left;
    }

    /** Two fingers: spreads the stretch between them. @returns {boolean} whether there are two */
    pinch() {
        const xs = [...this.fingers.values()];
        if (xs.length !== 2) {
            this.pinched = null;
            return false;
        }
        const [left, right] = [Math.min(...xs), Math.max(...xs)];
        this.pinched ??= { leftUs: this.toUs(left), rightUs: this.toUs(right) };
        const usPerPixel = (this.pinched.rightUs - this.pinched.leftUs) / Math.max(20, right - left);
        const fromUs = this.pinched.leftUs - left * usPerPixel;
        this.drag = null;
        this.store.show(fromUs, fromUs + usPerPixel * this.width);
        return true;
    }

    /** @param {PointerEvent} event */
    down(event) {
        if (event.button !== 0) {
            return;
        }
        const x = this.x(event);
        if (event.pointerType === "touch") {
            this.fingers.set(event.pointerId, x);
            if (this.pinch()) {
                return;
            }
        }
        const { a, b } = this.store.view;
        const near = (/** @type {number|null} */ us) => us !== null && Math.abs(this.toX(us) - x) <= GRAB_PX;
        const kind = near(b) ? "b" : near(a) ? "a" : event.shiftKey || event.pointerType === "touch" ? "pan" : "zoom";
        this.drag = { kind, fromX: x, x, range: { ...this.store.range } };
        this.host?.setPointerCapture(event.pointerId);
        this.store.pointerUs = this.toUs(x);
        this.store.tell("pointer");
    }

    /** @param {PointerEvent} event */
    move(event) {
        const x = Math.max(0, Math.min(this.width, this.x(event)));
        if (this.fingers.has(event.pointerId)) {
            this.fingers.set(event.pointerId, x);
            if (this.pinch()) {
                return;
            }
        }
        this.store.pointerUs = this.toUs(x);
        const { drag } = this;
        if (drag !== null) {
            drag.x = x;
            if (drag.kind === "a" || drag.kind === "b") {
                this.store.change({ [drag.kind]: Math.round(this.toUs(x)) });
            } else if (drag.kind === "pan" && Math.abs(x - drag.fromX) > 3) {
                const by = ((drag.fromX - x) / this.width) * (drag.range.toUs - drag.range.fromUs);
                this.store.show(drag.range.fromUs + by, drag.range.toUs + by);
            }
        }
        this.place();
        this.store.tell("pointer");
    }

    /** @param {PointerEvent} event */
    up(event) {
        this.fingers.delete(event.pointerId);
        this.pinched = null;
        const { drag } = this;
        this.drag = null;
        if (drag !== null && drag.kind === "zoom" && Math.abs(drag.x - drag.fromX) > 6) {
            const [left, right] = drag.x < drag.fromX ? [drag.x, drag.fromX] : [drag.fromX, drag.x];
            this.store.show(this.toUs(left), this.toUs(right));
        }
        this.host?.releasePointerCapture(event.pointerId);
        this.place();
    }

    leave() {
        if (this.drag === null) {
            this.store.pointerUs = null;
            this.place();
            this.store.tell("pointer");
        }
    }

    /** @param {WheelEvent} event */
    wheel(event) {
        event.preventDefault();
        const sideways = event.shiftKey ? event.deltaY : event.deltaX;
        if (Math.abs(sideways) > Math.abs(event.shiftKey ? 0 : event.deltaY)) {
            this.store.pan(Math.sign(sideways) * 0.08);
            return;
        }
        const lines = event.deltaMode === 0 ? event.deltaY / 100 : event.deltaY / 3;
        this.store.zoom(Math.exp(Math.max(-1, Math.min(1, lines)) * 0.22), this.toUs(this.x(event)));
    }

    /** Puts everything where it belongs on the time axis; cheap enough for each frame. */
    place() {
        const { view, pointerUs, trigger } = this.store;
        this.put(this.pointer, pointerUs);
        this.put(this.a, view.a);
        this.put(this.b, view.b);
        this.put(this.trigger, view.fixed === null && trigger.stretch !== null ? trigger.foundUs : null);
        this.span(this.between, view.a, view.b);
        const { drag } = this;
        const zooms = drag !== null && drag.kind === "zoom" && Math.abs(drag.x - drag.fromX) > 6;
        this.span(this.selection, zooms ? this.toUs(drag.fromX) : null, zooms ? this.toUs(drag.x) : null);
    }

    /** @param {HTMLElement} line @param {number|null} us */
    put(line, us) {
        const x = us === null ? NaN : this.toX(us);
        const isSeen = x >= -0.5 && x <= this.width + 0.5;
        const place = isSeen ? `translateX(${x.toFixed(1)}px)` : "";
        if (this.places.get(line) !== place) {
            this.places.set(line, place);
            line.hidden = !isSeen;
            line.style.transform = place;
        }
    }

    /** @param {HTMLElement} box @param {number|null} oneUs @param {number|null} otherUs */
    span(box, oneUs, otherUs) {
        const isNone = oneUs === null || otherUs === null;
        if (box.hidden !== isNone) {
            box.hidden = isNone;
        }
        if (oneUs !== null && otherUs !== null) {
            const clamp = (/** @type {number} */ x) => Math.max(0, Math.min(this.width, x));
            const left = clamp(this.toX(Math.min(oneUs, otherUs)));
            box.style.transform = `translateX(${left.toFixed(1)}px)`;
            box.style.width = `${(clamp(this.toX(Math.max(oneUs, otherUs))) - left).toFixed(1)}px`;
        }
    }
}
