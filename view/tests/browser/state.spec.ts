import { expect, test } from "@playwright/test";
import { brush, count, open, panel, ready, rules } from "./opened";

test("the address opens the same view again", async ({ page, context }) => {
  await open(page, "thousand");
  await page.getByRole("combobox", { name: "Across" }).selectOption("Leverage");
  await brush(page, [0.3, 0.1], [0.9, 0.8]);
  await page.getByRole("searchbox").fill("bag red");
  await expect(count(page)).toHaveText(/ of /);
  await rules(page).getByRole("button", { name: "Confidence", exact: true }).click();
  await rules(page).getByRole("row").nth(2).click();
  await rules(page).locator(".rows .tick").first().click();
  const shown = (await count(page).textContent())!;
  const rule = (await panel(page).locator(".rule.big").textContent())!;
  await expect.poll(() => page.url()).toContain("ticked=");

  const other = await context.newPage();
  await other.goto(page.url());
  await ready(other);
  await expect(count(other)).toHaveText(shown);
  await expect(panel(other).locator(".rule.big")).toHaveText(rule);
  await expect(other.getByRole("combobox", { name: "Across" })).toHaveValue("leverage");
  await expect(other.getByRole("searchbox")).toHaveValue("bag red");
  await expect(other.locator(".brush")).toHaveCount(1);
  await expect(other.locator('[aria-selected="true"]')).toHaveCount(1);
  await expect(other.getByRole("columnheader", { name: "Confidence" }).last()).toHaveAttribute(
    "aria-sort",
    "descending",
  );
});

test("a changed address changes the view", async ({ page }) => {
  await open(page, "bags");
  await page.evaluate(() => (location.hash = "#find=paisley&rule=3"));
  await expect(page.getByRole("searchbox")).toHaveValue("paisley");
  await expect(panel(page).locator(".rule.big")).toBeVisible();
});

test("nonsense in the address does no harm", async ({ page }) => {
  await open(page, "bags", "#rule=99999&x=<script>&brush=1,2&item=-4&graph=9e9&range=lift,a,b&%%%");
  await expect(count(page)).toHaveText("All 39 rules");
});

test("without rules the page says so, and what to try", async ({ page }) => {
  await open(page, "none");
  await expect(page.getByRole("heading", { name: "There are no rules" })).toBeVisible();
  await expect(page.getByText("a lower least count")).toBeVisible();
});

test("filters that leave no rule say so", async ({ page }) => {
  await open(page, "bags", "#find=nothing+has+this");
  await expect(count(page)).toHaveText("0 of 39 rules");
  await expect(page.getByText("No rule passes the filters.")).toBeVisible();
});

test("data that were cut are told of", async ({ page }) => {
  const { address } = await import("./opened");
  await page.addInitScript(() => {
    document.addEventListener("readystatechange", () => {
      const data = document.getElementById("data");
      if (data) data.textContent = data.textContent.slice(0, 2_000);
    });
  });
  await page.goto(address("bags"));
  await expect(page.getByText("The rules cannot be shown.")).toBeVisible();
  await expect(page.getByRole("alert")).toContainText("SyntaxError");
});
