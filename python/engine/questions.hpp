#pragma once

#include <cstdint>

#include "arrays.hpp"
#include "found.hpp"
#include "rows.hpp"
#include "watch.hpp"

/// \file
/// Questions about rules that were found. A rule is given by its place in `Found::rules`.
namespace binding {

/// Explains a rule, which need not have been found, for each history that holds all of its items.
/// The columns are `history`; `counts`; `time`, that of the first transaction that counts;
/// `complete`, the time of the last item of the antecedent before it; and `miss`, the number of
/// the reason why the rule does not count. `count` and `reverse_count` are numbers.
Columns explain(const quarvis::mining::HistoryIndex& index, const Column<std::uint32_t>& antecedent,
                const Column<std::uint32_t>& subsequent, std::uint64_t window);

/// For each of the rules, the lags `least`, `median`, `percentile90` and `greatest`, and
/// `reverse_count`, the count of the reverse rule. `median` and `percentile90` are the least lags
/// that half and nine tenths of the counted histories do not exceed.
Columns lags(const Found& found, const Column<std::int64_t>& places, std::uint64_t window,
             unsigned threads, Watch& watch);

/// For each of the rules, 1 if another of them has the same subsequent, a proper subset of the
/// antecedent and at least as great a value, otherwise 0. `values` has a value for each rule of
/// `Found::rules`.
Array<std::uint8_t> redundant(const Found& found, const Column<std::int64_t>& places,
                              const Column<double>& values, Watch& watch);

/// Finds the rules that match histories at the time `now`. The histories are given by rows of
/// history, time and rank. An item is recent if it occurred at `now` or before, within the window.
/// A rule matches if all of its antecedent is recent and nothing of its subsequent is. The columns
/// are `history`, `place`, an index into `places`, and `complete`, as for `explain`.
Columns match(const Found& found, const Column<std::int64_t>& places,
              const Column<std::uint32_t>& histories, const Column<std::uint64_t>& times,
              const Column<std::uint32_t>& ranks, std::uint64_t now, std::uint64_t window,
              Watch& watch);

/// For each rule, the p-value of Fisher's one-sided exact test: the probability that of `a`
/// histories drawn from `n`, at least `u` are among `s` marked ones. Sums the hypergeometric
/// probabilities from u on, each computed from the one before.
Array<double> fisher(double n, const Column<double>& a, const Column<double>& s,
                     const Column<double>& u);

}  // namespace binding
