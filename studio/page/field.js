// The control in which a parameter's value is changed: a switch, a list, a slider with its number, a text, a button.

import { h, icon } from "./dom.js";
import { entryText, hasRange, placeOf, places, show, stepped, valueAt } from "./numbers.js";

/** @typedef {import("./types.js").Parameter} Parameter */

/**
 * @callback SetValue
 * @param {string} name
 * @param {string} value as the person gave it
 * @param {string} [gesture] values of one drag carry the same word and count as one change
 * @returns {Promise<boolean>} whether it was accepted
 */

/**
 * @typedef {object} Field
 * @property {HTMLElement} element
 * @property {HTMLElement | null} control what takes the keyboard; null where the value can only be read
 * @property {(parameter: Parameter) => void} update shows another value or range of the same kind
 * @property {() => void} reset drops what was typed or chosen and not accepted
 */

/** Pairs of entries that are a switch: off, on. */
const switches = [
    ["FG_OFF", "FG_ON"],
    ["FG_NO", "FG_YES"],
    ["FG_LOW", "FG_HIGH"],
];

/** @param {Parameter} parameter */
function switchOf(parameter) {
    const names = parameter.entries?.map((entry) => entry.name) ?? [];
    return names.length === 2 ? switches.find((pair) => pair.every((name) => names.includes(name))) : undefined;
}

/**
 * Which control a parameter gets. Two parameters with the same word can share a field.
 * @param {Parameter} parameter
 */
export function kindOf(parameter) {
    if (parameter.type.endsWith("field")) return "curve";
    if (!parameter.writable) return "read";
    if (parameter.entries) {
        if (parameter.entries.length === 1 && parameter.entries[0]?.name === "FG_APPLY") return "button";
        if (switchOf(parameter)) return "switch";
        return `list of ${parameter.entries.map((entry) => entry.name).join()}`;
    }
    if (parameter.type === "text") return "text";
    return hasRange(parameter) ? "slider" : "number";
}

/**
 * @param {Parameter} parameter
 * @param {SetValue} set
 * @returns {Field}
 */
export function makeField(parameter, set) {
    const kind = kindOf(parameter);
    if (kind === "curve") return curveField(parameter);
    if (kind === "read") return readField(parameter);
    if (kind === "button") return buttonField(parameter, set);
    if (kind === "switch") return switchField(parameter, set);
    if (kind.startsWith("list")) return listField(parameter, set);
    if (kind === "slider") return sliderField(parameter, set);
    return textField(parameter, set);
}

/** @param {Parameter} parameter @returns {Field} */
function readField(parameter) {
    const output = h("output", { class: "field-read" });
    /** @param {Parameter} now */
    const update = (now) => {
        output.textContent = entryText(now, now.value);
        output.title = output.textContent;
    };
    update(parameter);
    return { element: output, control: null, update, reset: () => {} };
}

/** @param {Parameter} parameter @returns {Field} */
function curveField(parameter) {
    const link = h("a", { class: "field-link", href: "#view=curves" }, icon("curve"), `${parameter.elements} values`);
    return { element: link, control: link, update: () => {}, reset: () => {} };
}

/** @param {Parameter} parameter @param {SetValue} set @returns {Field} */
function buttonField(parameter, set) {
    const value = parameter.entries?.[0]?.name ?? "";
    const button = h("button", { type: "button", class: "small", onclick: () => set(parameter.name, value) }, "Apply");
    button.setAttribute("aria-label", `${parameter.displayName}: apply`);
    return { element: button, control: button, update: () => {}, reset: () => {} };
}

/** @param {Parameter} parameter @param {SetValue} set @returns {Field} */
function switchField(parameter, set) {
    const [off = "", on = ""] = switchOf(parameter) ?? [];
    const text = h("span", { class: "switch-text" });
    const button = h(
        "button",
        { type: "button", role: "switch", class: "switch", "aria-label": parameter.displayName },
        h("span", { class: "switch-track" }, h("span", { class: "switch-knob" })),
        text,
    );
    button.addEventListener("click", () => {
        set(parameter.name, button.getAttribute("aria-checked") === "true" ? off : on);
    });
    /** @param {Parameter} now */
    const update = (now) => {
        button.setAttribute("aria-checked", String(now.value === on));
        text.textContent = entryText(now, now.value);
    };
    update(parameter);
    return { element: button, control: button, update, reset: () => {} };
}

/** @param {Parameter} parameter @param {SetValue} set @returns {Field} */
function listField(parameter, set) {
    const select = h(
        "select",
        { "aria-label": parameter.displayName },
        parameter.entries?.map((entry) => h("option", { value: entry.name, title: entry.name }, entry.displayName)),
    );
    let shown = String(parameter.value);
    select.addEventListener("change", async () => {
        if (!(await set(parameter.name, select.value))) select.value = shown;
    });
    /** @param {Parameter} now */
    const update = (now) => {
        shown = String(now.value);
        if (select.value !== shown) select.value = shown;
        select.title = shown;
    };
    update(parameter);
    return { element: select, control: select, update, reset: () => (select.value = shown) };
}

