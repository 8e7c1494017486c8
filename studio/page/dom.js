// Makes elements. Every text passes through text nodes, so nothing that the server sends can become markup.

const svgNamespace = "http://www.w3.org/2000/svg";

/** @typedef {Node | string | number | null | undefined | false} Child */
/** @typedef {Record<string, any>} Attributes */

/**
 * @param {Element} element
 * @param {Attributes} attributes `class`, `on...` handlers; null and false leave an attribute out,
 *     but false is a state for `aria-...`
 */
function apply(element, attributes) {
    for (const [name, value] of Object.entries(attributes)) {
        const isState = name.startsWith("aria-");
        if (value === null || value === undefined || (value === false && !isState)) continue;
        if (name.startsWith("on")) element.addEventListener(name.slice(2), value);
        else element.setAttribute(name, value === true && !isState ? "" : String(value));
    }
}

/**
 * An element of HTML.
 * @template {keyof HTMLElementTagNameMap} Tag
 * @param {Tag} tag
 * @param {Attributes} [attributes]
 * @param {...(Child | Child[])} children
 * @returns {HTMLElementTagNameMap[Tag]}
 */
export function h(tag, attributes = {}, ...children) {
    const element = document.createElement(tag);
    apply(element, attributes);
    append(element, children);
    return element;
}

/**
 * An element of SVG.
 * @param {string} tag
 * @param {Attributes} [attributes]
 * @param {...(Child | Child[])} children
 * @returns {SVGElement}
 */
export function svg(tag, attributes = {}, ...children) {
    const element = /** @type {SVGElement} */ (document.createElementNS(svgNamespace, tag));
    apply(element, attributes);
    append(element, children);
    return element;
}

/**
 * @param {Element} parent
 * @param {(Child | Child[])[]} children
 */
function append(parent, children) {
    for (const child of children.flat()) {
        if (child === null || child === undefined || child === false) continue;
        parent.append(typeof child === "number" ? String(child) : child);
    }
}

/**
 * An icon of the sprite in index.html.
 * @param {string} name
 */
export function icon(name) {
    return svg("svg", { class: "icon", "aria-hidden": "true" }, svg("use", { href: `#icon-${name}` }));
}

/**
 * The element of the page that must be there.
 * @param {string} selector
 * @returns {HTMLElement}
 */
export function one(selector) {
    const found = document.querySelector(selector);
    if (!(found instanceof HTMLElement)) throw new Error(`the page has no ${selector}`);
    return found;
}

/**
 * Replaces the rows of a list. The keyboard stays at its row, known by `data-key`, or at the one that took its place,
 * or goes to the heading where there is none.
 * @param {HTMLElement} list
 * @param {HTMLElement[]} rows
 * @param {HTMLElement} heading
 */
export function replaceRows(list, rows, heading) {
    const held = [...list.children].findIndex((row) => row.contains(document.activeElement));
    const key = list.children[held]?.getAttribute("data-key");
    list.replaceChildren(...rows);
    if (held < 0) return;
    const next = rows.find((row) => key && row.dataset.key === key) ?? rows[Math.min(held, rows.length - 1)];
    focusOn([...(next?.querySelectorAll("button") ?? [])].at(-1) ?? heading);
}

/** Puts the keyboard on an element, a heading as well. @param {HTMLElement} element */
export function focusOn(element) {
    if (!element.matches("button")) element.tabIndex = -1;
    element.focus();
}

/**
 * Hands the browser a file to save.
 * @param {string} name
 * @param {Blob | string} content
 */
export function saveFile(name, content) {
    const blob = typeof content === "string" ? new Blob([content], { type: "text/plain" }) : content;
    const url = URL.createObjectURL(blob);
    h("a", { href: url, download: name }).click();
    setTimeout(() => URL.revokeObjectURL(url), 10_000);
}

/**
 * Asks for a file of the person's.
 * @param {string} accept such as ".lut"
 * @returns {Promise<File | null>} null when none was chosen
 */
export function chooseFile(accept) {
    return new Promise((resolve) => {
        const input = h("input", { type: "file", accept });
        input.addEventListener("change", () => resolve(input.files?.[0] ?? null));
        input.addEventListener("cancel", () => resolve(null));
        input.click();
    });
}
