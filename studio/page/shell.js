// The frame of the page: the bar at the top, tabs, light and dark, notices, keys that work everywhere.

import { undoNewest } from "./changes.js";
import { h, icon, one } from "./dom.js";
import { post } from "./link.js";
import { brief } from "./numbers.js";
import { views } from "./place.js";
import { store, trying } from "./state.js";

/** @typedef {import("./state.js").View} View */

const linkTexts = {
    connecting: "connecting",
    up: "connected",
    lost: "link lost, trying again",
    ended: "the studio has ended",
};

/** @param {"run" | "single" | "stop"} action */
function acquire(action) {
    return trying(async () => store.put({ acquisition: await post("/acquisition", { action }) }));
}

/** @param {View} view */
function go(view) {
    store.put({ view });
    one(`#tab-${view}`).focus();
}

function startTabs() {
    const bar = one("#tabs");
    bar.addEventListener("keydown", (event) => {
        const at = views.indexOf(store.state.view);
        const next = { ArrowRight: at + 1, ArrowLeft: at - 1, Home: 0, End: views.length - 1 }[event.key];
        if (next === undefined) return;
        event.preventDefault();
        go(views[(next + views.length) % views.length] ?? "picture");
    });
    for (const view of views) one(`#tab-${view}`).addEventListener("click", () => store.put({ view }));
    store.watch(["view"], ({ view }) => {
        for (const other of views) {
            const tab = one(`#tab-${other}`);
            tab.setAttribute("aria-selected", String(other === view));
            tab.tabIndex = other === view ? 0 : -1;
            one(`#view-${other}`).hidden = other !== view;
        }
    });
}

function startAcquisition() {
    const [single, run, stop] = ["#single", "#run", "#stop"].map((id) => /** @type {HTMLButtonElement} */ (one(id)));
    single?.addEventListener("click", () => acquire("single"));
    run?.addEventListener("click", () => acquire("run"));
    stop?.addEventListener("click", () => acquire("stop"));
    store.watch(["acquisition"], ({ acquisition }) => {
        if (!single || !run || !stop) return;
        const state = acquisition?.state ?? "stopped";
        single.disabled = state !== "stopped";
        run.disabled = state !== "stopped";
        stop.disabled = state === "stopped";
        document.body.dataset.acquisition = state;
        one("#state").textContent = state;
        one("#rate").textContent = brief(state === "running" ? (acquisition?.rate ?? 0) : 0);
        one("#lost").textContent = String(acquisition?.lost ?? 0);
        one("#lost").classList.toggle("bad", (acquisition?.lost ?? 0) > 0);
        one("#number").textContent = String(acquisition?.pictures ?? 0);
    });
}

function startNotice() {
    const box = one("#notice");
    /** @type {ReturnType<typeof setTimeout> | undefined} */
    let timer;
    store.watch(["notice"], ({ notice }) => {
        clearTimeout(timer);
        box.hidden = !notice;
        if (!notice) return;
        const close = () => store.put({ notice: null });
        box.className = notice.kind;
        box.replaceChildren(
            h("span", { role: notice.kind === "error" ? "alert" : "status" }, notice.text),
            h("button", { type: "button", class: "plain", "aria-label": "close", onclick: close }, icon("close")),
        );
        timer = setTimeout(close, notice.kind === "error" ? 12_000 : 4000);
    });
}

function startTheme() {
    const select = /** @type {HTMLSelectElement} */ (one("#theme"));
    const kept = localStorage.getItem("theme") ?? "auto";
    const show = (/** @type {string} */ theme) => {
        document.documentElement.dataset.theme = theme;
        select.value = theme;
    };
    show(["light", "dark"].includes(kept) ? kept : "auto");
    select.addEventListener("change", () => {
        localStorage.setItem("theme", select.value);
        show(select.value);
        // Canvases take their colours from the style sheet when they draw.
        dispatchEvent(new Event("themechange"));
    });
    matchMedia("(prefers-color-scheme: dark)").addEventListener("change", () => dispatchEvent(new Event("themechange")));
}

/** @param {KeyboardEvent} event */
function onKey(event) {
    const dialog = /** @type {HTMLDialogElement} */ (one("#keys"));
    if (dialog.open) return;
    const { target } = event;
    const typing = target instanceof HTMLElement && target.matches("input:not([type=range]), select, textarea");
    if ((event.ctrlKey || event.metaKey) && event.key === "z" && !typing) {
        event.preventDefault();
        return undoNewest();
    }
    if (event.ctrlKey || event.metaKey) return;
    const number = event.altKey ? Number(event.key) : NaN;
    if (number >= 1 && number <= views.length) {
        event.preventDefault();
        return go(views[number - 1] ?? "picture");
    }
    if (typing || event.altKey) return;
    const running = (store.state.acquisition?.state ?? "stopped") !== "stopped";
    if (event.key === "/") one("#search").focus();
    else if (event.key === "?") dialog.showModal();
    else if (event.key === "r") acquire(running ? "stop" : "run");
    else if (event.key === "s") acquire("single");
    else return;
    event.preventDefault();
}

export function startShell() {
    startTabs();
    startAcquisition();
    startNotice();
    startTheme();
    addEventListener("keydown", onKey);
    one("#show-keys").addEventListener("click", () => /** @type {HTMLDialogElement} */ (one("#keys")).showModal());
    store.watch(["link"], ({ link }) => {
        document.body.dataset.link = link;
        one("#link").textContent = linkTexts[link];
    });
    store.watch(["overview"], ({ overview }) => {
        if (!overview) return;
        const files = [overview.world, overview.config].filter(Boolean).join(", ");
        one("#applet").textContent = `${overview.name} ${overview.version}${files ? ` · ${files}` : ""}`;
    });
}
