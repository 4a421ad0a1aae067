/** The line of a signal, as its legend shows it. @param {import("./signals.js").Signal} entry @returns {SVGElement} */
export function swatch(entry) {
    const space = "http://www.w3.org/2000/svg";
    const svg = document.createElementNS(space, "svg");
    svg.setAttribute("class", "swatch");
    svg.setAttribute("viewBox", "0 0 26 6");
    svg.setAttribute("aria-hidden", "true");
    const line = document.createElementNS(space, "line");
    for (const [name, value] of Object.entries({
        x1: 1,
        y1: 3,
        x2: 25,
        y2: 3,
        "stroke-width": 2,
        "stroke-dasharray": entry.dash.join(" "),
    })) {
        line.setAttribute(name, String(value));
    }
    line.style.stroke = `var(${entry.colour})`;
    svg.append(line);
    return svg;
}
