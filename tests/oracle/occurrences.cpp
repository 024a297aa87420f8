#include "oracle/occurrences.hpp"

#include <algorithm>
#include <optional>
#include <stdexcept>

namespace oracle {

namespace {

bool hasAll(const Items& transaction, const Items& items) {
    return std::includes(transaction.begin(), transaction.end(), items.begin(), items.end());
}

/// The last time before `time` at which the item occurs.
std::optional<Time> lastBefore(Time time, const std::string& item, const History& history) {
    std::optional<Time> last;
    for (const auto& [earlier, items] : history)
        if (earlier < time && items.contains(item))
            last = earlier;
    return last;
}

/// Whether the item occurs before `time` and at most the window earlier.
bool isWithin(Time window, Time time, const std::string& item, const History& history) {
    const std::optional<Time> last = lastBefore(time, item, history);
    return last.has_value() && (window == 0 || time - *last <= window);
}

/// Why the rule does not count in the transaction at `time`; nothing when it does.
std::optional<Reason> failureAt(Time time, const Implication& rule, const History& history,
                                Time window) {
    const Items& transaction = history.at(time);
    const auto occurredBefore = [&](const std::string& item) {
        return lastBefore(time, item, history).has_value();
    };
    const auto occurredByThen = [&](const std::string& item) {
        return transaction.contains(item) || occurredBefore(item);
    };
    const auto occurredWithin = [&](const std::string& item) {
        return isWithin(window, time, item, history);
    };
    const Items& a = rule.antecedent;
    const Items& s = rule.subsequent;
    if (!hasAll(transaction, s))
        return Reason::SUBSEQUENT_APART;
    if (!std::all_of(a.begin(), a.end(), occurredByThen))
        return Reason::OTHER_ORDER;
    if (!std::all_of(a.begin(), a.end(), occurredBefore))
        return Reason::SAME_TIME;
    if (!std::all_of(a.begin(), a.end(), occurredWithin))
        return Reason::TOO_LATE;
    if (std::any_of(s.begin(), s.end(), occurredWithin))
        return Reason::NOT_NEW;
    if (hasAll(transaction, a))
        return Reason::ANTECEDENT_PRESENT;
    return std::nullopt;
}

Counted countedAt(Time time, const Implication& rule, const History& history) {
    Counted counted{.time = time, .lastTimes = {}};
    for (const std::string& item : rule.antecedent)
        counted.lastTimes.push_back(lastBefore(time, item, history).value());
    return counted;
}

std::variant<Counted, Reason> outcomeIn(const History& history, const Implication& rule,
                                        Time window) {
    Reason furthest = Reason::SUBSEQUENT_APART;
    for (const auto& [time, items] : history) {
        const std::optional<Reason> failure = failureAt(time, rule, history, window);
        if (!failure.has_value())
            return countedAt(time, rule, history);
        furthest = std::max(furthest, *failure);
    }
    return furthest;
}

Items itemsOf(const History& history) {
    Items all;
    for (const auto& [time, items] : history)
        all.insert(items.begin(), items.end());
    return all;
}

std::vector<Occurrence> occurrencesIn(const Table& table, const Implication& rule, Time window) {
    std::vector<Occurrence> occurrences;
    for (std::size_t i = 0; i < table.histories.size(); ++i) {
        const History& history = table.histories[i];
        const Items items = itemsOf(history);
        if (hasAll(items, rule.antecedent) && hasAll(items, rule.subsequent))
            occurrences.push_back({i, outcomeIn(history, rule, window)});
    }
    return occurrences;
}

std::size_t countOf(const std::vector<Occurrence>& occurrences) {
    return static_cast<std::size_t>(
        std::count_if(occurrences.begin(), occurrences.end(),
                      [](const Occurrence& occurrence) { return occurrence.counts(); }));
}

void check(const Implication& rule) {
    if (rule.antecedent.empty() || rule.subsequent.empty())
        throw std::invalid_argument("a rule with an empty side");
    for (const std::string& item : rule.antecedent)
        if (rule.subsequent.contains(item))
            throw std::invalid_argument("a rule with " + item + " on both sides");
}

}  // namespace

Occurrences occurrencesOf(const Implication& rule, const Table& table, Time window) {
    check(rule);
    Occurrences result;
    result.histories = occurrencesIn(table, rule, window);
    result.count = countOf(result.histories);
    result.reverseCount = countOf(occurrencesIn(table, {rule.subsequent, rule.antecedent}, window));
    return result;
}

std::ostream& operator<<(std::ostream& os, const Occurrence& occurrence) {
    os << occurrence.history;
    if (!occurrence.counts())
        return os << ' ' << std::get<Reason>(occurrence.outcome);
    const Counted& counted = std::get<Counted>(occurrence.outcome);
    os << " at " << counted.time << " after ";
    const char* separator = "";
    for (const Time time : counted.lastTimes) {
        os << separator << time;
        separator = ",";
    }
    return os;
}

std::ostream& operator<<(std::ostream& os, Reason reason) {
    switch (reason) {
        case Reason::SUBSEQUENT_APART:
            return os << "SUBSEQUENT_APART";
        case Reason::OTHER_ORDER:
            return os << "OTHER_ORDER";
        case Reason::SAME_TIME:
            return os << "SAME_TIME";
        case Reason::TOO_LATE:
            return os << "TOO_LATE";
        case Reason::NOT_NEW:
            return os << "NOT_NEW";
        case Reason::ANTECEDENT_PRESENT:
            return os << "ANTECEDENT_PRESENT";
    }
    return os;
}

}  // namespace oracle
