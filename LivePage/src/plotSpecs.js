import { colour } from "./dom.js";

/** @typedef {import("./plot.js").PlotSpec} PlotSpec @typedef {import("./plot.js").Plot} Plot */

/** The bands of the error in decibels: well, and still within what is let pass. */
export const BANDS_DB = [0.1, 1];

/** @param {Plot} _plot @param {uPlot} u */
function paintErrorBands(_plot, u) {
    const { ctx, bbox } = u;
    const place = (/** @type {number} */ value) =>
        Math.min(bbox.top + bbox.height, Math.max(bbox.top, u.valToPos(value, "left", true)));
    ctx.save();
    BANDS_DB.forEach((half, i) => {
        ctx.fillStyle = colour(i === 0 ? "--band-inner" : "--band-outer");
        if (i === 0) {
            ctx.fillRect(bbox.left, place(half), bbox.width, place(-half) - place(half));
        } else {
            const inner = BANDS_DB[i - 1];
            ctx.fillRect(bbox.left, place(half), bbox.width, place(inner) - place(half));
            ctx.fillRect(bbox.left, place(-inner), bbox.width, place(-half) - place(-inner));
        }
    });
    ctx.restore();
}

/** Over the grid, which would cover one of them. @param {Plot} _plot @param {uPlot} u */
function paintBandEdges(_plot, u) {
    const { ctx, bbox } = u;
    ctx.save();
    ctx.strokeStyle = colour("--band-edge");
    ctx.lineWidth = devicePixelRatio;
    ctx.setLineDash([5 * devicePixelRatio, 4 * devicePixelRatio]);
    for (const value of [1, -1]) {
        const y = u.valToPos(value, "left", true);
        if (y > bbox.top && y < bbox.top + bbox.height) {
            ctx.beginPath();
            ctx.moveTo(bbox.left, y);
            ctx.lineTo(bbox.left + bbox.width, y);
            ctx.stroke();
        }
    }
    ctx.restore();
}

/** @type {readonly PlotSpec[]} */
export const PLOT_SPECS = [
    {
        name: "power",
        title: "Output power",
        units: { left: "dBm", right: "" },
        leastSpan: { left: 1, right: 1 },
        tags: ["ptarget_cdb", "pmeasured_cdb"],
    },
    {
        name: "error",
        title: "Error",
        units: { left: "dB", right: "" },
        leastSpan: { left: 2.5, right: 1 },
        tags: ["error_cdb"],
        paintBelow: paintErrorBands,
        paintOnGrid: paintBandEdges,
    },
    {
        name: "gain",
        title: "Gain",
        units: { left: "dB", right: "dBm, dB" },
        leastSpan: { left: 2, right: 2 },
        halves: true,
    },
    {
        name: "climate",
        title: "Climate",
        units: { left: "°C", right: "MHz" },
        leastSpan: { left: 2, right: 1 },
        halves: true,
    },
];
