import { h, setText } from "./dom.js";
import { FaultsPanel } from "./faultsPanel.js";
import { field, numberInput, section } from "./formParts.js";
import { GainsPanel } from "./gainsPanel.js";

/** @typedef {import("./store.js").Store} Store @typedef {import("./xmlRpc.js").XmlRpcStruct} Members */

const READ_EACH_MS = 2000;

/** @param {number} us */
function milliseconds(us) {
    return (us / 1000).toFixed(us < 10000 ? 2 : 0);
}

/** What can be set on a running unit. What a transmitter follows is asked once more. */
export class Controls {
    /** @param {Store} store @param {import("./actions.js").UnitActions} actions @param {HTMLElement} host */
    constructor(store, actions, host) {
        this.store = store;
        this.actions = actions;
        this.host = host;
        this.title = h("p", { class: "control-title" });
        this.status = h("dl", { class: "status-list" });
        this.mode = h(
            "select",
            { "aria-label": "Power mode" },
            ...[
                [0, "0: limited steps"],
                [1, "1: free steps"],
                [2, "2: reported, then limited"],
            ].map(([value, text]) => h("option", { value }, String(text))),
        );
        this.power = numberInput("Requested power in dBm", -98, 100, "0.01");
        this.pmin = numberInput("Lower limit in dBm", -98, 100, "0.01");
        this.pmax = numberInput("Upper limit in dBm", -98, 100, "0.01");
        this.frequency = numberInput("Frequency in MHz", 0, 300000, "0.001");
        this.temperature = numberInput("Temperature in degrees Celsius", -100, 200, "0.1");
        this.interval = numberInput("Regulator interval in milliseconds", 1, 24, "1");
        this.loopMode = h(
            "select",
            { "aria-label": "Loop mode" },
            ...[
                [0, "0: normal"],
                [1, "1: closed"],
                [2, "2: open"],
            ].map(([value, text]) => h("option", { value }, String(text))),
        );
        this.gains = new GainsPanel(store, actions);
        this.faults = new FaultsPanel(store, actions);
        host.append(
            this.title,
            this.transmitterCard(),
            this.powerCard(),
            this.gains.element,
            this.testCard(),
            this.simulationCard(),
            this.faults.element,
        );
        setInterval(() => void this.read(), READ_EACH_MS);
        this.filledFor = "";
        store.on("view", () => this.onView());
    }

    get channel() {
        return this.store.view.channel;
    }

    /** @param {string} text @param {() => void} onclick @param {string} [kind] */
    button(text, onclick, kind = "") {
        return h("button", { type: "button", class: kind, onclick }, text);
    }

    /**
     * @param {string} method @param {Members} members without the channel @param {string} what @param {string} action @param {boolean} [isUnit] the whole unit
     */
    async set(method, members, what, action, isUnit = false) {
        const where = isUnit ? "the whole unit" : `channel ${this.channel}`;
        const demo = this.store.unit?.demo ? "The transmitter is simulated." : "This is a real transmitter.";
        await this.actions.sendConfirmed(
            method,
            isUnit ? members : { RadioChannelID: this.channel, ...members },
            `${where[0].toUpperCase()}${where.slice(1)}: ${what}`,
            `It is sent to ${where} and counts from the next step on. ${demo}`,
            action,
        );
        this.filledFor = "";
        await this.read();
    }

    /** @param {HTMLInputElement} input @returns {number|null} */
    numberOf(input) {
        return input.reportValidity() ? Number(input.value) : null;
    }

    transmitterCard() {
        const mode = () => Number(this.mode.value);
        return section(
            "Transmitter",
            "",
            this.status,
            h(
                "div",
                { class: "button-row" },
                this.button(
                    "Switch on",
                    () =>
                        void this.set(
                            "Unit.SetTxPower",
                            { State: "on", PowerMode: mode() },
                            `transmitter on, power mode ${mode()}`,
                            "Switch on",
                        ),
                    "on",
                ),
                this.button(
                    "Switch off",
                    () => void this.set("Unit.SetTxPower", { State: "off" }, "transmitter off", "Switch off"),
                    "off",
                ),
            ),
            field(
                "Power mode",
                h(
                    "span",
                    { class: "field-control" },
                    this.mode,
                    this.button(
                        "Set mode",
                        () =>
                            void this.set(
                                "Unit.SetPowerMode",
                                { PowerMode: mode() },
                                `power mode ${mode()}`,
                                "Set mode",
                            ),
                    ),
                ),
            ),
        );
    }

    powerCard() {
        const setPower = () => {
            const value = this.numberOf(this.power);
            if (value !== null) {
                void this.set(
                    "Unit.SetRequestedPower",
                    { PowerDbm: value },
                    `requested power ${value} dBm`,
                    "Set power",
                );
            }
        };
        const setLimits = () => {
            const [low, high] = [this.numberOf(this.pmin), this.numberOf(this.pmax)];
            if (low !== null && high !== null) {
                void this.set(
                    "Unit.SetLimits",
                    { TxPminDbm: low, TxPmaxDbm: high },
                    `limits ${low} to ${high} dBm`,
                    "Set limits",
                );
            }
        };
        return section(
            "Power and limits",
            "",
            field("Requested power", this.power, "dBm"),
            h(
                "div",
                { class: "button-row" },
                this.button("Set power", setPower),
                this.button(
                    "As the unit file says",
                    () =>
                        void this.set(
                            "Unit.SetRequestedPower",
                            { Source: "unit-file" },
                            "requested power of the unit file",
                            "Set power",
                        ),
                ),
            ),
            h(
                "div",
                { class: "field-row" },
                field("Lower limit", this.pmin, "dBm"),
                field("Upper limit", this.pmax, "dBm"),
            ),
            h("div", { class: "button-row" }, this.button("Set limits", setLimits)),
        );
    }

