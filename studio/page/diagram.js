// The wiring as a diagram: from inputs to triggers to signals to outputs. Every box leads to the parameter behind it.

import { one, svg } from "./dom.js";
import { entryText, show } from "./numbers.js";
import { store } from "./state.js";
import { reveal } from "./tree.js";

/** @typedef {import("./types.js").Parameter} Parameter */
/** @typedef {ReadonlyMap<string, Parameter>} Parameters */

/**
 * @typedef {object} Box
 * @property {string} id what wires name; of a signal the name of its constant
 * @property {string} label
 * @property {string} [detail]
 * @property {string} parameter to go to, or empty
 * @property {number} x
 * @property {number} y the middle
 * @property {number} width
 * @property {number} height
 */

/** @typedef {{from: string, to: string, used: boolean, inverted?: boolean, note?: string}} Wire */

const columns = { input: 2, trigger: 184, signal: 394, output: 606 };
const widths = { input: 114, trigger: 140, signal: 144, output: 192 };
const size = { width: 800, height: 420 };

/** Signals that the board makes itself, each with the box that makes it. */
const made = [
    { id: "FG_SIGNAL_CAM0_EXSYNC", by: "line" },
    { id: "FG_SIGNAL_CAM0_EXSYNC2", by: "line" },
    { id: "FG_SIGNAL_CAM0_FLASH", by: "image" },
    { id: "FG_SIGNAL_CAM0_LVAL", by: "camera" },
    { id: "FG_SIGNAL_CAM0_FVAL", by: "camera" },
    { id: "FG_SIGNAL_CAM0_LINE_START", by: "transfer" },
    { id: "FG_SIGNAL_CAM0_LINE_END", by: "transfer" },
    { id: "FG_SIGNAL_CAM0_FRAME_START", by: "transfer" },
    { id: "FG_SIGNAL_CAM0_FRAME_END", by: "transfer" },
];

/** An input by the constant of a trigger's source: both name the same pin. @param {unknown} source */
function inputOf(source) {
    return String(source).replace(/^TRGINSRC_/, "FG_SIGNAL_");
}

/**
 * Boxes below each other, spread over the diagram's height.
 * @param {keyof typeof columns} column
 * @param {{id: string, label: string, detail?: string, parameter: string}[]} boxes
 * @param {number} height of each
 * @returns {Box[]}
 */
function stack(column, boxes, height) {
    const space = (size.height - 30) / boxes.length;
    return boxes.map((box, index) => ({ ...box, x: columns[column], y: 26 + space * (index + 0.5), height,
                                        width: widths[column] }));
}

/** Parameters that choose a signal for something. @param {Parameters} parameters */
function outputs(parameters) {
    return [...parameters.values()].filter((parameter) =>
        parameter.name.endsWith("_SOURCE") && parameter.entries?.some((entry) => entry.name === made[0]?.id));
}

/** @param {Parameters} parameters @returns {Box[]} */
function boxesOf(parameters) {
    const signals = outputs(parameters).flatMap((parameter) => parameter.entries ?? []);
    const label = (/** @type {string} */ id) => signals.find((entry) => entry.name === id)?.displayName.replace("Cam0 ", "") ?? id;
    const inputs = [...new Set(signals.map((entry) => entry.name))].filter((id) => /GPI_\d+$/.test(id));
    const text = (/** @type {string} */ name) => {
        const parameter = parameters.get(name);
        return parameter ? `${entryText(parameter, parameter.value)} ${parameter.unit ?? ""}`.trim() : "";
    };
    return [
        ...stack("input", [
            ...inputs.map((id) => ({ id, label: label(id), parameter: "FG_DIGIO_INPUT" })),
            { id: "software", label: "Software trigger", parameter: "FG_SENDSOFTWARETRIGGER" },
        ], 18),
        ...stack("trigger", [
            { id: "line", label: "Line trigger", detail: text("FG_LINETRIGGERMODE"), parameter: "FG_LINETRIGGERMODE" },
            { id: "image", label: "Image trigger", detail: text("FG_IMGTRIGGERMODE"), parameter: "FG_IMGTRIGGERMODE" },
            { id: "camera", label: "Camera", detail: text("FG_CAMERA_LINK_CAMTYPE"), parameter: "FG_CAMERA_LINK_CAMTYPE" },
            { id: "transfer", label: "Transfer", detail: text("FG_FORMAT"), parameter: "FG_FORMAT" },
        ], 40),
        ...stack("signal", made.map(({ id }) => ({ id, label: label(id), parameter: parameterOf(id) })), 20),
        ...stack("output", outputs(parameters).map((parameter) => ({
            id: parameter.name,
            label: parameter.displayName.replace(/ Source$/, "").replace(/^Custom Signal |^Signal /, ""),
            detail: entryText(parameter, parameter.value).replace("Cam0 ", ""),
            parameter: parameter.name,
        })), 19),
    ];
}

/** The parameter that shapes a signal. @param {string} id */
function parameterOf(id) {
    if (id.includes("EXSYNC")) return "FG_LINEEXPOSURE";
    return id.includes("FLASH") ? "FG_FLASHON" : "";
}

