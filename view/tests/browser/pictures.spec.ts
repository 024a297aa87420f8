import { expect, test } from "@playwright/test";
import { brush, count, open, panel, rules, rulesOf, saved } from "./opened";

const PNG = Buffer.from([0x89, 0x50, 0x4e, 0x47]);

test("a click on a dot chooses its rule", async ({ page }) => {
  await open(page, "one");
  const box = (await page.locator(".plot").boundingBox())!;
  await page.mouse.click(box.x + 62 + (box.width - 76) / 2, box.y + 10 + (box.height - 56) / 2);
  await expect(page.locator(".rule.big")).toHaveText("bread → butter");
});

test("a dot under the pointer tells its rule", async ({ page }) => {
  await open(page, "one");
  const box = (await page.locator(".plot").boundingBox())!;
  await page.mouse.move(box.x + 62 + (box.width - 76) / 2, box.y + 10 + (box.height - 56) / 2);
  await expect(page.locator(".hint")).toContainText("bread → butter");
  await expect(page.locator(".hint")).toContainText("Lift: 1.11");
});

test("the wheel, buttons and keys zoom", async ({ page }) => {
  await open(page, "thousand");
  const tick = page.locator(".plot svg text").first();
  const all = await tick.textContent();
  await page.getByRole("button", { name: "Zoom in" }).click();
  await expect(tick).not.toHaveText(all!);
  await page.getByRole("button", { name: "Show all of the overview" }).click();
  await expect(tick).toHaveText(all!);
  await page.locator(".plot").click({ position: { x: 300, y: 200 } });
  await page.mouse.wheel(0, -600);
  await expect(tick).not.toHaveText(all!);
  await page.keyboard.press("0");
  await expect(tick).toHaveText(all!);
});

test("dragging moves the view when it is told to", async ({ page }) => {
  await open(page, "thousand");
  await page.getByRole("button", { name: "Zoom in" }).click();
  await page.getByRole("button", { name: "Move", exact: true }).click();
  await expect.poll(() => page.url()).toContain("zoom=");
  const before = page.url();
  await brush(page, [0.5, 0.5], [0.4, 0.6]);
  await expect.poll(() => page.url()).not.toBe(before);
  await expect(page.locator(".brush")).toHaveCount(0);
});

test("any two measures are on the axes, with logarithmic scales", async ({ page }) => {
  await open(page, "thousand");
  await page.getByRole("combobox", { name: "Across" }).selectOption("Conviction");
  await page.getByRole("combobox", { name: "Up" }).selectOption("Count");
  await page.getByRole("checkbox", { name: "log scale for Across" }).check();
  await expect(page.locator(".plot")).toContainText("Conviction (log) →");
  await expect(page.locator(".plot")).toHaveAccessibleName(/Conviction across, Count up$/);
  await page.getByRole("combobox", { name: "Colour" }).selectOption("Leverage");
  await expect(page.locator(".legend")).toContainText("Leverage");
});

test("the scatter works by keyboard alone", async ({ page }) => {
  await open(page, "thousand");
  await page.locator(".plot").focus();
  await page.keyboard.press("ArrowRight");
  await page.keyboard.press("ArrowRight");
  await expect(page.locator("#announcement")).toContainText("→");
  await page.keyboard.press("Shift+ArrowRight");
  await page.keyboard.press("Shift+ArrowUp");
  await expect(count(page)).toHaveText(/ of /);
  await page.keyboard.press("Escape");
  await expect(count(page)).toHaveText(/^All/);
});

test("the graph opens and closes items, and its arrows choose rules", async ({ page }) => {
  await open(page, "bags", "#find=doiley+jumbo+vintage&sort=-count");
  await rules(page).getByRole("row").nth(1).click();
  const graph = page.getByRole("region", { name: "Graph of items" });
  const nodes = graph.getByRole("button", { expanded: false });
  const before = await graph.locator(".node").count();
  await nodes.first().focus();
  await page.keyboard.press("Enter");
  await expect(graph.locator(".node[aria-expanded=true]")).toHaveCount(3);
  expect(await graph.locator(".node").count()).toBeGreaterThanOrEqual(before);
  await expect(graph.locator(".node:focus")).toHaveAttribute("aria-expanded", "true");
  await page.keyboard.press("Enter");
  await expect(graph.locator(".node[aria-expanded=true]")).toHaveCount(2);

  await graph.getByText("The same as a list").click();
  await graph.getByRole("listitem").last().getByRole("button").click();
  await expect(panel(page).locator(".rule.big")).toContainText("→");
});

test("pictures are saved as SVG and PNG that stand on their own", async ({ page }) => {
  await open(page, "bags", "#rule=10");
  for (const region of ["Overview", "Graph of items", "The chosen rule"]) {
    const part = page.getByRole("region", { name: region });
    const svg = await saved(page, part.getByRole("button", { name: "SVG" }));
    expect(svg.name).toMatch(/\.svg$/);
    const text = svg.text.toString("utf8");
    const root = await page.evaluate((xml) => {
      const made = new DOMParser().parseFromString(xml, "image/svg+xml");
      return made.querySelector("parsererror") ? "broken" : made.documentElement.tagName;
    }, text);
    expect(root).toBe("svg");
    expect(text).not.toMatch(/var\(|class="node" style/);
    const png = await saved(page, part.getByRole("button", { name: "PNG" }));
    expect(png.name).toMatch(/\.png$/);
    expect(png.text.subarray(0, 4)).toEqual(PNG);
    expect(png.text.length).toBeGreaterThan(2_000);
  }
  const overview = await saved(
    page,
    page.getByRole("region", { name: "Overview" }).getByRole("button", { name: "SVG" }),
  );
  const dots = overview.text.toString("utf8").match(/M[\d.]+ [\d.]+h0/g)!;
  expect(dots).toHaveLength(rulesOf("bags").length);
});

test("rules are saved as CSV and JSON, those ticked or all shown", async ({ page }) => {
  await open(page, "bags", "#find=paisley");
  const part = page.getByRole("region", { name: "Rules", exact: true });
  const json = await saved(page, part.getByRole("button", { name: "JSON" }));
  const objects = JSON.parse(json.text.toString("utf8")) as Record<string, unknown>[];
  const wanted = rulesOf("bags").filter(([rule]) => rule!.includes("PAISLEY"));
  expect(objects).toHaveLength(wanted.length);
  const best = wanted.sort((one, other) => Number(other[5]) - Number(one[5]))[0]!;
  const [a, s] = best[0]!.split(" => ").map((side) => side.replace(/[{}]/g, "").split(","));
  expect(objects[0]).toMatchObject({
    antecedents: a,
    consequents: s,
    count: Number(best[1]),
    union_count: Number(best[2]),
  });
  expect(objects[0]!["lift"]).toBeCloseTo(Number(best[5]), 4);

  await rules(page).locator(".rows .tick").first().click();
  const csv = await saved(page, part.getByRole("button", { name: "CSV" }));
  const lines = csv.text.toString("utf8").split("\r\n");
  expect(lines).toHaveLength(3);
  expect(lines[0]).toMatch(/^antecedents,consequents,count,union_count,ordered_confidence,/);
  expect(lines[1]).toContain(`"[""${a![0]}`);
});
