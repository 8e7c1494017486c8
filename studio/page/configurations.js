// Configuration files: dropped on the page, checked line by line, compared with the board, loaded, saved.

import { takeChange } from "./board.js";
import { chooseFile, h, icon, one, saveFile } from "./dom.js";
import { getText, sendFile } from "./link.js";
import { show } from "./numbers.js";
import { say, store, trying } from "./state.js";
import { reveal } from "./tree.js";

/** @typedef {import("./types.js").Finding} Finding */
/** @typedef {import("./types.js").Difference} Difference */

/** The file that is looked at. @type {{name: string, text: string} | null} */
let file = null;

/** @param {File} dropped */
async function open(dropped) {
    file = { name: dropped.name, text: await dropped.text() };
    store.put({ view: "configurations" });
    await look();
}

/** Checks the file and compares it with the board as they are now. */
async function look() {
    if (!file) return;
    const { name, text } = file;
    one("#configuration-name").textContent = name;
    const answers = await trying(() => Promise.all([
        sendFile("POST", `/configuration/check?name=${encodeURIComponent(name)}`, text),
        sendFile("POST", `/configuration/diff?name=${encodeURIComponent(name)}`, text),
    ]));
    if (!answers) {
        file = null;
        one("#configuration").hidden = true;
        return;
    }
    one("#configuration").hidden = false;
    showLines(text, answers[0]);
    showDifferences(answers[1]);
}

/** @param {string} text @param {Finding[]} findings */
function showLines(text, findings) {
    /** @type {Map<number, Finding[]>} */
    const byLine = new Map();
    const elsewhere = findings.filter((finding) => !finding.line);
    for (const finding of findings)
        if (finding.line) byLine.set(finding.line, [...(byLine.get(finding.line) ?? []), finding]);
    const note = (/** @type {Finding} */ finding) =>
        h("div", { class: `finding ${finding.weight}` }, h("b", {}, finding.weight), " ", finding.text,
            finding.advice.length > 0 && h("ul", {}, finding.advice.map((advice) => h("li", {}, advice))));
    const lines = text.split(/\r?\n/);
    if (lines.at(-1) === "") lines.pop();
    one("#configuration-lines").replaceChildren(
        ...elsewhere.map((finding) => h("li", { class: "found" }, note(finding))),
        ...lines.map((line, index) => {
            const found = byLine.get(index + 1) ?? [];
            return h("li", { class: found.length > 0 ? "found" : "", value: index + 1 },
                h("code", {}, line), found.map(note));
        }));
    const text_ = findings.length === 0 ? "every line would be taken"
        : `${findings.length} finding${findings.length === 1 ? "" : "s"}`;
    one("#check-text").textContent = text_;
    one("#check-text").className = findings.length === 0 ? "good" : "bad";
    // Only the list is scrolled; the page stays where it is.
    const first = one("#configuration-lines").querySelector(".found");
    if (first instanceof HTMLElement) one("#configuration-lines").scrollTop = first.offsetTop - 60;
}

/** @param {Difference[]} differences */
function showDifferences(differences) {
    one("#diff-body").replaceChildren(...differences.map((difference) =>
        h("tr", {},
            h("td", {}, h("button", { type: "button", class: "name", onclick: () => reveal(difference.name) },
                difference.name)),
            h("td", { class: "value", title: difference.firstNote ?? "" }, show(difference.first),
                difference.firstNote && h("div", { class: "quiet" }, difference.firstNote)),
            h("td", { class: "value" }, show(difference.second)))));
    one("#diff-table").hidden = differences.length === 0;
    one("#diff-text").textContent = differences.length === 0 ? "the board says the same"
        : `${differences.length} value${differences.length === 1 ? " differs" : "s differ"}`;
}

async function load() {
    if (!file) return;
    const { name, text } = file;
    await trying(async () => {
        const sender = `name=${encodeURIComponent(name)}&page=${store.state.page}`;
        const change = await sendFile("PUT", `/configuration?${sender}`, text);
        takeChange(change, { own: true, title: `${name} loaded` });
        const skipped = change.skipped?.length ?? 0;
        const missing = change.missingFiles?.length ?? 0;
        if (skipped + missing > 0) {
            const sentences = (change.skipped ?? []).slice(0, 3).map((/** @type {any} */ line) => line.sentence);
            say(`${name} loaded; not taken: ${[...sentences, ...(change.missingFiles ?? [])].join("; ")}`, "error");
        } else say(`${name} loaded`);
        await look();
    });
}

/** The whole page takes a dropped configuration, so that nobody has to aim. */
function startDrop() {
    const hint = one("#drop-hint");
    const isFile = (/** @type {DragEvent} */ event) => event.dataTransfer?.types.includes("Files") ?? false;
    addEventListener("dragover", (event) => {
        if (!isFile(event)) return;
        event.preventDefault();
        hint.hidden = store.state.view === "curves" || store.state.view === "world";
    });
    addEventListener("dragleave", (event) => {
        if (event.relatedTarget === null) hint.hidden = true;
    });
    addEventListener("drop", (event) => {
        hint.hidden = true;
        if (event.defaultPrevented || !isFile(event)) return;
        event.preventDefault();
        const dropped = event.dataTransfer?.files[0];
        if (dropped) open(dropped);
    });
}

export function startConfigurations() {
    startDrop();
    one("#configuration-open").append(icon("open"), "Open…");
    one("#configuration-open").addEventListener("click", async () => {
        const chosen = await chooseFile(".mcf");
        if (chosen) await open(chosen);
    });
    one("#configuration-save").append(icon("save"), "Save the board's state");
    one("#configuration-save").addEventListener("click", () =>
        trying(async () => saveFile("board.mcf", await getText("/configuration"))));
    one("#configuration-load").addEventListener("click", load);
    one("#configuration-look").addEventListener("click", look);
    // The comparison is with the board as it is; it follows what changes there.
    /** @type {ReturnType<typeof setTimeout> | undefined} */
    let timer;
    store.watch(["last"], () => {
        clearTimeout(timer);
        timer = setTimeout(() => {
            if (store.state.view === "configurations") look();
        }, 300);
    });
    store.watch(["view"], ({ view }) => {
        if (view === "configurations") look();
    });
}
