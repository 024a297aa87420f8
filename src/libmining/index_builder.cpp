#include <quarvis/mining/index_builder.hpp>

#include <limits>
#include <stdexcept>
#include <utility>

#include "index_assembly.hpp"
#include "index_parts.hpp"
#include "name_hash.hpp"
#include "run_control.hpp"

namespace quarvis::mining {

/// Reads the rows of a builder.
class BuilderRows {
  public:
    explicit BuilderRows(IndexBuilder& builder) : m_builder(builder) {}

    /// Calls `visit(entity, time, item)` for each item of each row, and once with NO_ITEM for a row
    /// without items. With `consume`, each block is freed as soon as it is read.
    template <class Visit>
    void forEach(bool consume, Visit visit) {
        const bool wide = m_builder.m_timeWidth == TimeWidth::BITS_64;
        std::uint64_t time = 0;
        std::uint32_t entity = 0;
        enum class Next { ENTITY, LOW_TIME, HIGH_TIME, ITEM } next = Next::ENTITY;
        for (std::vector<std::uint32_t>& block : m_builder.m_blocks) {
            const std::size_t left = &block == &m_builder.m_blocks.back() ? m_builder.m_left : 0;
            for (std::size_t i = 0; i + left < block.size(); ++i) {
                const std::uint32_t word = block[i];
                switch (next) {
                    case Next::ENTITY:
                        entity = word;
                        next = Next::LOW_TIME;
                        break;
                    case Next::LOW_TIME:
                        time = word;
                        next = wide ? Next::HIGH_TIME : Next::ITEM;
                        break;
                    case Next::HIGH_TIME:
                        time |= std::uint64_t{word} << 32;
                        next = Next::ITEM;
                        break;
                    case Next::ITEM:
                        visit(entity, time,
                              Code{word} == NO_ITEM ? NO_ITEM : Code{word & ~IndexBuilder::LAST});
                        next = (word & IndexBuilder::LAST) != 0 ? Next::ENTITY : Next::ITEM;
                        break;
                }
            }
            if (consume)
                std::vector<std::uint32_t>().swap(block);
        }
    }

    template <class Time>
    HistoryIndex freeze(std::uint32_t minCount) {
        RowsByHistory<Time> rows(m_builder.m_entities.size());
        forEach(false, [&rows](std::size_t entity, std::uint64_t, Code) { rows.announce(entity); });
        rows.makeRoom();
        forEach(true, [&rows](std::size_t entity, std::uint64_t time, Code item) {
            rows.put(entity, static_cast<Time>(time), item);
        });
        return assembleIndex(std::move(rows), m_builder.m_items, ItemChoice::ofCount(minCount));
    }

