import type { RuleId, Rules } from "./rules";

/**
 * The rules by ascending value, ties in the order of the page; NaN comes last. Replaces values by
 * their ranks among the distinct values and then uses a counting sort, which is stable and faster
 * than a sort by comparisons.
 */
export function orderByValue(values: Float64Array): Uint32Array {
  const different = values.slice().sort();
  let count = 0;
  for (let i = 0; i < different.length; ++i)
    if (i === 0 || !Object.is(different[i], different[count - 1]))
      different[count++] = different[i]!;
  const places = new Uint32Array(values.length);
  for (let i = 0; i < values.length; ++i) places[i] = placeOf(values[i]!, different, count);
  return orderByPlace(places, count);
}

/** The rules by antecedent, then by consequent, each in the order of the names of its items. */
export function orderByName(rules: Rules): Uint32Array {
  const sets = sideOrder(rules);
  const keys = new Float64Array(rules.size);
  for (let rule = 0; rule < keys.length; ++rule)
    keys[rule] = sets[rules.antecedent[rule]!]! * rules.setCount + sets[rules.consequent[rule]!]!;
  return orderByValue(keys);
}

/** The order reversed, but with ties still in the order of the page. */
export function descending(order: Uint32Array, values: Float64Array | null): Uint32Array {
  const found = new Uint32Array(order.length);
  let end = order.length;
  let filled = 0;
  while (end > 0) {
    let begin = end - 1;
    while (begin > 0 && values && Object.is(values[order[begin - 1]!], values[order[end - 1]!]))
      --begin;
    for (let place = begin; place < end; ++place) found[filled++] = order[place]!;
    end = begin;
  }
  return found;
}

function placeOf(value: number, sorted: Float64Array, count: number): number {
  if (Number.isNaN(value)) return count - 1;
  let begin = 0;
  let end = count - 1;
  while (begin < end) {
    const middle = (begin + end) >> 1;
    if (sorted[middle]! >= value || Number.isNaN(sorted[middle])) end = middle;
    else begin = middle + 1;
  }
  return begin;
}

function orderByPlace(places: Uint32Array, count: number): Uint32Array {
  const next = new Uint32Array(count + 1);
  for (const place of places) ++next[place + 1]!;
  for (let place = 0; place < count; ++place) next[place + 1]! += next[place]!;
  const order = new Uint32Array(places.length);
  for (let rule: RuleId = 0; rule < places.length; ++rule) order[next[places[rule]!]!++] = rule;
  return order;
}

/** For each side, its place among all sides when sorted by the names of their items. */
function sideOrder(rules: Rules): Uint32Array {
  const { members, begin } = rules;
  const ranks = rankByName(rules.items);
  const ranked = Uint32Array.from(members, (item) => ranks[item]!);
  const compare = (one: number, other: number): number => {
    const end = begin[one + 1]!;
    const otherEnd = begin[other + 1]!;
    let place = begin[one]!;
    let otherPlace = begin[other]!;
    for (; place < end && otherPlace < otherEnd; ++place, ++otherPlace)
      if (ranked[place] !== ranked[otherPlace]) return ranked[place]! - ranked[otherPlace]!;
    return end - place - (otherEnd - otherPlace);
  };
  return placesOf(Uint32Array.from({ length: rules.setCount }, (_, set) => set).sort(compare));
}

/** For each name, its place among all names when sorted. */
function rankByName(names: readonly string[]): Uint32Array {
  const sorted = Uint32Array.from(names, (_, place) => place);
  sorted.sort((one, other) => (names[one]! < names[other]! ? -1 : 1));
  return placesOf(sorted);
}

/** Inverts an order: returns, for each number, its place. */
function placesOf(order: Uint32Array): Uint32Array {
  const places = new Uint32Array(order.length);
  order.forEach((number, place) => (places[number] = place));
  return places;
}
