// The views: picture, curves, signals, configurations, world; and the page as a whole.

import assert from "node:assert/strict";
import { readFile } from "node:fs/promises";
import { after, test } from "node:test";
import { box, closeBrowser, drop, picture, row, screenshot, startStudio, type, withStudio } from "./harness.mjs";

after(closeBrowser);

test("the picture zooms to the pixel and is measured", () => withStudio(async ({ page, studio }) => {
    await page.click("#run");
    await picture(page, 1024, 1024);
    const canvas = page.locator("#picture");
    const area = await canvas.boundingBox();
    assert.ok(area);
    await page.getByText(/^row 512 · mean/).waitFor();
    await type(page, "FG_PROCESSING_GAMMA", "1.2");
    await type(page, "FG_WIDTH", "2048");
    await picture(page, 2048, 1024);
    // A click puts the profile's line there: the middle of the canvas is that of the picture.
    await page.mouse.click(area.x + area.width / 2, area.y + area.height / 2 - 133);
    const zoom = Number((await page.locator("#zoom-text").innerText()).replace(" %", "")) / 100;
    const line = Number(/row (\d+)/.exec(await page.getByText(/^row (?!512)\d+ · /).innerText())?.[1]);
    assert.ok(Math.abs(line - (512 - 133 / zoom)) < 12, `row ${line} at zoom ${zoom}`);
    await page.mouse.move(area.x + area.width / 2 - 60, area.y + area.height / 2 - 133);
    await page.waitForFunction(() => document.querySelectorAll("#pixel-values span").length === 3);
    await page.locator("#tree").evaluate((tree) => tree.scrollTo(0, 0));
    await screenshot(page, "picture");

    await page.click("#stop");
    await page.locator("#run:enabled").waitFor();
    await page.click("#zoom-one");
    await page.getByText("100 %").waitFor();
    // The value below the pointer is that of the picture's bytes.
    await page.mouse.move(area.x + 40, area.y + 50);
    await page.waitForFunction(() => document.querySelectorAll("#pixel-values span").length === 3);
    const text = await page.locator("#pixel-place").innerText();
    const [x, y] = (text.match(/\d+/g) ?? []).map(Number);
    const bytes = await page.evaluate(async ([px, py]) => {
        const answer = await fetch(`/api/picture?format=bgr&x=${px}&y=${py}&width=1&height=1`);
        return [...new Uint8Array(await answer.arrayBuffer())];
    }, [x, y]);
    const shown = (await page.locator("#pixel-values span").allInnerTexts()).map(Number);
    assert.deepEqual(shown, bytes.reverse());
    const [download] = await Promise.all([page.waitForEvent("download"), page.click("#save-picture")]);
    const png = await readFile(await download.path());
    assert.equal(png.readUInt32BE(16), (await studio.ask("/acquisition")).width);
}));

