// The live picture: asks the studio for what the page can show of it, draws it, zooms, reads pixel values.

import { h, icon, one, saveFile } from "./dom.js";
import { give } from "./board.js";
import { getResponse } from "./link.js";
import { colour, paced, prepare, redraw } from "./plot.js";
import { store, trying } from "./state.js";

/** @typedef {import("./types.js").Frame} Frame */
/** @typedef {import("./types.js").Region} Region */

const largestZoom = 64;
/** From this zoom on the values stand in the pixels. */
const zoomOfValues = 40;

const canvas = /** @type {HTMLCanvasElement} */ (one("#picture"));
/** The newest picture as a source to draw from. */
const source = new OffscreenCanvas(1, 1);
/** @type {{x: number, y: number} | null} screen place of the pointer within the canvas */
let pointer = null;

/** The picture's size: that of the newest one, or what the settings ask for before there is one. */
function wholeSize() {
    const { frame, acquisition } = store.state;
    return frame?.whole ?? { width: acquisition?.width || 1, height: acquisition?.height || 1 };
}

/** Screen pixels per pixel at which all of the picture is seen. */
function fitZoom() {
    const { width, height } = wholeSize();
    return Math.min(canvas.clientWidth / width, canvas.clientHeight / height);
}

/** What is seen: the zoom and the picture's point in the middle of the canvas. */
function sight() {
    const { width, height } = wholeSize();
    const { zoom, x, y } = store.state.zoom;
    if (zoom > 0) return { zoom, x: Math.min(width, Math.max(0, x)), y: Math.min(height, Math.max(0, y)) };
    return { zoom: fitZoom(), x: width / 2, y: height / 2 };
}

/**
 * The part of the picture that is in sight, in whole pixels.
 * @returns {Region}
 */
export function visibleRegion() {
    const { width, height } = wholeSize();
    const { zoom, x, y } = sight();
    const [halfWidth, halfHeight] = [canvas.clientWidth / 2 / zoom, canvas.clientHeight / 2 / zoom];
    const left = Math.min(width - 1, Math.max(0, Math.floor(x - halfWidth)));
    const top = Math.min(height - 1, Math.max(0, Math.floor(y - halfHeight)));
    const right = Math.max(left + 1, Math.min(width, Math.ceil(x + halfWidth)));
    const bottom = Math.max(top + 1, Math.min(height, Math.ceil(y + halfHeight)));
    return { x: left, y: top, width: right - left, height: bottom - top };
}

/** @param {number} screenX @param {number} screenY */
function pictureAt(screenX, screenY) {
    const { zoom, x, y } = sight();
    return { x: (screenX - canvas.clientWidth / 2) / zoom + x, y: (screenY - canvas.clientHeight / 2) / zoom + y };
}

/** @param {number} x @param {number} y */
function screenAt(x, y) {
    const seen = sight();
    return {
        x: (x - seen.x) * seen.zoom + canvas.clientWidth / 2,
        y: (y - seen.y) * seen.zoom + canvas.clientHeight / 2,
    };
}

/**
 * Zooms, keeping the picture's point below a place of the screen where it is.
 * @param {number} factor
 * @param {{x: number, y: number}} [at]
 */
function zoomBy(factor, at = { x: canvas.clientWidth / 2, y: canvas.clientHeight / 2 }) {
    const seen = sight();
    const zoom = Math.min(largestZoom, Math.max(fitZoom(), seen.zoom * factor));
    if (zoom <= fitZoom()) return store.put({ zoom: { zoom: 0, x: 0, y: 0 } });
    const point = pictureAt(at.x, at.y);
    store.put({ zoom: {
        zoom,
        x: point.x - (at.x - canvas.clientWidth / 2) / zoom,
        y: point.y - (at.y - canvas.clientHeight / 2) / zoom,
    } });
}

