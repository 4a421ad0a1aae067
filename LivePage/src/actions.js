import { confirmDialog } from "./dialogs.js";
import { toast } from "./dom.js";

/** Sends commands and tells what came of them. */
export class UnitActions {
    /** @param {import("./api.js").Api} api */
    constructor(api) {
        this.api = api;
    }

    /**
     * @param {string} method @param {import("./xmlRpc.js").XmlRpcStruct} members
     * @param {string} done what is said when it was taken; empty: nothing
     * @returns {Promise<any>} null when it was refused
     */
    async send(method, members, done) {
        try {
            const answer = await this.api.call(method, members);
            if (done !== "") {
                toast(`${done}: taken`, "well");
            }
            return answer;
        } catch (error) {
            toast(error instanceof Error ? error.message : String(error), "alarm");
            return null;
        }
    }

    /**
     * Asks first, since a transmitter follows.
     * @param {string} method @param {import("./xmlRpc.js").XmlRpcStruct} members @param {string} title @param {string} question @param {string} action
     * @returns {Promise<any>} null when it was refused or given up
     */
    async sendConfirmed(method, members, title, question, action) {
        return (await confirmDialog(title, question, action)) ? this.send(method, members, title) : null;
    }
}
