// How numbers are shown and how a slider's place stands for one.

/** @typedef {import("./types.js").Parameter} Parameter */
/** @typedef {import("./types.js").Value} Value */

/**
 * A value as a person reads it, with no digit invented: 200, 0.512, 968992.2.
 * @param {Value | undefined} value
 */
export function show(value) {
    if (Array.isArray(value)) return `${value.length} values`;
    if (typeof value !== "number") return String(value ?? "");
    if (Number.isInteger(value)) return String(value);
    return String(Number(value.toPrecision(10)));
}

/**
 * Bytes, hertz and the like with three digits: 1.23 k.
 * @param {number} value
 */
export function brief(value) {
    const size = Math.abs(value);
    if (size >= 1e9) return `${(value / 1e9).toPrecision(3)} G`;
    if (size >= 1e6) return `${(value / 1e6).toPrecision(3)} M`;
    if (size >= 1e4) return `${(value / 1e3).toPrecision(3)} k`;
    return String(Number(value.toPrecision(3)));
}

/**
 * The text of an enumeration's entry.
 * @param {Parameter} parameter
 * @param {Value} value
 */
export function entryText(parameter, value) {
    return parameter.entries?.find((entry) => entry.name === value)?.displayName ?? show(value);
}

/**
 * Whether two ends and a step say what a slider may do.
 * @param {Parameter} parameter
 */
export function hasRange(parameter) {
    return parameter.minimum !== undefined && parameter.maximum !== undefined && parameter.maximum > parameter.minimum;
}

/**
 * The next value the person can reach: on the grid of the step where there is one, else a thousandth of the range
 * away, within the range.
 * @param {Parameter} parameter with a range
 * @param {number} value
 * @param {number} steps may be negative
 */
export function stepped(parameter, value, steps) {
    const minimum = parameter.minimum ?? 0;
    const maximum = parameter.maximum ?? 0;
    const step = parameter.step ?? (maximum - minimum) / 1000;
    return onGrid(parameter, value + steps * step, minimum, maximum);
}

/**
 * @param {Parameter} parameter
 * @param {number} value
 * @param {number} minimum
 * @param {number} maximum
 */
function onGrid(parameter, value, minimum, maximum) {
    const inside = Math.min(maximum, Math.max(minimum, value));
    const { step } = parameter;
    if (!step) return Number(inside.toPrecision(6));
    const last = Math.floor((maximum - minimum) / step + 1e-6);
    return Number((minimum + Math.min(last, Math.round((inside - minimum) / step)) * step).toPrecision(12));
}

/** Places of a slider, from 0 on. */
export const places = 1000;

/**
 * Ranges of more than four decades are spread so that each decade has its share: a height of 1024 of 16 million would
 * else lie on the slider's first pixel.
 * @param {Parameter} parameter
 */
function isSpread(parameter) {
    const minimum = parameter.minimum ?? 0;
    const maximum = parameter.maximum ?? 0;
    return minimum >= 0 && (maximum - minimum) / (parameter.step ?? 1e-3) > 20_000;
}

/**
 * @param {Parameter} parameter with a range
 * @param {number} value
 * @returns {number} 0 to `places`
 */
export function placeOf(parameter, value) {
    const minimum = parameter.minimum ?? 0;
    const maximum = parameter.maximum ?? 0;
    const share = isSpread(parameter)
        ? Math.log1p(value - minimum) / Math.log1p(maximum - minimum)
        : (value - minimum) / (maximum - minimum);
    return Math.round(Math.min(1, Math.max(0, share)) * places);
}

/**
 * @param {Parameter} parameter with a range
 * @param {number} place 0 to `places`
 */
export function valueAt(parameter, place) {
    const minimum = parameter.minimum ?? 0;
    const maximum = parameter.maximum ?? 0;
    const share = place / places;
    const value = isSpread(parameter)
        ? minimum + Math.expm1(share * Math.log1p(maximum - minimum))
        : minimum + share * (maximum - minimum);
    return onGrid(parameter, value, minimum, maximum);
}