/** @param {number} dx @param {number} dy pixels of the screen */
function pan(dx, dy) {
    if (store.state.zoom.zoom === 0) return;
    const { zoom, x, y } = sight();
    const { width, height } = wholeSize();
    const inside = (/** @type {number} */ value, /** @type {number} */ end) => Math.min(end, Math.max(0, value));
    store.put({ zoom: { zoom, x: inside(x - dx / zoom, width), y: inside(y - dy / zoom, height) } });
}

function draw() {
    const { context, width, height } = prepare(canvas);
    const { frame, profile } = store.state;
    if (!frame) return;
    const { region, pixels } = frame;
    const start = screenAt(region.x, region.y);
    const end = screenAt(region.x + region.width, region.y + region.height);
    const { zoom } = sight();
    context.imageSmoothingEnabled = zoom * devicePixelRatio < 1;
    context.drawImage(source, 0, 0, pixels.width, pixels.height, start.x, start.y, end.x - start.x, end.y - start.y);
    if (zoom >= zoomOfValues && region.width === pixels.width) drawValues(context, frame);
    drawProfileLine(context, profile, width, height);
}

/**
 * @param {CanvasRenderingContext2D} context
 * @param {State["profile"]} profile
 * @param {number} width
 * @param {number} height
 */
function drawProfileLine(context, profile, width, height) {
    const at = screenAt(profile.at + 0.5, profile.at + 0.5);
    context.lineWidth = 1;
    for (const [style, dash] of /** @type {[string, number[]][]} */ ([["#000a", []], [colour("profile"), [6, 4]]])) {
        context.strokeStyle = style;
        context.setLineDash(dash);
        context.beginPath();
        if (profile.axis === "row") {
            context.moveTo(0, Math.floor(at.y) + 0.5);
            context.lineTo(width, Math.floor(at.y) + 0.5);
        } else {
            context.moveTo(Math.floor(at.x) + 0.5, 0);
            context.lineTo(Math.floor(at.x) + 0.5, height);
        }
        context.stroke();
    }
    context.setLineDash([]);
}

/** @typedef {import("./state.js").State} State */

/** Writes the values into the pixels. @param {CanvasRenderingContext2D} context @param {Frame} frame */
function drawValues(context, { region, pixels }) {
    const { zoom } = sight();
    const seen = visibleRegion();
    const size = Math.min(12, zoom / 4.2);
    context.font = `${size}px ui-monospace, monospace`;
    context.textAlign = "center";
    context.textBaseline = "middle";
    for (let y = Math.max(seen.y, region.y); y < Math.min(seen.y + seen.height, region.y + region.height); ++y) {
        for (let x = Math.max(seen.x, region.x); x < Math.min(seen.x + seen.width, region.x + region.width); ++x) {
            const offset = ((y - region.y) * pixels.width + (x - region.x)) * 4;
            const [red = 0, green = 0, blue = 0] = pixels.data.subarray(offset, offset + 3);
            const place = screenAt(x + 0.5, y + 0.5);
            context.fillStyle = red * 0.3 + green * 0.59 + blue * 0.11 > 120 ? "#000c" : "#fffc";
            for (const [index, value] of [red, green, blue].entries())
                context.fillText(String(value), place.x, place.y + (index - 1) * size * 1.05);
        }
    }
}

/**
 * The pixel below the pointer as the shown picture has it.
 * @param {Frame} frame
 * @param {number} x
 * @param {number} y
 */
function shownValue({ region, pixels }, x, y) {
    const column = Math.floor(((x - region.x) * pixels.width) / region.width);
    const row = Math.floor(((y - region.y) * pixels.height) / region.height);
    if (column < 0 || row < 0 || column >= pixels.width || row >= pixels.height) return null;
    return [...pixels.data.subarray((row * pixels.width + column) * 4, (row * pixels.width + column) * 4 + 3)];
}

/** @param {string} text @param {number[] | null} values red, green, blue */
function putReading(text, values) {
    one("#pixel-place").textContent = text;
    one("#pixel-values").replaceChildren(...(values ?? []).map((value, index) =>
        h("span", { class: ["red", "green", "blue"][index] }, String(value).padStart(3, " "))));
}

