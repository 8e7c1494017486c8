// The shapes that travel between the studio and its page. They are those of the command's --json output; here they
// stand once, for the checker of types. This module holds no code.

/** @typedef {number | string | number[] | null} Value  integers beyond 2^53 are texts here, so that no digit is lost;
 * null where it cannot be read now */

/**
 * @typedef {object} Entry one constant of an enumeration
 * @property {string} name
 * @property {string} displayName
 * @property {number} value
 */

/**
 * @typedef {object} Parameter a parameter with its value and range as they are now
 * @property {string} name
 * @property {number} id
 * @property {string} group path with " > " between the levels
 * @property {string} displayName
 * @property {string} type "uint32", "double", "enumeration", "text", "uint32 field", ...
 * @property {boolean} readable
 * @property {boolean} writable
 * @property {Value} value
 * @property {string} [unit]
 * @property {number} [minimum]
 * @property {number} [maximum]
 * @property {number} [step]
 * @property {number} [elements] of a field
 * @property {Entry[]} [entries]
 * @property {string} [filePattern]
 * @property {Value} [default]
 * @property {boolean} [differs] from the default
 * @property {boolean} [readOut] never a setting
 */

/**
 * @typedef {object} Cause another parameter whose value limits this one
 * @property {string} parameter
 * @property {string} value
 * @property {boolean} [together]
 * @property {string} advice a sentence: "set FG_XOFFSET to 12280 or less"
 */

/**
 * @typedef {object} Limit
 * @property {"minimum" | "maximum" | "step" | "entries"} end
 * @property {string} limit
 * @property {Cause[]} causes
 */

/**
 * @typedef {object} Explanation what `describe` adds to a parameter
 * @property {Limit[]} limits
 * @property {Cause[]} readOnlyBecause
 * @property {string[]} drives design parameters
 */

/** @typedef {Parameter & Explanation & {description: string}} Described */

/**
 * @typedef {object} Group a group of the tree
 * @property {string} group
 * @property {{name: string, displayName: string}[]} parameters
 * @property {Group[]} groups
 */

/**
 * @typedef {object} Moved what changed as a consequence
 * @property {string} parameter
 * @property {string} aspect "value", "maximum", "minimum", "access", ...
 * @property {string} before
 * @property {string} after
 */

/**
 * @typedef {object} Write one write to the design
 * @property {number} order
 * @property {string} cause
 * @property {string} name
 * @property {number} id
 * @property {Value} value
 * @property {number} [firstIndex]
 * @property {Value} before
 * @property {number} result
 */

/** @typedef {{parameter: string, value: Value, firstElement?: number}} Setting */

/** @typedef {{text: string, settings: Setting[]}} Remedy settings that were tried and are taken */

/**
 * @typedef {object} Refusal
 * @property {string} parameter
 * @property {string} value
 * @property {string} sentence
 * @property {string} accepted the range as it is now
 * @property {Remedy[]} remedies
 */

/**
 * @typedef {object} SetDone one setting that was accepted
 * @property {string} parameter
 * @property {string} requested
 * @property {Value} value
 * @property {Value} before
 */

/** @typedef {{line: number, sentence: string, advice: string[]}} Skipped a line that a load did not take */

/**
 * @typedef {object} Change
 * @property {SetDone[]} set
 * @property {Moved[]} moved
 * @property {Write[]} writes
 * @property {number} revision
 * @property {number | null} change its number in the history
 * @property {number} [undone] the number of the change that this one takes back
 * @property {{sentence: string}[]} [notRestored]
 * @property {Skipped[]} [skipped] of a load
 * @property {string[]} [missingFiles] of a load
 * @property {Refusal} [refused]
 */

/**
 * @typedef {object} Acquisition
 * @property {"stopped" | "running" | "single"} state
 * @property {number} pictures
 * @property {number} lost
 * @property {number} width
 * @property {number} height
 * @property {number} rate pictures a second
 * @property {string | null} waitsFor a sentence when no picture comes
 */

/**
 * @typedef {object} Frame a picture as the page got it
 * @property {number} number
 * @property {ImageData} pixels scaled down to what was asked for
 * @property {{width: number, height: number}} whole
 * @property {Region} region of the whole that the pixels show
 * @property {number} lost
 * @property {number} rate
 */

/** @typedef {{x: number, y: number, width: number, height: number}} Region */

/**
 * @typedef {object} Signal
 * @property {string} name
 * @property {"input" | "trigger" | "output"} kind
 * @property {string} constant
 * @property {boolean} high at the start of the window
 * @property {boolean} [known] false when the board does not carry it
 * @property {{atMs: number, high: boolean}[]} edges
 * @property {number | null} periodMs
 */

/** @typedef {{nowNs: number, ms: number, signals: Signal[]}} Signals */

/** @typedef {{line: number | null, weight: string, text: string, advice: string[]}} Finding of a configuration's check */

/** @typedef {{name: string, first: Value, second: Value, firstNote?: string, secondNote?: string}} Difference */

/** @typedef {{kind: string, name?: string, n?: number, code: number}} Fault */

/**
 * @typedef {object} World
 * @property {Record<string, number>} belt
 * @property {boolean[]} inputs
 * @property {Record<string, number>} camera
 * @property {{source: string, width: number | null, height: number | null, fieldWidth: number}} scene
 * @property {Fault[]} faults
 * @property {string | null} file
 */

/** @typedef {{name: string, version: string, config: string | null, world: string | null, pages: number}} Overview */

export {};
