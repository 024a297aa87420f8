import { readFileSync } from "node:fs";
import { join } from "node:path";
import { expect, test } from "@playwright/test";
import { count, open, PAGES, panel, rules, saved } from "./opened";

const histories = readFileSync(join(PAGES, "hostile-histories.tsv"), "utf8").split("\n").slice(1);
const NAMES = [
  ...new Set(histories.filter((line) => line !== "").map((line) => line.split("\t")[2]!)),
];

test("names from the data come back as they were, and none is executed", async ({ page }) => {
  await open(page, "hostile");
  expect(NAMES).toHaveLength(16);
  await expect(page).toHaveTitle("</script><script>document.title='taken'</script>");
  const found = new Set<string>();
  const part = page.getByRole("region", { name: "Rules", exact: true });
  const json = await saved(page, part.getByRole("button", { name: "JSON" }));
  for (const rule of JSON.parse(json.text.toString("utf8")) as Record<string, string[]>[])
    for (const name of [...rule["antecedents"]!, ...rule["consequents"]!]) found.add(name);
  expect([...found].sort()).toEqual([...NAMES].sort());
  await expect(page.locator("img, script[src], iframe")).toHaveCount(0);
});

test("each name is shown in the table, the panel and the graph", async ({ page }) => {
  await open(page, "hostile");
  for (const name of NAMES) {
    await page
      .getByRole("form", { name: "Filter by item" })
      .getByLabel("Item")
      .fill(name.length > 200 ? name.slice(0, 150) : name);
    await page.getByRole("form", { name: "Filter by item" }).getByRole("button").click();
    await expect(count(page)).toHaveText(/^[1-9]\d* of /);
    await rules(page).locator(".rows .row").first().click();
    const names = await panel(page).locator(".rule.big bdi").allTextContents();
    expect(names, name.slice(0, 40)).toContain(name);
    await page
      .getByRole("button", { name: /^Drop the filter/ })
      .first()
      .click();
  }
  await expect(page).toHaveTitle(/script/);
});

test("a long name does not widen the page", async ({ page }) => {
  await open(page, "hostile", "#find=long");
  await rules(page).locator(".rows .row").first().click();
  const [width, inner] = await page.evaluate(() => [
    document.documentElement.scrollWidth,
    window.innerWidth,
  ]);
  expect(width).toBeLessThanOrEqual(inner!);
});

test("the policy forbids the network and foreign scripts", async ({ page }) => {
  await open(page, "one");
  page.removeAllListeners("console");
  page.removeAllListeners("request");
  const refused = await page.evaluate(async () => {
    const seen: string[] = [];
    document.addEventListener("securitypolicyviolation", (event) =>
      seen.push(event.effectiveDirective),
    );
    await fetch("https://example.invalid/").catch(() => undefined);
    const script = document.createElement("script");
    script.textContent = "document.title = 'taken'";
    document.body.append(script);
    const image = new Image();
    image.src = "https://example.invalid/x.png";
    document.body.append(image);
    document.body.setAttribute("onclick", "document.title = 'taken'");
    document.body.click();
    await new Promise((resolve) => setTimeout(resolve, 200));
    return seen;
  });
  expect(refused).toEqual(
    expect.arrayContaining(["connect-src", "script-src-elem", "img-src", "script-src-attr"]),
  );
  await expect(page).toHaveTitle("Rules of one.tsv");
});
