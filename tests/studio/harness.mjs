// A studio of the command's own for each test, and pages in a real browser on it.
//
// MAROVINE names the command; MAROVINE_PICTURES a folder for screenshots, which are else not taken.

import assert from "node:assert/strict";
import { spawn } from "node:child_process";
import { createServer } from "node:net";
import { createInterface } from "node:readline";
import { dirname, join, resolve } from "node:path";
import { fileURLToPath } from "node:url";
import { chromium } from "playwright-core";

const root = resolve(dirname(fileURLToPath(import.meta.url)), "../..");
const command = process.env.MAROVINE ?? join(root, "build/release/marovine");

/** A port that nobody listened on a moment ago. */
async function freePort() {
    const server = createServer();
    await new Promise((done) => server.listen(0, "127.0.0.1", () => done(undefined)));
    const { port } = /** @type {import("node:net").AddressInfo} */ (server.address());
    await new Promise((done) => server.close(done));
    return port;
}

/**
 * Starts a studio and waits for its address.
 * @param {number} [port] a free one, where none is named
 */
export async function startStudio(port) {
    const number = String(port ?? await freePort());
    const child = spawn(command, ["studio", "--no-browser", "--port", number], { stdio: ["ignore", "pipe", "inherit"] });
    const ended = new Promise((done) => child.once("exit", (code, signal) => done(code ?? signal)));
    const address = await new Promise((found, failed) => {
        createInterface({ input: child.stdout }).on("line", (line) => {
            const match = /(https?:\/\/\S+)/.exec(line);
            if (match) found(match[1]);
        });
        ended.then((how) => failed(new Error(`the studio ended before it said its address: ${how}`)));
    });
    return {
        address,
        port: Number(number),
        /** Ends it as Ctrl-C does. */
        async stop() {
            child.kill("SIGINT");
            return ended;
        },
        /** @param {string} path below /api @param {any} [body] sent with POST */
        async ask(path, body) {
            const options = body === undefined ? {} : {
                method: "POST", headers: { "Content-Type": "application/json" }, body: JSON.stringify(body) };
            return (await fetch(new URL(`/api${path}`, address), options)).json();
        },
    };
}

let browser;

/** The browser, started once for all tests of a file. */
async function theBrowser() {
    browser ??= await chromium.launch({ executablePath: process.env.CHROMIUM ?? "/usr/bin/chromium",
                                        args: ["--no-sandbox", "--disable-gpu"] });
    return browser;
}

export async function closeBrowser() {
    await browser?.close();
}

/**
 * Runs a test with a studio and a page on it; errors of the page's code fail the test.
 * @param {(tools: {page: import("playwright-core").Page, studio: Awaited<ReturnType<typeof startStudio>>,
 *     open: (hash?: string) => Promise<import("playwright-core").Page>}) => Promise<void>} work
 * @param {{width?: number, height?: number, colours?: "light" | "dark"}} [options]
 */
export async function withStudio(work, options = {}) {
    const studio = await startStudio();
    const errors = [];
    const contexts = [];
    const open = async (hash = "") => {
        const context = await (await theBrowser()).newContext({
            viewport: { width: options.width ?? 1360, height: options.height ?? 860 },
            colorScheme: options.colours ?? "light",
            acceptDownloads: true,
            reducedMotion: "reduce",
        });
        contexts.push(context);
        const page = await context.newPage();
        page.setDefaultTimeout(30_000);
        page.on("pageerror", (error) => errors.push(error.stack ?? String(error)));
        await page.goto(studio.address + hash);
        await page.locator('[data-link="up"]').waitFor();
        await page.getByRole("treeitem", { name: "ROI" }).waitFor();
        return page;
    };
    try {
        await work({ page: await open(), studio, open });
        assert.deepEqual(errors, []);
    } finally {
        for (const context of contexts) await context.close();
        await studio.stop();
    }
}

/** The row of a parameter in the tree. */
export const row = (page, name) => page.locator(`#tree [data-name=${name}]`);

/** The box of a parameter's number in the tree. */
export const box = (page, name) => row(page, name).locator("input.number");

/** Types a value into a parameter's box and gives it. */
export async function type(page, name, value) {
    await box(page, name).fill(value);
    await box(page, name).press("Enter");
}

/** Waits until the canvas shows a picture of this size. */
export async function picture(page, width, height) {
    await page.getByRole("img", { name: new RegExp(`^Picture \\d+, ${width} by ${height} pixels`) }).waitFor();
}

/** Puts a file onto the page as a drop does. */
export async function drop(page, selector, name, text) {
    const data = await page.evaluateHandle(([fileName, content]) => {
        const transfer = new DataTransfer();
        transfer.items.add(new File([content], fileName));
        return transfer;
    }, [name, text]);
    await page.dispatchEvent(selector, "drop", { dataTransfer: data });
}

/** Saves a picture of the page where pictures are wanted. */
export async function screenshot(page, name) {
    if (process.env.MAROVINE_PICTURES)
        await page.screenshot({ path: join(process.env.MAROVINE_PICTURES, `studio-${name}.png`) });
}
