#include "questions.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <stdexcept>
#include <vector>

#include <quarvis/mining/occurrences.hpp>

#include "each_rule.hpp"
#include "item_times.hpp"

namespace binding {

using quarvis::mining::HistoryIndex;
using quarvis::mining::Occurrence;
using quarvis::mining::Occurrences;
using quarvis::mining::Rank;
using quarvis::mining::Rule;

namespace {

std::vector<Rank> ranksOf(const Column<std::uint32_t>& column) {
    std::vector<Rank> ranks;
    for (const std::uint32_t rank : valuesOf(column))
        ranks.push_back(Rank{rank});
    return ranks;
}

void checkPlaces(const Found& found, const Column<std::int64_t>& places) {
    for (const std::int64_t place : valuesOf(places))
        if (place < 0 || static_cast<std::size_t>(place) >= found.rules.size())
            throw std::invalid_argument("a rule that is not there");
}

Rule ruleAt(const Found& found, const Column<std::int64_t>& places, std::size_t place) {
    return found.rules[static_cast<std::size_t>(places.data()[place])];
}

}  // namespace

Columns explain(const HistoryIndex& index, const Column<std::uint32_t>& antecedent,
                const Column<std::uint32_t>& subsequent, std::uint64_t window) {
    Occurrences occurrences;
    std::vector<std::uint32_t> histories;
    std::vector<std::uint8_t> counts;
    std::vector<std::uint64_t> times;
    std::vector<std::uint64_t> complete;
    std::vector<std::uint8_t> misses;
    {
        const std::vector<Rank> first = ranksOf(antecedent);
        const std::vector<Rank> second = ranksOf(subsequent);
        const nb::gil_scoped_release released;
        occurrences = findOccurrences(index, first, second, window);
        for (std::size_t place = 0; place < occurrences.size(); ++place) {
            const Occurrence occurrence = occurrences[place];
            histories.push_back(static_cast<std::uint32_t>(occurrence.history));
            counts.push_back(occurrence.counts ? 1 : 0);
            times.push_back(occurrence.counts ? occurrence.time : 0);
            complete.push_back(occurrence.counts ? *std::max_element(occurrence.lastTimes.begin(),
                                                                     occurrence.lastTimes.end())
                                                 : 0);
            misses.push_back(occurrence.counts ? 0 : static_cast<std::uint8_t>(occurrence.miss));
        }
    }
    Columns columns;
    columns["history"] = arrayOf(std::move(histories));
    columns["counts"] = arrayOf(std::move(counts));
    columns["time"] = arrayOf(std::move(times));
    columns["complete"] = arrayOf(std::move(complete));
    columns["miss"] = arrayOf(std::move(misses));
    columns["count"] = occurrences.count();
    columns["reverse_count"] = occurrences.reverseCount();
    return columns;
}

Columns lags(const Found& found, const Column<std::int64_t>& places, std::uint64_t window,
             unsigned threads, Watch& watch) {
    checkPlaces(found, places);
    const std::size_t rules = places.size();
    std::vector<std::uint64_t> least(rules);
    std::vector<std::uint64_t> median(rules);
    std::vector<std::uint64_t> percentile90(rules);
    std::vector<std::uint64_t> greatest(rules);
    std::vector<std::uint32_t> reverse(rules);
    watch.run([&] {
        watch.beginStep("lags");
        const ItemTimes times(*found.index);
        forEachPlace(rules, threads, watch, [&] {
            return [&, search = RuleTimesSearch(times, window)](std::size_t place) mutable {
                const RuleTimes rule = search.find(ruleAt(found, places, place));
                reverse[place] = rule.reverseCount;
                if (rule.lags.empty())
                    return;
                // The least lag that at least this many tenths of the histories do not exceed.
                const auto tenths = [&rule](std::size_t part) {
                    return rule.lags[(rule.lags.size() * part + 9) / 10 - 1];
                };
                least[place] = rule.lags.front();
                median[place] = tenths(5);
                percentile90[place] = tenths(9);
                greatest[place] = rule.lags.back();
            };
        });
    });
    Columns columns;
    columns["least"] = arrayOf(std::move(least));
    columns["median"] = arrayOf(std::move(median));
    columns["percentile90"] = arrayOf(std::move(percentile90));
    columns["greatest"] = arrayOf(std::move(greatest));
    columns["reverse_count"] = arrayOf(std::move(reverse));
    return columns;
}

namespace {

using Side = std::vector<Rank>;

Side sideOf(std::span<const Rank> ranks) {
    return {ranks.begin(), ranks.end()};
}

/// The rules with the same subsequent: their places by antecedent.
using Group = std::map<Side, std::size_t>;

/// Whether a proper, non-empty subset of the antecedent is in the group and passes the test.
template <class Test>
bool anyPart(const Group& group, const Side& antecedent, Test test) {
    const bool fewParts =
        antecedent.size() < 20 && (std::size_t{1} << antecedent.size()) <= 4 * group.size();
    if (!fewParts)
        return std::any_of(group.begin(), group.end(), [&](const auto& other) {
            return other.first.size() < antecedent.size() &&
                   std::includes(antecedent.begin(), antecedent.end(), other.first.begin(),
                                 other.first.end()) &&
                   test(other.second);
        });
    const std::size_t all = (std::size_t{1} << antecedent.size()) - 1;
    Side part;
    for (std::size_t mask = 1; mask < all; ++mask) {
        part.clear();
        for (std::size_t i = 0; i < antecedent.size(); ++i)
            if (mask >> i & 1)
                part.push_back(antecedent[i]);
        const auto other = group.find(part);
        if (other != group.end() && test(other->second))
            return true;
    }
    return false;
}

}  // namespace

Array<std::uint8_t> redundant(const Found& found, const Column<std::int64_t>& places,
                              const Column<double>& values, Watch& watch) {
    checkPlaces(found, places);
    if (values.size() != found.rules.size())
        throw std::invalid_argument("values of another length");
    std::vector<std::uint8_t> marks(places.size());
    watch.run([&] {
        std::map<Side, Group> groups;
        for (std::size_t place = 0; place < places.size(); ++place) {
            watch.endIfAsked();
            const Rule rule = ruleAt(found, places, place);
            groups[sideOf(rule.subsequent)][sideOf(rule.antecedent)] = place;
        }
        const auto valueAt = [&](std::size_t place) { return values.data()[places.data()[place]]; };
        for (const auto& [subsequent, group] : groups)
            for (const auto& [antecedent, place] : group) {
                watch.endIfAsked();
                const double value = valueAt(place);
                marks[place] = anyPart(group, antecedent,
                                       [&](std::size_t other) { return valueAt(other) >= value; });
            }
    });
    return arrayOf(std::move(marks));
}

Columns match(const Found& found, const Column<std::int64_t>& places,
              const Column<std::uint32_t>& histories, const Column<std::uint64_t>& times,
              const Column<std::uint32_t>& ranks, std::uint64_t now, std::uint64_t window,
              Watch& watch) {
    checkPlaces(found, places);
    const std::size_t items = found.index->itemCount();
    if (times.size() != histories.size() || ranks.size() != histories.size())
        throw std::invalid_argument("columns of different lengths");
    std::vector<std::uint32_t> inHistories;
    std::vector<std::int64_t> met;
    std::vector<std::uint64_t> complete;
    watch.run([&] {
        // The rules by one item of their antecedents, the one that is in the fewest histories.
        std::vector<std::vector<std::size_t>> rulesOf(items);
        for (std::size_t place = 0; place < places.size(); ++place) {
            const Rule rule = ruleAt(found, places, place);
            const Rank rarest = *std::min_element(
                rule.antecedent.begin(), rule.antecedent.end(),
                [&](Rank a, Rank b) { return found.index->count(a) < found.index->count(b); });
            rulesOf[at(rarest)].push_back(place);
        }
        std::vector<std::size_t> order(histories.size());
        for (std::size_t row = 0; row < order.size(); ++row)
            order[row] = row;
        std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
            return histories.data()[a] < histories.data()[b];
        });
        std::vector<std::uint64_t> last(items);
        std::vector<bool> isRecent(items);
        std::vector<std::uint32_t> recent;
        std::vector<std::size_t> here;
        for (std::size_t begin = 0; begin < order.size();) {
            watch.endIfAsked();
            const std::uint32_t history = histories.data()[order[begin]];
            std::size_t end = begin;
            recent.clear();
            here.clear();
            for (; end < order.size() && histories.data()[order[end]] == history; ++end) {
                const std::uint64_t time = times.data()[order[end]];
                const std::uint32_t rank = ranks.data()[order[end]];
                if (rank >= items)
                    throw std::invalid_argument("an item that is not there");
                if (time > now || (window != 0 && now - time > window))
                    continue;
                if (!isRecent[rank]) {
                    isRecent[rank] = true;
                    last[rank] = time;
                    recent.push_back(rank);
                }
                last[rank] = std::max(last[rank], time);
            }
            const auto isSet = [&](Rank item) { return isRecent[at(item)]; };
            for (const std::uint32_t rank : recent)
                for (const std::size_t place : rulesOf[rank]) {
                    const Rule rule = ruleAt(found, places, place);
                    if (std::all_of(rule.antecedent.begin(), rule.antecedent.end(), isSet) &&
                        std::none_of(rule.subsequent.begin(), rule.subsequent.end(), isSet))
                        here.push_back(place);
                }
            std::sort(here.begin(), here.end());
            for (const std::size_t place : here) {
                std::uint64_t since = 0;
                for (const Rank item : ruleAt(found, places, place).antecedent)
                    since = std::max(since, last[at(item)]);
                inHistories.push_back(history);
                met.push_back(static_cast<std::int64_t>(place));
                complete.push_back(since);
            }
            for (const std::uint32_t rank : recent)
                isRecent[rank] = false;
            begin = end;
        }
    });
    Columns columns;
    columns["history"] = arrayOf(std::move(inHistories));
    columns["place"] = arrayOf(std::move(met));
    columns["complete"] = arrayOf(std::move(complete));
    return columns;
}

