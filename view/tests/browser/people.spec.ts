import { AxeBuilder } from "@axe-core/playwright";
import { expect, test } from "@playwright/test";
import { open, panel, rules } from "./opened";

const PAGES: [name: string, fragment: string][] = [
  ["bags", "#rule=10&ticked=1-3&find=bag"],
  ["bags", ""],
  ["hostile", "#rule=1"],
  ["none", ""],
  ["many", "#rule=5&brush=0.2,0.9,1,20"],
];

for (const scheme of ["light", "dark"] as const)
  for (const [name, fragment] of PAGES)
    test(`axe finds nothing: ${name}${fragment}, ${scheme}`, async ({ page }) => {
      await page.emulateMedia({ colorScheme: scheme });
      await open(page, name, fragment);
      for (const details of await page.locator("details").all())
        await details.evaluate((element) => ((element as HTMLDetailsElement).open = true));
      const { violations, passes } = await new AxeBuilder({ page }).analyze();
      expect(violations.map(({ id, nodes }) => [id, nodes.map(({ html }) => html)])).toEqual([]);
      expect(passes.length).toBeGreaterThan(15);
    });

for (const [width, height] of [
  [360, 740],
  [820, 1180],
  [2560, 1440],
] as const)
  test(`nothing is wider than a screen of ${width} pixels`, async ({ page }) => {
    await page.setViewportSize({ width, height });
    await open(page, "bags", "#rule=10");
    expect(await page.evaluate(() => document.documentElement.scrollWidth)).toBeLessThanOrEqual(
      width,
    );
    const { violations } = await new AxeBuilder({ page }).analyze();
    expect(violations.map(({ id }) => id)).toEqual([]);
  });

test("every control is reached by the tab key, and is seen to be", async ({ page }) => {
  await open(page, "bags", "#rule=10");
  const reached = new Set<string>();
  for (let step = 0; step < 120; ++step) {
    await page.keyboard.press("Tab");
    const now = await page.evaluate(() => {
      const element = document.activeElement!;
      const style = getComputedStyle(element);
      const seen = style.outlineStyle !== "none" || element.matches(".node");
      const name = element.getAttribute("aria-label") ?? element.textContent ?? "";
      return { name: `${element.tagName} ${element.id} ${name.slice(0, 40)}`, seen };
    });
    if (now.name.startsWith("BODY")) break;
    expect(now.seen, now.name).toBe(true);
    reached.add(now.name);
  }
  for (const name of [
    "A  To the table",
    "Zoom in",
    "search",
    "Rules",
    "Next rule",
    "SVG",
    "Copy link",
  ])
    expect(
      [...reached].some((one) => one.includes(name)),
      name,
    ).toBe(true);
});

test("the first key leads to the table", async ({ page }) => {
  await open(page, "bags");
  await page.keyboard.press("Tab");
  await expect(page.getByRole("link", { name: "To the table of rules" })).toBeFocused();
  await page.keyboard.press("Enter");
  await expect(rules(page)).toBeFocused();
});

test("on paper the rules are a plain table", async ({ page }) => {
  await open(page, "thousand", "#rule=10");
  await page.evaluate(() => window.dispatchEvent(new Event("beforeprint")));
  await page.emulateMedia({ media: "print" });
  await expect(page.locator(".printed tbody tr")).toHaveCount(100);
  await expect(page.locator(".printed caption")).toHaveText(/^The first 100 of 1,\d+ rules$/);
  await expect(rules(page)).toBeHidden();
  await expect(page.getByRole("searchbox")).toBeHidden();
  await expect(panel(page).locator(".rule.big")).toBeVisible();
});

test("the scale of colours goes evenly from faint to strong for all kinds of eyes", async ({
  page,
}) => {
  await open(page, "bags");
  const fills = await page
    .locator(".legend .bar rect")
    .evaluateAll((bars) => bars.map((bar) => bar.getAttribute("fill")!));
  const lightness = fills.map((fill) => {
    const parts = fill.startsWith("#")
      ? [1, 3, 5].map((at) => parseInt(fill.slice(at, at + 2), 16))
      : fill.match(/\d+/g)!.map(Number);
    return 0.2126 * parts[0]! + 0.7152 * parts[1]! + 0.0722 * parts[2]!;
  });
  expect(lightness).toHaveLength(32);
  for (let at = 1; at < lightness.length; ++at)
    expect(lightness[at]!).toBeLessThan(lightness[at - 1]!);
});
