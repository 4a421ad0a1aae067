/**
 * Finds the moment at which the picture is to stand, and says which stretch of time it shows.
 * @typedef {"free"|"auto"|"normal"|"single"} TriggerMode
 * @typedef {"step"|"state"|"error"} TriggerSource
 * @typedef {{mode: TriggerMode, source: TriggerSource, level: number}} TriggerSettings level in hundredths of a decibel;
 *     for "state" the state that is entered, -1 for any
 * @typedef {{timeUs: number, target: number|null, error: number|null, state: number|null}} TriggerSample
 * @typedef {"rolling"|"waiting"|"filling"|"shown"|"done"} TriggerPhase
 */

/** Part of the window that lies before the trigger. */
export const BEFORE_TRIGGER = 0.2;

/** "auto" rolls on after so long without a trigger, or after a window where that is longer. */
const AUTO_WAIT_US = 2e6;

export class Trigger {
    /** @param {TriggerSettings} settings @param {number} windowUs */
    constructor(settings, windowUs) {
        this.settings = settings;
        this.windowUs = windowUs;
        /** @type {number|null} */
        this.foundUs = null;
        this.finished = false;
        this.newestUs = NaN;
        this.armedUs = NaN;
        /** @type {TriggerSample|null} */
        this.before = null;
    }

    /** Forgets what was found; a single one waits again. */
    rearm() {
        this.foundUs = null;
        this.finished = false;
        this.newestUs = NaN;
        this.armedUs = NaN;
        this.before = null;
    }

    /** @param {TriggerSettings} settings */
    configure(settings) {
        this.settings = settings;
        this.rearm();
    }

    /** @param {number} windowUs */
    setWindow(windowUs) {
        this.windowUs = windowUs;
    }

    /** @param {TriggerSample} sample the next one of the channel */
    feed(sample) {
        const before = this.before;
        this.before = sample;
        this.newestUs = sample.timeUs;
        if (Number.isNaN(this.armedUs)) {
            this.armedUs = sample.timeUs;
        }
        if (this.settings.mode === "free" || this.finished || before === null || !this.isEdge(before, sample)) {
            return;
        }
        if (this.foundUs === null || sample.timeUs >= this.endUs(this.foundUs)) {
            this.foundUs = sample.timeUs;
            this.finished = this.settings.mode === "single";
        }
    }

    /** @param {TriggerSample} before @param {TriggerSample} now @returns {boolean} */
    isEdge(before, now) {
        const { source, level } = this.settings;
        if (source === "step") {
            return before.target !== null && now.target !== null && Math.abs(now.target - before.target) >= level;
        }
        if (source === "state") {
            return now.state !== before.state && (level < 0 || now.state === level);
        }
        return (
            now.error !== null &&
            Math.abs(now.error) > level &&
            (before.error === null || Math.abs(before.error) <= level)
        );
    }

    /** @param {number} foundUs @returns {number} end of the picture around it */
    endUs(foundUs) {
        return foundUs + (1 - BEFORE_TRIGGER) * this.windowUs;
    }

    /** @returns {TriggerPhase} */
    get phase() {
        if (this.settings.mode === "free") {
            return "rolling";
        }
        if (this.foundUs === null) {
            return this.settings.mode === "auto" && this.waitedLong(this.armedUs) ? "rolling" : "waiting";
        }
        if (this.newestUs < this.endUs(this.foundUs)) {
            return "filling";
        }
        if (this.settings.mode === "single") {
            return "done";
        }
        return this.settings.mode === "auto" && this.waitedLong(this.endUs(this.foundUs)) ? "rolling" : "shown";
    }

    /** @param {number} sinceUs @returns {boolean} */
    waitedLong(sinceUs) {
        return this.newestUs - sinceUs > Math.max(AUTO_WAIT_US, this.windowUs);
    }

    /** @returns {{fromUs: number, toUs: number}|null} the stretch to show; null: the newest samples */
    get stretch() {
        const phase = this.phase;
        if (this.foundUs === null || phase === "rolling" || phase === "waiting") {
            return null;
        }
        const fromUs = this.foundUs - BEFORE_TRIGGER * this.windowUs;
        return { fromUs, toUs: fromUs + this.windowUs };
    }
}
