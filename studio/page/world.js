// The world around the board: belt, camera, light, inputs to press, what lies on the belt, faults to inject.

import { chooseFile, h, icon, one } from "./dom.js";
import { patch, remove, sendFile } from "./link.js";
import { show } from "./numbers.js";
import { say, store, trying } from "./state.js";

/** @typedef {import("./types.js").World} World */
/** @typedef {import("./types.js").Fault} Fault */

/** @type {Record<string, {text: string, unit: string}>} */
const known = {
    speed: { text: "Belt speed", unit: "mm/s" },
    objectPixel: { text: "Belt that one pixel sees", unit: "mm" },
    encoderPitch: { text: "Belt per encoder pulse", unit: "mm" },
    sensorWidth: { text: "Sensor width", unit: "pixel" },
    neutralExposure: { text: "Exposure of neutral light", unit: "µs" },
};
/** Members with a place of their own on the page. */
const placed = ["inputs", "scene", "faults", "file"];

/** @param {Record<string, any>} members */
function change(members) {
    return trying(async () => store.put({ world: await patch("/world", members) }));
}

/** "encoderPitch" as a person writes it. @param {string} name */
function words(name) {
    const spaced = name.replace(/([A-Z])/g, (letter) => ` ${letter.toLowerCase()}`);
    return spaced.charAt(0).toUpperCase() + spaced.slice(1);
}

/**
 * A number of the world, given with Enter or by leaving the box.
 * @param {string} member
 * @param {string} name
 * @param {number} value
 */
function numberRow(member, name, value) {
    const { text, unit } = known[name] ?? { text: words(name), unit: "" };
    const input = h("input", { type: "text", inputmode: "decimal", class: "number", value: show(value),
                               "data-number": `${member}.${name}`, "aria-label": `${text} ${unit}`.trim() });
    const give = async (/** @type {number} */ next) => {
        if (next === value) return;
        if (!Number.isFinite(next)) {
            input.setAttribute("aria-invalid", "true");
            return say(`${text}: ${input.value} is no number`, "error");
        }
        if (!(await change({ [member]: { [name]: next } }))) input.setAttribute("aria-invalid", "true");
    };
    input.addEventListener("change", () => give(input.value.trim() === "" ? NaN : Number(input.value)));
    input.addEventListener("keydown", (event) => {
        if (event.key === "Escape") {
            input.value = show(value);
            input.removeAttribute("aria-invalid");
        }
    });
    const slider = name === "speed" && h("input", { type: "range", min: -2000, max: 2000, step: 10,
        "data-number": `${member}.${name} slider`, "aria-label": `${text}, slider`, "aria-valuetext": `${value} mm/s`,
        onchange: (/** @type {Event} */ event) =>
            give(/** @type {HTMLInputElement} */ (event.target).valueAsNumber) });
    if (slider) slider.valueAsNumber = value;
    return h("div", { class: "field-row" }, h("span", { class: "name" }, text),
        h("span", { class: "slot" }, slider ? h("span", { class: "field-slider" }, slider, input) : input,
            h("span", { class: "unit" }, unit)));
}

/** Groups of numbers, as the board has them; what is no number is shown as it is. @param {World} world */
function groups(world) {
    return Object.entries(world).filter(([member]) => !placed.includes(member)).map(([member, value]) => {
        const heading = h("h3", {}, words(member));
        if (typeof value === "object" && value !== null && !Array.isArray(value)) {
            const rows = Object.entries(value).map(([name, inner]) =>
                typeof inner === "number" ? numberRow(member, name, inner)
                    : h("div", { class: "field-row" }, h("span", { class: "name" }, words(name)),
                        h("code", {}, JSON.stringify(inner))));
            return h("section", {}, heading, rows);
        }
        return h("section", {}, heading, h("code", {}, JSON.stringify(value)));
    });
}

/** @param {World} world */
function inputButtons({ inputs }) {
    return inputs.map((high, index) => {
        const name = index < 8 ? `GPI ${index}` : `Front ${index - 8}`;
        return h("div", { class: "input" },
            h("button", { type: "button", class: "press", "aria-pressed": high, "data-number": `input ${index}`,
                          onclick: () => change({ inputs: { [index]: !high } }) }, name),
            h("button", { type: "button", class: "plain", title: `${name} high for 5 ms`, "aria-label": `pulse on ${name}`,
                          "data-number": `pulse ${index}`,
                          onclick: () => change({ pulse: { input: index, ms: 5 } }) }, icon("pulse")));
    });
}

