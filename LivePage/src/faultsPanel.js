import { h } from "./dom.js";
import { field, numberInput, section } from "./formParts.js";

const OPERATIONS = [
    "setOutputPower",
    "setTxState",
    "setProductionTestSettings",
    "getReducedGainFromAmplifier",
    "getTxPowerReadings",
    "calculateDetectorUsage",
    "getPmeasured",
    "setZembraMlmTrafTx",
    "getPctrlLimits",
];

/** Kinds of faults and the member that each takes. */
const KINDS = /** @type {readonly [string, string, string, number, number, string][]} */ ([
    ["fail", "", "", 0, 0, ""],
    ["fail-times", "Times", "calls", 1, 0x7fffffff, "3"],
    ["stuck", "", "", 0, 0, ""],
    ["wrong-value", "Value", "hundredths of dB", -0x7fffffff, 0x7fffffff, "0"],
    ["slow", "DelayUs", "µs", 0, 10000000, "1000"],
    ["intermittent", "Probability", "0 to 1", 0, 1, "0.5"],
]);

/** Faults of a simulated output power handler. */
export class FaultsPanel {
    /** @param {import("./store.js").Store} store @param {import("./actions.js").UnitActions} actions */
    constructor(store, actions) {
        this.store = store;
        this.actions = actions;
        this.operation = h(
            "select",
            { "aria-label": "Operation" },
            ...OPERATIONS.map((name) => h("option", { value: name, selected: name === "getPmeasured" }, name)),
        );
        this.kind = h(
            "select",
            { "aria-label": "Kind of fault", onchange: () => this.showValue() },
            ...KINDS.map(([kind]) => h("option", { value: kind }, kind)),
        );
        this.value = numberInput("Value of the fault", 0, 1, "any");
        this.valueUnit = h("span", { class: "quiet" });
        this.valueField = h(
            "label",
            { class: "field" },
            h("span", {}, "Value"),
            h("span", { class: "field-control" }, this.value, this.valueUnit),
        );
        this.list = h("ul", { class: "faults" });
        this.element = section(
            "Faults",
            "of the simulated handler",
            this.list,
            field("Operation", this.operation),
            field("Kind", this.kind),
            this.valueField,
            h(
                "div",
                { class: "button-row" },
                h("button", { type: "button", onclick: () => void this.set() }, "Set fault"),
            ),
        );
        this.showValue();
    }

    showValue() {
        const [, member, unit, min, max, usual] = /** @type {typeof KINDS[number]} */ (
            KINDS.find(([kind]) => kind === this.kind.value)
        );
        this.valueField.hidden = member === "";
        this.value.required = member !== "";
        this.value.min = String(min);
        this.value.max = String(max);
        this.value.value = usual;
        this.valueUnit.textContent = unit;
    }

    async set() {
        const [kind, member] = /** @type {typeof KINDS[number]} */ (KINDS.find(([name]) => name === this.kind.value));
        if (member === "" || this.value.reportValidity()) {
            const value = member === "" ? {} : { [member]: Number(this.value.value) };
            await this.send(this.operation.value, kind, value, "Set fault");
        }
    }

    /** @param {string} operation @param {string} kind @param {import("./xmlRpc.js").XmlRpcStruct} value @param {string} action */
    async send(operation, kind, value, action) {
        const channel = this.store.view.channel;
        await this.actions.sendConfirmed(
            "Unit.SetFault",
            { RadioChannelID: channel, Operation: operation, Kind: kind, ...value },
            `Channel ${channel}: ${operation} ${kind === "none" ? "without fault" : kind}`,
            "The controller meets it with its next call of this operation.",
            action,
        );
        await this.read();
    }

    async read() {
        const { Faults: faults } = await this.actions.api.call("Unit.Faults", {
            RadioChannelID: this.store.view.channel,
        });
        this.list.replaceChildren(
            ...(faults.length === 0
                ? [h("li", { class: "quiet" }, "none")]
                : faults.map((/** @type {any} */ fault) => {
                      const member = KINDS.find(([kind]) => kind === fault.Kind)?.[1] ?? "";
                      return h(
                          "li",
                          {},
                          h("b", {}, fault.Operation),
                          ` ${fault.Kind}${member === "" ? "" : ` ${fault[member]}`} `,
                          h(
                              "button",
                              {
                                  type: "button",
                                  "aria-label": `Clear the fault of ${fault.Operation}`,
                                  onclick: () => void this.send(fault.Operation, "none", {}, "Clear fault"),
                              },
                              "Clear",
                          ),
                      );
                  })),
        );
    }
}
