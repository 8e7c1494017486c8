// Keeps the store in step with the studio's board: loads everything, gives values to it, takes in what changed, whoever
// changed it.

import { getJson, Live, post, StudioError } from "./link.js";
import { decodeFrame } from "./frame.js";
import { say, store, trying } from "./state.js";

/** @typedef {import("./types.js").Change} Change */
/** @typedef {import("./types.js").Parameter} Parameter */
/** @typedef {import("./types.js").Refusal} Refusal */
/** @typedef {import("./types.js").Setting} Setting */
/** @typedef {import("./types.js").Value} Value */
/** @typedef {import("./state.js").ChangeEntry} ChangeEntry */

const changesKept = 100;

/** The studio that the page shows, and the revision of its board: another studio counts from the start. */
let instance = "";
let revision = -1;
/** Revisions whose change was taken in: an own one comes twice, as the answer and as a message. */
const taken = new Set();
let nextKey = 0;

/** @param {number} reached */
function reach(reached) {
    if (reached > revision) revision = reached;
}

/**
 * Shown the same way?
 * @param {Parameter | null} a
 * @param {Parameter | null} b
 */
function same(a, b) {
    return JSON.stringify(a) === JSON.stringify(b);
}

/** @param {Parameter[]} list */
function putParameters(list) {
    const before = store.state.parameters;
    const parameters = new Map();
    let changed = before.size !== list.length;
    for (const parameter of list) {
        const old = before.get(parameter.name);
        const keep = old && same(old, parameter);
        parameters.set(parameter.name, keep ? old : parameter);
        if (!keep) changed = true;
    }
    if (changed) store.put({ parameters });
}

let refreshing = false;
let refreshAgain = false;

/** Reads all parameters again; of requests that come while it does, one more follows. */
export async function refresh() {
    refreshAgain = true;
    if (refreshing) return;
    refreshing = true;
    try {
        while (refreshAgain) {
            refreshAgain = false;
            putParameters(await getJson("/parameters"));
            await explainSelected();
        }
    } catch {
        // The link says that it is lost, and everything is loaded when it is back.
    } finally {
        refreshing = false;
    }
}

/** Has the selected parameter explained anew; an answer for one that is no longer selected is dropped. */
export async function explainSelected() {
    const name = store.state.selected;
    if (!name) return store.put({ described: null });
    const described = await getJson(`/parameters/${encodeURIComponent(name)}`);
    // The same explanation is left as it stands: somebody may be in it with the keyboard.
    if (store.state.selected === name && !same(described, store.state.described)) store.put({ described });
}

/** @param {string} name of a parameter, or empty */
export function select(name) {
    if (name === store.state.selected) return;
    store.put({ selected: name, described: null });
    explainSelected().catch(() => {});
}

/**
 * The history as the studio has it, with what the page knows besides of the changes that it saw itself.
 * @param {Parameters<typeof fromHistory>[0][]} past oldest first
 * @param {number} begin key of the first entry that came after the history was asked for
 */
function listed(past, begin) {
    const { changes } = store.state;
    const numbers = new Set(past.map(({ change }) => change));
    const seen = new Map();
    for (const entry of changes) {
        const kept = { ...entry, numbers: entry.numbers.filter((number) => numbers.has(number)) };
        for (const number of kept.numbers) seen.set(number, kept);
    }
    const newer = changes.filter((entry) => entry.key >= begin && !entry.numbers.some((number) => seen.has(number)));
    return [...newer, ...new Set(past.map((one) => seen.get(one.change) ?? fromHistory(one)).reverse())];
}

async function loadAll() {
    const begin = nextKey;
    const [overview, groups, parameters, world, history] = await Promise.all([
        getJson(""),
        getJson("/tree"),
        getJson("/parameters"),
        getJson("/world"),
        getJson("/history"),
    ]);
    reach(overview.revision);
    putParameters(parameters);
    const changes = listed(history.changes, begin);
    store.put({ overview, groups, world, acquisition: overview.acquisition, changes });
    await explainSelected();
}

/**
 * @param {{change: number, title: string, values: ChangeEntry["set"]}} past
 * @returns {ChangeEntry}
 */
function fromHistory({ change, title, values }) {
    return { key: nextKey++, numbers: [change], gesture: "", set: values, moved: [], own: false, title };
}

/**
 * Takes in a change, once.
 * @param {Change} change
 * @param {{own: boolean, gesture?: string, title?: string}} from
 */
export function takeChange(change, from) {
    if (taken.has(change.revision)) return;
    taken.add(change.revision);
    reach(change.revision);

    const { state } = store;
    const parameters = new Map(state.parameters);
    const refusals = new Map(state.refusals);
    for (const done of change.set) {
        const parameter = parameters.get(done.parameter);
        if (parameter) parameters.set(done.parameter, { ...parameter, value: done.value });
        refusals.delete(done.parameter);
    }
    const names = new Set(change.moved.map((moved) => moved.parameter));
    if (!from.own) for (const done of change.set) names.add(done.parameter);
    store.put({
        parameters,
        refusals,
        last: change,
        changes: withChange(state.changes, change, from),
        flash: { names, time: performance.now() },
    });
    refresh();
}

/**
 * The list of changes with one more, or with the one that it takes back gone.
 * @param {ChangeEntry[]} changes
 * @param {Change} change
 * @param {{own: boolean, gesture?: string, title?: string}} from
 */