test("a curve is drawn with the mouse, and tables go out and in as files", () => withStudio(async ({ page, studio }) => {
    await page.click("#tab-curves");
    await page.locator("#curve-channels").getByText("green").click();
    const canvas = page.locator("#curve");
    const area = await canvas.boundingBox();
    assert.ok(area);
    // The plot's box within the canvas, as the style of the axes leaves it.
    const at = (index, level) => [area.x + 34 + (index / 255) * (area.width - 42),
                                  area.y + 8 + (1 - level / 255) * (area.height - 30)];
    const before = await studio.ask("/lut");
    const level = (index) => 255 * (index / 255) ** 2 * (3 - 2 * (index / 255));
    await page.mouse.move(...at(32, level(32)));
    await page.mouse.down();
    for (let index = 48; index <= 224; index += 16) await page.mouse.move(...at(index, level(index)), { steps: 2 });
    await page.mouse.up();
    await page.locator("#changes-list li", { hasText: "FG_LUT_VALUE_GREEN" }).waitFor();
    const drawn = await studio.ask("/lut");
    for (let index = 34; index < 224; ++index)
        assert.ok(Math.abs(drawn.green[index] - level(index)) <= 3, `green ${index} is ${drawn.green[index]}`);
    assert.deepEqual(drawn.green.slice(226), before.green.slice(226));
    assert.deepEqual([drawn.red, drawn.blue], [before.red, before.blue]);
    await screenshot(page, "curves");

    // The keys move one element.
    await canvas.focus();
    await page.keyboard.press("Home");
    await page.keyboard.press("Shift+ArrowUp");
    await page.waitForFunction(async () => (await (await fetch("/api/lut")).json()).green[0] === 16);

    const [download] = await Promise.all([page.waitForEvent("download"), page.click("#curve-export")]);
    const file = await readFile(await download.path(), "utf8");
    const kept = await studio.ask("/lut");
    await page.click("#curve-straight");
    await page.waitForFunction(async () => (await (await fetch("/api/lut")).json()).green[0] === 0);
    // A configuration that falls here is one still.
    await drop(page, "#view-curves", "line3.mcf", await (await fetch(new URL("/api/configuration", studio.address))).text());
    await page.getByText("line3.mcf", { exact: true }).waitFor();
    await page.click("#tab-curves");
    await drop(page, "#view-curves", "kept.lut", file);
    await page.waitForFunction(async () => (await (await fetch("/api/lut")).json()).green[0] === 16);
    assert.deepEqual(await studio.ask("/lut"), kept);
}));

test("a dropped configuration is checked, compared and loaded", () => withStudio(async ({ page, studio }) => {
    const text = await (await fetch(new URL("/api/configuration", studio.address))).text();
    const dropped = text.replace(/^FG_WIDTH=.*$/m, "FG_WIDTH=2048;").replace(/^FG_HEIGHT=.*$/m, "FG_HEIGHT=3;");
    await drop(page, "main", "line3.mcf", dropped);
    await page.getByText("2 values differ").waitFor();
    assert.match(await page.getByRole("row", { name: "FG_WIDTH" }).innerText(), /2048\s+1024/);
    const line = page.locator("#configuration-lines .found");
    assert.match(await line.innerText(), /FG_HEIGHT=3;\s+skipped FG_HEIGHT = 3 refused \(-6000\): below 4/);
    assert.equal(await line.getAttribute("value"),
        String(dropped.split("\n").findIndex((text_) => text_.startsWith("FG_HEIGHT")) + 1));
    assert.equal((await studio.ask("/values?name=FG_WIDTH")).FG_WIDTH, 1024, "looking at a file changes nothing");
    await screenshot(page, "configurations");

    await page.click("#configuration-load");
    await page.getByText("line3.mcf loaded; not taken").waitFor();
    const loaded = page.locator("#changes-list li").first();
    await loaded.getByText("line3.mcf loaded").waitFor();
    assert.equal(await loaded.getByText("by another").count(), 0);
    assert.equal((await studio.ask("/history")).changes.at(-1).title, "loading line3.mcf");
    assert.equal((await studio.ask("/values?name=FG_WIDTH")).FG_WIDTH, 2048);
    await page.waitForFunction(() => !document.querySelector("#diff-text")?.textContent?.startsWith("2"));
    const [download] = await Promise.all([page.waitForEvent("download"), page.click("#configuration-save")]);
    assert.match(await readFile(await download.path(), "utf8"), /^FG_WIDTH=2048;/m);

    // What is wrong with the file as a whole stands above its lines.
    await drop(page, "main", "headless.mcf", "FG_WIDTH=512;\n");
    await page.locator("#configuration-lines li.found:not([value])").first().waitFor();
    assert.equal(await page.locator("#configuration-lines .finding").count(),
        Number.parseInt(await page.locator("#check-text").innerText(), 10), "what is counted is shown");

    await drop(page, "main", "holiday.mcf", "this is no configuration");
    await page.locator("#notice").getByRole("alert").waitFor();
}));

