// Values: given, refused, moved, taken back; by mouse and by keys.

import assert from "node:assert/strict";
import { after, test } from "node:test";
import { box, closeBrowser, picture, row, screenshot, type, withStudio } from "./harness.mjs";

after(closeBrowser);

test("a width that is set is the width of the pictures", () => withStudio(async ({ page, studio }) => {
    await page.click("#run");
    await picture(page, 1024, 1024);
    await type(page, "FG_WIDTH", "2048");
    await picture(page, 2048, 1024);
    assert.equal((await studio.ask("/values?name=FG_WIDTH")).FG_WIDTH, 2048);

    // What moved with it flashes, is listed, and its new end is what the field knows.
    const entry = page.locator("#changes-list li").first();
    await entry.getByText("FG_XOFFSET").waitFor();
    assert.match(await entry.innerText(), /FG_WIDTH\s+1024\s+→\s+2048/);
    assert.match(await entry.innerText(), /FG_XOFFSET\s+maximum\s+15360\s+→\s+14336/);
    assert.match((await row(page, "FG_XOFFSET").getAttribute("class")) ?? "", /flash/);
    await page.click("#tab-writes");
    await page.getByRole("cell", { name: "Process0_Buffer_0_DRAM_A_0_XLength" }).waitFor();
    await screenshot(page, "writes");

    await page.click("#tab-picture");
    await entry.getByRole("button", { name: "undo FG_WIDTH" }).press("Enter");
    await picture(page, 1024, 1024);
    assert.equal(await box(page, "FG_WIDTH").inputValue(), "1024");
    assert.equal(await page.locator("#changes-list li").count(), 0);
    assert.equal(await page.evaluate(() => document.activeElement?.textContent), "Changes");
}));

test("a refused value says why and its remedy sets it right", () => withStudio(async ({ page, studio }) => {
    await page.click("#run");
    await type(page, "FG_XOFFSET", "12288");
    await row(page, "FG_XOFFSET").and(page.locator(".changed")).waitFor();
    await type(page, "FG_WIDTH", "4104");
    const refusal = row(page, "FG_WIDTH").locator(".refusal");
    await refusal.getByRole("alert").waitFor();
    assert.match(await refusal.innerText(), /above 4096, because FG_XOFFSET is 12288/);
    assert.equal(await box(page, "FG_WIDTH").getAttribute("aria-invalid"), "true");
    assert.equal(await box(page, "FG_WIDTH").inputValue(), "4104", "what was typed stays to be mended");
    await picture(page, 1024, 1024);
    await screenshot(page, "refusal");

    await refusal.getByRole("button", { name: "FG_XOFFSET = 12280" }).click();
    await refusal.waitFor({ state: "detached" });
    assert.deepEqual(await studio.ask("/values?name=FG_WIDTH&name=FG_XOFFSET"), { FG_WIDTH: 4104, FG_XOFFSET: 12280 });
    await page.waitForFunction(() => document.activeElement?.matches("[data-name=FG_WIDTH] input"));

    // What is no number at all is told apart from what is out of range, and Escape leaves it.
    await type(page, "FG_HEIGHT", "tall");
    await row(page, "FG_HEIGHT").getByText("tall is no number").waitFor();
    await box(page, "FG_HEIGHT").press("Escape");
    assert.equal(await box(page, "FG_HEIGHT").inputValue(), "1024");
}));

test("a locked parameter says what locks it and can be unlocked there", () => withStudio(async ({ page }) => {
    await page.fill("#search", "downscale");
    await row(page, "FG_LINE_DOWNSCALE").click();
    await page.locator("#inspector").getByText("Locked, because").waitFor();
    await page.locator("#inspector").getByRole("button", { name: "FG_LINETRIGGERMODE = ASYNC_TRIGGER" }).click();
    await type(page, "FG_LINE_DOWNSCALE", "4");
    await row(page, "FG_LINE_DOWNSCALE").and(page.locator(".changed")).waitFor();
}));

