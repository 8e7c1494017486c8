// Fields of a few parameters outside the tree, where a view is about them.

import { give } from "./board.js";
import { h } from "./dom.js";
import { kindOf, makeField } from "./field.js";
import { refusalBox } from "./refusal.js";
import { store } from "./state.js";
import { reveal } from "./tree.js";

/**
 * Rows for parameters; those that the applet does not have are left out.
 * @param {string[]} names
 * @returns {HTMLElement}
 */
export function fieldList(names) {
    const rows = names.map((name) => ({
        name,
        label: h("button", { type: "button", class: "name", title: name, onclick: () => reveal(name) }),
        slot: h("span", { class: "slot" }),
        below: h("div", { class: "below" }),
        kind: "",
        /** @type {import("./field.js").Field | null} */
        field: null,
    }));
    const list = h("div", { class: "field-list" });
    store.watch(["parameters"], ({ parameters }) => {
        for (const row of rows) {
            const parameter = parameters.get(row.name);
            if (!parameter) continue;
            const kind = kindOf(parameter);
            if (!row.field) list.append(h("div", { class: "field-row" }, row.label, row.slot), row.below);
            if (!row.field || kind !== row.kind) {
                row.kind = kind;
                row.field = makeField(parameter, (name, value, gesture) => give([{ parameter: name, value }], gesture));
                row.slot.replaceChildren(row.field.element, h("span", { class: "unit" }, parameter.unit ?? ""));
            } else row.field.update(parameter);
            row.label.textContent = parameter.displayName;
        }
    });
    store.watch(["refusals"], ({ refusals }) => {
        for (const row of rows) {
            const refusal = refusals.get(row.name);
            if (refusal) row.below.replaceChildren(refusalBox(row.name, refusal, () => row.field?.control?.focus()));
            else if (row.below.firstChild) {
                row.below.replaceChildren();
                row.field?.reset();
            }
        }
    });
    return list;
}
