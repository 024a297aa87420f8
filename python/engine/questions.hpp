#pragma once

#include <cstdint>

#include "arrays.hpp"
#include "found.hpp"
#include "rows.hpp"
#include "watch.hpp"

/// \file
/// What can be asked of rules that were found. Rules are named by their places in `Found::rules`.
namespace binding {

/// How each history that holds all items of a rule counts for it, whether the rule is listed or
/// not: the columns `history`, `counts`, `time` and `complete`, the time at which the last item of
/// the antecedent had occurred, and `miss`, the place of the reason among those of the engine; and
/// the numbers `count` and `reverse_count`.
Columns explain(const quarvis::mining::HistoryIndex& index, const Column<std::uint32_t>& antecedent,
                const Column<std::uint32_t>& subsequent, std::uint64_t window);

/// Of each of the rules: the least lag, the least one that half of the counted histories do not
/// exceed, likewise nine tenths, and the greatest, as `least`, `median`, `percentile90` and
/// `greatest`; and `reverse_count`, the count of the reverse rule.
Columns lags(const Found& found, const Column<std::int64_t>& places, std::uint64_t window,
             unsigned threads, Watch& watch);

/// By place in `places`: 1 when another one of these rules has the same subsequent, a part of the
/// antecedent and at least as great a value. `values` has one by place in `Found::rules`.
Array<std::uint8_t> redundant(const Found& found, const Column<std::int64_t>& places,
                              const Column<double>& values, Watch& watch);

/// Which of the rules are met at the time `now` in histories that are given by rows of history,
/// time and rank: all of the antecedent is recent and nothing of the subsequent, where what
/// occurred at `now` or before it, within the window, is recent. The columns `history`, `place`,
/// the place in `places`, and `complete`.
Columns match(const Found& found, const Column<std::int64_t>& places,
              const Column<std::uint32_t>& histories, const Column<std::uint64_t>& times,
              const Column<std::uint32_t>& ranks, std::uint64_t now, std::uint64_t window,
              Watch& watch);

/// By rule: the probability that of `a` histories drawn out of `n` at least `u` are among `s`
/// marked ones, Fisher's exact test of one side. The sum of the hypergeometric probabilities from u
/// on, each from the one before.
Array<double> fisher(double n, const Column<double>& a, const Column<double>& s,
                     const Column<double>& u);

}  // namespace binding
