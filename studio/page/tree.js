// The tree of parameters: groups in display order, a row for each parameter with its field, search and keyboard.

import { give, select } from "./board.js";
import { h, icon, one } from "./dom.js";
import { kindOf, makeField } from "./field.js";
import { entryText } from "./numbers.js";
import { refusalBox } from "./refusal.js";
import { store } from "./state.js";

/** @typedef {import("./field.js").Field} Field */
/** @typedef {import("./state.js").State} State */
/** @typedef {import("./types.js").Group} Group */
/** @typedef {import("./types.js").Parameter} Parameter */

/**
 * @typedef {object} Row of a parameter
 * @property {HTMLLIElement} item
 * @property {HTMLElement} slot holds the field
 * @property {HTMLElement} below holds a refusal
 * @property {Parameter | null} shown
 * @property {import("./state.js").FieldRefusal | null} refusal that is shown
 * @property {string} kind
 * @property {Field | null} field
 * @property {string} text that the search looks through
 */

/** @typedef {{item: HTMLLIElement, path: string, count: HTMLElement, names: string[]}} Branch a group */

/** @type {Map<string, Row>} */
const rows = new Map();
/** @type {Branch[]} */
const branches = [];

const tree = one("#tree");

/** @param {string} name @param {string} value @param {string} [gesture] */
const set = (name, value, gesture) => give([{ parameter: name, value }], gesture);

/**
 * @param {Group} group
 * @param {string} above path of the groups above
 * @param {number} level from 1
 * @returns {{item: HTMLLIElement, names: string[]}} the names of all parameters below
 */
function makeBranch(group, above, level) {
    const path = above ? `${above} > ${group.group}` : group.group;
    const inner = group.groups.map((child) => makeBranch(child, path, level + 1));
    const own = group.parameters.map(({ name, displayName }) => makeRow(name, displayName, group.group, level + 1));
    const names = [...group.parameters.map(({ name }) => name), ...inner.flatMap((child) => child.names)];
    const count = h("span", { class: "count" });
    const head = h("div", { class: "row group" }, icon("chevron"), h("span", { class: "label" }, group.group), count);
    head.addEventListener("click", () => toggle(path));
    const item = h(
        "li",
        { role: "treeitem", class: "branch", "aria-level": level, "aria-label": group.group, tabindex: -1,
          "data-path": path },
        head,
        h("ul", { role: "group" }, own, inner.map((child) => child.item)),
    );
    branches.push({ item, path, count, names });
    return { item, names };
}

/**
 * @param {string} name
 * @param {string} displayName
 * @param {string} group
 * @param {number} level
 */
function makeRow(name, displayName, group, level) {
    // Within "GPO", "GPO 3 Source" is read faster than all of it, but the beginning stays for search and for readers.
    const slot = h("span", { class: "slot" });
    const below = h("div", { class: "below" });
    const item = h(
        "li",
        { role: "treeitem", class: "leaf", "aria-level": level, tabindex: -1, "data-name": name },
        h("div", { class: "row" }, h("span", { class: "mark" }), h("span", { class: "label", title: name }, displayName),
            slot),
        below,
    );
    item.addEventListener("focusin", () => select(name));
    item.addEventListener("pointerdown", (event) => {
        if (event.target instanceof Element && !event.target.closest("input, select, button, a")) focusItem(item);
    });
    rows.set(name, { item, slot, below, shown: null, refusal: null, kind: "", field: null,
                     text: `${name} ${displayName} ${group}`.toLowerCase() });
    return item;
}

