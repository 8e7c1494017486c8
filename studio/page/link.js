// The one place that talks to the studio. Requests go over HTTP; what comes by itself comes over one WebSocket, which
// is opened again whenever it is lost.

/** @typedef {"connecting" | "up" | "lost" | "ended"} LinkState */

/** A request that failed, with what the studio said about it. */
export class StudioError extends Error {
    /**
     * @param {string} message
     * @param {number} status of HTTP; 0 when the studio was not reached
     * @param {any} [answer] the document of the answer
     */
    constructor(message, status, answer) {
        super(message);
        this.status = status;
        this.answer = answer;
    }
}

/**
 * Reads JSON; integers that a number cannot hold become texts.
 * @param {string} text
 */
function parse(text) {
    /** @type {(key: string, value: any, context?: {source: string}) => any} */
    const keepDigits = (_key, value, context) =>
        typeof value === "number" && Number.isInteger(value) && !Number.isSafeInteger(value)
            ? (context?.source ?? value)
            : value;
    return JSON.parse(text, keepDigits);
}

/**
 * @param {string} path below /api
 * @param {RequestInit} [options]
 * @returns {Promise<Response>} one that succeeded
 * @throws {StudioError}
 */
async function request(path, options) {
    let response;
    try {
        response = await fetch(`/api${path}`, options);
    } catch {
        throw new StudioError("the studio does not answer; is it still running?", 0);
    }
    if (response.ok) return response;
    const text = await response.text();
    let answer;
    try {
        answer = parse(text);
    } catch {
        throw new StudioError(`the studio answered ${response.status}: ${text.slice(0, 200)}`, response.status);
    }
    const message = answer.error?.message ?? answer.refused?.sentence ?? `the studio answered ${response.status}`;
    throw new StudioError(message, response.status, answer);
}

/** @param {Response} response */
const document = async (response) => parse(await response.text());

const json = { "Content-Type": "application/json" };

/** @param {string} path */
export const getJson = async (path) => document(await request(path));
/** @param {string} path */
export const getText = async (path) => (await request(path)).text();
/** @param {string} path */
export const getResponse = (path) => request(path);
/** @param {string} path @param {any} [body] */
export const post = async (path, body) =>
    document(await request(path, body === undefined
        ? { method: "POST" }
        : { method: "POST", headers: json, body: JSON.stringify(body) }));
/** @param {string} path @param {any} body */
export const patch = async (path, body) =>
    document(await request(path, { method: "PATCH", headers: json, body: JSON.stringify(body) }));
/** @param {string} path */
export const remove = async (path) => document(await request(path, { method: "DELETE" }));
/**
 * Sends a file.
 * @param {"PUT" | "POST"} method
 * @param {string} path
 * @param {string | Blob} body
 * @param {string} [type]
 */
export const sendFile = async (method, path, body, type = "text/plain") =>
    document(await request(path, { method, headers: { "Content-Type": type }, body }));

/** The WebSocket. Messages are dispatched by their type; pictures as "picture" with the bytes. */
export class Live {
    /** @type {WebSocket | null} */
    #socket = null;
    /** @type {Map<string, ((message: any) => void)[]>} */
    #listeners = new Map();
    #wait = 0;
    #ended = false;
    /** @type {ReturnType<typeof setTimeout> | undefined} */
    #timer;

    /** @param {(state: LinkState) => void} tell */
    constructor(tell) {
        this.#tell = tell;
    }
    /** @type {(state: LinkState) => void} */
    #tell;

    /**
     * @param {string} type of message
     * @param {(message: any) => void} listener
     */
    on(type, listener) {
        this.#listeners.set(type, [...(this.#listeners.get(type) ?? []), listener]);
    }

    /** Sends a message, or nothing while there is no link: who needs it sends again after "hello". */
    send(/** @type {any} */ message) {
        if (this.#socket?.readyState === WebSocket.OPEN) this.#socket.send(JSON.stringify(message));
    }

    /** Opens the link, now and whenever it is lost. */
    open() {
        clearTimeout(this.#timer);
        const address = new URL("/api/live", location.href);
        address.protocol = address.protocol === "https:" ? "wss:" : "ws:";
        const socket = new WebSocket(address);
        socket.binaryType = "arraybuffer";
        this.#socket = socket;
        socket.addEventListener("message", (event) => this.#take(event.data));
        socket.addEventListener("close", () => this.#lost(socket));
    }

    /** @param {string | ArrayBuffer} data */
    #take(data) {
        const message = typeof data === "string" ? parse(data) : { type: "picture", data };
        if (message.type === "hello") {
            this.#wait = 0;
            this.#ended = false;
            this.#tell("up");
        }
        if (message.type === "bye") this.#ended = true;
        for (const listener of this.#listeners.get(message.type) ?? []) listener(message);
    }

    /** @param {WebSocket} socket */
    #lost(socket) {
        if (socket !== this.#socket) return;
        this.#tell(this.#ended ? "ended" : "lost");
        this.#wait = Math.min(4000, this.#wait * 2 || 250);
        this.#timer = setTimeout(() => this.open(), this.#wait);
    }
}
