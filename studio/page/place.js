// Keeps the place in the address: view, parameter, search, open groups, zoom. A reload or a sent link comes back to it.

import { select } from "./board.js";
import { store } from "./state.js";

/** @typedef {import("./state.js").State} State */
/** @typedef {import("./state.js").View} View */

/** @type {View[]} */
export const views = ["picture", "curves", "signals", "writes", "configurations", "world"];

/** @param {State} state */
function hashOf({ view, selected, search, onlyChanged, open, zoom, profile }) {
    const place = new URLSearchParams({ view });
    if (selected) place.set("select", selected);
    if (search) place.set("search", search);
    if (onlyChanged) place.set("changed", "1");
    place.set("open", [...open].join("|"));
    if (zoom.zoom > 0) place.set("zoom", [zoom.zoom, zoom.x, zoom.y].map((value) => Number(value.toPrecision(6))).join());
    if (profile.at >= 0) place.set(profile.axis, String(profile.at));
    return `#${place}`;
}

/** Takes up the place that the address names; what it does not name stays. */
function goThere() {
    const place = new URLSearchParams(location.hash.slice(1));
    const view = /** @type {View} */ (place.get("view"));
    if (views.includes(view)) store.put({ view });
    const name = place.get("select");
    if (name) select(name);
    const search = place.get("search");
    if (search !== null) store.put({ search });
    if (place.has("changed")) store.put({ onlyChanged: true });
    const open = place.get("open");
    if (open !== null) store.put({ open: new Set(open.split("|").filter(Boolean)) });
    const [zoom = NaN, x = NaN, y = NaN] = (place.get("zoom") ?? "").split(",").map(Number);
    if ([zoom, x, y].every(Number.isFinite) && zoom > 0) store.put({ zoom: { zoom: Math.min(64, zoom), x, y } });
    for (const axis of /** @type {("row" | "column")[]} */ (["row", "column"])) {
        const at = Number.parseInt(place.get(axis) ?? "", 10);
        if (at >= 0) store.put({ profile: { axis, at } });
    }
}

export function startPlace() {
    goThere();
    addEventListener("hashchange", () => {
        if (location.hash !== hashOf(store.state)) goThere();
    });
    /** @type {ReturnType<typeof setTimeout> | undefined} */
    let timer;
    store.watch(["view", "selected", "search", "onlyChanged", "open", "zoom", "profile"], (state) => {
        clearTimeout(timer);
        // Browsers slow down a page that changes its address many times a second, as a zoom does.
        timer = setTimeout(() => history.replaceState(null, "", hashOf(state)), 60);
    });
}
