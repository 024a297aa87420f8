import { App } from "./app";
import { decodePage, type PageData } from "./data/format";
import { announce, button, byId, element } from "./dom";
import { exportButtons } from "./parts/export";
import { FilterBar } from "./parts/filters";
import { Graph } from "./parts/graph";
import { Panel } from "./parts/panel";
import { printTable } from "./parts/printed";
import { ScatterCard } from "./parts/scatter_card";
import { Table } from "./parts/table";
import { counted, lengthText, wholeNumber } from "./text";

const IDLE = 300; // milliseconds after the first view

/** Waits until the browser has painted. */
function nextPaint(): Promise<void> {
  return new Promise((resolve) => requestAnimationFrame(() => setTimeout(resolve, 0)));
}

function summaryOf(page: PageData, rules: number): string {
  const { words } = page;
  const total = counted(page.total, words.entity, words.entities);
  const parts = [counted(rules, "rule", "rules"), (page.approximate ? "about " : "") + total];
  if (page.itemSets !== null)
    parts.push(counted(page.itemSets, "frequent item set", "frequent item sets"));
  if (page.minCount !== null) parts.push(`least count ${wholeNumber(page.minCount)}`);
  if (!page.ordered) parts.push("no times, so rules have no order");
  else if (page.window !== null)
    parts.push(
      page.window === 0
        ? "no window: the whole past"
        : `window ${lengthText(page.window, page.time)}`,
    );
  return parts.join(" · ");
}

function showEmpty(): void {
  document.querySelector(".skip")!.remove();
  byId("main").replaceChildren(
    element(
      "section",
      { class: "card empty", "aria-label": "No rules" },
      element("h2", {}, "There are no rules"),
      element("p", {}, "The run found none that pass its thresholds. What to try:"),
      element(
        "ul",
        {},
        element("li", {}, "a lower least count (-c, min_count): rules need that many histories;"),
        element(
          "li",
          {},
          "a longer window (-w, window), or none: it counts in the unit of the times;",
        ),
        element(
          "li",
          {},
          "lower bounds of support, confidence and lift, a higher one of conviction;",
        ),
        element("li", {}, "item names that are the same for the same thing, case and blanks too;"),
        element("li", {}, "histories with several times: what comes at one time follows nothing."),
      ),
    ),
  );
}

function pageTools(app: App): void {
  const shown = element("output", { class: "muted" });
  const copy = button("Copy link", { title: "The link opens the page just as it is now" }, () => {
    const address = app.address();
    const show = (text: string): void => {
      shown.textContent = text;
      setTimeout(() => (shown.textContent = ""), 6_000);
    };
    navigator.clipboard.writeText(address).then(
      () => show("Copied"),
      () => show(address),
    );
  });
  byId("page-tools").append(
    shown,
    copy,
    button("Print", {}, () => window.print()),
  );
}

function showNotes(page: PageData): void {
  for (const note of page.notes) byId("notes").append(element("p", { class: "notice" }, note));
}

function showFooter(page: PageData): void {
  const licences = JSON.parse(byId("licences").textContent) as { name: string; text: string }[];
  byId("footer").append(
    element(
      "p",
      {},
      "This page holds all that it shows and asks nothing of any network.",
      ...(page.columns.has("historyBegin") && page.entities.length > 0
        ? [
            ` It holds the histories of ${page.words.entities} by name: think before you pass it on.`,
          ]
        : []),
    ),
    element(
      "details",
      {},
      element("summary", {}, "Software in this page and its licences"),
      ...licences.map(({ name, text }) =>
        element("section", {}, element("h3", {}, name), element("pre", { tabindex: 0 }, text)),
      ),
    ),
  );
}

function showRules(app: App): void {
  const main = byId("main");
  const rules = byId("rules");
  new ScatterCard(app, byId("overview"));
  rules.append(
    element("div", { class: "card-head" }, element("h2", {}, "Rules"), exportButtons(app)),
  );
  new FilterBar(app, rules);
  const table = new Table(app, rules);
  document.querySelector(".skip")!.addEventListener("click", (event) => {
    event.preventDefault(); // the fragment of the address is used for the state
    table.focus();
  });
  printTable(app, rules);
  new Panel(app, byId("panel"));
  new Graph(app, byId("graph"));
  pageTools(app);
  app.followAddress();
  main.removeAttribute("aria-busy");
}

async function start(): Promise<void> {
  await nextPaint();
  const page = await decodePage(byId("data").textContent);
  document.title = page.title;
  byId("title").textContent = page.title;
  const app = new App(page);
  byId("summary").textContent = summaryOf(page, app.rules.size);
  showNotes(page);
  if (app.rules.size === 0) {
    showEmpty();
    byId("main").removeAttribute("aria-busy");
  } else showRules(app);
  showFooter(page);
  await nextPaint();
  performance.mark("useful");
  document.documentElement.dataset["ready"] = "true";
  announce(counted(app.rules.size, "rule", "rules"));
  setTimeout(() => app.shown.prepare(), IDLE);
}

start().catch((error: unknown) => {
  byId("summary").textContent = "The rules cannot be shown.";
  byId("notes").append(element("p", { class: "notice", role: "alert" }, String(error)));
  byId("main").removeAttribute("aria-busy");
  document.documentElement.dataset["ready"] = "failed";
});
