#include "rows.hpp"

#include <algorithm>
#include <mutex>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <quarvis/transaction_reader.hpp>

namespace binding {

using quarvis::mining::Code;
using quarvis::mining::Dictionary;
using quarvis::mining::HistoryIndex;

namespace {

Dictionary dictionaryOf(const Column<std::int64_t>& nameOffsets,
                        const Column<std::uint8_t>& nameBytes) {
    Dictionary names;
    const std::span offsets = valuesOf(nameOffsets);
    const std::string_view bytes(reinterpret_cast<const char*>(nameBytes.data()), nameBytes.size());
    for (std::size_t name = 0; name + 1 < offsets.size(); ++name) {
        const auto begin = static_cast<std::size_t>(offsets[name]);
        const auto end = static_cast<std::size_t>(offsets[name + 1]);
        if (begin > end || end > bytes.size())
            throw std::invalid_argument("offsets of names that are out of range");
        names.add(bytes.substr(begin, end - begin));
    }
    if (names.size() + 1 != std::max<std::size_t>(offsets.size(), 1))
        throw std::invalid_argument("a name that comes twice");
    return names;
}

}  // namespace

Rows::Rows(Column<std::uint32_t> entities, TimeColumn times, Column<std::uint32_t> items,
           std::size_t histories, const Column<std::int64_t>& nameOffsets,
           const Column<std::uint8_t>& nameBytes)
    : m_entities(std::move(entities)),
      m_times(std::move(times)),
      m_items(std::move(items)),
      m_histories(histories),
      m_names(dictionaryOf(nameOffsets, nameBytes)) {}

IndexPointer Rows::index(std::uint32_t minCount, Watch& watch) const {
    return watch.runInTime([&] {
        return std::visit(
            [&](const auto& times) {
                return std::make_shared<const HistoryIndex>(quarvis::mining::indexColumns(
                    valuesOf(m_entities), valuesOf(times), valuesOf(m_items), m_histories, m_names,
                    minCount, watch));
            },
            m_times);
    });
}

IndexPointer Rows::shard() const {
    const nb::gil_scoped_release released;
    return std::visit(
        [&](const auto& times) {
            return std::make_shared<const HistoryIndex>(quarvis::mining::shardColumns(
                valuesOf(m_entities), valuesOf(times), valuesOf(m_items), m_histories, m_names));
        },
        m_times);
}

IndexPointer itemIndex(const Column<std::int64_t>& nameOffsets,
                       const Column<std::uint8_t>& nameBytes, const Column<std::uint32_t>& counts,
                       std::uint32_t minCount) {
    return std::make_shared<const HistoryIndex>(quarvis::mining::indexOfItems(
        dictionaryOf(nameOffsets, nameBytes), valuesOf(counts), minCount));
}

namespace {

Strings namesOf(const Dictionary& dictionary) {
    Strings names;
    for (std::uint32_t code = 0; code < dictionary.size(); ++code)
        names.add(dictionary.name(Code{code}));
    return names;
}

}  // namespace

Columns readTransactions(const std::string& path) {
    std::vector<std::uint32_t> entities;
    std::vector<std::uint32_t> times;
    std::vector<std::uint32_t> items;
    Dictionary entityNames;
    Dictionary itemNames;
    {
        const nb::gil_scoped_release released;
        // The readers share the registry of managed memory, which belongs to one thread at a time.
        static std::mutex reading;
        const std::lock_guard lock(reading);
        quarvis::rule::TransactionFile file(path);
        quarvis::rule::TransactionReader rows(file.stream(), '\t');
        const auto put = [&](Code entity, Code item) {
            entities.push_back(static_cast<std::uint32_t>(entity));
            times.push_back(rows.time());
            items.push_back(static_cast<std::uint32_t>(item));
        };
        while (rows.next()) {
            const Code entity = entityNames.add(rows.entity());
            for (const std::string_view item : rows.items())
                put(entity, itemNames.add(item));
            if (rows.items().empty())
                put(entity, quarvis::mining::NO_ITEM);
        }
    }
    Columns columns;
    columns["entities"] = arrayOf(std::move(entities));
    columns["times"] = arrayOf(std::move(times));
    columns["items"] = arrayOf(std::move(items));
    columns["entity_names"] = toPython(namesOf(entityNames));
    columns["item_names"] = toPython(namesOf(itemNames));
    return columns;
}

}  // namespace binding