test("everything can be done with the keyboard alone", () => withStudio(async ({ page, studio }) => {
    const { keyboard } = page;
    await keyboard.press("/");
    await keyboard.type("exposure time");
    await keyboard.press("Enter");
    await page.waitForFunction(() => document.activeElement?.matches("[data-name=FG_LINEEXPOSURE]"));
    // A digit begins to replace the value, Enter gives it.
    await keyboard.type("25");
    await keyboard.press("Enter");
    await row(page, "FG_LINEEXPOSURE").and(page.locator(".changed")).waitFor();
    assert.equal((await studio.ask("/values?name=FG_LINEEXPOSURE")).FG_LINEEXPOSURE, 25);
    // One step up; then a value out of range, whose remedy is reached by Tab.
    await keyboard.press("ArrowUp");
    await page.waitForFunction(() => document.activeElement instanceof HTMLInputElement
        && document.activeElement.value === "25.008");
    await keyboard.press("ControlOrMeta+a");
    await keyboard.type("5000");
    await keyboard.press("Enter");
    await row(page, "FG_LINEEXPOSURE").getByRole("alert").waitFor();
    await keyboard.press("Tab");
    await keyboard.press("Enter");
    await row(page, "FG_LINEEXPOSURE").locator(".refusal").waitFor({ state: "detached" });
    assert.equal((await studio.ask("/values?name=FG_LINEEXPOSURE")).FG_LINEEXPOSURE, 200);
    await page.waitForFunction(() => document.querySelectorAll("#changes-list li").length === 3);
    // Out of the box into the tree, back with Ctrl Z, on to a view and its neighbour.
    await keyboard.press("Escape");
    await keyboard.press("ControlOrMeta+z");
    await page.waitForFunction(() => document.querySelectorAll("#changes-list li").length === 2);
    assert.equal((await studio.ask("/values?name=FG_LINEEXPOSURE")).FG_LINEEXPOSURE, 25.008);
    await keyboard.press("Alt+2");
    await keyboard.press("ArrowRight");
    await page.locator("#view-signals").waitFor();
    await keyboard.press("Alt+1");
    await keyboard.press("?");
    await keyboard.press("r");
    await keyboard.press("Alt+2");
    await keyboard.press("Escape");
    assert.equal(await page.locator("#view-picture").isVisible(), true);
    assert.equal((await studio.ask("/acquisition")).state, "stopped");
    await keyboard.press("s");
    await picture(page, 1024, 1024);
}));

test("two pages on one board stay in step", () => withStudio(async ({ page, open, studio }) => {
    const other = await open();
    await type(page, "FG_HEIGHT", "512");
    await other.locator("#changes-list li", { hasText: "by another" }).waitFor();
    await page.waitForFunction(() => document.querySelectorAll("#changes-list li").length === 1);
    assert.equal(await box(other, "FG_HEIGHT").inputValue(), "512");
    assert.equal(await page.locator(".tag").count(), 0);

    // Both give the same parameter at once: both end at what the board has.
    await Promise.all([type(page, "FG_HEIGHT", "600"), type(other, "FG_HEIGHT", "700")]);
    for (const one of [page, other])
        await one.waitForFunction(() => document.querySelectorAll("#changes-list li").length === 3);
    const height = String((await studio.ask("/values?name=FG_HEIGHT")).FG_HEIGHT);
    for (const one of [page, other])
        await one.waitForFunction(([value]) =>
            /** @type {HTMLInputElement} */ (document.querySelector("[data-name=FG_HEIGHT] input.number")).value === value,
            [height]);

    // The acquisition is one, too, and a value given by a program shows on both.
    await other.click("#run");
    await page.locator("#stop:enabled").waitFor();
    await picture(page, 1024, Number(height));
    await studio.ask("/set", { settings: [{ parameter: "FG_WIDTH", value: 256 }] });
    for (const one of [page, other]) await picture(one, 256, Number(height));

    // What others do leaves the keyboard where it is.
    await row(page, "FG_WIDTH").click();
    const summary = page.locator("#inspector summary");
    await summary.focus();
    await type(other, "FG_PROCESSING_GAMMA", "1.5");
    await page.locator("#changes-list li", { hasText: "FG_PROCESSING_GAMMA" }).waitFor();
    await page.waitForTimeout(1500);
    assert.equal(await summary.evaluate((element) => element === document.activeElement), true);
}));

test("a drag on a slider is one change", () => withStudio(async ({ page, studio }) => {
    const slider = row(page, "FG_PROCESSING_GAIN").locator("input[type=range]");
    await slider.scrollIntoViewIfNeeded();
    const area = await slider.boundingBox();
    assert.ok(area);
    const y = area.y + area.height / 2;
    await page.mouse.move(area.x + 10, y);
    await page.mouse.down();
    for (const share of [0.2, 0.4, 0.6, 0.8]) await page.mouse.move(area.x + share * area.width, y, { steps: 3 });
    await page.mouse.up();
    await page.waitForFunction(async () => {
        const { FG_PROCESSING_GAIN: gain } = await (await fetch("/api/values?name=FG_PROCESSING_GAIN")).json();
        const input = /** @type {HTMLInputElement} */ (document.querySelector("[data-name=FG_PROCESSING_GAIN] input.number"));
        return gain > 2 && Math.abs(Number(input.value) - gain) < 1e-6;
    });
    assert.equal(await page.locator("#changes-list li").count(), 1);
    await page.click("#undo");
    await page.waitForFunction(() => document.querySelectorAll("#changes-list li").length === 0);
    assert.equal((await studio.ask("/values?name=FG_PROCESSING_GAIN")).FG_PROCESSING_GAIN, 1);
}));
