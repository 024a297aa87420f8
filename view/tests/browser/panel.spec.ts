import { expect, test } from "@playwright/test";
import { open, panel, rules, rulesOf } from "./opened";

test("a rule is told in plain words, as the manual tells it", async ({ page }) => {
  await open(page, "one");
  await rules(page).getByRole("row").nth(1).click();
  const words = panel(page);
  await expect(words).toContainText(
    "2 of 8 customers bought butter within 2 days after bread, and not in the 2 days before that.",
  );
  await expect(words).toContainText(
    "6 customers ever bought bread; 5 of them, 83 %, bought butter too, at whatever time.",
  );
  await expect(words).toContainText("with bread it is 1.11 times as frequent");
  // Cid bought them in the other order, Dee both at once, and Eve too late.
  await expect(words).toContainText("The other 3 customers with all items do not count");
  await expect(words).toContainText("for 1 the consequent came before the antecedent");
  await expect(words).toContainText("for 1 both came at the same time");
  await expect(words).toContainText("for 1 the consequent came after the window");
  await expect(words).toContainText("The other way round: 1 customer bought bread");
});

test("numbers stand with their formulas", async ({ page }) => {
  await open(page, "one", "#rule=0");
  const rows: [string, string, string][] = [
    ["Count", "2", ""],
    ["Confidence", "0.833333", "n(A∪S) / n(A) = 5 / 6"],
    ["Lift", "1.11111", "N · n(A∪S) / (n(A) · n(S)) = 8 · 5 / (6 · 6)"],
    ["Conviction", "1.50000", "(1 − n(S)/N) / (1 − Confidence) = (1 − 6/8) / (1 − 5/6)"],
    ["Certainty odds", "5", "n(A∪S) / (n(S) − n(A∪S)) = 5 / (6 − 5)"],
  ];
  for (const [name, value, formula] of rows) {
    const row = panel(page).getByRole("row", { name: new RegExp(`^${name} `) });
    await expect(row.getByRole("cell").nth(0)).toHaveText(value);
    await expect(row.getByRole("cell").nth(1)).toHaveText(formula);
  }
});

test("examples show who counts, when, and who does not", async ({ page }) => {
  await open(page, "one", "#rule=0");
  const lists = panel(page).locator(".histories");
  await expect(lists.nth(0).getByRole("listitem")).toHaveText([
    /^ann time 1 → time 3, 2 days later/,
    /^bob time 2 → time 4, 2 days later/,
  ]);
  await panel(page).getByText("With all items, but not counted (3)").click();
  await expect(lists.nth(1).getByRole("listitem")).toHaveText([/^cid/, /^dee/, /^eve/]);
  await expect(panel(page).getByRole("img", { name: "Histogram of 2 lags" })).toBeVisible();
});

test("dates and lags are those of the histories", async ({ page }) => {
  await open(page, "bags", "#find=doiley+jumbo+vintage&sort=-count");
  await rules(page).getByRole("row").nth(1).click();
  await expect(panel(page)).toContainText(
    "20 of 137 customers took JUMBO BAG VINTAGE DOILY within 90 days after " +
      "JUMBO BAG DOILEY PATTERNS",
  );
  await expect(panel(page).locator(".histories").first()).toContainText("2011-08-19 15:29");
});

test("the reverse rule is one click away where it was found", async ({ page }) => {
  const texts = rulesOf("thousand").map(([rule]) => rule!);
  const reversed = (rule: string): string => rule.split(" => ").reverse().join(" => ");
  const rule = texts.findIndex((text) => texts.includes(reversed(text)));
  expect(rule).toBeGreaterThanOrEqual(0);
  await open(page, "thousand", `#rule=${rule}`);
  const before = await page.locator(".rule.big bdi").allTextContents();
  await panel(page).getByRole("button", { name: "Show the reverse rule" }).click();
  const after = await page.locator(".rule.big bdi").allTextContents();
  expect([...after].sort()).toEqual([...before].sort());
  expect(after).not.toEqual(before);
});

test("the buttons of the panel go through the rules as the table has them", async ({ page }) => {
  await open(page, "bags");
  await rules(page).getByRole("row").nth(1).click();
  await panel(page).getByRole("button", { name: "Next rule" }).click();
  await expect(rules(page).getByRole("row").nth(2)).toHaveClass(/chosen/);
  await expect(panel(page).getByRole("button", { name: "Next rule" })).toBeFocused();
  await panel(page).getByRole("button", { name: "Choose no rule" }).click();
  await expect(page.locator(".chosen")).toHaveCount(0);
});
