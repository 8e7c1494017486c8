// The list of changes: what was set, what else moved, and the way back.

import { undo } from "./board.js";
import { focusOn, h, icon, one, replaceRows } from "./dom.js";
import { show } from "./numbers.js";
import { store } from "./state.js";
import { reveal } from "./tree.js";

/** @typedef {import("./state.js").ChangeEntry} ChangeEntry */

/** A stretch of a table is too long for a line. @param {import("./types.js").Value} value */
function brief(value) {
    const text = show(value);
    return text.length > 28 ? `${text.slice(0, 24)} …` : text;
}

/**
 * @param {string} name
 * @param {import("./types.js").Value} before
 * @param {import("./types.js").Value} after
 * @param {string} [aspect]
 */
function step(name, before, after, aspect = "") {
    return h("span", { class: "step" },
        h("button", { type: "button", class: "name", onclick: () => reveal(name) }, name),
        aspect && aspect !== "value" && h("span", { class: "aspect" }, ` ${aspect}`),
        Array.isArray(before) && Array.isArray(after)
            ? h("b", {}, ` ${after.filter((value, index) => value !== before[index]).length} of ${after.length} elements`)
            : [h("span", { class: "before" }, ` ${brief(before)} `), "→", h("b", {}, ` ${brief(after)}`)]);
}

/** @param {ChangeEntry} entry */
function title(entry) {
    if (entry.title) return h("span", { class: "step" }, entry.title);
    return entry.set.map((value) => step(value.parameter, value.before, value.after));
}

/** @param {ChangeEntry} entry @param {boolean} newest */
function line(entry, newest) {
    const way = newest ? "Take this change back" : "Set these values back";
    const words = entry.set.map((value) => value.parameter).join(", ") || entry.title;
    const canUndo = newest || entry.set.length > 0;
    return h("li", { "data-key": entry.key },
        h("span", { class: "what" }, title(entry), !entry.own && h("span", { class: "tag" }, "by another")),
        entry.moved.length > 0 && h("span", { class: "moved" }, h("span", { class: "quiet" }, "moved "),
            entry.moved.slice(0, 12).map((moved) => step(moved.parameter, moved.before, moved.after, moved.aspect)),
            entry.moved.length > 12 && h("span", { class: "quiet" }, ` and ${entry.moved.length - 12} more`)),
        canUndo && h("button", { type: "button", class: "plain undo", title: way, "aria-label": `undo ${words}`,
            onclick: () => undo(entry) }, icon("undo"), "undo"));
}

/** Takes the newest change back. */
export function undoNewest() {
    const newest = store.state.changes[0];
    if (newest) undo(newest);
}

export function startChanges() {
    const list = one("#changes-list");
    const heading = one("#changes h2");
    const button = /** @type {HTMLButtonElement} */ (one("#undo"));
    button.addEventListener("click", undoNewest);
    store.watch(["changes"], ({ changes }) => {
        if (changes.length === 0 && document.activeElement === button) focusOn(heading);
        button.disabled = changes.length === 0;
        replaceRows(list, changes.map((entry, index) => line(entry, index === 0)), heading);
        one("#no-changes").hidden = changes.length > 0;
    });
    // A drag changes the list many times a second; a reader hears of it once it rests.
    /** @type {ReturnType<typeof setTimeout> | undefined} */
    let timer;
    store.watch(["last"], ({ last }) => {
        clearTimeout(timer);
        if (!last) return;
        timer = setTimeout(() => {
            const set = last.set.map((done) => `${done.parameter} is ${show(done.value)}`);
            const moved = last.moved.map((moved) => `${moved.parameter} ${moved.aspect} moved to ${moved.after}`);
            one("#spoken").textContent = [...set, ...moved.slice(0, 4)].join("; ");
        }, 400);
    });
}