/** @param {Row} row @param {Parameter} parameter */
function showParameter(row, parameter) {
    if (row.shown === parameter) return;
    const kind = kindOf(parameter);
    if (kind !== row.kind || !row.field) {
        const hadFocus = row.slot.contains(document.activeElement);
        row.kind = kind;
        row.field = makeField(parameter, set);
        row.field.control?.setAttribute("tabindex", row.item.tabIndex === 0 ? "0" : "-1");
        row.slot.replaceChildren(row.field.element, h("span", { class: "unit" }, parameter.unit ?? ""));
        if (hadFocus) (row.field.control ?? row.item).focus();
    } else row.field.update(parameter);
    row.shown = parameter;

    const locked = !parameter.writable && !parameter.readOut;
    row.item.classList.toggle("changed", parameter.differs === true);
    row.item.classList.toggle("locked", locked);
    row.item.classList.toggle("read-out", parameter.readOut === true);
    const mark = row.item.querySelector(".mark");
    if (mark) {
        mark.replaceChildren(locked ? icon("lock") : "");
        mark.setAttribute("title", locked ? "locked by other settings" : parameter.differs ? "differs from the default" : "");
    }
    const state = [locked && "locked", parameter.readOut && "read-out", parameter.differs && "changed"].filter(Boolean);
    const value = `${entryText(parameter, parameter.value)} ${parameter.unit ?? ""}`.trim();
    row.item.setAttribute("aria-label", [parameter.displayName, value, ...state].join(", "));
}

/** @param {State} state */
function showTree({ groups }) {
    if (groups.length === 0) return;
    rows.clear();
    branches.length = 0;
    tree.replaceChildren(...groups.map((group) => makeBranch(group, "", 1).item));
    showParameters(store.state);
    filter(store.state);
    (rows.get(store.state.selected)?.item ?? items()[0])?.setAttribute("tabindex", "0");
}

/** @param {State} state */
function showParameters({ parameters }) {
    for (const [name, row] of rows) {
        const parameter = parameters.get(name);
        if (parameter) showParameter(row, parameter);
    }
    for (const { count, names } of branches) {
        const changed = names.filter((name) => parameters.get(name)?.differs).length;
        count.textContent = changed > 0 ? `${changed} changed` : "";
    }
}

/** @param {State} state */
function showRefusals({ refusals }) {
    for (const [name, row] of rows) {
        const refusal = refusals.get(name) ?? null;
        if (refusal === row.refusal) continue;
        row.refusal = refusal;
        row.item.classList.toggle("refused", refusal !== null);
        const back = () => (row.field?.control ?? row.item).focus();
        row.below.replaceChildren(...(refusal ? [refusalBox(name, refusal, back)] : []));
        if (!refusal) row.field?.reset();
    }
}

/** Marks what moved for as long as its animation runs. @param {State} state */
function showFlash({ flash }) {
    for (const name of flash.names) {
        const item = rows.get(name)?.item;
        if (!item) continue;
        item.classList.remove("flash");
        // Reading a measure lets the animation begin anew.
        void item.offsetWidth;
        item.classList.add("flash");
    }
}

/** Shows what the search asks for, groups open as far as needed. @param {State} state */
function filter({ search, onlyChanged, open, parameters }) {
    const words = search.toLowerCase().split(/\s+/).filter(Boolean);
    const searching = words.length > 0 || onlyChanged;
    let found = 0;
    for (const [name, row] of rows) {
        const fits = words.every((word) => row.text.includes(word)) && (!onlyChanged || parameters.get(name)?.differs);
        row.item.hidden = !fits;
        if (fits) found += 1;
    }
    for (const { item, path, names } of branches) {
        item.hidden = searching && !names.some((name) => rows.get(name)?.item.hidden === false);
        item.setAttribute("aria-expanded", String(searching || open.has(path)));
    }
    one("#found").textContent = searching ? `${found} of ${rows.size}` : `${rows.size}`;
}

/** @param {string} path @param {boolean} [wanted] */
function toggle(path, wanted) {
    const open = new Set(store.state.open);
    if (wanted ?? !open.has(path)) open.add(path);
    else open.delete(path);
    store.put({ open });
}

/** Items that can be seen, in order. */
function items() {
    return [...tree.querySelectorAll("li")].filter((item) => item.checkVisibility());
}

/** @param {HTMLLIElement | undefined | null} item */
function focusItem(item) {
    if (!item) return;
    for (const other of tree.querySelectorAll('[tabindex="0"]')) other.setAttribute("tabindex", "-1");
    item.tabIndex = 0;
    rows.get(item.dataset.name ?? "")?.field?.control?.setAttribute("tabindex", "0");
    item.focus({ preventScroll: true });
    item.firstElementChild?.scrollIntoView({ block: "nearest" });
}

