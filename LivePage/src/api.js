import { decodeResponse, encodeCall } from "./xmlRpc.js";

/**
 * @typedef {{from_us: number, to_us: number, position_us: number, speed: number, paused: boolean, history_from_us: number}} ReplayInfo
 * @typedef {{run: string, interval_ms: number, version: string, started: string, clock_us: number, demo: boolean,
 *            replay: ReplayInfo|null, recording: {file: string, state: string, reason: string, from_us: number|null}|null,
 *            channels: {number: number, index: number, limits_cdb: number[]}[]}} UnitInfo
 * @typedef {{id: number, t_us: number, channel: number|null, kind: string, text: string}} UnitEvent
 */

const TOKEN_KEY = "unit-token";

/** The unit answered with a status that is not 200. */
export class HttpError extends Error {
    /** @param {number} status @param {string} text */
    constructor(status, text) {
        super(text || `the unit answered with status ${status}`);
        this.status = status;
    }
}

/** Asks the unit, with its token where it demands one. */
export class Api {
    /** @param {(wasWrong: boolean) => Promise<string|null>} askForToken null: given up */
    constructor(askForToken) {
        this.askForToken = askForToken;
        /** @type {Promise<boolean>|null} one question at a time, whoever asks */
        this.asking = null;
        /** Who said no is not asked again. */
        this.declined = false;
        this.token = sessionStorage.getItem(TOKEN_KEY) ?? "";
    }

    /**
     * @param {string} path @param {RequestInit} options
     * @returns {Promise<Response>} of status 200
     */
    async request(path, options = {}) {
        for (;;) {
            const sent = this.token;
            const headers = new Headers(options.headers);
            if (sent !== "") {
                headers.set("Authorization", `Bearer ${sent}`);
            }
            const response = await fetch(path, { cache: "no-store", ...options, headers });
            if (response.ok) {
                return response;
            }
            const text = (await response.text()).slice(0, 300).trim();
            if (response.status !== 401 || !(this.token !== sent || (await this.renewToken(sent !== "")))) {
                throw new HttpError(
                    response.status,
                    response.status === 401 ? "it demands its token; load the page anew to enter it" : text,
                );
            }
        }
    }

    /** @param {boolean} wasWrong @returns {Promise<boolean>} whether there is another one */
    renewToken(wasWrong) {
        if (this.declined) {
            return Promise.resolve(false);
        }
        this.asking ??= this.askForToken(wasWrong).then((token) => {
            this.asking = null;
            if (token === null || token === "") {
                this.declined = true;
                return false;
            }
            this.token = token;
            sessionStorage.setItem(TOKEN_KEY, token);
            return true;
        });
        return this.asking;
    }

    /** @returns {Promise<UnitInfo>} */
    async unit() {
        return (await this.request("api/unit")).json();
    }

    /** What was before the run began is left out; the unit would refuse it.
     * @param {number} channel @param {number} fromUs @param {number} toUs @param {number} points @param {AbortSignal} [signal]
     * @returns {Promise<{run: string, source: string, channels: any[]}>} */
    async history(channel, fromUs, toUs, points, signal) {
        const [from, to] = [Math.max(0, Math.round(fromUs)), Math.max(1, Math.round(toUs))];
        const query = `channel=${channel}&from_us=${from}&to_us=${to}&points=${Math.round(points)}`;
        return (await this.request(`api/history?${query}`, signal ? { signal } : {})).json();
    }

    /** @param {number} fromUs @param {number} toUs @param {number} limit @returns {Promise<UnitEvent[]>} */
    async events(fromUs, toUs, limit) {
        const [from, to] = [Math.max(0, Math.round(fromUs)), Math.max(1, Math.round(toUs))];
        const answer = await (await this.request(`api/events?from_us=${from}&to_us=${to}&limit=${limit}`)).json();
        return answer.events;
    }

    /** @param {{paused?: boolean, position_us?: number, speed?: number}} change */
    async replay(change) {
        await this.request("api/replay", {
            method: "POST",
            headers: { "Content-Type": "application/json" },
            body: JSON.stringify(change),
        });
    }

    /** @param {string} method @param {import("./xmlRpc.js").XmlRpcStruct} members @returns {Promise<any>} throws XmlRpcFault */
    async call(method, members = {}) {
        const body = encodeCall(method, Object.keys(members).length > 0 ? [members] : []);
        const response = await this.request("RPC2", { method: "POST", headers: { "Content-Type": "text/xml" }, body });
        return decodeResponse(await response.text());
    }
}
