import { h } from "./dom.js";
import { numberInput, section } from "./formParts.js";

const STATES = /** @type {const} */ ([
    ["ramping", "Ramping"],
    ["on", "On"],
]);

/** The loop gains in percent, by state and part of the detector's range. */
export class GainsPanel {
    /** @param {import("./store.js").Store} store @param {import("./actions.js").UnitActions} actions */
    constructor(store, actions) {
        this.store = store;
        this.actions = actions;
        this.rows = STATES.map(([state, member]) => ({
            state,
            member,
            inputs: [0, 1, 2].map((detector) => {
                const input = numberInput(`Gain in percent, ${state}, detector ${detector}`, 0, 1000, "1");
                input.addEventListener("change", () => void this.set(input, state, detector));
                return input;
            }),
        }));
        this.element = section(
            "Loop gains",
            "percent, by detector state",
            h(
                "table",
                { class: "grid-table gains" },
                h("thead", {}, h("tr", {}, ...["State", "0", "1", "2"].map((text) => h("th", { scope: "col" }, text)))),
                h(
                    "tbody",
                    {},
                    ...this.rows.map(({ member, inputs }) =>
                        h("tr", {}, h("th", { scope: "row" }, member), ...inputs.map((input) => h("td", {}, input))),
                    ),
                ),
            ),
        );
    }

    /** @param {HTMLInputElement} input @param {string} state @param {number} detector */
    async set(input, state, detector) {
        if (input.reportValidity()) {
            const channel = this.store.view.channel;
            await this.actions.sendConfirmed(
                "Unit.SetGain",
                { RadioChannelID: channel, State: state, GainPercent: Number(input.value), DetectorState: detector },
                `Channel ${channel}: gain ${state}, detector ${detector}`,
                `Set it to ${input.value} %? The loop follows at once.`,
                "Set gain",
            );
            await this.read();
        }
    }

    async read() {
        const gains = await this.actions.api.call("Unit.Gains", { RadioChannelID: this.store.view.channel });
        for (const { member, inputs } of this.rows) {
            inputs.forEach((input, i) => {
                input.value = String(gains[member][i]);
            });
        }
    }
}