/**
 * Selects a parameter and brings it into sight.
 * @param {string} name
 */
export function reveal(name) {
    const row = rows.get(name);
    if (!row) return;
    const open = new Set(store.state.open);
    for (const branch of branches) if (branch.names.includes(name)) open.add(branch.path);
    store.put(row.item.hidden ? { open, search: "", onlyChanged: false } : { open });
    // The groups open with the store's listeners; only then can the row be scrolled to.
    queueMicrotask(() => focusItem(row.item));
}

/** @param {KeyboardEvent} event */
function onKey(event) {
    const { target } = event;
    if (!(target instanceof HTMLElement) || event.ctrlKey || event.metaKey || event.altKey) return;
    const item = /** @type {HTMLLIElement | null} */ (target.closest("li[role=treeitem]"));
    if (!item) return;
    if (target !== item) {
        if (event.key === "Escape") {
            focusItem(item);
            event.stopPropagation();
        }
        return;
    }
    const list = items();
    const at = list.indexOf(item);
    const path = item.dataset.path;
    const expanded = item.getAttribute("aria-expanded") === "true";
    const control = rows.get(item.dataset.name ?? "")?.field?.control;
    if (event.key === "ArrowDown") focusItem(list[at + 1]);
    else if (event.key === "ArrowUp") focusItem(list[at - 1]);
    else if (event.key === "Home") focusItem(list[0]);
    else if (event.key === "End") focusItem(list.at(-1));
    else if (event.key === "ArrowRight" && path) expanded ? focusItem(list[at + 1]) : toggle(path, true);
    else if (event.key === "ArrowLeft" && path && expanded) toggle(path, false);
    else if (event.key === "ArrowLeft") focusItem(item.parentElement?.closest("li"));
    else if ((event.key === "Enter" || event.key === " ") && path) toggle(path);
    else if ((event.key === "Enter" || event.key === "F2" || event.key === " ") && control) enter(control);
    else if (/^[-0-9.]$/.test(event.key) && control instanceof HTMLInputElement) {
        // A digit begins to replace the value, as in a table; the key itself reaches the box that has the focus now.
        enter(control);
        return;
    } else return;
    event.preventDefault();
}

/** @param {HTMLElement} control */
function enter(control) {
    control.focus();
    if (control instanceof HTMLInputElement) control.select();
}

export function startTree() {
    tree.addEventListener("keydown", onKey);
    tree.addEventListener("focusin", (event) => {
        const item = event.target instanceof Element ? event.target.closest("li") : null;
        if (!item || item.tabIndex === 0) return;
        for (const other of tree.querySelectorAll('[tabindex="0"]')) other.setAttribute("tabindex", "-1");
        item.tabIndex = 0;
        rows.get(item.dataset.name ?? "")?.field?.control?.setAttribute("tabindex", "0");
    });
    store.watch(["groups"], showTree);
    store.watch(["parameters"], showParameters);
    store.watch(["refusals"], showRefusals);
    store.watch(["flash"], showFlash);
    store.watch(["search", "onlyChanged", "open", "parameters"], filter);
    store.watch(["selected"], ({ selected }) => {
        for (const [name, row] of rows) row.item.setAttribute("aria-selected", String(name === selected));
    });

    const search = /** @type {HTMLInputElement} */ (one("#search"));
    search.addEventListener("input", () => store.put({ search: search.value }));
    search.addEventListener("keydown", (event) => {
        if (event.key === "Escape") store.put({ search: "" });
        else if (event.key === "ArrowDown" || event.key === "Enter") {
            event.preventDefault();
            focusItem(items().find((item) => item.dataset.name) ?? items()[0]);
        }
    });
    const only = one("#only-changed");
    only.addEventListener("click", () => store.put({ onlyChanged: !store.state.onlyChanged }));
    store.watch(["search", "onlyChanged"], (state) => {
        if (search.value !== state.search) search.value = state.search;
        only.setAttribute("aria-pressed", String(state.onlyChanged));
    });
}