test("signals are drawn as they are wired and as they move", () => withStudio(async ({ page }) => {
    await page.click("#run");
    await page.click("#tab-signals");
    const wire = (from, to) => page.locator(`#diagram [data-from=${from}][data-to=${to}]`);
    await wire("FG_SIGNAL_CAM0_EXSYNC", "FG_CC1_SOURCE").waitFor({ state: "attached" });
    // A box leads to the parameter behind it, and the diagram follows its value.
    await page.getByRole("button", { name: /^CC 2: / }).click();
    await row(page, "FG_CC2_SOURCE").locator("select").selectOption("FG_SIGNAL_GPI_3");
    await wire("FG_SIGNAL_GPI_3", "FG_CC2_SOURCE").waitFor({ state: "attached" });
    // An input that is pressed is seen in the timing.
    await page.evaluate(() => fetch("/api/world", { method: "PATCH", headers: { "Content-Type": "application/json" },
                                                    body: JSON.stringify({ inputs: { 3: true } }) }));
    await page.click("#timing-all");
    await page.getByRole("img", { name: /^Timing of the last 20 ms.* GPI 3: (high|1 edge)/ }).waitFor();
    await page.click("#timing-all");
    await screenshot(page, "signals");
}));

test("the world is moved, pressed and broken", () => withStudio(async ({ page, studio }) => {
    await page.click("#tab-world");
    await page.getByLabel("Belt speed mm/s").fill("250");
    await page.getByLabel("Belt speed mm/s").press("Enter");
    await page.waitForFunction(async () => (await (await fetch("/api/world")).json()).belt.speed === 250);
    // What is being typed outlives what others do to the world.
    const pixel = page.getByLabel("Belt that one pixel sees mm");
    await pixel.fill("0.25");
    await page.evaluate(() => fetch("/api/world", { method: "PATCH", headers: { "Content-Type": "application/json" },
                                                    body: JSON.stringify({ inputs: { 5: true }, belt: { speed: 300 } }) }));
    await page.locator('[data-number="input 5"][aria-pressed=true]').waitFor();
    assert.equal(await page.getByLabel("Belt speed mm/s").inputValue(), "300");
    assert.equal(await pixel.inputValue(), "0.25");
    await pixel.press("Escape");
    await page.getByRole("button", { name: "GPI 5", exact: true }).click();
    await page.locator('[data-number="input 5"][aria-pressed=false]').waitFor();
    const press = page.getByRole("button", { name: "GPI 3", exact: true });
    await press.click();
    await page.locator('[data-number="input 3"][aria-pressed=true]').waitFor();
    assert.equal((await studio.ask("/values?name=FG_DIGIO_INPUT")).FG_DIGIO_INPUT, 8);

    await page.fill("#fault-form [name=name]", "Device1_Process0_Buffer_0_DRAM_A_0_XLength");
    await page.getByRole("button", { name: "Inject" }).click();
    await page.locator("#world-faults li").waitFor();
    await screenshot(page, "world");
    await type(page, "FG_WIDTH", "2048");
    await row(page, "FG_WIDTH").getByRole("alert").waitFor();
    await page.getByRole("button", { name: "take refuseWrites away" }).press("Enter");
    await page.locator("#world-faults li").waitFor({ state: "detached" });
    assert.equal(await page.evaluate(() => document.activeElement?.id), "faults-heading");
    await type(page, "FG_WIDTH", "2048");
    await row(page, "FG_WIDTH").locator(".refusal").waitFor({ state: "detached" });
    assert.equal((await studio.ask("/values?name=FG_WIDTH")).FG_WIDTH, 2048);
}, { colours: "dark" }));

