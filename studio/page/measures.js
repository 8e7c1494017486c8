// What is measured in the picture: the profile of a line, and the histogram of what is in sight.

import { one } from "./dom.js";
import { getJson, getResponse } from "./link.js";
import { visibleRegion } from "./picture.js";
import { channels, colour, curve, overlay, paced, prepare, redraw } from "./plot.js";
import { store } from "./state.js";

const profileCanvas = /** @type {HTMLCanvasElement} */ (one("#profile"));
const histogramCanvas = /** @type {HTMLCanvasElement} */ (one("#histogram"));

/** @type {{bytes: Uint8Array, first: number, axis: "row" | "column", at: number} | null} blue, green, red */
let line = null;
/** @type {Record<"red" | "green" | "blue", number[]> | null} */
let counts = null;
let logarithmic = true;
/** Place of the pointer over the profile, 0 to 1. @type {number | null} */
let pointed = null;

const margin = { left: 26, right: 4, top: 6, bottom: 14 };

/** @param {HTMLCanvasElement} canvas */
function frameOf(canvas) {
    const { context, width, height } = prepare(canvas);
    const box = { x: margin.left, y: margin.top, width: width - margin.left - margin.right,
                  height: height - margin.top - margin.bottom };
    context.font = "10px ui-monospace, monospace";
    context.fillStyle = colour("quiet");
    context.lineWidth = 1;
    return { context, box };
}

function drawProfile() {
    const { context, box } = frameOf(profileCanvas);
    context.textAlign = "right";
    context.textBaseline = "middle";
    for (const level of [0, 64, 128, 192, 255]) {
        const y = Math.round(box.y + box.height * (1 - level / 255)) + 0.5;
        context.strokeStyle = colour("line");
        context.beginPath();
        context.moveTo(box.x, y);
        context.lineTo(box.x + box.width, y);
        context.stroke();
        context.fillText(String(level), box.x - 4, y);
    }
    if (!line) return;
    const { bytes, first } = line;
    const count = bytes.length / 3;
    context.globalCompositeOperation = overlay();
    for (const [index, channel] of channels.entries()) {
        context.strokeStyle = colour(channel);
        curve(context, (i) => bytes[i * 3 + 2 - index] ?? 0, count, box);
    }
    context.globalCompositeOperation = "source-over";
    context.textBaseline = "top";
    for (const share of [0, 0.25, 0.5, 0.75, 1]) {
        context.textAlign = share === 0 ? "left" : share === 1 ? "right" : "center";
        const pixel = first + Math.min(count - 1, Math.floor(share * count));
        context.fillText(String(pixel), box.x + share * box.width, box.y + box.height + 3);
    }
    readProfile(context, box);
}

/**
 * @param {CanvasRenderingContext2D} context
 * @param {{x: number, y: number, width: number, height: number}} box
 */
function readProfile(context, box) {
    const text = one("#profile-text");
    if (!line) return;
    const { bytes, first, axis, at } = line;
    const name = axis === "row" ? `row ${at}` : `column ${at}`;
    if (pointed === null) {
        const means = channels.map((_, index) => {
            let sum = 0;
            for (let i = 2 - index; i < bytes.length; i += 3) sum += bytes[i] ?? 0;
            return (sum / (bytes.length / 3)).toFixed(1);
        });
        text.textContent = `${name} · mean ${means.join(" ")}`;
        return;
    }
    const count = bytes.length / 3;
    const index = Math.min(count - 1, Math.max(0, Math.floor(pointed * count)));
    const [blue, green, red] = bytes.subarray(index * 3, index * 3 + 3);
    text.textContent = `${name} · ${axis === "row" ? "x" : "y"} ${first + index} · ${red} ${green} ${blue}`;
    context.strokeStyle = colour("text");
    context.beginPath();
    const x = box.x + ((index + 0.5) / count) * box.width;
    context.moveTo(x, box.y);
    context.lineTo(x, box.y + box.height);
    context.stroke();
}