/** @param {World} world */
function sceneBox({ scene, file }) {
    const size = scene.width ? ` · ${scene.width} × ${scene.height}` : "";
    return [
        h("p", {}, `${scene.source}${size}`, file ? ` · world ${file}` : ""),
        h("div", { class: "buttons" },
            h("button", { type: "button", onclick: async () => {
                const chosen = await chooseFile("image/png");
                if (chosen) await layScene(chosen);
            } }, icon("open"), "Lay a picture on the belt…"),
            h("button", { type: "button", disabled: scene.source === "test chart", onclick: () =>
                trying(async () => store.put({ world: await remove("/world/scene") })) }, "Test chart")),
    ];
}

/** @param {File} file */
async function layScene(file) {
    await trying(async () => {
        store.put({ world: await sendFile("PUT", "/world/scene", file, "image/png") });
        say(`${file.name} lies on the belt`);
    });
}

/** @param {World} world */
function faultList({ faults }) {
    return faults.map((fault, index) =>
        h("li", {}, h("code", {}, fault.kind), " ", fault.name ?? (fault.n ? `n ${fault.n}` : ""), ` code ${fault.code} `,
            h("button", { type: "button", class: "plain", "aria-label": `take ${fault.kind} away`,
                onclick: () => change({ faults: faults.filter((_, other) => other !== index) }) }, icon("close"))));
}

function startForms() {
    const form = /** @type {HTMLFormElement} */ (one("#fault-form"));
    const kind = /** @type {HTMLSelectElement} */ (one("#fault-kind"));
    const isCounted = () => kind.value.startsWith("refuseNth");
    const adapt = () => {
        one("#fault-name-label").hidden = isCounted();
        one("#fault-n-label").hidden = !isCounted();
    };
    kind.addEventListener("change", adapt);
    adapt();
    form.addEventListener("submit", async (event) => {
        event.preventDefault();
        const data = new FormData(form);
        /** @type {Fault} */
        const fault = { kind: kind.value, code: Number(data.get("code")) };
        if (isCounted()) fault.n = Number(data.get("n"));
        else fault.name = String(data.get("name")).trim();
        await change({ faults: [...(store.state.world?.faults ?? []), fault] });
    });
    const force = /** @type {HTMLFormElement} */ (one("#force-form"));
    force.addEventListener("submit", async (event) => {
        event.preventDefault();
        const data = new FormData(force);
        const [name, text] = [String(data.get("name")).trim(), String(data.get("value")).trim()];
        const value = text !== "" && Number.isFinite(Number(text)) ? Number(text) : text;
        if (await change({ force: { name, value } })) say(`${name} is read as ${text}`);
    });
    // Names of design parameters come from what was explained and written; the list grows as one looks around.
    const names = new Set();
    store.watch(["described", "last"], ({ described, last }) => {
        const before = names.size;
        for (const name of described?.drives ?? []) names.add(name);
        for (const write of last?.writes ?? []) names.add(write.name);
        if (names.size !== before)
            one("#design-names").replaceChildren(...[...names].sort().map((name) => h("option", { value: name })));
    });
}

export function startWorld() {
    startForms();
    const view = one("#view-world");
    view.addEventListener("dragover", (event) => event.preventDefault());
    view.addEventListener("drop", (event) => {
        const file = event.dataTransfer?.files[0];
        if (!file?.name.toLowerCase().endsWith(".png")) return;
        event.preventDefault();
        layScene(file);
    });
    store.watch(["world"], ({ world }) => {
        if (!world) return;
        const focused = document.activeElement?.getAttribute("data-number");
        one("#world-groups").replaceChildren(...groups(world));
        one("#world-inputs").replaceChildren(...inputButtons(world));
        one("#world-scene").replaceChildren(...sceneBox(world));
        one("#world-faults").replaceChildren(...faultList(world));
        one("#no-faults").hidden = world.faults.length > 0;
        if (focused) /** @type {HTMLElement | null} */ (view.querySelector(`[data-number="${focused}"]`))?.focus();
    });
}
