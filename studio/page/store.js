// The one place where the page keeps what it knows. Views watch keys of it; they never hold a copy.

/**
 * @template {Record<string, any>} State
 */
export class Store {
    /** @type {State} */
    #state;
    /** @type {Set<{keys: Set<keyof State>, listener: (state: State) => void}>} */
    #watches = new Set();
    /** @type {Set<keyof State>} */
    #changed = new Set();

    /** @param {State} state */
    constructor(state) {
        this.#state = state;
    }

    /** @returns {Readonly<State>} */
    get state() {
        return this.#state;
    }

    /**
     * Replaces values. Listeners are told once, after the present task, however many values it replaced.
     * @param {Partial<State>} values
     */
    put(values) {
        const changed = Object.keys(values).filter((key) => this.#state[key] !== values[key]);
        if (changed.length === 0) return;
        this.#state = { ...this.#state, ...values };
        if (this.#changed.size === 0) queueMicrotask(() => this.#tell());
        for (const key of changed) this.#changed.add(key);
    }

    /**
     * Calls the listener now and after every change of one of the keys.
     * @param {(keyof State)[]} keys
     * @param {(state: State) => void} listener
     * @returns {() => void} ends it
     */
    watch(keys, listener) {
        const watch = { keys: new Set(keys), listener };
        this.#watches.add(watch);
        listener(this.#state);
        return () => this.#watches.delete(watch);
    }

    #tell() {
        const changed = this.#changed;
        this.#changed = new Set();
        for (const { keys, listener } of this.#watches)
            if ([...changed].some((key) => keys.has(key))) listener(this.#state);
    }
}