  private:
    IndexBuilder& m_builder;
};

IndexBuilder::IndexBuilder(TimeWidth timeWidth) : m_timeWidth(timeWidth) {}

void IndexBuilder::m_newBlock() {
    const std::size_t size = m_blocks.empty() ? FIRST_BLOCK : BLOCK;
    m_blocks.emplace_back(size);
    m_next = m_blocks.back().data();
    m_left = size;
}

void IndexBuilder::m_endRow() {
    if (m_entity == NO_ITEM)
        return;
    m_put(m_item == NO_ITEM ? static_cast<std::uint32_t>(NO_ITEM)
                            : static_cast<std::uint32_t>(m_item) | LAST);
    m_entity = NO_ITEM;
    m_item = NO_ITEM;
}

void IndexBuilder::beginRow(std::string_view entity, std::uint64_t time) {
    if (m_timeWidth == TimeWidth::BITS_32 && time > std::numeric_limits<std::uint32_t>::max())
        throw std::out_of_range("a time of more than 32 bits");
    const bool known = m_entity != NO_ITEM && sameName(m_entities.name(m_entity), entity);
    if (known && time == m_time)
        return;
    const Code code = known ? m_entity : m_entities.add(entity);
    m_endRow();
    m_entity = code;
    m_time = time;
    m_put(static_cast<std::uint32_t>(code));
    m_put(static_cast<std::uint32_t>(time));
    if (m_timeWidth == TimeWidth::BITS_64)
        m_put(static_cast<std::uint32_t>(time >> 32));
}

void IndexBuilder::addItem(std::string_view item) {
    assert(m_entity != NO_ITEM);
    const Code code = m_items.add(item);
    if (m_item != NO_ITEM)
        m_put(static_cast<std::uint32_t>(m_item));
    m_item = code;
}

HistoryIndex IndexBuilder::freeze(std::uint32_t minCount) {
    m_endRow();
    BuilderRows rows(*this);
    HistoryIndex index = m_timeWidth == TimeWidth::BITS_32 ? rows.freeze<std::uint32_t>(minCount)
                                                           : rows.freeze<std::uint64_t>(minCount);
    m_blocks.clear();
    m_left = 0;
    return index;
}

namespace {

template <class Time>
HistoryIndex indexOf(std::span<const std::uint32_t> entities, std::span<const Time> times,
                     std::span<const std::uint32_t> items, std::size_t historyCount,
                     const Dictionary& names, ItemChoice choice, const Observer& observer) {
    if (times.size() != entities.size() || items.size() != entities.size())
        throw std::invalid_argument("columns of different lengths");
    constexpr std::uint64_t rowCost = 2;
    Meter meter{Budget()};
    Step step(observer, meter);
    Work work(step);
    RowsByHistory<Time> rows(historyCount);
    for (std::size_t row = 0; row < entities.size(); ++row) {
        work.add(rowCost);
        if (entities[row] >= historyCount)
            throw std::invalid_argument("an entity that is out of range");
        if (items[row] >= names.size() && Code{items[row]} != NO_ITEM)
            throw std::invalid_argument("an item that is out of range");
        rows.announce(entities[row]);
    }
    rows.makeRoom();
    for (std::size_t row = 0; row < entities.size(); ++row) {
        work.add(rowCost);
        rows.put(entities[row], times[row], Code{items[row]});
    }
    return assembleIndex(std::move(rows), names, choice, &work);
}

}  // namespace

HistoryIndex indexColumns(std::span<const std::uint32_t> entities,
                          std::span<const std::uint32_t> times,
                          std::span<const std::uint32_t> items, std::size_t historyCount,
                          const Dictionary& names, std::uint32_t minCount,
                          const Observer& observer) {
    return indexOf(entities, times, items, historyCount, names, ItemChoice::ofCount(minCount),
                   observer);
}

HistoryIndex indexColumns(std::span<const std::uint32_t> entities,
                          std::span<const std::uint64_t> times,
                          std::span<const std::uint32_t> items, std::size_t historyCount,
                          const Dictionary& names, std::uint32_t minCount,
                          const Observer& observer) {
    return indexOf(entities, times, items, historyCount, names, ItemChoice::ofCount(minCount),
                   observer);
}

HistoryIndex shardColumns(std::span<const std::uint32_t> entities,
                          std::span<const std::uint32_t> times,
                          std::span<const std::uint32_t> items, std::size_t historyCount,
                          const Dictionary& names, const Observer& observer) {
    return indexOf(entities, times, items, historyCount, names, ItemChoice::all(), observer);
}

HistoryIndex shardColumns(std::span<const std::uint32_t> entities,
                          std::span<const std::uint64_t> times,
                          std::span<const std::uint32_t> items, std::size_t historyCount,
                          const Dictionary& names, const Observer& observer) {
    return indexOf(entities, times, items, historyCount, names, ItemChoice::all(), observer);
}

HistoryIndex indexOfItems(const Dictionary& names, std::span<const std::uint32_t> counts,
                          std::uint32_t minCount) {
    if (counts.size() != names.size())
        throw std::invalid_argument("columns of different lengths");
    HistoryIndex made;
    IndexParts index(made);
    index.minCount = minCount;
    for (std::uint32_t code = 0; code < names.size(); ++code) {
        if (code > 0 && names.name(Code{code - 1}) >= names.name(Code{code}))
            throw std::invalid_argument("names that are not in order");
        if (counts[code] < minCount)
            throw std::invalid_argument("an item of too few histories");
        index.names += names.name(Code{code});
        index.nameBegin.push_back(index.names.size());
        index.counts.push_back(counts[code]);
    }
    return made;
}

}  // namespace quarvis::mining
