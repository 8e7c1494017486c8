// What the page knows, in one store. Views watch it; `board.js` and `place.js` and the views' own handlers put into it.

import { Store } from "./store.js";

/** @typedef {import("./types.js").Parameter} Parameter */
/** @typedef {import("./types.js").Moved} Moved */

/** @typedef {"picture" | "curves" | "signals" | "writes" | "configurations" | "world"} View */

/**
 * @typedef {object} FieldRefusal what stands below a field whose value was not taken
 * @property {string} value that was given
 * @property {string} sentence why not
 * @property {string} accepted the range as it is now, or empty
 * @property {import("./types.js").Remedy[]} remedies
 */

/**
 * @typedef {object} ChangeEntry a line of the list of changes; a drag is one, however many values it gave
 * @property {number} key
 * @property {number[]} numbers of the history that it covers
 * @property {string} gesture
 * @property {{parameter: string, before: import("./types.js").Value, after: import("./types.js").Value}[]} set
 * @property {Moved[]} moved
 * @property {boolean} own made on this page
 * @property {string} title where it is no setting of a value: "configuration loaded"
 */

/**
 * @typedef {object} Notice a sentence at the bottom of the page
 * @property {"status" | "error"} kind
 * @property {string} text
 */

/**
 * @typedef {object} State
 * @property {import("./link.js").LinkState} link
 * @property {string} page the name that the studio gave to this page
 * @property {import("./types.js").Overview | null} overview
 * @property {import("./types.js").Group[]} groups
 * @property {ReadonlyMap<string, Parameter>} parameters
 * @property {string} selected name of a parameter, or empty
 * @property {import("./types.js").Described | null} described the selected one, once it is explained
 * @property {string} search
 * @property {boolean} onlyChanged the tree shows what differs from the default
 * @property {ReadonlySet<string>} open paths of the tree's open groups
 * @property {View} view
 * @property {ReadonlyMap<string, FieldRefusal>} refusals by parameter
 * @property {{names: ReadonlySet<string>, time: number}} flash parameters that moved last
 * @property {ChangeEntry[]} changes newest first
 * @property {import("./types.js").Change | null} last the newest change, with its writes
 * @property {import("./types.js").Acquisition | null} acquisition
 * @property {import("./types.js").Frame | null} frame
 * @property {{zoom: number, x: number, y: number}} zoom of the picture: screen pixels per pixel (0: all of it), and the
 *     picture's point in the middle
 * @property {{axis: "row" | "column", at: number}} profile the line that the profile
 *     shows; at -1 before there is a picture
 * @property {import("./types.js").World | null} world
 * @property {{name: string, atNs: number}[]} events newest first
 * @property {Notice | null} notice
 */

/** @type {State} */
const start = {
    link: "connecting",
    page: "",
    overview: null,
    groups: [],
    parameters: new Map(),
    selected: "",
    described: null,
    search: "",
    onlyChanged: false,
    open: new Set(["ROI", "White Balance", "Processing"]),
    view: "picture",
    refusals: new Map(),
    flash: { names: new Set(), time: 0 },
    changes: [],
    last: null,
    acquisition: null,
    frame: null,
    zoom: { zoom: 0, x: 0, y: 0 },
    profile: { axis: "row", at: -1 },
    world: null,
    events: [],
    notice: null,
};

export const store = new Store(start);

/**
 * Says something at the bottom of the page.
 * @param {string} text
 * @param {"status" | "error"} [kind]
 */
export function say(text, kind = "status") {
    store.put({ notice: { kind, text } });
}

/**
 * Carries out what may fail on the studio's side and says why it did.
 * @template T
 * @param {() => Promise<T>} work
 * @returns {Promise<T | undefined>}
 */
export async function trying(work) {
    try {
        return await work();
    } catch (error) {
        say(error instanceof Error ? error.message : String(error), "error");
        return undefined;
    }
}