/**
 * A text box that keeps what was typed until it is given with Enter or by leaving it; Escape takes it back. A refused
 * text stays, marked, until the value changes.
 * @param {Parameter} parameter
 * @param {SetValue} set
 * @returns {Field & {control: HTMLInputElement}}
 */
function textField(parameter, set) {
    const isNumber = parameter.type !== "text";
    const input = h("input", {
        type: "text",
        class: isNumber ? "number" : "text",
        "aria-label": parameter.unit ? `${parameter.displayName}, ${parameter.unit}` : parameter.displayName,
        autocomplete: "off",
        spellcheck: "false",
    });
    if (isNumber) input.inputMode = "decimal";
    let now = parameter;
    /** The last text that was given and not accepted. */
    let refused = "";
    /** The text that is being given: Enter and leaving the box ask for the same. */
    let given = "";
    const restore = () => {
        input.value = show(now.value);
        input.removeAttribute("aria-invalid");
        refused = "";
    };
    /** @param {boolean} again gives a refused text once more: what refused it may have gone */
    const give = async (again) => {
        const text = input.value.trim();
        if (text === show(now.value)) return restore();
        if ((text === refused && !again) || text === given) return;
        given = text;
        const accepted = await set(now.name, text);
        given = "";
        if (input.value.trim() !== text) return;
        if (accepted) return restore();
        refused = text;
        input.setAttribute("aria-invalid", "true");
    };
    input.addEventListener("change", () => give(false));
    input.addEventListener("keydown", (event) => {
        if (event.key === "Enter") give(true);
        else if (event.key === "Escape" && input.value !== show(now.value)) {
            restore();
            event.stopPropagation();
        } else if (isNumber && (event.key === "ArrowUp" || event.key === "ArrowDown") && hasRange(now)) {
            event.preventDefault();
            const steps = (event.key === "ArrowUp" ? 1 : -1) * (event.shiftKey ? 10 : 1);
            input.value = show(stepped(now, Number(input.value), steps));
            give(true);
        }
    });
    /** @param {Parameter} next */
    const update = (next) => {
        const changed = show(next.value) !== show(now.value);
        const typing = document.activeElement === input && input.value !== show(now.value) && !refused;
        now = next;
        if (!typing && (changed || !refused)) restore();
    };
    restore();
    return { element: input, control: input, update, reset: restore };
}

/** @param {Parameter} parameter @param {SetValue} set @returns {Field} */
function sliderField(parameter, set) {
    const text = textField(parameter, set);
    // The number beside it is the keyboard's way; the slider is a second way to the same value, for the pointer and for
    // those who look for it by its role.
    const slider = h("input", {
        type: "range",
        min: 0,
        max: places,
        step: 1,
        tabindex: -1,
        "aria-label": `${parameter.displayName}, slider`,
    });
    let now = parameter;
    let gesture = "";
    /** @type {{value: number, gesture: string} | null} */
    let wanted = null;
    let sending = false;

    // One value is under way at a time, and the newest follows it: a slow link makes a drag coarser, never late.
    const send = async () => {
        if (sending) return;
        sending = true;
        while (wanted !== null) {
            const next = wanted;
            wanted = null;
            await set(now.name, show(next.value), next.gesture);
        }
        sending = false;
    };
    /** @param {number} value */
    const want = (value) => {
        wanted = { value, gesture };
        text.control.value = show(value);
        send();
    };
    slider.addEventListener("input", () => {
        gesture ||= crypto.randomUUID();
        want(valueAt(now, slider.valueAsNumber));
    });
    slider.addEventListener("change", () => (gesture = ""));
    slider.addEventListener("keydown", (event) => {
        const steps = { ArrowRight: 1, ArrowUp: 1, ArrowLeft: -1, ArrowDown: -1, PageUp: 10, PageDown: -10 }[event.key];
        if (steps === undefined) return;
        event.preventDefault();
        want(stepped(now, Number(wanted?.value ?? now.value), steps));
    });
    /** @param {Parameter} next */
    const update = (next) => {
        now = next;
        text.update(next);
        if (wanted === null) slider.valueAsNumber = placeOf(next, Number(next.value));
        slider.setAttribute("aria-valuetext", `${show(next.value)} ${next.unit ?? ""}`.trim());
    };
    update(parameter);
    const element = h("span", { class: "field-slider" }, slider, text.element);
    return { element, control: text.control, update, reset: text.reset };
}
