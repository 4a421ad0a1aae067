import { h, setAttribute, setText } from "./dom.js";
import { STATE_TX_OFF, STATE_TX_ON, stateLook } from "./states.js";
import { OFF_TARGET_CDB, troubleOf } from "./trouble.js";
import { format } from "./units.js";

/** @typedef {import("./store.js").Store} Store @typedef {import("./ring.js").ChannelRing} ChannelRing */

/** The gauge of a tile reaches so far to either side, in hundredths of a decibel. */
const GAUGE_CDB = 100;

/** All channels at a glance: state, target, measured, error and trouble of each. */
export class Tiles {
    /** @param {Store} store @param {HTMLElement} host */
    constructor(store, host) {
        this.store = store;
        this.host = host;
        /** @type {ReturnType<Tiles["tile"]>[]} */
        this.tiles = [];
        store.on("unit", () => this.build());
    }

    build() {
        const numbers = (this.store.unit?.channels ?? []).map((channel) => channel.number);
        if (numbers.join() !== this.tiles.map((tile) => tile.number).join()) {
            this.tiles = numbers.map((number) => this.tile(number));
            this.host.replaceChildren(...this.tiles.map((tile) => tile.button));
        }
    }

    /** @param {number} number */
    tile(number) {
        const part = (/** @type {string} */ name) => h("span", { class: name });
        const [state, measured, unit, target, error, trouble, needle] = [
            "tile-state",
            "tile-measured figures",
            "tile-unit",
            "tile-target figures",
            "tile-error figures",
            "tile-trouble",
            "needle",
        ].map(part);
        const gauge = h("span", { class: "gauge", "aria-hidden": "true" }, needle);
        const button = h(
            "button",
            {
                class: "tile",
                type: "button",
                "aria-pressed": "false",
                onclick: () => this.store.change({ channel: number }),
            },
            h("span", { class: "tile-top" }, h("b", {}, `CH ${number}`), state),
            h("span", { class: "tile-power" }, measured, unit, target),
            gauge,
            h("span", { class: "tile-bottom" }, error, trouble),
        );
        return { number, button, state, measured, unit, target, error, trouble, needle, offSinceUs: NaN };
    }

    update() {
        for (const tile of this.tiles) {
            const ring = this.store.rings.get(tile.number);
            if (ring !== undefined) {
                this.updateTile(tile, ring);
            }
            setAttribute(tile.button, "aria-pressed", String(tile.number === this.store.view.channel));
        }
    }

    /** @param {ReturnType<Tiles["tile"]>} tile @param {ChannelRing} ring */
    updateTile(tile, ring) {
        const { unit } = this.store.view;
        const powerOf = (/** @type {string} */ key) => {
            const value = ring.latest(key);
            return format(value === null ? null : value / 100, "power", 2, unit);
        };
        const state = ring.latest("state");
        const look = state === null ? null : stateLook(state);
        setText(tile.state, look?.short ?? "no data");
        setAttribute(tile.state, "class", `tile-state state-${state ?? "none"}`);
        const measured = powerOf("pmeasured_cdb");
        setText(tile.measured, measured.text);
        setText(tile.unit, measured.unit);
        const requested = powerOf(ring.latest("ptarget_cdb") === null ? "requested_cdb" : "ptarget_cdb");
        setText(tile.target, `→ ${requested.text}`);
        const error = ring.latest("error_cdb");
        const shown = format(error === null ? null : error / 100, "db", 2, unit);
        setText(tile.error, `${error !== null && error > 0 ? "+" : ""}${shown.text} dB`);
        const place = Math.max(-1, Math.min(1, (error ?? 0) / GAUGE_CDB));
        tile.needle.style.transform = `translateX(${(place * 50).toFixed(1)}cqw)`;
        setAttribute(
            tile.needle,
            "class",
            `needle${error === null ? " gone" : Math.abs(error) > OFF_TARGET_CDB ? " far" : Math.abs(error) > 10 ? " wide" : ""}`,
        );
        this.updateTrouble(tile, ring, state, error);
        tile.button.title = `Channel ${tile.number}: ${look?.name ?? "no data"}, measured ${measured.text} ${measured.unit}, target ${requested.text} ${requested.unit}, error ${shown.text} dB`;
    }

    /** @param {ReturnType<Tiles["tile"]>} tile @param {ChannelRing} ring @param {number|null} state @param {number|null} errorCdb */
    updateTrouble(tile, ring, state, errorCdb) {
        const isOff = errorCdb === null || Math.abs(errorCdb) <= OFF_TARGET_CDB || state !== STATE_TX_ON;
        tile.offSinceUs = isOff ? NaN : Number.isNaN(tile.offSinceUs) ? ring.newestUs : tile.offSinceUs;
        let failedSteps = 0;
        for (let i = ring.indexFrom(ring.newestUs - 1e6); i < ring.length; ++i) {
            const result = ring.value("result", i);
            failedSteps += result !== null && result !== 0 ? 1 : 0;
        }
        const isConnected =
            !this.store.paused && (this.store.connection === "live" || this.store.connection === "connecting");
        const behindMs = (this.store.newestUs - ring.newestUs) / 1000;
        const trouble = troubleOf({
            newestAgeMs:
                ring.length === 0 ? 0 : isConnected ? performance.now() - this.store.newestAtMs + behindMs : behindMs,
            state,
            result: ring.latest("result"),
            errorCdb,
            offTargetMs: Number.isNaN(tile.offSinceUs) ? 0 : (ring.newestUs - tile.offSinceUs) / 1000,
            failedSteps,
        });
        setText(tile.trouble, trouble.text);
        setAttribute(tile.trouble, "class", `tile-trouble ${trouble.level}`);
        setAttribute(tile.button, "data-trouble", trouble.level);
        setAttribute(tile.button, "data-off", String(state === STATE_TX_OFF));
    }
}
