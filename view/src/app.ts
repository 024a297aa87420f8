import type { PageData } from "./data/format";
import { Histories } from "./data/histories";
import { Measures } from "./data/measures";
import { type RuleId, Rules } from "./data/rules";
import { fromFragment, toFragment } from "./state/address";
import { Shown } from "./state/shown";
import { type State, Store } from "./state/state";

const ADDRESS_DELAY = 250; // milliseconds; browsers limit the changes per second

/** The data, measures and state that all parts of the page share. */
export class App {
  readonly rules: Rules;
  readonly measures: Measures;
  readonly histories: Histories | null;
  readonly begin: State;
  readonly store: Store;
  readonly shown: Shown;

  constructor(readonly page: PageData) {
    this.rules = new Rules(page);
    this.measures = new Measures(this.rules, page.ordered);
    this.histories = Histories.of(page);
    this.begin = beginning(page.ordered);
    this.store = new Store(fromFragment(location.hash, this.begin, this.rules, this.measures));
    this.shown = new Shown(this.rules, this.measures, this.store.state);
    this.store.listen((state, changed) => this.shown.follow(state, changed));
  }

  /** Keeps the address and the state in sync from now on. */
  followAddress(): void {
    let timer: ReturnType<typeof setTimeout> | undefined;
    this.store.listen(() => {
      clearTimeout(timer);
      timer = setTimeout(() => this.writeAddress(), ADDRESS_DELAY);
    });
    window.addEventListener("hashchange", () => {
      this.store.update(fromFragment(location.hash, this.begin, this.rules, this.measures));
    });
  }

  /** The address of the page in its current state. */
  address(): string {
    const fragment = toFragment(this.store.state, this.begin);
    return location.href.replace(/#.*$/, "") + (fragment === "" ? "" : `#${fragment}`);
  }

  /** Shows a rule in the panel; null shows none. */
  choose(rule: RuleId | null): void {
    this.store.update({ chosen: rule });
  }

  private writeAddress(): void {
    try {
      history.replaceState(null, "", this.address());
    } catch {
      // A page inside another document, such as a notebook, has no address of its own.
    }
  }
}

function beginning(ordered: boolean): State {
  return {
    x: { measure: "confidence", log: false },
    y: { measure: "lift", log: true },
    colour: ordered ? "orderedConfidence" : "reverseConfidence",
    zoom: null,
    brush: null,
    search: "",
    items: [],
    ranges: [],
    sort: "lift",
    isDescending: true,
    chosen: null,
    ticked: [],
    graph: [],
  };
}
