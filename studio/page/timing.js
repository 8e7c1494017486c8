// The timing diagram: what the signals did over the last milliseconds of the board's time.

import { h, one } from "./dom.js";
import { getJson } from "./link.js";
import { show } from "./numbers.js";
import { colour, prepare, redraw } from "./plot.js";
import { store } from "./state.js";

/** @typedef {import("./types.js").Signal} Signal */

const rowHeight = 22;
const labelWidth = 148;
const noteWidth = 128;
const axisHeight = 20;

const canvas = /** @type {HTMLCanvasElement} */ (one("#timing"));
/** @type {import("./types.js").Signals | null} */
let shown = null;
let held = false;
let all = false;
/** @type {number | null} place of the pointer in ms before now */
let pointed = null;

/** Signals worth a row: what moved or was raised, or all. */
function rowsShown() {
    const known = (shown?.signals ?? []).filter((signal) => signal.known !== false);
    return all ? known : known.filter((signal) => signal.edges.length > 0 || (signal.high && signal.constant !== "VCC"));
}

/** @param {Signal} signal */
function noteOf({ edges, periodMs, high }) {
    if (periodMs !== null && periodMs !== undefined)
        return periodMs < 1 ? `every ${show(Number((periodMs * 1000).toPrecision(5)))} µs`
                            : `every ${show(Number(periodMs.toPrecision(5)))} ms`;
    if (edges.length === 0) return high ? "high" : "low";
    return `${edges.length} edge${edges.length === 1 ? "" : "s"}`;
}

function draw() {
    const rows = rowsShown();
    canvas.style.height = `${Math.max(3, rows.length) * rowHeight + axisHeight}px`;
    const { context, width, height } = prepare(canvas);
    if (!shown || width === 0) return;
    const { ms } = shown;
    const span = width - labelWidth - noteWidth;
    const x = (/** @type {number} */ at) => labelWidth + (1 + at / ms) * span;
    context.font = "12px system-ui, sans-serif";
    context.textBaseline = "middle";
    drawAxis(context, ms, x, height, span < 480 ? 5 : 10);
    for (const [index, signal] of rows.entries()) {
        const top = index * rowHeight + 5;
        const bottom = (index + 1) * rowHeight - 4;
        context.fillStyle = colour("text");
        context.textAlign = "left";
        context.fillText(signal.name, 4, (top + bottom) / 2, labelWidth - 10);
        context.fillStyle = colour("quiet");
        context.fillText(noteOf(signal), width - noteWidth + 8, (top + bottom) / 2);
        context.strokeStyle = colour(`signal-${signal.kind}`);
        drawSignal(context, signal, x, ms, top, bottom);
    }
    if (rows.length === 0) {
        context.fillStyle = colour("quiet");
        context.fillText("no signal moved", labelWidth, rowHeight);
    }
    if (pointed !== null) {
        context.strokeStyle = colour("accent");
        context.beginPath();
        context.moveTo(x(pointed), 0);
        context.lineTo(x(pointed), height - axisHeight);
        context.stroke();
    }
}

/**
 * @param {CanvasRenderingContext2D} context
 * @param {number} ms
 * @param {(at: number) => number} x
 * @param {number} height
 * @param {number} steps
 */
function drawAxis(context, ms, x, height, steps) {
    context.strokeStyle = colour("line");
    context.fillStyle = colour("quiet");
    context.lineWidth = 1;
    for (let i = 0; i <= steps; ++i) {
        const at = -ms + (ms * i) / steps;
        const place = Math.round(x(at)) + 0.5;
        context.beginPath();
        context.moveTo(place, 0);
        context.lineTo(place, height - axisHeight);
        context.stroke();
        context.textAlign = i === 0 ? "left" : i === steps ? "right" : "center";
        const text = i === steps ? "now" : show(Number(at.toPrecision(4)));
        context.fillText(i === 0 ? `${text} ms` : text, place, height - axisHeight / 2);
    }
}

/**
 * @param {CanvasRenderingContext2D} context
 * @param {Signal} signal
 * @param {(at: number) => number} x
 * @param {number} ms
 * @param {number} top
 * @param {number} bottom
 */
function drawSignal(context, signal, x, ms, top, bottom) {
    const level = (/** @type {boolean} */ high) => Math.round(high ? top : bottom) + 0.5;
    let high = signal.high;
    context.lineWidth = 1.25;
    context.beginPath();
    context.moveTo(x(-ms), level(high));
    for (const edge of signal.edges) {
        const place = x(edge.atMs);
        context.lineTo(place, level(high));
        context.lineTo(place, level(edge.high));
        high = edge.high;
    }
    context.lineTo(x(0), level(high));
    context.stroke();
}

/** Says the same in words, for those who cannot see the drawing. */
function describe() {
    const texts = rowsShown().map((signal) => `${signal.name}: ${noteOf(signal)}`);
    canvas.setAttribute("aria-label", `Timing of the last ${shown?.ms ?? 20} ms. ${texts.join("; ") || "no signal moved"}`);
}

async function follow() {
    const isSeen = store.state.view === "signals" && document.visibilityState === "visible" && !held;
    if (isSeen && store.state.link === "up") {
        const ms = /** @type {HTMLSelectElement} */ (one("#timing-span")).value;
        try {
            shown = await getJson(`/signals?ms=${ms}`);
            draw();
            describe();
        } catch {
            // The link says that it is lost.
        }
    }
    setTimeout(follow, 250);
}

export function startTiming() {
    redraw(canvas, draw);
    const hold = one("#timing-hold");
    hold.addEventListener("click", () => {
        held = !held;
        hold.setAttribute("aria-pressed", String(held));
    });
    const every = one("#timing-all");
    every.addEventListener("click", () => {
        all = !all;
        every.setAttribute("aria-pressed", String(all));
        draw();
        describe();
    });
    canvas.addEventListener("pointermove", (event) => {
        const area = canvas.getBoundingClientRect();
        const ms = shown?.ms ?? 20;
        const share = (event.clientX - area.left - labelWidth) / (area.width - labelWidth - noteWidth);
        pointed = share >= 0 && share <= 1 ? (share - 1) * ms : null;
        one("#timing-text").textContent = pointed === null ? "" : `${pointed.toFixed(3)} ms`;
        draw();
    });
    canvas.addEventListener("pointerleave", () => {
        pointed = null;
        one("#timing-text").textContent = "";
        draw();
    });
    store.watch(["events"], ({ events }) => {
        one("#events").replaceChildren(...events.slice(0, 50).map((event) =>
            h("li", {}, h("code", {}, event.name), " ", h("span", { class: "quiet" },
                `${(Number(event.atNs) / 1e6).toFixed(3)} ms`))));
        one("#no-events").hidden = events.length > 0;
    });
    follow();
}
