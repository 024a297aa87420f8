#include <quarvis/mining/index_bytes.hpp>

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <vector>

#include "byte_arrays.hpp"
#include "index_parts.hpp"

namespace quarvis::mining {

namespace {

constexpr char MAGIC[8] = {'Q', 'V', 'I', 'N', 'D', 'E', 'X', '\0'};
constexpr std::uint64_t VERSION = 1;

/// The numbers of the header after its letters, in order.
enum Head : std::size_t {
    HEAD_VERSION,
    HEAD_TIME_BYTES,
    HEAD_MIN_COUNT,
    HEAD_ALL_TRANSACTIONS,
    HEAD_ITEMS,
    HEAD_NAME_BYTES,
    HEAD_HISTORIES,
    HEAD_TRANSACTIONS,
    HEAD_OCCURRENCES,
    HEAD_SIZE,
};

/// Says what is wrong with the bytes.
class Damage : public IndexFormatError {
  public:
    explicit Damage(const char* what)
        : IndexFormatError(std::string("not a history index: ") + what) {}
};

using Reader = ByteReader<Damage>;

void require(bool holds, const char* what) {
    Reader::require(holds, what);
}

/// Whether these are the beginnings of the parts of an array of `size` elements, and its end.
template <class Offsets>
bool areOffsets(const Offsets& offsets, std::size_t size) {
    return offsets.front() == 0 && offsets.back() == size &&
           std::is_sorted(offsets.begin(), offsets.end());
}

template <class Numbers>
bool ascend(const Numbers& numbers, std::size_t begin, std::size_t end) {
    for (std::size_t i = begin + 1; i < end; ++i)
        if (numbers[i - 1] >= numbers[i])
            return false;
    return true;
}

void checkItems(const HistoryIndex& index, const IndexParts& parts) {
    require(areOffsets(parts.nameBegin, parts.names.size()), "its names are in disorder");
    for (std::uint32_t item = 1; item < index.itemCount(); ++item)
        require(index.name(Rank{item - 1}) < index.name(Rank{item}), "its names are in disorder");
    require(std::all_of(parts.counts.begin(), parts.counts.end(),
                        [&parts](std::uint32_t count) { return count >= parts.minCount; }),
            "its counts are too low");
}

void checkHistories(const IndexParts& parts, std::size_t transactions) {
    require(areOffsets(parts.historyBegin, transactions), "its histories are in disorder");
    for (std::size_t history = 0; history + 1 < parts.historyBegin.size(); ++history) {
        const std::size_t begin = parts.historyBegin[history];
        const std::size_t end = parts.historyBegin[history + 1];
        require(parts.timeWidth == TimeWidth::BITS_32 ? ascend(parts.times32, begin, end)
                                                      : ascend(parts.times64, begin, end),
                "its times are in disorder");
    }
    require(areOffsets(parts.itemBegin, parts.items.size()), "its transactions are in disorder");
    for (std::size_t place = 0; place < transactions; ++place) {
        const std::size_t begin = parts.itemBegin[place];
        const std::size_t end = parts.itemBegin[place + 1];
        require(begin < end && ascend(parts.items, begin, end) &&
                    at(parts.items[end - 1]) < parts.counts.size(),
                "its transactions are in disorder");
    }
}

/// Checks that no item is in more histories than its count.
void checkCounts(const IndexParts& parts) {
    constexpr std::uint32_t none = std::numeric_limits<std::uint32_t>::max();
    std::vector<std::uint32_t> left = parts.counts;
    std::vector<std::uint32_t> last(left.size(), none);  // by rank: the last history with the item
    for (std::uint32_t history = 0; history + 1 < parts.historyBegin.size(); ++history) {
        const std::size_t end = parts.itemBegin[parts.historyBegin[history + 1]];
        for (std::size_t i = parts.itemBegin[parts.historyBegin[history]]; i < end; ++i) {
            const std::size_t item = at(parts.items[i]);
            if (last[item] == history)
                continue;
            require(left[item] > 0, "its counts are too low");
            last[item] = history;
            --left[item];
        }
    }
}

}  // namespace

std::string indexToBytes(const HistoryIndex& index) {
    // The parts are only read.
    const IndexParts parts(const_cast<HistoryIndex&>(index));
    ByteWriter writer;
    for (const char letter : MAGIC)
        writer.number(letter);
    writer.number(VERSION);
    writer.number(static_cast<std::uint64_t>(parts.timeWidth));
    writer.number(std::uint64_t{parts.minCount});
    writer.number(parts.transactionCount);
    for (const std::size_t size :
         {parts.counts.size(), parts.names.size(), parts.historyBegin.size() - 1,
          parts.itemBegin.size() - 1, parts.items.size()})
        writer.number(std::uint64_t{size});
    writer.array(std::span<const std::uint64_t>(parts.nameBegin));
    writer.array(std::span<const char>(parts.names));
    writer.array(std::span<const std::uint32_t>(parts.counts));
    writer.array(std::span<const std::uint32_t>(parts.historyBegin));
    if (parts.timeWidth == TimeWidth::BITS_32)
        writer.array(std::span<const std::uint32_t>(parts.times32));
    else
        writer.array(std::span<const std::uint64_t>(parts.times64));
    writer.array(std::span<const std::uint32_t>(parts.itemBegin));
    writer.array(std::span<const Rank>(parts.items));
    return std::move(writer).finished();
}

HistoryIndex indexFromBytes(std::span<const char> bytes) {
    constexpr std::size_t sumSize = sizeof(std::uint64_t);
    require(bytes.size() >= sizeof MAGIC + sumSize, "it is cut off");
    require(std::equal(MAGIC, MAGIC + sizeof MAGIC, bytes.begin()), "its first letters are others");
    const std::span<const char> content = bytes.first(bytes.size() - sumSize);
    Reader reader(content.subspan(sizeof MAGIC));
    std::array<std::uint64_t, HEAD_SIZE> head{};
    head[HEAD_VERSION] = reader.number<std::uint64_t>();
    require(head[HEAD_VERSION] == VERSION, "its version is another");
    require(Reader(bytes.last(sumSize)).number<std::uint64_t>() == checksum(content),
            "its checksum does not agree");
    for (std::size_t i = HEAD_TIME_BYTES; i < HEAD_SIZE; ++i)
        head[i] = reader.number<std::uint64_t>();
    const auto width = static_cast<TimeWidth>(head[HEAD_TIME_BYTES]);
    require(head[HEAD_TIME_BYTES] == 4 || head[HEAD_TIME_BYTES] == 8, "its times have other sizes");
    constexpr std::uint64_t most = std::numeric_limits<std::uint32_t>::max();
    for (const Head size :
         {HEAD_MIN_COUNT, HEAD_ITEMS, HEAD_HISTORIES, HEAD_TRANSACTIONS, HEAD_OCCURRENCES})
        require(head[size] <= most, "it is too large");

    HistoryIndex index;
    IndexParts parts(index);
    parts.timeWidth = width;
    parts.minCount = static_cast<std::uint32_t>(head[HEAD_MIN_COUNT]);
    parts.transactionCount = head[HEAD_ALL_TRANSACTIONS];
    using Numbers = std::vector<std::uint32_t>;
    using WideNumbers = std::vector<std::uint64_t>;
    parts.nameBegin = reader.array<WideNumbers>(head[HEAD_ITEMS] + 1);
    parts.names = reader.array<std::string>(head[HEAD_NAME_BYTES]);
    parts.counts = reader.array<Numbers>(head[HEAD_ITEMS]);
    parts.historyBegin = reader.array<Numbers>(head[HEAD_HISTORIES] + 1);
    if (width == TimeWidth::BITS_32)
        parts.times32 = reader.array<Numbers>(head[HEAD_TRANSACTIONS]);
    else
        parts.times64 = reader.array<WideNumbers>(head[HEAD_TRANSACTIONS]);
    parts.itemBegin = reader.array<Numbers>(head[HEAD_TRANSACTIONS] + 1);
    parts.items = reader.array<std::vector<Rank>>(head[HEAD_OCCURRENCES]);
    require(reader.atEnd(), "there is something behind it");
    checkItems(index, parts);
    checkHistories(parts, static_cast<std::size_t>(head[HEAD_TRANSACTIONS]));
    checkCounts(parts);
    require(parts.transactionCount >= head[HEAD_TRANSACTIONS], "it has too few transactions");
    return index;
}

}  // namespace quarvis::mining