/** @param {Parameters} parameters @returns {Wire[]} */
function wiresOf(parameters) {
    const value = (/** @type {string} */ name) => parameters.get(name)?.value;
    const lineMode = String(value("FG_LINETRIGGERMODE"));
    const imageMode = String(value("FG_IMGTRIGGERMODE"));
    const lineIsExternal = lineMode.startsWith("ASYNC");
    const imageSource = value("FG_IMGTRIGGERINSRC");
    const inverted = (/** @type {string} */ name) => value(name) === "FG_LOW" || value(name) === "HIGH_ON_ZERO_LOW";
    return [
        { from: inputOf(value("FG_LINETRIGGERINSRC")), to: "line", used: lineIsExternal, note: "A",
          inverted: inverted("FG_LINETRIGGERINPOLARITY") },
        { from: inputOf(value("FG_SHAFTENCODERINSRC")), to: "line", note: "B",
          used: lineIsExternal && value("FG_SHAFTENCODERON") === "FG_ON" },
        { from: imageSource === "TRGINSOFTWARE" ? "software" : inputOf(imageSource), to: "image",
          used: imageMode.startsWith("ASYNC"), inverted: inverted("FG_IMGTRIGGERINPOLARITY") },
        ...made.map(({ id, by }) => ({ from: by, to: id, used: true })),
        ...outputs(parameters).map((parameter) => ({
            from: String(parameter.value), to: parameter.name, used: true,
            inverted: inverted(parameter.name.replace(/_SOURCE$/, "_POLARITY")) })),
    ];
}

/** @param {Box} box */
function drawBox(box) {
    const go = () => box.parameter && reveal(box.parameter);
    const two = box.height > 30;
    const side = box.x === columns.output;
    return svg("g", { class: `box ${box.parameter ? "link" : ""}`, role: box.parameter ? "button" : null,
                      tabindex: box.parameter ? 0 : null, "data-id": box.id,
                      "aria-label": [box.label, box.detail].filter(Boolean).join(": "),
                      onclick: go,
                      onkeydown: (/** @type {KeyboardEvent} */ event) => {
                          if (event.key === "Enter" || event.key === " ") {
                              event.preventDefault();
                              go();
                          }
                      } },
        svg("rect", { x: box.x, y: box.y - box.height / 2, width: box.width, height: box.height, rx: 4 }),
        svg("text", { x: box.x + 8, y: box.y + (two ? -5 : 4) }, box.label),
        two && svg("text", { x: box.x + 8, y: box.y + 12, class: "detail" }, box.detail ?? ""),
        side && svg("text", { x: box.x + box.width - 8, y: box.y + 4, class: "detail", "text-anchor": "end" },
            box.detail ?? ""));
}

/** @param {Wire} wire @param {Map<string, Box>} boxes @param {number} shift keeps wires into one box apart */
function drawWire(wire, boxes, shift) {
    const from = boxes.get(wire.from);
    const to = boxes.get(wire.to);
    if (!from || !to) return null;
    const [x1, y1] = [from.x + from.width, from.y];
    const x2 = to.x - (wire.inverted ? 7 : 0);
    const y2 = to.y + shift;
    const bend = (x2 - x1) / 2;
    const name = `${from.label} to ${to.label}${wire.inverted ? ", inverted" : ""}${wire.used ? "" : ", not used now"}`;
    return svg("g", { class: `wire ${wire.used ? "used" : ""}`, "data-from": wire.from, "data-to": wire.to },
        svg("title", {}, name),
        svg("path", { d: `M${x1} ${y1} C${x1 + bend} ${y1} ${x2 - bend} ${y2} ${x2} ${y2}` }),
        wire.inverted && svg("circle", { cx: x2 + 3.5, cy: y2, r: 3 }),
        wire.note && svg("text", { x: x2 - 14, y: y2 - 4, class: "detail" }, wire.note));
}

/** @param {Parameters} parameters */
function draw(parameters) {
    const list = boxesOf(parameters);
    const boxes = new Map(list.map((box) => [box.id, box]));
    const wires = wiresOf(parameters);
    const lineWires = wires.filter((wire) => wire.to === "line").length;
    let next = 0;
    const period = parameters.get("FG_LINEPERIODE");
    const headings = [["Inputs", columns.input], ["Triggers", columns.trigger], ["Signals", columns.signal],
                      ["Outputs", columns.output]];
    return svg("svg", { viewBox: `0 0 ${size.width} ${size.height}`, role: "group", "aria-label": "Wiring of the signals" },
        headings.map(([text, x]) => svg("text", { x, y: 14, class: "heading" }, text)),
        wires.map((wire) => drawWire(wire, boxes,
            wire.to === "line" && lineWires > 1 ? (next++ - (lineWires - 1) / 2) * 16 : 0)),
        list.map(drawBox),
        period && svg("text", { x: columns.trigger + widths.trigger + 8, y: (boxes.get("line")?.y ?? 0) - 26,
                                class: "detail" }, `${show(period.value)} ${period.unit ?? ""}`));
}

export function startDiagram() {
    const place = one("#diagram");
    /** Parts of the state that the drawing was made from; a read-out's tick draws nothing new. */
    let drawn = "";
    store.watch(["parameters", "view"], ({ parameters, view }) => {
        if (view !== "signals" || parameters.size === 0) return;
        const names = [...outputs(parameters).map((parameter) => parameter.name), "FG_LINETRIGGERMODE", "FG_IMGTRIGGERMODE",
            "FG_LINETRIGGERINSRC", "FG_SHAFTENCODERINSRC", "FG_SHAFTENCODERON", "FG_IMGTRIGGERINSRC", "FG_LINEPERIODE",
            "FG_LINETRIGGERINPOLARITY", "FG_IMGTRIGGERINPOLARITY", "FG_CAMERA_LINK_CAMTYPE"];
        const polarities = names.map((name) => name.replace(/_SOURCE$/, "_POLARITY"));
        const made_ = [...names, ...polarities].map((name) => parameters.get(name)?.value).join();
        if (made_ === drawn) return;
        drawn = made_;
        const focused = document.activeElement?.getAttribute("data-id");
        place.replaceChildren(draw(parameters));
        if (focused) /** @type {SVGElement | null} */ (place.querySelector(`[data-id="${focused}"]`))?.focus();
    });
}
