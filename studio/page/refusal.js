// Says why a value was not taken, with the remedies as buttons, and turns the advice of an explanation into buttons.

import { dismiss, give } from "./board.js";
import { h, icon } from "./dom.js";

/** @typedef {import("./types.js").Cause} Cause */
/** @typedef {import("./types.js").Setting} Setting */

/**
 * @param {string} text
 * @param {() => void} press
 */
function remedyButton(text, press) {
    return h("button", { type: "button", class: "remedy", onclick: press }, text);
}

/**
 * What stands below a field whose value was refused.
 * @param {string} name of the parameter
 * @param {import("./state.js").FieldRefusal} refusal
 * @param {() => void} done gives the keyboard back to the field
 */
export function refusalBox(name, refusal, done) {
    const close = () => {
        dismiss(name);
        done();
    };
    return h(
        "div",
        { class: "refusal" },
        // The alert is the sentence alone: a reader should not be read all buttons before it.
        h("p", { role: "alert" }, refusal.sentence),
        refusal.accepted && h("p", { class: "quiet" }, `accepted now: ${refusal.accepted}`),
        h(
            "div",
            { class: "remedies" },
            refusal.remedies.map((remedy) =>
                remedyButton(remedy.text, async () => {
                    dismiss(name);
                    await give(remedy.settings);
                    done();
                }),
            ),
            h("button", { type: "button", class: "plain", title: "Leave the value as it was (Escape)", onclick: close },
                icon("close"), "leave it"),
        ),
    );
}

/**
 * The settings that an advice names: "set A to X or Y", "set A to 5 or less".
 * @param {Cause} cause
 * @returns {Setting[]} one for each way; empty when the advice names none
 */
export function settingsOf(cause) {
    const found = /^set (\w+) to (.+)$/.exec(cause.advice);
    if (!found) return [];
    const [, parameter = "", values = ""] = found;
    return values
        .split(/, | or /)
        .filter((value) => value !== "less" && value !== "more")
        .map((value) => ({ parameter, value }));
}

/**
 * The causes of a limit or a lock, each with buttons that do what its advice says.
 * @param {Cause[]} causes
 */
export function causeList(causes) {
    return h(
        "ul",
        { class: "causes" },
        causes.map((cause) =>
            h(
                "li",
                {},
                h("span", {}, `${cause.parameter} is ${cause.value}`),
                settingsOf(cause).map((setting) =>
                    remedyButton(`${setting.parameter} = ${setting.value}`, () => give([setting]))),
            ),
        ),
    );
}
