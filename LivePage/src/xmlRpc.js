/**
 * XML-RPC as the unit speaks it: int, double, boolean, string, array, struct and fault. Whole numbers are sent as int;
 * the unit takes an int for a double.
 * @typedef {{[name: string]: XmlRpcValue}} XmlRpcStruct
 * @typedef {number|boolean|string|XmlRpcArray|XmlRpcStruct} XmlRpcValue
 */

/** @typedef {XmlRpcValue[]} XmlRpcArray */

/** A fault that the unit answered with. */
export class XmlRpcFault extends Error {
    /** @param {number} code @param {string} text */
    constructor(code, text) {
        super(text);
        this.name = "XmlRpcFault";
        this.code = code;
    }
}

const ENTITIES = /** @type {Record<string, string>} */ ({ lt: "<", gt: ">", amp: "&", quot: '"', apos: "'" });

/** @param {string} text @returns {string} */
function escapeText(text) {
    return text.replace(/[&<>]/g, (sign) => (sign === "&" ? "&amp;" : sign === "<" ? "&lt;" : "&gt;"));
}

/** @param {string} text @returns {string} */
function unescapeText(text) {
    return text.replace(/&(#x[0-9a-fA-F]+|#[0-9]+|[a-z]+);/g, (_whole, name) => {
        if (name.startsWith("#")) {
            return String.fromCodePoint(name[1] === "x" ? parseInt(name.slice(2), 16) : Number(name.slice(1)));
        }
        const sign = ENTITIES[name];
        if (sign === undefined) {
            throw new Error(`unknown entity &${name};`);
        }
        return sign;
    });
}

/** @param {XmlRpcValue} value @returns {string} */
export function encodeValue(value) {
    return `<value>${encodeInner(value)}</value>`;
}

/** @param {XmlRpcValue} value @returns {string} */
function encodeInner(value) {
    if (typeof value === "number") {
        if (!Number.isFinite(value)) {
            throw new RangeError(`${value} cannot be sent`);
        }
        const isInt = Number.isInteger(value) && Math.abs(value) <= 0x7fffffff;
        return isInt ? `<int>${value}</int>` : `<double>${decimal(value)}</double>`;
    }
    if (typeof value === "boolean") {
        return `<boolean>${value ? 1 : 0}</boolean>`;
    }
    if (typeof value === "string") {
        return `<string>${escapeText(value)}</string>`;
    }
    if (Array.isArray(value)) {
        return `<array><data>${value.map(encodeValue).join("")}</data></array>`;
    }
    const members = Object.entries(value).map(
        ([name, member]) => `<member><name>${escapeText(name)}</name>${encodeValue(member)}</member>`,
    );
    return `<struct>${members.join("")}</struct>`;
}

/** @param {number} value @returns {string} without an exponent, which XML-RPC does not know */
function decimal(value) {
    const text = String(value);
    return /e/i.test(text) ? value.toFixed(Math.abs(value) >= 1 ? 0 : 20) : text;
}

/** @param {string} method @param {XmlRpcValue[]} parameters @returns {string} */
export function encodeCall(method, parameters) {
    const body = parameters.map((value) => `<param>${encodeValue(value)}</param>`).join("");
    return `<?xml version="1.0"?><methodCall><methodName>${escapeText(method)}</methodName><params>${body}</params></methodCall>`;
}

/**
 * @typedef {{name: string, text: string, children: Element_[]}} Element_
 */

/** @param {string} xml @returns {Element_} the root; attributes are not used by XML-RPC */
function parseElements(xml) {
    /** @type {Element_} */
    const top = { name: "", text: "", children: [] };
    const open = [top];
    const token = /<!--[\s\S]*?-->|<\?[\s\S]*?\?>|<(\/?)([A-Za-z][\w.]*)\s*(\/?)>|([^<]+)|</g;
    for (const [whole, closing, name, empty, text] of xml.matchAll(token)) {
        const inner = open[open.length - 1];
        if (text !== undefined) {
            inner.text += unescapeText(text);
        } else if (name === undefined) {
            if (whole === "<") {
                throw new Error("not well-formed XML");
            }
        } else if (closing) {
            if (inner.name !== name || open.length === 1) {
                throw new Error(`</${name}> closes nothing`);
            }
            open.pop();
        } else {
            const child = { name, text: "", children: [] };
            inner.children.push(child);
            if (!empty) {
                open.push(child);
            }
        }
    }
    if (open.length !== 1 || top.children.length !== 1 || top.text.trim() !== "") {
        throw new Error("the answer ends before it is complete");
    }
    return top.children[0];
}

/** @param {Element_} element @param {string} name @returns {Element_} */
function childOf(element, name) {
    const found = element.children.find((entry) => entry.name === name);
    if (found === undefined) {
        throw new Error(`<${element.name}> has no <${name}>`);
    }
    return found;
}

/** @param {Element_} element a value @returns {XmlRpcValue} */
function decodeValue(element) {
    const typed = element.children[0];
    if (typed === undefined) {
        return element.text;
    }
    switch (typed.name) {
        case "int":
        case "i4":
        case "double": {
            const number = Number(typed.text);
            if (typed.text.trim() === "" || Number.isNaN(number)) {
                throw new Error(`"${typed.text}" is no number`);
            }
            return number;
        }
        case "boolean":
            return typed.text.trim() === "1";
        case "string":
            return typed.text;
        case "array":
            return childOf(typed, "data").children.map(decodeValue);
        case "struct": {
            /** @type {Record<string, XmlRpcValue>} */
            const struct = {};
            for (const member of typed.children) {
                struct[childOf(member, "name").text] = decodeValue(childOf(member, "value"));
            }
            return struct;
        }
        default:
            throw new Error(`unknown type <${typed.name}>`);
    }
}

/** @param {string} xml @returns {XmlRpcValue} the result; throws XmlRpcFault for a fault */
export function decodeResponse(xml) {
    const root = parseElements(xml);
    if (root.name !== "methodResponse") {
        throw new Error(`<${root.name}> is no answer to a call`);
    }
    const body = root.children[0];
    if (body?.name === "fault") {
        const fault = /** @type {any} */ (decodeValue(childOf(body, "value")));
        throw new XmlRpcFault(Number(fault.faultCode), String(fault.faultString));
    }
    return decodeValue(childOf(childOf(childOf(root, "params"), "param"), "value"));
}

/** @param {string} xml @returns {{method: string, parameters: XmlRpcValue[]}} a call; for servers */
export function decodeCall(xml) {
    const root = parseElements(xml);
    const parameters = root.children.find((entry) => entry.name === "params")?.children ?? [];
    return {
        method: childOf(root, "methodName").text,
        parameters: parameters.map((entry) => decodeValue(childOf(entry, "value"))),
    };
}
