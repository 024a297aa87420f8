import { readFileSync } from "node:fs";
import { join } from "node:path";
import { pathToFileURL } from "node:url";
import { expect, type Locator, type Page } from "@playwright/test";

export const PAGES = join(import.meta.dirname, "../../../build/view-pages");

/** Opens a page as a file and waits for its first useful view. Any error fails the test. */
export async function open(page: Page, name: string, fragment = ""): Promise<void> {
  page.on("pageerror", (error) => {
    throw error;
  });
  page.on("console", (message) => {
    if (message.type() === "error") throw new Error(message.text());
  });
  page.on("request", (request) => expect(request.url()).toMatch(/^(file|blob|data):/));
  await page.goto(address(name) + fragment);
  await ready(page);
}

export function address(name: string): string {
  return pathToFileURL(join(PAGES, `${name}.html`)).href;
}

export async function ready(page: Page): Promise<void> {
  await expect(page.locator("html")).toHaveAttribute("data-ready", "true", { timeout: 30_000 });
}

export function rules(page: Page): Locator {
  return page.getByRole("grid", { name: "Rules" });
}

export function panel(page: Page): Locator {
  return page.getByRole("region", { name: "The chosen rule" });
}

/** The element that shows the number of rules. */
export function count(page: Page): Locator {
  return page.locator(".count");
}

/** The rules of a rules file of the tool, each as its cells. */
export function rulesOf(name: string): string[][] {
  const lines = readFileSync(join(PAGES, `${name}.tsv`), "utf8")
    .trimEnd()
    .split("\n");
  return lines.slice(1).map((line) => line.split("\t"));
}

/** Draws a brush over a part of the scatter plot, given in shares of its width and height. */
export async function brush(
  page: Page,
  from: [x: number, y: number],
  to: [x: number, y: number],
): Promise<void> {
  const plot = page.locator(".plot");
  await plot.scrollIntoViewIfNeeded();
  const box = (await plot.boundingBox())!;
  const at = ([x, y]: [number, number]): [number, number] => [
    box.x + x * box.width,
    box.y + y * box.height,
  ];
  await page.mouse.move(...at(from));
  await page.mouse.down();
  await page.mouse.move(...at(to), { steps: 5 });
  await page.mouse.up();
}

/** The name and content of the file that a button saves. */
export async function saved(page: Page, button: Locator): Promise<{ name: string; text: Buffer }> {
  const download = page.waitForEvent("download");
  await button.click();
  const file = await download;
  return { name: file.suggestedFilename(), text: readFileSync(await file.path()) };
}
