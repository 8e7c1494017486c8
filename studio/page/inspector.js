// Explains the selected parameter: what it is, its range, what limits or locks it, what it drives.

import { give } from "./board.js";
import { h, one } from "./dom.js";
import { entryText, show } from "./numbers.js";
import { causeList } from "./refusal.js";
import { store } from "./state.js";

/** @typedef {import("./types.js").Parameter} Parameter */
/** @typedef {import("./types.js").Described} Described */

/** @param {Parameter} parameter */
function rangeText({ minimum, maximum, step, unit, entries, elements }) {
    if (entries) return `${entries.length} entries`;
    if (minimum === undefined || maximum === undefined) return "";
    const grid = step ? `, step ${show(step)}` : "";
    const each = elements ? `${elements} values, each ` : "";
    return `${each}${show(minimum)} to ${show(maximum)}${grid} ${unit ?? ""}`.trim();
}

/** @param {Parameter} parameter */
function accessText({ writable, readOut, readable }) {
    if (writable) return readable ? "read and write" : "write only";
    return readOut ? "read-out" : "locked by other settings";
}

/**
 * @param {string} name
 * @param {...import("./dom.js").Child} values
 */
function fact(name, ...values) {
    return [h("dt", {}, name), h("dd", {}, values)];
}

/** @param {Parameter} parameter */
function defaultFact(parameter) {
    const { name, default: value } = parameter;
    if (value === undefined) return [];
    const reset = h("button", { type: "button", class: "remedy", onclick: () => give([{ parameter: name, value }]) },
        "set to default");
    return fact("default", `${entryText(parameter, value)} ${parameter.unit ?? ""} `,
        parameter.differs && parameter.writable && reset);
}

/** @param {Described} described */
function explanation({ description, limits, readOnlyBecause, drives }) {
    return [
        h("p", { class: "description" }, description),
        readOnlyBecause.length > 0 && h("h3", {}, "Locked, because"),
        readOnlyBecause.length > 0 && causeList(readOnlyBecause),
        limits.map((limit) => [h("h3", {}, `${limit.end} ${limit.limit}, because`), causeList(limit.causes)]).flat(),
        drives.length > 0 &&
            h("details", {}, h("summary", {}, `drives ${drives.length} design parameter${drives.length > 1 ? "s" : ""}`),
                h("ul", { class: "drives" }, drives.map((name) => h("li", {}, name)))),
    ];
}

export function startInspector() {
    const panel = one("#inspector");
    /** What the panel shows: it stays, with the keyboard's focus, until one of them is another. @type {unknown[]} */
    let shown = [];
    store.watch(["selected", "described", "parameters"], ({ selected, described, parameters }) => {
        const parameter = parameters.get(selected);
        const wanted = [selected, described, parameter];
        if (shown.length > 0 && wanted.every((one, index) => one === shown[index])) return;
        shown = wanted;
        if (!parameter) {
            panel.replaceChildren(h("p", { class: "hint" }, "Select a parameter to see what it does and what limits it."));
            return;
        }
        const details = panel.querySelector("details")?.open ?? false;
        panel.replaceChildren(
            h("h2", {}, parameter.displayName, " ", h("code", {}, parameter.name)),
            h("dl", {},
                fact("range", rangeText(parameter) || parameter.type),
                defaultFact(parameter),
                fact("access", accessText(parameter), ` · ${parameter.type} · id ${parameter.id}`)),
            ...(described?.name === selected ? explanation(described) : [h("p", { class: "quiet" }, "…")])
                .flat().filter((child) => child instanceof Node),
        );
        const list = panel.querySelector("details");
        if (list) list.open = details;
    });
}
