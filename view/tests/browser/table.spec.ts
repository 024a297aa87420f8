import { expect, type Page, test } from "@playwright/test";
import { brush, count, open, rules, rulesOf } from "./opened";

/** The visible cells of a column, as numbers. */
async function column(page: Page, name: string): Promise<number[]> {
  const heads = await rules(page).getByRole("columnheader").allTextContents();
  const place = heads.indexOf(name);
  expect(place).toBeGreaterThan(0);
  const cells = await rules(page)
    .locator(`.rows .row > :nth-child(${place + 1})`)
    .allTextContents();
  return cells.map((text) => Number(text.replace("∞", "Infinity").replace(",", "")));
}

test("the table has all rules of the file", async ({ page }) => {
  await open(page, "thousand");
  const all = rulesOf("thousand");
  expect(all.length).toBeGreaterThan(1_000);
  await expect(count(page)).toHaveText(`All ${all.length.toLocaleString("en-US")} rules`);
  await expect(rules(page)).toHaveAttribute("aria-rowcount", String(all.length + 1));
  // Only visible rows are elements.
  expect(await rules(page).getByRole("row").count()).toBeLessThan(60);
});

test("a click on a head sorts, another one the other way", async ({ page }) => {
  await open(page, "thousand");
  const counts = rulesOf("thousand").map((cells) => Number(cells[1]));
  const most = Math.max(...counts);
  await rules(page).getByRole("button", { name: "Count", exact: true }).click();
  await expect(rules(page).getByRole("columnheader", { name: "Count" })).toHaveAttribute(
    "aria-sort",
    "descending",
  );
  expect((await column(page, "Count"))[0]).toBe(most);
  await rules(page).getByRole("button", { name: "Count", exact: true }).click();
  expect((await column(page, "Count"))[0]).toBe(Math.min(...counts));
});

test("rules sort by name", async ({ page }) => {
  await open(page, "one");
  await rules(page).getByRole("button", { name: "Rule", exact: true }).click();
  await expect(rules(page).getByRole("row").nth(1)).toContainText("bread→ butter");
});

test("words, items, sides and ranges filter together", async ({ page }) => {
  await open(page, "thousand");
  const all = rulesOf("thousand");
  const shown = (test: (cells: string[]) => boolean): string =>
    `${all.filter(test).length.toLocaleString("en-US")} of ${all.length.toLocaleString("en-US")} rules`;

  await page.getByRole("searchbox").fill("doiley");
  await expect(count(page)).toHaveText(shown(([rule]) => rule!.includes("DOILEY")));

  const form = page.getByRole("form", { name: "Filter by item" });
  const item = "JUMBO BAG RED RETROSPOT";
  await form.getByLabel("Item").fill(item);
  await form.getByLabel("Side").selectOption("as consequent");
  await form.getByRole("button", { name: "Add" }).click();
  const hasItem = ([rule]: string[]): boolean => rule!.split(" => ")[1]!.includes(item);
  const both = (cells: string[]): boolean => cells[0]!.includes("DOILEY") && hasItem(cells);
  await expect(count(page)).toHaveText(shown(both));

  const range = page.getByRole("form", { name: "Filter by measure" });
  await range.getByLabel("Measure").selectOption("Lift");
  await range.getByLabel("Least").fill("1.5");
  await range.getByLabel("Greatest").fill("1.6");
  await range.getByLabel("Greatest").press("Enter");
  const lift = (cells: string[]): boolean => Number(cells[5]) >= 1.5 && Number(cells[5]) <= 1.6;
  await expect(count(page)).toHaveText(shown((cells) => both(cells) && lift(cells)));

  await page.getByRole("button", { name: `Drop the filter ${item}` }).click();
  await expect(count(page)).toHaveText(
    shown((cells) => cells[0]!.includes("DOILEY") && lift(cells)),
  );
  await page.getByRole("button", { name: "Drop all" }).click();
  await expect(count(page)).toHaveText(`All ${all.length.toLocaleString("en-US")} rules`);
});

test("an item that no rule has is refused with a word", async ({ page }) => {
  await open(page, "bags");
  const form = page.getByRole("form", { name: "Filter by item" });
  await form.getByLabel("Item").fill("no such thing");
  await form.getByRole("button", { name: "Add" }).click();
  expect(
    await form
      .getByLabel("Item")
      .evaluate((input) => (input as HTMLInputElement).validationMessage),
  ).toBe("No item in these rules has this name.");
});

test("a brush selects in the table what lies in it", async ({ page }) => {
  await open(page, "thousand");
  await brush(page, [0.5, 0.05], [0.95, 0.5]);
  await expect(count(page)).toHaveText(/^[\d,]+ of 1,\d+ rules$/);
  const [confidence, lift] = [await column(page, "Confidence"), await column(page, "Lift")];
  await expect(page.locator(".chip")).toHaveText(/selected in the overview/);
  const bounds = new URLSearchParams(new URL(await address(page)).hash.slice(1)).get("brush")!;
  const [left, right, bottom, top] = bounds.split(",").map(Number);
  const all = rulesOf("thousand").map((cells) => cells.map(Number));
  const inside = all.filter(
    (cells) =>
      cells[4]! >= left! && cells[4]! <= right! && cells[5]! >= bottom! && cells[5]! <= top!,
  );
  expect(
    Math.abs(inside.length - Number((await count(page).textContent())!.split(" ")[0])),
  ).toBeLessThanOrEqual(2);
  expect(Math.min(...confidence)).toBeGreaterThan(left! - 0.001);
  expect(Math.min(...lift)).toBeGreaterThan(bottom! - 0.01);
});

async function address(page: Page): Promise<string> {
  await expect.poll(() => page.url()).toContain("brush=");
  return page.url();
}

test("a hundred thousand rules scroll to their end", async ({ page }) => {
  await open(page, "many");
  await expect(count(page)).toHaveText("All 100,000 rules");
  await rules(page).focus();
  await page.keyboard.press("End");
  await expect(page.locator("#row-99999")).toBeVisible();
  await expect(page.locator("#row-99999")).toHaveClass(/chosen/);
  await expect(rules(page)).toHaveAttribute("aria-activedescendant", "row-99999");
  await rules(page).evaluate((grid) => (grid.scrollTop = grid.scrollHeight / 2));
  await expect(page.locator("#row-50000")).toBeVisible();
});

test("the keyboard chooses, ticks and goes to the panel", async ({ page }) => {
  await open(page, "bags");
  await rules(page).focus();
  for (const key of ["ArrowDown", "ArrowDown", "Space"]) await page.keyboard.press(key);
  await expect(page.locator("#row-1")).toHaveAttribute("aria-selected", "true");
  await expect(page.getByText("Save 1 rule ticked:")).toBeVisible();
  await page.keyboard.press("PageDown");
  await page.keyboard.press("Shift+Space");
  const ticked = await page.locator('[aria-selected="true"]').count();
  expect(ticked).toBeGreaterThan(2);
  await page.keyboard.press("Home");
  await expect(page.locator("#row-0")).toHaveClass(/chosen/);
  await page.keyboard.press("Enter");
  await expect(page.locator("#rule-title")).toBeFocused();
});