test("a reload keeps the place", () => withStudio(async ({ page }) => {
    await page.click("#single");
    await picture(page, 1024, 1024);
    await page.click("#zoom-one");
    await page.click("#zoom-in");
    await page.fill("#search", "gain");
    await row(page, "FG_SCALINGFACTOR_RED").click();
    await page.click("#tab-curves");
    const place = ["view=curves", "select=FG_SCALINGFACTOR_RED", "search=gain", "zoom=1.5"];
    await page.waitForFunction((parts) => parts.every((part) => location.hash.includes(part)), place);
    await page.reload();
    await page.locator("#view-curves").waitFor();
    await page.locator("#inspector h2", { hasText: "FG_SCALINGFACTOR_RED" }).waitFor();
    assert.equal(await page.inputValue("#search"), "gain");
    assert.equal(await row(page, "FG_WIDTH").isVisible(), false);
    await page.click("#tab-picture");
    await page.getByText("150 %").waitFor();
    // All groups closed is a place as well.
    await page.fill("#search", "");
    await page.waitForFunction(() => !location.hash.includes("search"));
    await page.evaluate(() => (location.hash = location.hash.replace(/open=[^&]*/, "open=")));
    await page.locator("#tree [aria-expanded=true]").first().waitFor({ state: "detached" });
    await page.waitForTimeout(200);
    await page.reload();
    await page.getByRole("treeitem", { name: "ROI" }).waitFor();
    assert.equal(await page.locator("#tree [aria-expanded=true]").count(), 0);
}));

test("a lost link is said and mended", () => withStudio(async ({ page, studio }) => {
    await type(page, "FG_WIDTH", "2048");
    await page.locator("#changes-list li").waitFor();
    assert.equal(await studio.stop(), 0);
    await page.getByText("the studio has ended").or(page.getByText("link lost, trying again")).waitFor();
    await type(page, "FG_HEIGHT", "512");
    await page.locator("#notice").getByText("the studio does not answer").waitFor();
    const again = await startStudio(studio.port);
    try {
        await page.locator('[data-link="up"]').waitFor();
        // It is another board: what the page shows is what that one has.
        await page.waitForFunction(() =>
            /** @type {HTMLInputElement} */ (document.querySelector("[data-name=FG_WIDTH] input.number")).value === "1024");
        // Its changes count from 1 again; they are listed like those before, which are gone.
        assert.equal(await page.locator("#changes-list li").count(), 0);
        await type(page, "FG_HEIGHT", "256");
        await page.locator("#changes-list li", { hasText: "FG_HEIGHT" }).waitFor();
        await again.ask("/set", { settings: [{ parameter: "FG_WIDTH", value: 512 }] });
        await page.locator("#changes-list li", { hasText: "by another" }).waitFor();
        assert.equal(await page.locator("#changes-list li").count(), 2);
    } finally {
        await again.stop();
    }
}));

for (const [width, colours] of [[1000, "light"], [1920, "dark"]]) {
    test(`the page fits ${width} pixels and names all its controls`, () => withStudio(async ({ page }) => {
        for (const item of await page.locator("#tree > li").all())
            if (await item.getAttribute("aria-expanded") === "false") await item.locator(".row").first().click();
        for (const view of ["picture", "curves", "signals", "writes", "configurations", "world"]) {
            await page.click(`#tab-${view}`);
            const wrong = await page.evaluate(() => {
                const found = [];
                if (document.documentElement.scrollWidth > innerWidth) found.push("the page is wider than the window");
                for (const element of document.querySelectorAll("button, input, select, canvas, [role]")) {
                    if (!(element instanceof HTMLElement) || !element.checkVisibility()) continue;
                    const { right } = element.getBoundingClientRect();
                    if (right > innerWidth + 1 && !element.closest("#tree")) found.push(`outside: ${element.outerHTML.slice(0, 90)}`);
                    if (!element.matches("button, input, select, canvas")) continue;
                    const label = element.getAttribute("aria-label") || element.textContent?.trim()
                        || ("labels" in element && /** @type {HTMLInputElement} */ (element).labels?.length);
                    if (!label) found.push(`without a name: ${element.outerHTML.slice(0, 90)}`);
                }
                return found;
            });
            assert.deepEqual(wrong, [], view);
        }
    }, { width, height: 700, colours }));
}
