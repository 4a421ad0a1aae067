/**
 * @typedef {string|Node|null|undefined|false} Child
 * @typedef {Record<string, string|number|boolean|null|undefined|((event: any) => void)>} Attributes
 */

/**
 * Makes an element. Attributes that are functions are listeners ("onclick"), true ones are set empty, false and null are
 * left out. Texts are texts, never markup.
 * @template {keyof HTMLElementTagNameMap} K
 * @param {K} tag @param {Attributes} attributes @param {...Child} children
 * @returns {HTMLElementTagNameMap[K]}
 */
export function h(tag, attributes = {}, ...children) {
    const element = document.createElement(tag);
    for (const [name, value] of Object.entries(attributes)) {
        if (typeof value === "function") {
            element.addEventListener(name.slice(2), value);
        } else if (value !== false && value !== null && value !== undefined) {
            element.setAttribute(name, value === true ? "" : String(value));
        }
    }
    element.append(
        ...children
            .filter((child) => child !== null && child !== undefined && child !== false)
            .map((child) => /** @type {string|Node} */ (child)),
    );
    return element;
}

/** @param {string} id @returns {HTMLElement} */
export function byId(id) {
    const element = document.getElementById(id);
    if (element === null) {
        throw new Error(`the page has no element ${id}`);
    }
    return element;
}

/** Writes only what changed, since each writing lays the page out anew. @param {Node} node @param {string} text */
export function setText(node, text) {
    if (node.textContent !== text) {
        node.textContent = text;
    }
}

/** @param {Element} element @param {string} name @param {string} value */
export function setAttribute(element, name, value) {
    if (element.getAttribute(name) !== value) {
        element.setAttribute(name, value);
    }
}

/** @type {Map<string, string>} */
const colours = new Map();

/** @param {string} variable such as --measured @returns {string} as the canvas takes it */
export function colour(variable) {
    let found = colours.get(variable);
    if (found === undefined) {
        const probe = h("i", { hidden: true });
        probe.style.color = `var(${variable})`;
        document.body.append(probe);
        found = getComputedStyle(probe).color;
        probe.remove();
        colours.set(variable, found);
    }
    return found;
}

/** After a change of theme. */
export function forgetColours() {
    colours.clear();
}

/** @param {string} text @param {"note"|"well"|"alarm"} level */
export function toast(text, level = "note") {
    const element = h("div", { class: `toast ${level}` }, text);
    byId("toasts").append(element);
    setTimeout(() => element.remove(), level === "alarm" ? 9000 : 4000);
}

/** @param {string} name @param {Blob} blob */
export function download(name, blob) {
    const address = URL.createObjectURL(blob);
    const link = h("a", { href: address, download: name });
    document.body.append(link);
    link.click();
    link.remove();
    setTimeout(() => URL.revokeObjectURL(address), 10000);
}
