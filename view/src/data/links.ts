import type { ItemId, RuleId, Rules } from "./rules";

/** A link from one item to another: the strongest rule with the two on these sides. */
export interface Link {
  from: ItemId;
  to: ItemId;
  rule: RuleId;
  /** The value of that rule. */
  strength: number;
  /** The number of rules with the two items on these sides. */
  rules: number;
}

/**
 * The links of some items: for each item, the `most` strongest to or from other items, and all
 * links among the items themselves. Only marked rules make links. Sorted by strength, greatest
 * first.
 */
export function linksOf(
  rules: Rules,
  items: readonly ItemId[],
  values: Float64Array,
  marks: Uint8Array,
  most: number,
): Link[] {
  const wanted = new Set(items);
  const found = new Map<number, Link>();
  const sets = rules.setsWith((item) => wanted.has(item));
  for (let rule = 0; rule < rules.size; ++rule) {
    if (!marks[rule] || !(sets[rules.antecedent[rule]!] || sets[rules.consequent[rule]!])) continue;
    const strength = values[rule]!;
    for (const from of rules.antecedentItems(rule))
      for (const to of rules.consequentItems(rule)) {
        if (!wanted.has(from) && !wanted.has(to)) continue;
        const key = from * rules.items.length + to;
        const link = found.get(key);
        if (!link) found.set(key, { from, to, rule, strength, rules: 1 });
        else {
          ++link.rules;
          if (strength > link.strength) Object.assign(link, { strength, rule });
        }
      }
  }
  const all = [...found.values()].sort(
    (one, other) => other.strength - one.strength || one.rule - other.rule,
  );
  const used = new Map<ItemId, number>();
  return all.filter(({ from, to }) => {
    if (wanted.has(from) && wanted.has(to)) return true;
    const center = wanted.has(from) ? from : to;
    const count = used.get(center) ?? 0;
    used.set(center, count + 1);
    return count < most;
  });
}
