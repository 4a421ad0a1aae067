import { colour } from "./dom.js";
import { fixed } from "./units.js";

/** @typedef {import("./plot.js").Plot} Plot */

const TAG_HEIGHT = 15;

/** Grey where no samples came. @param {uPlot} u @param {import("./decimate.js").Picture|null} picture */
export function paintHoles(u, picture) {
    const { ctx, bbox } = u;
    for (const { fromUs, toUs } of picture?.holes ?? []) {
        const from = Math.max(bbox.left, u.valToPos(fromUs / 1e6, "x", true));
        const to = Math.min(bbox.left + bbox.width, u.valToPos(toUs / 1e6, "x", true));
        if (to > from) {
            ctx.fillStyle = colour("--hole");
            ctx.fillRect(from, bbox.top, to - from, bbox.height);
        }
    }
}

/** The latest values at the right edge, pushed apart where they would cover each other. @param {Plot} plot @param {uPlot} u */
export function paintTags(plot, u) {
    const { ctx, bbox } = u;
    const ratio = devicePixelRatio;
    const bottom = bbox.top + bbox.height;
    const height = TAG_HEIGHT * ratio;
    const tags = [];
    if (plot.store.picture?.hasRanges) {
        return;
    }
    for (const key of plot.spec.tags ?? []) {
        const index = plot.signals.findIndex((entry) => entry.key === key);
        const value = plot.data[index + 1].findLast((entry) => entry !== null && entry !== undefined) ?? null;
        if (value !== null && !plot.store.view.hidden.includes(key)) {
            const entry = plot.signals[index];
            const y = Math.min(
                bottom - height / 2,
                Math.max(bbox.top + height / 2, u.valToPos(value, entry.axis, true)),
            );
            const shown = value / (plot.isWatts ? plot.watts.factor : 1);
            tags.push({
                entry,
                y,
                at: y,
                text: fixed(shown, plot.isWatts && shown < 10 ? 3 : plot.isWatts && shown >= 100 ? 1 : 2),
            });
        }
    }
    tags.sort((a, b) => a.y - b.y);
    for (let i = 1; i < tags.length; ++i) {
        tags[i].y = Math.max(tags[i].y, tags[i - 1].y + height + ratio);
    }
    for (let i = tags.length - 1; i >= 0; --i) {
        tags[i].y = Math.min(tags[i].y, i === tags.length - 1 ? bottom - height / 2 : tags[i + 1].y - height - ratio);
    }
    ctx.save();
    ctx.font = `600 ${11 * ratio}px system-ui, sans-serif`;
    ctx.textBaseline = "middle";
    ctx.textAlign = "right";
    const left = bbox.left + bbox.width + 2 * ratio;
    const right = left + (plot.margins.right - 3) * ratio;
    for (const { entry, y, at, text } of tags) {
        ctx.fillStyle = colour(entry.colour);
        ctx.beginPath();
        ctx.moveTo(left, at);
        ctx.lineTo(left + 5 * ratio, y - height / 2);
        ctx.lineTo(right, y - height / 2);
        ctx.lineTo(right, y + height / 2);
        ctx.lineTo(left + 5 * ratio, y + height / 2);
        ctx.closePath();
        ctx.fill();
        ctx.fillStyle = colour("--tag-text");
        ctx.fillText(text, right - 3 * ratio, y + 0.5 * ratio);
    }
    ctx.restore();
}
