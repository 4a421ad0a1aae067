import { duration } from "./clock.js";
import { colour } from "./dom.js";
import { isoTime } from "./exportCsv.js";
import { format } from "./units.js";
import { storeValuesAt } from "./valuesAt.js";

/** @typedef {import("./store.js").Store} Store @typedef {import("./chartStack.js").ChartStack} ChartStack */

const FONT = "system-ui, sans-serif";
const HEAD = 44;
const LEGEND = 22;

/**
 * The charts as they are seen, with headings, legends, cursors and what unit and time they are of.
 * @param {Store} store @param {ChartStack} stack @returns {Promise<Blob>}
 */
export function pictureOfCharts(store, stack) {
    const ratio = devicePixelRatio;
    const width = stack.host.clientWidth;
    const parts = [
        ...stack.plots.map((plot) => ({
            plot,
            source: /** @type {uPlot} */ (plot.u).ctx.canvas,
            height: plot.body.clientHeight,
        })),
        { plot: null, source: stack.strip.canvas, height: stack.strip.canvas.clientHeight },
    ];
    const height = HEAD + parts.reduce((sum, part) => sum + part.height + LEGEND, 0) + 28;
    const canvas = document.createElement("canvas");
    canvas.width = Math.round(width * ratio);
    canvas.height = Math.round(height * ratio);
    const context = /** @type {CanvasRenderingContext2D} */ (canvas.getContext("2d"));
    context.scale(ratio, ratio);
    context.fillStyle = colour("--panel");
    context.fillRect(0, 0, width, height);
    text(
        context,
        `Channel ${store.view.channel} of ${location.host}`,
        stack.margins.left,
        20,
        `600 15px ${FONT}`,
        "--text",
    );
    text(
        context,
        `${isoTime(store.startedMs, store.shown.fromUs)} and ${duration(store.shown.toUs - store.shown.fromUs)} from there`,
        stack.margins.left,
        37,
        `11px ${FONT}`,
        "--quiet",
    );
    /** @type {{top: number, bottom: number}[]} */
    const places = [];
    let y = HEAD;
    for (const { plot, source, height: partHeight } of parts) {
        if (plot !== null) {
            paintLegend(context, plot, y + 15, stack.margins.left);
        }
        context.drawImage(source, 0, y + LEGEND, width, partHeight);
        places.push({ top: y + LEGEND, bottom: y + LEGEND + partHeight });
        y += partHeight + LEGEND;
    }
    paintCursors(context, store, stack, places);
    return new Promise((resolve, reject) =>
        canvas.toBlob(
            (blob) => (blob === null ? reject(new Error("no picture came about")) : resolve(blob)),
            "image/png",
        ),
    );
}

/** @param {CanvasRenderingContext2D} context @param {string} words @param {number} x @param {number} y @param {string} font @param {string} ink */
function text(context, words, x, y, font, ink) {
    context.font = font;
    context.fillStyle = colour(ink);
    context.fillText(words, x, y);
    return x + context.measureText(words).width;
}

/** @param {CanvasRenderingContext2D} context @param {import("./plot.js").Plot} plot @param {number} y @param {number} left */
function paintLegend(context, plot, y, left) {
    let x = text(context, plot.title.textContent ?? "", left, y, `600 12px ${FONT}`, "--text") + 6;
    x = text(context, plot.unitText.textContent ?? "", x, y, `11px ${FONT}`, "--quiet") + 18;
    for (const { entry } of plot.entries.filter((each) => !plot.store.view.hidden.includes(each.entry.key))) {
        context.strokeStyle = colour(entry.colour);
        context.lineWidth = 2;
        context.setLineDash(entry.dash);
        context.beginPath();
        context.moveTo(x, y - 4);
        context.lineTo(x + 24, y - 4);
        context.stroke();
        context.setLineDash([]);
        x = text(context, entry.label, x + 30, y, `11px ${FONT}`, "--text") + 14;
    }
}

/** @param {CanvasRenderingContext2D} context @param {Store} store @param {ChartStack} stack
 * @param {{top: number, bottom: number}[]} places of the charts, the strip of states last */
function paintCursors(context, store, stack, places) {
    const notes = [];
    const strip = places[places.length - 1];
    for (const which of /** @type {const} */ (["a", "b"])) {
        const us = store.view[which];
        const x = us === null ? NaN : stack.margins.left + stack.overlay.toX(us);
        if (us === null || !(x >= stack.margins.left && x <= stack.margins.left + stack.overlay.width)) {
            continue;
        }
        context.strokeStyle = colour("--cursor");
        context.lineWidth = 1;
        context.setLineDash([4, 3]);
        context.beginPath();
        for (const { top, bottom } of places) {
            context.moveTo(x, top);
            context.lineTo(x, bottom === strip.bottom ? strip.top + 24 : bottom);
        }
        context.stroke();
        context.setLineDash([]);
        context.fillStyle = colour("--cursor-ground");
        context.fillRect(x - 8, strip.top - 18, 16, 16);
        context.textAlign = "center";
        text(context, which.toUpperCase(), x, strip.top - 6, `700 11px ${FONT}`, "--cursor-text");
        context.textAlign = "left";
        const value = storeValuesAt(store, us)("pmeasured_cdb");
        const shown = format(value === null ? null : value / 100, "power", 2, store.view.unit);
        notes.push(`${which.toUpperCase()}: ${(us / 1e6).toFixed(3)} s, measured ${shown.text} ${shown.unit}`);
    }
    if (store.view.a !== null && store.view.b !== null) {
        notes.push(`B − A: ${duration(store.view.b - store.view.a)}`);
    }
    text(context, notes.join("     "), stack.margins.left, strip.bottom + 16, `11px ${FONT}`, "--text");
}