function withChange(changes, change, { own, gesture = "", title = "" }) {
    if (change.undone !== undefined) {
        return changes
            .map((entry) => ({ ...entry, numbers: entry.numbers.filter((number) => number !== change.undone) }))
            .filter((entry) => entry.numbers.length > 0);
    }
    if (change.change === null || change.change === undefined) return changes;
    const set = change.set.map(({ parameter, before, value }) => ({ parameter, before, after: value }));
    const newest = changes[0];
    if (gesture && newest?.gesture === gesture) {
        const first = new Map(newest.set.map((value) => [value.parameter, value.before]));
        const joined = set.map((value) => ({ ...value, before: first.get(value.parameter) ?? value.before }));
        const numbers = [...newest.numbers, change.change];
        return [{ ...newest, numbers, set: joined, moved: joinMoved(newest.moved, change.moved) }, ...changes.slice(1)];
    }
    const entry = { key: nextKey++, numbers: [change.change], gesture, set, moved: change.moved, own, title };
    return [entry, ...changes].slice(0, changesKept);
}

/**
 * What moved over two changes, from before the first to after the second.
 * @param {import("./types.js").Moved[]} earlier
 * @param {import("./types.js").Moved[]} later
 */
function joinMoved(earlier, later) {
    const joined = new Map(earlier.map((moved) => [`${moved.parameter} ${moved.aspect}`, moved]));
    for (const moved of later) {
        const key = `${moved.parameter} ${moved.aspect}`;
        const first = joined.get(key);
        joined.set(key, first ? { ...moved, before: first.before } : moved);
    }
    return [...joined.values()].filter((moved) => moved.before !== moved.after);
}

/**
 * Gives settings to the board. What is refused stands in the store's refusals, at the parameter that was refused.
 * @param {Setting[]} settings
 * @param {string} [gesture] settings of one drag carry the same word and count as one change
 * @returns {Promise<boolean>} whether all were accepted
 */
export async function give(settings, gesture = "") {
    try {
        const page = store.state.page;
        takeChange(await post("/set", page ? { settings, page } : { settings }), { own: true, gesture });
        return true;
    } catch (error) {
        if (!(error instanceof StudioError)) throw error;
        const asked = settings.at(-1);
        if (error.answer?.refused) {
            if (error.answer.set?.length > 0) takeChange(error.answer, { own: true, gesture });
            putRefusal(error.answer.refused, settings);
        } else if (error.status === 422 && asked) {
            const accepted = error.answer?.error?.advice?.join("; ") ?? "";
            putRefusal({ parameter: asked.parameter, value: String(asked.value), sentence: error.message, accepted,
                         remedies: [] }, settings);
        } else say(error.message, "error");
        return false;
    }
}

/**
 * @param {Refusal} refused
 * @param {Setting[]} settings that were given; the refusal belongs to the field of the last one, where the person was
 */
function putRefusal({ parameter, value, sentence, accepted, remedies }, settings) {
    const at = settings.some((setting) => setting.parameter === parameter) ? parameter : settings.at(-1)?.parameter;
    const refusals = new Map(store.state.refusals);
    refusals.set(at ?? parameter, { value, sentence, accepted, remedies: remedies ?? [] });
    store.put({ refusals });
}

/** @param {string} name of the parameter whose refusal was read */
export function dismiss(name) {
    const refusals = new Map(store.state.refusals);
    if (refusals.delete(name)) store.put({ refusals });
}

/**
 * Takes a change back: the newest one as the studio remembers it, an older one by giving its values again.
 * @param {ChangeEntry} entry
 */
export async function undo(entry) {
    if (entry === store.state.changes[0]) {
        await trying(async () => {
            for (const number of [...entry.numbers].reverse()) {
                /** @type {Change} */
                const change = await post(`/undo?change=${number}&page=${store.state.page}`);
                takeChange(change, { own: true });
                const left = change.notRestored?.map((value) => value.sentence) ?? [];
                if (left.length > 0) say(`not set back: ${left.join("; ")}`, "error");
            }
        });
        return;
    }
    const settings = entry.set.map(({ parameter, before }) => ({ parameter, value: before }));
    if (settings.length > 0) await give(settings);
}

/** Read-outs move by themselves; they are read again while the page is looked at. */
async function followReadOuts() {
    if (document.visibilityState !== "visible" || store.state.link !== "up") return;
    const status = await getJson("/status");
    const parameters = new Map(store.state.parameters);
    let changed = false;
    for (const [name, { value }] of Object.entries(status)) {
        const parameter = parameters.get(name);
        if (!parameter || parameter.value === value) continue;
        parameters.set(name, { ...parameter, value });
        changed = true;
    }
    if (changed) store.put({ parameters });
}

/**
 * Opens the link and follows it.
 * @returns {Live}
 */
export function followBoard() {
    const live = new Live((link) => store.put({ link }));
    live.on("hello", (message) => {
        store.put({ page: message.page, acquisition: message.acquisition });
        if (message.instance !== instance) {
            instance = message.instance;
            revision = -1;
            taken.clear();
            store.put({ changes: [], last: null });
        }
        if (message.revision !== revision || store.state.groups.length === 0) trying(loadAll);
    });
    live.on("change", (message) => {
        if (message.by !== store.state.page) takeChange(message.change, { own: false });
    });
    live.on("acquisition", (message) => {
        reach(message.revision);
        store.put({ acquisition: message.acquisition });
    });
    live.on("world", (message) => {
        reach(message.revision);
        store.put({ world: message.world });
    });
    live.on("event", (message) => store.put({ events: [message, ...store.state.events].slice(0, 200) }));
    live.on("error", (message) => say(message.error.message, "error"));
    live.on("picture", (message) => store.put({ frame: decodeFrame(message.data) }));
    live.open();
    const follow = () => followReadOuts().catch(() => {}).finally(() => setTimeout(follow, 1000));
    setTimeout(follow, 1000);
    return live;
}
