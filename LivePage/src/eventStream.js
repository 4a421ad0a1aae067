/**
 * Reads text/event-stream piece by piece: lines may end in LF, CR LF or CR, and a piece may end anywhere.
 * @typedef {{id: string, event: string, data: string}} StreamMessage
 */
export class EventStreamParser {
    /** @param {(message: StreamMessage) => void} onMessage */
    constructor(onMessage) {
        this.onMessage = onMessage;
        this.rest = "";
        this.afterCarriageReturn = false;
        this.id = "";
        this.event = "";
        /** @type {string[]} */
        this.data = [];
        this.first = true;
    }

    /** @param {string} text */
    push(text) {
        if (this.first && text.length > 0) {
            this.first = false;
            text = text.startsWith("\uFEFF") ? text.slice(1) : text;
        }
        if (this.afterCarriageReturn && text.startsWith("\n")) {
            text = text.slice(1);
        }
        if (text.length === 0) {
            return;
        }
        this.afterCarriageReturn = text.endsWith("\r");
        const lines = (this.rest + text).split(/\r\n|\n|\r/);
        this.rest = /** @type {string} */ (lines.pop());
        for (const line of lines) {
            this.takeLine(line);
        }
    }

    /** @param {string} line */
    takeLine(line) {
        if (line === "") {
            this.dispatch();
            return;
        }
        const colon = line.indexOf(":");
        if (colon === 0) {
            return;
        }
        const field = colon < 0 ? line : line.slice(0, colon);
        let value = colon < 0 ? "" : line.slice(colon + 1);
        value = value.startsWith(" ") ? value.slice(1) : value;
        if (field === "data") {
            this.data.push(value);
        } else if (field === "event") {
            this.event = value;
        } else if (field === "id" && !value.includes("\0")) {
            this.id = value;
        }
    }

    dispatch() {
        if (this.data.length > 0) {
            this.onMessage({ id: this.id, event: this.event || "message", data: this.data.join("\n") });
        }
        this.data = [];
        this.event = "";
    }
}