    testCard() {
        const isOn = h("input", { type: "checkbox" });
        this.productionTest = isOn;
        return section(
            "Production test",
            "",
            h("label", { class: "check" }, isOn, "production test"),
            field("Loop mode", this.loopMode),
            h(
                "div",
                { class: "button-row" },
                this.button(
                    "Set test",
                    () =>
                        void this.set(
                            "Unit.SetProductionTest",
                            { ProductionTest: isOn.checked, LoopMode: Number(this.loopMode.value) },
                            `production test ${isOn.checked ? "on" : "off"}, loop mode ${this.loopMode.value}`,
                            "Set test",
                        ),
                ),
            ),
        );
    }

    simulationCard() {
        const setOne = (
            /** @type {HTMLInputElement} */ input,
            /** @type {string} */ method,
            /** @type {string} */ member,
            /** @type {string} */ what,
            /** @type {string} */ unit,
            /** @type {boolean} */ isUnit,
        ) => {
            const value = this.numberOf(input);
            if (value !== null) {
                void this.set(method, { [member]: value }, `${what} ${value} ${unit}`, `Set ${what}`, isUnit);
            }
        };
        const back = (/** @type {string} */ method, /** @type {string} */ what, /** @type {boolean} */ isUnit) =>
            this.button(
                "As the unit file says",
                () => void this.set(method, { Source: "unit-file" }, `${what} of the unit file`, `Set ${what}`, isUnit),
            );
        return section(
            "Simulation",
            "temperature and interval: whole unit",
            field("Frequency", this.frequency, "MHz"),
            h(
                "div",
                { class: "button-row" },
                this.button("Set frequency", () =>
                    setOne(this.frequency, "Unit.SetFrequency", "FrequencyMhz", "frequency", "MHz", false),
                ),
                back("Unit.SetFrequency", "frequency", false),
            ),
            field("Temperature", this.temperature, "°C"),
            h(
                "div",
                { class: "button-row" },
                this.button("Set temperature", () =>
                    setOne(this.temperature, "Unit.SetTemperature", "TemperatureC", "temperature", "°C", true),
                ),
                back("Unit.SetTemperature", "temperature", true),
            ),
            field("Interval", this.interval, "ms"),
            h(
                "div",
                { class: "button-row" },
                this.button("Set interval", () =>
                    setOne(this.interval, "Unit.SetInterval", "IntervalMs", "interval", "ms", true),
                ),
            ),
        );
    }

    onView() {
        if (this.filledFor !== "" && this.filledFor !== String(this.channel)) {
            this.filledFor = "";
            void this.read();
        }
    }

    /** Shows what the unit has set, and fills the fields once for each channel. */
    async read() {
        if (this.host.hidden || document.hidden || this.store.unit === null || this.store.connection !== "live") {
            return;
        }
        const channel = this.channel;
        try {
            const status = await this.actions.api.call("Unit.Status", { RadioChannelID: channel });
            const found = status.Channels[0];
            setText(this.title, `Channel ${channel}`);
            this.showStatus(status, found);
            if (this.filledFor !== String(channel)) {
                this.filledFor = String(channel);
                this.fill(status, found);
                await Promise.all([this.gains.read(), this.faults.read()]);
            }
        } catch (error) {
            setText(this.title, error instanceof Error ? error.message : String(error));
        }
    }

    /** @param {any} status @param {any} found */
    showStatus(status, found) {
        const pairs = /** @type {[string, string][]} */ ([
            ["Transmitter", found.TxPower],
            ["Requested", `${found.RequestedPowerDbm} dBm (${found.RequestedPowerSource})`],
            ["Limits", `${found.TxPminDbm} to ${found.TxPmaxDbm} dBm`],
            ["Steps", `${found.Steps}, ${found.FailedSteps} failed`],
            ["Overruns", String(status.Overruns)],
            ["Lateness", `mean ${milliseconds(status.LatenessMeanUs)}, max ${milliseconds(status.LatenessMaxUs)} ms`],
        ]);
        if (this.status.children.length === 0) {
            this.status.append(
                ...pairs.map(([name]) => h("div", {}, h("dt", {}, name), h("dd", { class: "figures" }))),
            );
        }
        pairs.forEach(([, value], i) =>
            setText(/** @type {Element} */ (this.status.children[i].lastElementChild), value),
        );
    }

    /** @param {any} status @param {any} found */
    fill(status, found) {
        const put = (/** @type {HTMLInputElement|HTMLSelectElement} */ control, /** @type {number} */ value) => {
            if (document.activeElement !== control) {
                control.value = String(value);
            }
        };
        put(this.mode, found.PowerMode);
        put(this.power, found.RequestedPowerDbm);
        put(this.pmin, found.TxPminDbm);
        put(this.pmax, found.TxPmaxDbm);
        put(this.frequency, found.FrequencyMhz);
        put(this.temperature, Math.round(status.TemperatureC * 10) / 10);
        put(this.interval, status.IntervalMs);
        put(this.loopMode, found.LoopMode);
        if (this.productionTest !== undefined) {
            this.productionTest.checked = found.ProductionTest;
        }
    }
}
