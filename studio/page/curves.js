// The lookup tables as curves: drawn with the pointer or moved with the keys, imported and exported as files.

import { give, takeChange } from "./board.js";
import { chooseFile, one, saveFile } from "./dom.js";
import { fieldList } from "./fieldlist.js";
import { getText, sendFile } from "./link.js";
import { channels, colour, overlay, prepare, redraw } from "./plot.js";
import { say, store, trying } from "./state.js";

/** @typedef {import("./plot.js").Channel} Channel */

const size = 256;
const names = { red: "FG_LUT_VALUE_RED", green: "FG_LUT_VALUE_GREEN", blue: "FG_LUT_VALUE_BLUE" };
const canvas = /** @type {HTMLCanvasElement} */ (one("#curve"));
const box = { left: 34, right: 8, top: 8, bottom: 22 };

/** What the page shows: the board's tables, with what is being drawn over them. */
/** @type {Record<Channel, number[]>} */
const tables = { red: [], green: [], blue: [] };
/** Channels that a stroke changes. @type {Channel[]} */
let active = [...channels];
/** Where the keys work, 0 to 255. */
let cursor = 128;
/** The element that the pointer is at. @type {number | null} */
let pointed = null;
/** The stroke under way: its last point and the elements that it changed. */
/** @type {{index: number, level: number, first: number, last: number} | null} */
let stroke = null;

/** @param {number} index */
function xOf(index) {
    return box.left + (index / (size - 1)) * (canvas.clientWidth - box.left - box.right);
}

/** @param {number} level */
function yOf(level) {
    return box.top + (1 - level / 255) * (canvas.clientHeight - box.top - box.bottom);
}

/** @param {number} value */
const within = (value) => Math.min(size - 1, Math.max(0, Math.round(value)));

/** @param {PointerEvent} event */
function pointOf(event) {
    const area = canvas.getBoundingClientRect();
    const x = (event.clientX - area.left - box.left) / (area.width - box.left - box.right);
    const y = (event.clientY - area.top - box.top) / (area.height - box.top - box.bottom);
    return { index: within(x * (size - 1)), level: within((1 - y) * 255) };
}

function draw() {
    const { context, width, height } = prepare(canvas);
    context.font = "10px ui-monospace, monospace";
    context.lineWidth = 1;
    context.strokeStyle = colour("line");
    context.fillStyle = colour("quiet");
    for (const level of [0, 32, 64, 96, 128, 160, 192, 224, 255]) {
        const [x, y] = [Math.round(xOf(level)) + 0.5, Math.round(yOf(level)) + 0.5];
        context.beginPath();
        context.moveTo(x, box.top);
        context.lineTo(x, height - box.bottom);
        context.moveTo(box.left, y);
        context.lineTo(width - box.right, y);
        context.stroke();
        if (level % 64 !== 0 && level !== 255) continue;
        context.textAlign = "right";
        context.textBaseline = "middle";
        context.fillText(String(level), box.left - 5, y);
        context.textAlign = "center";
        context.textBaseline = "top";
        context.fillText(String(level), Math.min(x, width - 12), height - box.bottom + 6);
    }
    context.globalCompositeOperation = overlay();
    for (const channel of channels) {
        context.strokeStyle = colour(channel);
        context.lineWidth = active.includes(channel) ? 2 : 1;
        context.beginPath();
        for (const [index, level] of tables[channel].entries()) context.lineTo(xOf(index), yOf(level));
        context.stroke();
    }
    context.globalCompositeOperation = "source-over";
    drawCursor(context, height);
}

/** @param {CanvasRenderingContext2D} context @param {number} height */
function drawCursor(context, height) {
    const hasKeys = document.activeElement === canvas;
    const index = pointed ?? cursor;
    const values = channels.map((channel) => tables[channel][index] ?? 0);
    one("#curve-text").textContent = `${index} → ${values.join(" ")}`;
    canvas.setAttribute("aria-valuenow", String(cursor));
    const texts = active.map((channel) => `${channel} ${tables[channel][cursor] ?? 0}`);
    canvas.setAttribute("aria-valuetext", `at ${cursor}: ${texts.join(", ")}`);
    if (pointed === null && !hasKeys) return;
    context.strokeStyle = colour("accent");
    context.lineWidth = 1;
    context.setLineDash([3, 3]);
    context.beginPath();
    context.moveTo(xOf(index), box.top);
    context.lineTo(xOf(index), height - box.bottom);
    context.stroke();
    context.setLineDash([]);
    context.fillStyle = colour("accent");
    for (const channel of active) {
        context.beginPath();
        context.arc(xOf(index), yOf(tables[channel][index] ?? 0), 3.5, 0, 2 * Math.PI);
        context.fill();
    }
}

/**
 * Puts levels into the active tables of the page, in a straight line from one point to the other.
 * @param {{index: number, level: number}} from
 * @param {{index: number, level: number}} to
 */
function line(from, to) {
    const [first, last] = from.index <= to.index ? [from, to] : [to, from];
    for (let index = first.index; index <= last.index; ++index) {
        const share = last.index === first.index ? 1 : (index - first.index) / (last.index - first.index);
        for (const channel of active) tables[channel][index] = within(first.level + share * (last.level - first.level));
    }
    if (from.index === to.index) for (const channel of active) tables[channel][to.index] = to.level;
}

