// The writes to the design that the last change caused, and the whole trace as a file.

import { h, one, saveFile } from "./dom.js";
import { getText } from "./link.js";
import { store, trying } from "./state.js";

/** @typedef {import("./types.js").Write} Write */
/** @typedef {import("./types.js").Value} Value */

/** @param {Value} value */
function valueText(value) {
    if (!Array.isArray(value)) return String(value);
    return value.length > 12 ? `${value.slice(0, 12).join(" ")} … (${value.length})` : value.join(" ");
}

/** Names of the design may break behind their underscores. @param {string} name */
function breakable(name) {
    return name.split(/(?<=_)/).flatMap((part) => [part, h("wbr")]);
}

/** @param {Write} write @param {Write | undefined} above */
function row(write, above) {
    const before = valueText(write.before);
    const after = valueText(write.value);
    const short = write.name.replace(/^Device1_/, "");
    return h("tr", { class: write.result !== 0 ? "bad" : before === after ? "same" : "" },
        h("td", { class: "number" }, write.order),
        h("td", { class: "cause" }, write.cause === above?.cause ? "" : write.cause),
        h("td", { title: write.name }, h("code", {}, breakable(short))),
        h("td", { class: "value" }, before),
        h("td", { class: "value" }, after),
        h("td", {}, write.result === 0 ? "" : `refused (${write.result})`));
}

/** @param {"json" | "csv"} format */
function save(format) {
    return trying(async () => saveFile(`trace.${format}`, await getText(`/trace?format=${format}`)));
}

export function startWrites() {
    const body = one("#writes-body");
    store.watch(["last"], ({ last }) => {
        const writes = last?.writes ?? [];
        body.replaceChildren(...writes.map((write, index) => row(write, writes[index - 1])));
        const changed = writes.filter((write) => valueText(write.before) !== valueText(write.value)).length;
        one("#writes-text").textContent = last
            ? `${writes.length} write${writes.length === 1 ? "" : "s"}, ${changed} to another value`
            : "No change yet";
        one("#writes-table").hidden = writes.length === 0;
    });
    one("#trace-json").addEventListener("click", () => save("json"));
    one("#trace-csv").addEventListener("click", () => save("csv"));
}