const fetchProfile = paced(120, async () => {
    const { frame, profile, view } = store.state;
    if (!frame || view !== "picture") return;
    const { axis, at } = profile;
    const region = visibleRegion();
    const [first, count] = axis === "row" ? [region.x, region.width] : [region.y, region.height];
    const [limit, end] = axis === "row" ? [frame.whole.height, "y"] : [frame.whole.width, "x"];
    const line_ = Math.min(limit - 1, Math.max(0, at));
    const query = axis === "row" ? `x=${first}&width=${count}&${end}=${line_}&height=1`
                                 : `y=${first}&height=${count}&${end}=${line_}&width=1`;
    const response = await getResponse(`/picture?format=bgr&${query}`);
    line = { bytes: new Uint8Array(await response.arrayBuffer()), first, axis, at: line_ };
    drawProfile();
});

function drawHistogram() {
    const { context, box } = frameOf(histogramCanvas);
    context.strokeStyle = colour("line");
    context.strokeRect(box.x + 0.5, box.y + 0.5, box.width - 1, box.height - 1);
    context.textBaseline = "top";
    for (const level of [0, 128, 255]) {
        context.textAlign = level === 0 ? "left" : level === 255 ? "right" : "center";
        context.fillText(String(level), box.x + (level / 255) * box.width, box.y + box.height + 3);
    }
    if (!counts) return;
    const shown = (/** @type {number} */ count) => (logarithmic ? Math.log1p(count) : count);
    // A full bin at each end, as borders and clipping give, would press all others flat: the third largest is the top.
    const tall = channels.map((channel) => [...(counts?.[channel] ?? [])].sort((a, b) => b - a)[logarithmic ? 0 : 2] ?? 0);
    const top = Math.max(1e-9, ...tall.map(shown));
    context.globalCompositeOperation = overlay();
    for (const channel of channels) {
        context.fillStyle = colour(`${channel}-fill`);
        context.beginPath();
        context.moveTo(box.x, box.y + box.height);
        for (const [level, count] of counts[channel].entries()) {
            const y = box.y + box.height * (1 - Math.min(1, shown(count) / top));
            context.lineTo(box.x + (level / 256) * box.width, y);
            context.lineTo(box.x + ((level + 1) / 256) * box.width, y);
        }
        context.lineTo(box.x + box.width, box.y + box.height);
        context.fill();
    }
    context.globalCompositeOperation = "source-over";
}

const fetchHistogram = paced(250, async () => {
    if (!store.state.frame || store.state.view !== "picture") return;
    const { x, y, width, height } = visibleRegion();
    counts = await getJson(`/picture/histogram?x=${x}&y=${y}&width=${width}&height=${height}`);
    drawHistogram();
});

export function startMeasures() {
    redraw(profileCanvas, drawProfile);
    redraw(histogramCanvas, drawHistogram);
    store.watch(["frame", "zoom", "profile", "view"], fetchProfile);
    store.watch(["frame", "zoom", "view"], fetchHistogram);
    profileCanvas.addEventListener("pointermove", (event) => {
        const box = profileCanvas.getBoundingClientRect();
        pointed = (event.clientX - box.left - margin.left) / (box.width - margin.left - margin.right);
        drawProfile();
    });
    profileCanvas.addEventListener("pointerleave", () => {
        pointed = null;
        drawProfile();
    });
    const axis = /** @type {HTMLSelectElement} */ (one("#profile-axis"));
    axis.addEventListener("change", () => {
        store.put({ profile: { axis: axis.value === "column" ? "column" : "row", at: store.state.profile.at } });
    });
    store.watch(["profile"], ({ profile }) => (axis.value = profile.axis));
    const scale = one("#histogram-log");
    scale.addEventListener("click", () => {
        logarithmic = !logarithmic;
        scale.setAttribute("aria-pressed", String(logarithmic));
        drawHistogram();
    });
}
