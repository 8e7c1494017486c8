// The world around the board: belt, camera, light, inputs to press, what lies on the belt, faults to inject.

import { chooseFile, h, icon, one, replaceRows } from "./dom.js";
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
 * A part of the view that shows one value and follows it.
 * @typedef {{element: HTMLElement, update: (value: any) => void}} Part
 */

/**
 * A number of the world, given with Enter or by leaving the box. What is being typed there is left alone.
 * @param {string} member
 * @param {string} name
 * @returns {Part}
 */
function numberRow(member, name) {
    const { text, unit } = known[name] ?? { text: words(name), unit: "" };
    const input = h("input", { type: "text", inputmode: "decimal", class: "number",
                               "aria-label": `${text} ${unit}`.trim() });
    let now = NaN;
    const restore = () => {
        input.value = show(now);
        input.removeAttribute("aria-invalid");
    };
    const give = async (/** @type {number} */ next) => {
        if (next === now) return restore();
        if (!Number.isFinite(next)) {
            input.setAttribute("aria-invalid", "true");
            return say(`${text}: ${input.value} is no number`, "error");
        }
        const given = input.value;
        if (!(await change({ [member]: { [name]: next } }))) input.setAttribute("aria-invalid", "true");
        else if (input.value === given) restore();
    };
    input.addEventListener("change", () => give(input.value.trim() === "" ? NaN : Number(input.value)));
    input.addEventListener("keydown", (event) => {
        if (event.key === "Escape") restore();
    });
    const slider = name === "speed" && h("input", { type: "range", min: -2000, max: 2000, step: 10,
        "aria-label": `${text}, slider`,
        onchange: (/** @type {Event} */ event) =>
            give(/** @type {HTMLInputElement} */ (event.target).valueAsNumber) });
    const update = (/** @type {number} */ next) => {
        const before = now;
        now = next;
        const refused = input.hasAttribute("aria-invalid");
        const typing = document.activeElement === input && input.value !== show(before) && !refused;
        if (!typing && (next !== before || !refused)) restore();
        if (!slider || next === before) return;
        slider.valueAsNumber = next;
        slider.setAttribute("aria-valuetext", `${next} mm/s`);
    };
    const element = h("div", { class: "field-row" }, h("span", { class: "name" }, text),
        h("span", { class: "slot" }, slider ? h("span", { class: "field-slider" }, slider, input) : input,
            h("span", { class: "unit" }, unit)));
    return { element, update };
}

/** What is no number is shown as it is. @returns {Part} */
function plainValue() {
    const element = h("code");
    return { element, update: (value) => (element.textContent = JSON.stringify(value)) };
}

/** @param {string} name @returns {Part} */
function plainRow(name) {
    const { element, update } = plainValue();
    return { element: h("div", { class: "field-row" }, h("span", { class: "name" }, words(name)), element), update };
}

/** A group of the world's values, as the board has them. @param {string} member @param {any} value @returns {Part} */
function group(member, value) {
    const heading = h("h3", {}, words(member));
    if (typeof value !== "object" || value === null || Array.isArray(value)) {
        const { element, update } = plainValue();
        return { element: h("section", {}, heading, element), update };
    }
    /** @type {Map<string, Part>} */
    const rows = new Map(Object.entries(value).map(([name, inner]) =>
        [name, typeof inner === "number" ? numberRow(member, name) : plainRow(name)]));
    return {
        element: h("section", {}, heading, [...rows.values()].map((row) => row.element)),
        update: (next) => {
            for (const [name, inner] of Object.entries(next)) rows.get(name)?.update(inner);
        },
    };
}

/** The names and kinds of what the groups show: with the same ones, their parts stay. @param {World} world */
function shapeOf(world) {
    return JSON.stringify(world, (name, value) =>
        placed.includes(name) ? undefined : typeof value === "object" && value !== null ? value : typeof value);
}

/** The buttons of an input. @param {number} index @returns {Part} */
function inputButton(index) {
    const name = index < 8 ? `GPI ${index}` : `Front ${index - 8}`;
    let now = false;
    const press = h("button", { type: "button", class: "press", "data-number": `input ${index}`,
                                onclick: () => change({ inputs: { [index]: !now } }) }, name);
    const pulse = h("button", { type: "button", class: "plain", title: `${name} high for 5 ms`,
                                "aria-label": `pulse on ${name}`,
                                onclick: () => change({ pulse: { input: index, ms: 5 } }) }, icon("pulse"));
    const update = (/** @type {boolean} */ high) => {
        now = high;
        press.setAttribute("aria-pressed", String(high));
    };
    return { element: h("div", { class: "input" }, press, pulse), update };
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
    /** What is shown now: only what differs is made anew, so that keyboard and pointer keep their place. */
    let shape = "";
    let [scene, faults] = ["", ""];
    /** @type {Map<string, Part>} */
    let parts = new Map();
    /** @type {Part[]} */
    let inputs = [];
    store.watch(["world"], ({ world }) => {
        if (!world) return;
        if (shape !== (shape = shapeOf(world))) {
            parts = new Map(Object.entries(world).filter(([member]) => !placed.includes(member))
                .map(([member, value]) => [member, group(member, value)]));
            one("#world-groups").replaceChildren(...[...parts.values()].map((part) => part.element));
        }
        for (const [member, part] of parts) part.update(world[/** @type {keyof World} */ (member)]);
        if (inputs.length !== world.inputs.length) {
            inputs = world.inputs.map((_, index) => inputButton(index));
            one("#world-inputs").replaceChildren(...inputs.map((part) => part.element));
        }
        world.inputs.forEach((high, index) => inputs[index]?.update(high));
        if (scene !== (scene = JSON.stringify([world.scene, world.file])))
            one("#world-scene").replaceChildren(...sceneBox(world));
        if (faults !== (faults = JSON.stringify(world.faults)))
            replaceRows(one("#world-faults"), faultList(world), one("#faults-heading"));
        one("#no-faults").hidden = world.faults.length > 0;
    });
}
