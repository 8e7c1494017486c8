// Pictures as the studio sends them: a header, then the pixels.

/** @typedef {import("./types.js").Frame} Frame */

/**
 * @param {ArrayBuffer} data little endian; the header says its own length
 * @returns {Frame}
 * @throws {Error} when it is no such picture
 */
export function decodeFrame(data) {
    const view = new DataView(data);
    const magic = String.fromCharCode(...new Uint8Array(data, 0, 4));
    if (magic !== "MVF1" || view.getUint16(6, true) !== 1) throw new Error("the studio sent a picture of another kind");
    const header = view.getUint16(4, true);
    const word = (/** @type {number} */ offset) => view.getUint32(offset, true);
    const [width, height] = [word(16), word(20)];
    return {
        number: Number(view.getBigUint64(8, true)),
        pixels: new ImageData(new Uint8ClampedArray(data, header, width * height * 4), width, height),
        whole: { width: word(24), height: word(28) },
        region: { x: word(32), y: word(36), width: word(40), height: word(44) },
        lost: Number(view.getBigUint64(48, true)),
        rate: view.getFloat64(56, true),
    };
}
