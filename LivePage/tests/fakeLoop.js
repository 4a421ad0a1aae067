/** A plausible power loop for tests and for work on the page; it is not the controller. Powers in hundredths of dB. */

const OFF = 2;
const RAMPING = 7;
const ON = 8;

/** @param {number} seed @returns {() => number} roughly normal, the same for the same seed */
function noiseOf(seed) {
    let state = (seed * 2654435761 + 1) >>> 0;
    const next = () => {
        state = (Math.imul(state, 1664525) + 1013904223) >>> 0;
        return state / 2 ** 32;
    };
    return () => next() + next() + next() + next() - 2;
}

export class FakeLoop {
    /** @param {number} number @param {number} intervalUs */
    constructor(number, intervalUs) {
        this.number = number;
        this.intervalUs = intervalUs;
        this.noise = noiseOf(number + 1);
        this.state = OFF;
        this.stateSinceUs = 0;
        this.wantOn = true;
        this.mode = 1;
        this.requested = 2000 + 150 * (number % 4);
        this.limits = [-1000, 3000 + 1000];
        this.control = -1000;
        this.fade = 0;
        this.frequencyKhz = 5000000 + 20000 * number;
        this.temperature = NaN;
        this.gains = { Ramping: [20, 20, 20], On: [20, 20, 20] };
        this.productionTest = false;
        this.loopMode = 0;
        /** @type {Map<string, any>} */
        this.faults = new Map();
        this.steps = 0;
        this.failed = 0;
        /** @type {number[][]} */
        this.transient = [];
        this.transientOn = false;
        this.statisticsOn = true;
        /** @type {{actual: number, min: number, max: number}[]|null} */
        this.statistics = null;
        this.measured = NaN;
        /** @type {any} */
        this.last = null;
    }

    /** @param {number} timeUs @param {number} state */
    enter(timeUs, state) {
        this.state = state;
        this.stateSinceUs = timeUs;
    }

    /** @param {number} timeUs */
    advanceState(timeUs) {
        const waited = timeUs - this.stateSinceUs;
        if (this.wantOn && this.state === OFF) {
            this.enter(timeUs, 5);
        } else if (this.state === 5) {
            this.control = -1000;
            this.enter(timeUs, 6);
        } else if (this.state === 6 && waited > 60000) {
            this.enter(timeUs, RAMPING);
        } else if (this.state === RAMPING && Math.abs(this.target(timeUs) - this.measured) < 100) {
            this.enter(timeUs, ON);
        } else if (!this.wantOn && this.state > 2) {
            this.enter(timeUs, 0);
        } else if (this.state === 0 && waited > 0) {
            this.enter(timeUs, 1);
        } else if (this.state === 1 && waited > 30000) {
            this.enter(timeUs, OFF);
        }
    }

    /** @param {number} timeUs @returns {number} hundredths of °C */
    temperatureAt(timeUs) {
        return Number.isNaN(this.temperature)
            ? 3800 + 450 * Math.sin(timeUs / 40e6 + this.number) + 3 * this.noise()
            : this.temperature;
    }

    /** @param {number} timeUs */
    target(timeUs) {
        return this.requested + Math.round((this.temperatureAt(timeUs) - 2500) / 100);
    }

    /** @param {number} timeUs @returns {Record<string, any>} one sample */
    step(timeUs) {
        this.advanceState(timeUs);
        ++this.steps;
        const target = this.target(timeUs);
        const isLoop = this.state === RAMPING || this.state === ON;
        const fault = this.faults.get("getPmeasured");
        const failed =
            isLoop &&
            fault !== undefined &&
            (fault.Kind === "fail" || (fault.Kind === "intermittent" && this.noise() > 0.6));
        const temperature = this.temperatureAt(timeUs);
        const reduced = [0, 1, 2, 3, 4, 5].map((i) =>
            i < 4 ? Math.round(330 - 40 * i + (temperature - 3800) * 0.05 * (i + 1) + 2 * this.noise()) : 0,
        );
        if (isLoop && !failed) {
            const was = this.measured;
            const gain = this.gains[this.state === ON ? "On" : "Ramping"][0] / 100;
            const error = target - (Number.isNaN(was) ? this.control : was);
            this.control = Math.min(
                this.limits[1],
                Math.max(this.limits[0], this.control + (this.loopMode === 2 ? 0 : gain * error)),
            );
            const wrong = fault?.Kind === "wrong-value" ? fault.Value : 0;
            this.measured = wrong || this.control - 24 - this.fade + 2.2 * this.noise();
        } else if (failed) {
            ++this.failed;
        } else {
            this.measured = NaN;
        }
        const measured = isLoop ? Math.round(this.measured) : null;
        const control = isLoop ? Math.round(this.control) : null;
        const gain = isLoop ? Math.round(this.control + 300) : null;
        this.last = {
            t_us: timeUs,
            state: this.state,
            requested_cdb: this.requested,
            ptarget_cdb: isLoop ? target : null,
            pctrl_cdb: control,
            pmeasured_cdb: measured,
            ppredicted_cdb: isLoop ? Math.round(this.control + 6 - this.fade * 0.4) : null,
            error_cdb: measured === null ? null : target - measured,
            rf_gain_cdb: gain,
            if_power_cdb: isLoop ? -300 : null,
            reduced,
            temperature_cc: Math.round(temperature),
            frequency_khz: this.frequencyKhz,
            result: failed ? 0x8000 : 0,
            detector_state: (measured ?? 0) > 1500 ? 2 : 1,
        };
        if (isLoop && measured !== null) {
            this.log([target, control ?? 0, measured, -300, gain ?? 0, 0, ...reduced]);
        }
        return this.last;
    }

    /** @param {number[]} values */
    log(values) {
        if (this.transientOn && this.transient.length < 200) {
            this.transient.push(values);
        }
        if (this.statisticsOn) {
            this.statistics = values.map((value, i) => {
                const known = this.statistics?.[i];
                return {
                    actual: value,
                    min: Math.min(value, known?.min ?? value),
                    max: Math.max(value, known?.max ?? value),
                };
            });
        }
    }
}
