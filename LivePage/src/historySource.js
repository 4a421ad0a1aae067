import { Decimator, emptyPicture, pictureOfRanges } from "./decimate.js";
import { ChannelRing } from "./ring.js";

/** @typedef {import("./decimate.js").Picture} Picture @typedef {import("./store.js").Range} Range */

const WAIT_MS = 150;

/** Asks the unit for what the page does not hold, once the view rests. */
export class HistorySource {
    /** @param {import("./api.js").Api} api @param {import("./store.js").Store} store */
    constructor(api, store) {
        this.api = api;
        this.store = store;
        this.onAnswer = () => {};
        this.key = "";
        this.timer = 0;
        /** @type {AbortController|null} */
        this.asking = null;
        /** @type {{channel: number, range: Range, ring: ChannelRing|null, picture: Picture|null, source: string}|null} */
        this.answer = null;
        this.problem = "";
        this.decimator = new Decimator();
        this.picture = emptyPicture();
    }

    get isLoading() {
        return this.asking !== null;
    }

    /**
     * @param {Range} range @param {number} pixels @param {ChannelRing} live
     * @returns {Picture|null} null when the page's own samples do
     */
    pictureFor(range, pixels, live) {
        const { unit } = this.store;
        const beginUs = Math.max(unit?.replay?.history_from_us ?? unit?.recording?.from_us ?? 0, range.fromUs);
        if (!Number.isNaN(live.oldestUs) && beginUs >= live.oldestUs - this.store.holeUs) {
            return null;
        }
        const channel = this.store.view.channel;
        const key = `${this.store.unit?.run} ${channel} ${Math.round(range.fromUs)} ${Math.round(range.toUs)} ${pixels}`;
        if (key !== this.key) {
            this.key = key;
            clearTimeout(this.timer);
            this.timer = window.setTimeout(() => void this.ask(channel, { ...range }, pixels), WAIT_MS);
        }
        const { answer } = this;
        if (
            answer === null ||
            answer.channel !== channel ||
            answer.range.toUs < range.fromUs ||
            answer.range.fromUs > range.toUs
        ) {
            return null;
        }
        if (answer.ring === null) {
            return answer.picture;
        }
        this.decimator.fill(answer.ring, range.fromUs, range.toUs, pixels, this.store.holeUs, this.picture);
        this.picture.source = answer.source;
        return this.picture;
    }

    /** @param {number} channel @param {Range} range @param {number} pixels */
    async ask(channel, range, pixels) {
        this.asking?.abort();
        const control = new AbortController();
        this.asking = control;
        try {
            const got = await this.api.history(
                channel,
                range.fromUs,
                range.toUs,
                Math.max(400, 2 * pixels),
                control.signal,
            );
            const columns = got.channels.find((entry) => entry.c === channel);
            if (columns === undefined) {
                throw new Error(`the unit has no history of channel ${channel}`);
            }
            this.answer =
                columns.n === undefined
                    ? { channel, range, ring: ringOf(columns), picture: null, source: "steps" }
                    : { channel, range, ring: null, picture: pictureOfRanges(columns, got.source), source: got.source };
            this.problem = "";
        } catch (error) {
            if (control.signal.aborted) {
                return;
            }
            this.problem = error instanceof Error ? error.message : String(error);
        }
        if (this.asking === control) {
            this.asking = null;
            this.onAnswer();
        }
    }
}

/** @param {any} columns @returns {ChannelRing} */
function ringOf(columns) {
    const ring = new ChannelRing(Math.max(1, columns.t_us.length));
    ring.append(columns);
    return ring;
}