// A picture that is scaled down shows means; the pixel itself is asked for once the pointer rests.
const readExactly = paced(120, async () => {
    const { frame } = store.state;
    if (!pointer || !frame || frame.region.width === frame.pixels.width) return;
    const at = pictureAt(pointer.x, pointer.y);
    const [x, y] = [Math.floor(at.x), Math.floor(at.y)];
    if (x < 0 || y < 0 || x >= frame.whole.width || y >= frame.whole.height) return;
    const response = await getResponse(`/picture?format=bgr&x=${x}&y=${y}&width=1&height=1`);
    const [blue = 0, green = 0, red = 0] = new Uint8Array(await response.arrayBuffer());
    putReading(`x ${x}  y ${y}`, [red, green, blue]);
});

function readPixel() {
    const { frame } = store.state;
    if (!pointer || !frame) return putReading("", null);
    const at = pictureAt(pointer.x, pointer.y);
    const [x, y] = [Math.floor(at.x), Math.floor(at.y)];
    if (x < 0 || y < 0 || x >= frame.whole.width || y >= frame.whole.height) return putReading("", null);
    if (frame.region.width === frame.pixels.width) putReading(`x ${x}  y ${y}`, shownValue(frame, x, y));
    else {
        one("#pixel-place").textContent = `x ${x}  y ${y}`;
        readExactly();
    }
}

/** @param {number} at along the present axis */
function putProfile(at) {
    const { axis } = store.state.profile;
    const { width, height } = wholeSize();
    const last = (axis === "row" ? height : width) - 1;
    store.put({ profile: { axis, at: Math.min(last, Math.max(0, Math.floor(at))) } });
}

/** @param {KeyboardEvent} event */
function onKey(event) {
    const arrows = /** @type {Record<string, [number, number]>} */ ({
        ArrowLeft: [1, 0], ArrowRight: [-1, 0], ArrowUp: [0, 1], ArrowDown: [0, -1] });
    const arrow = arrows[event.key];
    const { axis, at } = store.state.profile;
    if (arrow && event.shiftKey) putProfile(at - (axis === "row" ? arrow[1] : arrow[0]));
    else if (arrow) pan(arrow[0] * 60, arrow[1] * 60);
    else if (event.key === "+" || event.key === "=") zoomBy(1.5);
    else if (event.key === "-") zoomBy(1 / 1.5);
    else if (event.key === "0") zoomBy(0);
    else if (event.key === "1") zoomBy(1 / sight().zoom);
    else return;
    event.preventDefault();
}

function startPointer() {
    /** @type {{x: number, y: number, moved: boolean} | null} */
    let pressed = null;
    const place = (/** @type {MouseEvent} */ event) => {
        const box = canvas.getBoundingClientRect();
        return { x: event.clientX - box.left, y: event.clientY - box.top };
    };
    canvas.addEventListener("wheel", (event) => {
        event.preventDefault();
        zoomBy(Math.exp(-event.deltaY / 400), place(event));
    }, { passive: false });
    canvas.addEventListener("pointerdown", (event) => {
        pressed = { x: event.clientX, y: event.clientY, moved: false };
        canvas.setPointerCapture(event.pointerId);
    });
    canvas.addEventListener("pointermove", (event) => {
        pointer = place(event);
        if (pressed && (pressed.moved || Math.hypot(event.clientX - pressed.x, event.clientY - pressed.y) > 3)) {
            pan(event.clientX - pressed.x, event.clientY - pressed.y);
            pressed = { x: event.clientX, y: event.clientY, moved: true };
        }
        readPixel();
    });
    canvas.addEventListener("pointerup", (event) => {
        const at = place(event);
        const point = pictureAt(at.x, at.y);
        if (pressed && !pressed.moved) putProfile(store.state.profile.axis === "row" ? point.y : point.x);
        pressed = null;
    });
    canvas.addEventListener("pointerleave", () => {
        pointer = null;
        readPixel();
    });
    canvas.addEventListener("keydown", onKey);
}