Array<double> fisher(double n, const Column<double>& a, const Column<double>& s,
                     const Column<double>& u) {
    if (s.size() != a.size() || u.size() != a.size())
        throw std::invalid_argument("columns of different lengths");
    std::vector<double> tails(a.size());
    {
        const nb::gil_scoped_release released;
        const auto logChoose = [](double of, double some) {
            return std::lgamma(of + 1) - std::lgamma(some + 1) - std::lgamma(of - some + 1);
        };
        for (std::size_t rule = 0; rule < tails.size(); ++rule) {
            const double drawn = a.data()[rule];
            const double marked = s.data()[rule];
            const double most = std::min(drawn, marked);
            double k = std::max(u.data()[rule], drawn + marked - n);
            const double first =
                logChoose(marked, k) + logChoose(n - marked, drawn - k) - logChoose(n, drawn);
            // The terms are relative to the first one, which may underflow by itself.
            double term = 1;
            double sum = 0;
            for (; k <= most && term > sum * std::numeric_limits<double>::epsilon() / 4; ++k) {
                sum += term;
                term *= (marked - k) / (k + 1) * ((drawn - k) / (n - marked - drawn + k + 1));
            }
            tails[rule] = std::min(1.0, std::exp(first + std::log(sum)));
        }
    }
    return arrayOf(std::move(tails));
}

}  // namespace binding
