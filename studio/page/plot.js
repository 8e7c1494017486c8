// Helpers for what is drawn on a canvas: its size on this screen, the colours of the style sheet, curves of channels.

/** @typedef {"red" | "green" | "blue"} Channel */

/** @type {Channel[]} */
export const channels = ["red", "green", "blue"];

/** Colours as they are resolved in the present theme. @type {Map<string, string>} */
const colours = new Map();
addEventListener("themechange", () => colours.clear());

/**
 * A colour of the style sheet, resolved: a canvas does not know its functions.
 * @param {string} name such as "accent"
 */
export function colour(name) {
    const known = colours.get(name);
    if (known) return known;
    const probe = document.createElement("i");
    probe.style.color = `var(--${name})`;
    document.body.append(probe);
    const resolved = getComputedStyle(probe).color;
    probe.remove();
    colours.set(name, resolved);
    return resolved;
}

/**
 * How curves of channels are laid over each other, so that where all three lie they are white or black.
 * @returns {GlobalCompositeOperation}
 */
export function overlay() {
    const { theme } = document.documentElement.dataset;
    const isDark = theme === "dark" || (theme === "auto" && matchMedia("(prefers-color-scheme: dark)").matches);
    return isDark ? "screen" : "multiply";
}

/**
 * Gives a canvas as many pixels as the screen has where it stands, and a context in units of the page.
 * @param {HTMLCanvasElement} canvas
 */
export function prepare(canvas) {
    const width = canvas.clientWidth;
    const height = canvas.clientHeight;
    const scale = devicePixelRatio;
    const [w, h] = [Math.round(width * scale), Math.round(height * scale)];
    if (canvas.width !== w) canvas.width = w;
    if (canvas.height !== h) canvas.height = h;
    const context = /** @type {CanvasRenderingContext2D} */ (canvas.getContext("2d"));
    context.setTransform(scale, 0, 0, scale, 0, 0);
    context.clearRect(0, 0, width, height);
    return { context, width, height };
}

/**
 * Runs `work` once for many calls, at most every `pause` ms, never twice at a time; the last call always counts.
 * @param {number} pause ms
 * @param {() => Promise<void> | void} work
 */
export function paced(pause, work) {
    let wanted = false;
    let busy = false;
    return async () => {
        wanted = true;
        if (busy) return;
        busy = true;
        while (wanted) {
            wanted = false;
            try {
                await work();
            } catch {
                // What could not be fetched now is fetched with the next picture.
            }
            await new Promise((resolve) => setTimeout(resolve, pause));
        }
        busy = false;
    };
}

/**
 * Calls `draw` when the canvas changes its size or the page its colours.
 * @param {HTMLCanvasElement} canvas
 * @param {() => void} draw
 */
export function redraw(canvas, draw) {
    new ResizeObserver(draw).observe(canvas);
    addEventListener("themechange", draw);
}

/**
 * A curve of values from 0 to 255 over the whole width; where several fall into one pixel of the screen, from the
 * smallest to the largest of them, so that no spike is lost.
 * @param {CanvasRenderingContext2D} context
 * @param {(index: number) => number} value
 * @param {number} count
 * @param {{x: number, y: number, width: number, height: number}} box
 */
export function curve(context, value, count, { x, y, width, height }) {
    const columns = Math.max(1, Math.round(width));
    const place = (/** @type {number} */ level) => y + height - (level / 255) * height;
    context.beginPath();
    if (count <= columns) {
        // Few values: steps as wide as their pixel.
        for (let i = 0; i < count; ++i) {
            const level = place(value(i));
            context.lineTo(x + (i / count) * width, level);
            context.lineTo(x + ((i + 1) / count) * width, level);
        }
    } else {
        for (let column = 0; column < columns; ++column) {
            const end = Math.floor(((column + 1) * count) / columns);
            let [low, high] = [255, 0];
            for (let i = Math.floor((column * count) / columns); i < end; ++i) {
                low = Math.min(low, value(i));
                high = Math.max(high, value(i));
            }
            context.lineTo(x + column + 0.5, place(high));
            context.lineTo(x + column + 0.5, place(low));
        }
    }
    context.stroke();
}