/** @param {import("./link.js").Live} live */
function startView(live) {
    let asked = "";
    const ask = () => {
        const isShown = store.state.view === "picture" && document.visibilityState === "visible";
        const { width, height, x, y } = visibleRegion();
        const fit = `${Math.max(1, Math.round(canvas.clientWidth * devicePixelRatio))}x${
            Math.max(1, Math.round(canvas.clientHeight * devicePixelRatio))}`;
        const region = store.state.zoom.zoom > 0 ? { region: [x, y, width, height] } : {};
        const view = isShown ? { type: "view", on: true, fit, ...region } : { type: "view", on: false };
        const text = JSON.stringify(view);
        if (text === asked) return;
        asked = text;
        live.send(view);
    };
    const askSoon = paced(60, ask);
    live.on("hello", () => {
        asked = "";
        ask();
    });
    store.watch(["view", "zoom"], askSoon);
    document.addEventListener("visibilitychange", askSoon);
    new ResizeObserver(askSoon).observe(canvas);
    return askSoon;
}

/** @param {import("./link.js").Live} live */
export function startPicture(live) {
    const ask = startView(live);
    startPointer();
    redraw(canvas, draw);
    /** @type {Frame | null} */
    let last = null;
    store.watch(["frame", "zoom", "profile"], ({ frame }) => {
        requestAnimationFrame(() => {
            if (frame && frame !== last) {
                [source.width, source.height] = [frame.pixels.width, frame.pixels.height];
                source.getContext("2d")?.putImageData(frame.pixels, 0, 0);
                if (last?.whole.width !== frame.whole.width || last.whole.height !== frame.whole.height) ask();
                last = frame;
                if (store.state.profile.at < 0) putProfile(frame.whole.height / 2);
                live.send({ type: "shown", number: frame.number });
            }
            draw();
            readPixel();
        });
        const { width, height } = wholeSize();
        one("#zoom-text").textContent = `${Math.round(sight().zoom * 100)} %`;
        one("#size").textContent = frame ? `${width} × ${height}` : "–";
        canvas.setAttribute("aria-label",
            frame ? `Picture ${frame.number}, ${width} by ${height} pixels` : "No picture yet");
        one("#no-picture").hidden = frame !== null;
    });
    store.watch(["acquisition"], ({ acquisition }) => {
        const text = acquisition && acquisition.state !== "stopped" ? acquisition.waitsFor : null;
        one("#waits").hidden = !text;
        one("#waits").textContent = text ?? "";
    });

    // A software trigger does nothing while the image trigger listens elsewhere.
    store.watch(["parameters"], ({ parameters }) => {
        const isHeard = String(parameters.get("FG_IMGTRIGGERMODE")?.value).startsWith("ASYNC") &&
            parameters.get("FG_IMGTRIGGERINSRC")?.value === "TRGINSOFTWARE";
        /** @type {HTMLButtonElement} */ (one("#trigger")).disabled = !isHeard;
    });
    one("#zoom-in").addEventListener("click", () => zoomBy(1.5));
    one("#zoom-out").addEventListener("click", () => zoomBy(1 / 1.5));
    one("#zoom-fit").addEventListener("click", () => zoomBy(0));
    one("#zoom-one").addEventListener("click", () => zoomBy(1 / sight().zoom));
    one("#trigger").addEventListener("click", () => give([{ parameter: "FG_SENDSOFTWARETRIGGER", value: "FG_APPLY" }]));
    one("#save-picture").append(icon("save"));
    one("#save-picture").addEventListener("click", () => trying(async () => {
        const response = await getResponse("/picture?format=png");
        saveFile(`picture-${response.headers.get("X-Picture-Number") ?? 0}.png`, await response.blob());
    }));
}
