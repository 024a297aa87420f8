import { join, resolve } from "node:path";
import { expect, test } from "@playwright/test";
import { open, panel, rulesOf } from "./opened";

// Makes the pictures of the documentation, in the folder SCREENSHOTS or else beside other results.
const ROOT = join(import.meta.dirname, "../../..");
const FOLDER = resolve(ROOT, process.env["SCREENSHOTS"] ?? "build/view-tests/screenshots");

const RULE = "JUMBO BAG DOILEY PATTERNS => JUMBO BAG VINTAGE DOILY";

function placeOf(rule: string): number {
  const place = rulesOf("bags").findIndex(([text]) => text === rule);
  expect(place).toBeGreaterThanOrEqual(0);
  return place;
}

test.use({ viewport: { width: 1480, height: 1040 } });

for (const scheme of ["light", "dark"] as const)
  test(`the page, ${scheme}`, async ({ page }) => {
    await page.emulateMedia({ colorScheme: scheme });
    await open(page, "bags", `#rule=${placeOf(RULE)}&sort=-count`);
    await expect(panel(page).locator(".timeline").first()).toBeVisible();
    const name = scheme === "light" ? "page.png" : "page-dark.png";
    await page.screenshot({ path: join(FOLDER, name) });
  });

test("a hundred thousand rules", async ({ page }) => {
  await open(page, "many", "#colour=lagMedian");
  await page
    .getByRole("region", { name: "Overview" })
    .screenshot({ path: join(FOLDER, "many.png") });
});

test("the graph of items", async ({ page }) => {
  await open(page, "bags", `#rule=${placeOf(RULE)}`);
  const graph = page.getByRole("region", { name: "Graph of items" });
  await graph.screenshot({ path: join(FOLDER, "graph.png") });
});

test("a phone", async ({ page }) => {
  await page.setViewportSize({ width: 390, height: 844 });
  await open(page, "bags", `#rule=${placeOf(RULE)}`);
  await panel(page).evaluate((part) => part.scrollIntoView());
  await page.screenshot({ path: join(FOLDER, "phone.png") });
});