/**
 * Gives a stretch of the active tables to the board.
 * @param {number} first
 * @param {number} last
 * @param {string} [gesture]
 */
async function send(first, last, gesture) {
    const settings = active.map((channel) => ({
        parameter: names[channel], value: tables[channel].slice(first, last + 1), firstElement: first }));
    if (!(await give(settings, gesture))) {
        say(store.state.refusals.get(settings.at(-1)?.parameter ?? "")?.sentence ?? "the curve was refused", "error");
        takeTables();
    }
}

/** Shows the board's tables, unless a stroke is under way. */
function takeTables() {
    if (stroke) return;
    for (const channel of channels) {
        const value = store.state.parameters.get(names[channel])?.value;
        if (Array.isArray(value)) tables[channel] = [...value];
    }
    draw();
}

function startPointer() {
    canvas.addEventListener("pointerdown", (event) => {
        if (event.button !== 0) return;
        canvas.setPointerCapture(event.pointerId);
        const point = pointOf(event);
        stroke = { ...point, first: point.index, last: point.index };
        cursor = point.index;
        line(point, point);
        draw();
    });
    canvas.addEventListener("pointermove", (event) => {
        const point = pointOf(event);
        pointed = point.index;
        if (stroke) {
            line(stroke, point);
            stroke = { ...point, first: Math.min(stroke.first, point.index), last: Math.max(stroke.last, point.index) };
            cursor = point.index;
        }
        draw();
    });
    const end = () => {
        if (!stroke) return;
        const { first, last } = stroke;
        stroke = null;
        send(first, last);
    };
    canvas.addEventListener("pointerup", end);
    canvas.addEventListener("pointercancel", end);
    canvas.addEventListener("pointerleave", () => {
        pointed = null;
        draw();
    });
}

/** @param {KeyboardEvent} event */
function onKey(event) {
    const far = event.shiftKey ? 16 : 1;
    const along = { ArrowLeft: -far, ArrowRight: far, Home: -size, End: size }[event.key];
    const up = { ArrowUp: far, ArrowDown: -far }[event.key];
    if (along === undefined && up === undefined) return;
    event.preventDefault();
    pointed = null;
    if (along !== undefined) cursor = within(cursor + along);
    if (up !== undefined) {
        for (const channel of active) tables[channel][cursor] = within((tables[channel][cursor] ?? 0) + up);
        send(cursor, cursor, `key ${cursor}`);
    }
    draw();
}

/** @param {(table: number[]) => number[]} shape */
function reshape(shape) {
    for (const channel of active) tables[channel] = shape(tables[channel]);
    draw();
    send(0, size - 1);
}

/** Means of nine neighbours; the ends stay. @param {number[]} table */
function smooth(table) {
    return table.map((value, index) => {
        const reach = Math.min(4, index, size - 1 - index);
        const near = table.slice(index - reach, index + reach + 1);
        return reach === 0 ? value : Math.round(near.reduce((sum, level) => sum + level, 0) / near.length);
    });
}

function startFiles() {
    one("#curve-import").addEventListener("click", async () => {
        const file = await chooseFile(".lut");
        if (file) await importTables(file);
    });
    one("#curve-export").addEventListener("click", () =>
        trying(async () => saveFile("tables.lut", await getText("/lut/file"))));
    const view = one("#view-curves");
    view.addEventListener("dragover", (event) => event.preventDefault());
    view.addEventListener("drop", (event) => {
        const file = event.dataTransfer?.files[0];
        if (!file?.name.toLowerCase().endsWith(".lut")) return;
        event.preventDefault();
        importTables(file);
    });
}

/** @param {File} file */
async function importTables(file) {
    await trying(async () => {
        const sender = `name=${encodeURIComponent(file.name)}&page=${store.state.page}`;
        const change = await sendFile("PUT", `/lut/file?${sender}`, file);
        takeChange(change, { own: true, title: `tables loaded from ${file.name}` });
        say(`tables loaded from ${file.name}`);
    });
}

export function startCurves() {
    one("#curve-fields").replaceChildren(fieldList(["FG_LUT_TYPE", "FG_PROCESSING_OFFSET", "FG_PROCESSING_GAIN",
        "FG_PROCESSING_GAMMA", "FG_PROCESSING_INVERT"]));
    startPointer();
    startFiles();
    canvas.addEventListener("keydown", onKey);
    canvas.addEventListener("focus", draw);
    canvas.addEventListener("blur", draw);
    redraw(canvas, draw);
    one("#curve-channels").addEventListener("change", (event) => {
        const { value } = /** @type {HTMLInputElement} */ (event.target);
        active = value === "all" ? [...channels] : channels.filter((channel) => channel === value);
        draw();
    });
    one("#curve-straight").addEventListener("click", () => reshape((table) => table.map((_, index) => index)));
    one("#curve-invert").addEventListener("click", () => reshape((table) => table.map((value) => 255 - value)));
    one("#curve-smooth").addEventListener("click", () => reshape(smooth));
    store.watch(["parameters"], takeTables);
    store.watch(["view"], () => requestAnimationFrame(draw));
}
