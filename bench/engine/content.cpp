#include "content.hpp"

#include <algorithm>
#include <numeric>
#include <string>
#include <string_view>
#include <vector>

#include "support/digest.hpp"

namespace bench {

namespace {

using quarvis::mining::Code;
using quarvis::mining::HistoryId;
using quarvis::mining::Rank;

/// Visits the histories in byte order of their entities.
class ContentDigest {
  public:
    void entity(std::string_view name) { m_digest.add(std::string(name)); }
    void transaction(std::uint64_t time) { m_digest.add(time); }
    void item(std::string_view name) {
        m_digest.add(std::string(name));
        ++m_occurrences;
    }

    Content content() const { return {m_digest.value(), m_occurrences}; }

  private:
    Digest m_digest;
    std::size_t m_occurrences = 0;
};

/// The numbers of `count` names, in byte order of the names.
template <class Name>
std::vector<std::uint32_t> sortedByName(std::size_t count, Name name) {
    std::vector<std::uint32_t> order(count);
    std::iota(order.begin(), order.end(), 0U);
    std::sort(order.begin(), order.end(),
              [&](std::uint32_t a, std::uint32_t b) { return name(a) < name(b); });
    return order;
}

template <class Histories>
Content contentOfTree(const Histories& histories) {
    ContentDigest digest;
    for (const auto& [entity, history] : histories) {
        digest.entity(entity);
        for (const auto& [time, items] : history) {
            if (items.begin() == items.end())
                continue;
            digest.transaction(time);
            for (const auto& item : items)
                digest.item(item);
        }
    }
    return digest.content();
}

}  // namespace

Content digested(const IndexedHistories& histories) {
    const auto& [builder, index] = histories;
    const auto name = [&entities = builder.entities()](std::uint32_t entity) {
        return entities.name(Code{entity});
    };
    ContentDigest digest;
    for (const std::uint32_t entity : sortedByName(index.historyCount(), name)) {
        digest.entity(name(entity));
        const HistoryId id{entity};
        for (std::size_t place = index.firstTransaction(id); place < index.endTransaction(id);
             ++place) {
            digest.transaction(index.time(place));
            for (const Rank item : index.items(place))
                digest.item(index.name(item));
        }
    }
    return digest.content();
}

Content digested(const FlatHistories& histories) {
    const auto name = [&](std::uint32_t entity) -> const std::string& {
        return histories.entities[entity];
    };
    ContentDigest digest;
    for (const std::uint32_t entity : sortedByName(histories.entities.size(), name)) {
        digest.entity(name(entity));
        const FlatHistories::Row first{entity, 0, 0};
        auto row = std::lower_bound(histories.rows.begin(), histories.rows.end(), first);
        bool fresh = true;
        for (std::uint32_t time = 0; row != histories.rows.end() && row->entity == entity; ++row) {
            if (fresh || row->time != time)
                digest.transaction(row->time);
            fresh = false;
            time = row->time;
            digest.item(histories.items[row->item]);
        }
    }
    return digest.content();
}

Content digested(const PlainHistories& histories) {
    return contentOfTree(histories);
}

Content digested(const quarvis::rule::TransactionSet& histories) {
    return contentOfTree(histories);
}

}  // namespace bench
