#include <sys/resource.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <ostream>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <quarvis/mining/index_bytes.hpp>

#include "index_file.hpp"
#include "support/sanitized.hpp"

/// Bytes that are not an index, or are a damaged one.
namespace quarvis::mining {
namespace {

using mining_tests::IndexFile;
using mining_tests::sealed;

constexpr std::uint64_t LARGEST = std::numeric_limits<std::uint64_t>::max();
constexpr std::uint64_t LARGEST_32 = std::numeric_limits<std::uint32_t>::max();
constexpr std::size_t CHECKSUM = 8;

std::string contentOf(const IndexFile& file) {
    const std::string bytes = file.bytes();
    return bytes.substr(0, bytes.size() - CHECKSUM);
}

/// The message of the exception; empty if the bytes are an index.
std::string refusalOf(const std::string& bytes) {
    try {
        indexFromBytes(bytes);
    } catch (const IndexFormatError& error) {
        return error.what();
    }
    return "";
}

TEST(IndexDamage, EveryTruncationIsRefused) {
    const std::string bytes = IndexFile().bytes();
    for (std::size_t size = 0; size < bytes.size(); ++size)
        EXPECT_NE("", refusalOf(bytes.substr(0, size))) << size << " bytes";
}

TEST(IndexDamage, EveryTruncationIsRefusedWhateverTheChecksum) {
    const std::string content = contentOf({});
    for (std::size_t size = 0; size < content.size(); ++size)
        EXPECT_EQ("not a history index: it is cut off", refusalOf(sealed(content.substr(0, size))))
            << size << " bytes";
}

TEST(IndexDamage, EveryBitThatFlipsIsNoticed) {
    const std::string bytes = IndexFile().bytes();
    for (std::size_t bit = 0; bit < 8 * bytes.size(); ++bit) {
        std::string damaged = bytes;
        damaged[bit / 8] = static_cast<char>(damaged[bit / 8] ^ 1 << bit % 8);
        const std::string expected = bit < 64    ? "its first letters are others"
                                     : bit < 128 ? "its version is another"
                                                 : "its checksum does not agree";
        EXPECT_EQ("not a history index: " + expected, refusalOf(damaged)) << "bit " << bit;
    }
}

/// Some flips make a valid index: those of a name, a time or a count.
TEST(IndexDamage, BitsThatFlipUnnoticedMakeAnIndexOrNone) {
    const std::string content = contentOf({});
    std::size_t indexes = 0;
    for (std::size_t bit = 0; bit < 8 * content.size(); ++bit) {
        std::string damaged = content;
        damaged[bit / 8] = static_cast<char>(damaged[bit / 8] ^ 1 << bit % 8);
        const std::string bytes = sealed(damaged);
        if (refusalOf(bytes).empty()) {
            EXPECT_EQ(bytes, indexToBytes(indexFromBytes(bytes))) << "bit " << bit;
            ++indexes;
        }
    }
    // All bits of the three times make one, except those that put 7 before 5: 29 bits of the first
    // time, 30 of the second and 32 of the third do.
    EXPECT_GT(indexes, 90U);
    EXPECT_LT(indexes, 400U);
}

TEST(IndexDamage, BytesBeforeOrBehindAreRefused) {
    const std::string bytes = IndexFile().bytes();
    EXPECT_EQ("not a history index: its first letters are others", refusalOf('\0' + bytes));
    EXPECT_EQ("not a history index: its checksum does not agree", refusalOf(bytes + '\0'));
    EXPECT_EQ("not a history index: its checksum does not agree", refusalOf(bytes + bytes));
    EXPECT_EQ("not a history index: there is something behind it",
              refusalOf(sealed(contentOf({}) + '\0')));
}

struct Damage {
    const char* name;
    const char* refusal;
    std::function<void(IndexFile&)> inflict;
};

std::ostream& operator<<(std::ostream& os, const Damage& damage) {
    return os << damage.name;
}

class DamagedContents : public testing::TestWithParam<Damage> {};

TEST_P(DamagedContents, AreRefusedWhateverTheChecksum) {
    IndexFile file;
    ASSERT_EQ("", refusalOf(file.bytes()));
    GetParam().inflict(file);
    EXPECT_EQ(std::string("not a history index: ") + GetParam().refusal, refusalOf(file.bytes()));
}

const char* const CUT_OFF = "it is cut off";
const char* const TOO_LARGE = "it is too large";
const char* const FILLED = "there is something between its arrays";
const char* const BEHIND = "there is something behind it";
const char* const NAMES = "its names are in disorder";
const char* const COUNTS = "its counts are too low";
const char* const HISTORY_DISORDER = "its histories are in disorder";
const char* const TIMES = "its times are in disorder";
const char* const TRANSACTIONS = "its transactions are in disorder";

std::string damageName(const testing::TestParamInfo<Damage>& damage) {
    return damage.param.name;
}

INSTANTIATE_TEST_SUITE_P(
    OfTheHead, DamagedContents,
    testing::Values(
        Damage{"Letters", "its first letters are others", [](auto& f) { f.letters[7] = ' '; }},
        Damage{"Version0", "its version is another", [](auto& f) { f.head.version = 0; }},
        Damage{"Version2", "its version is another", [](auto& f) { f.head.version = 2; }},
        Damage{"NoTimes", "its times have other sizes", [](auto& f) { f.head.timeBytes = 0; }},
        Damage{"OtherTimes", "its times have other sizes", [](auto& f) { f.head.timeBytes = 16; }},
        Damage{"TimesOfAByteThatIsRight", "its times have other sizes",
               [](auto& f) { f.head.timeBytes = 0x104; }},
        Damage{"MinCount", TOO_LARGE, [](auto& f) { f.head.minCount = LARGEST_32 + 1; }},
        Damage{"Items", TOO_LARGE, [](auto& f) { f.head.items = LARGEST_32 + 1; }},
        Damage{"Histories", TOO_LARGE, [](auto& f) { f.head.histories = LARGEST; }},
        Damage{"Transactions", TOO_LARGE, [](auto& f) { f.head.transactions = LARGEST; }},
        Damage{"Occurrences", TOO_LARGE, [](auto& f) { f.head.occurrences = LARGEST; }},
        Damage{"FewerTransactionsReadThanKept", "it has too few transactions",
               [](auto& f) { f.head.transactionsRead = 2; }}),
    damageName);

INSTANTIATE_TEST_SUITE_P(
    OfSizes, DamagedContents,
    testing::Values(Damage{"MoreItems", FILLED, [](auto& f) { ++f.head.items; }},
                    Damage{"FewerItems", BEHIND, [](auto& f) { --f.head.items; }},
                    Damage{"MoreBytesOfNames", NAMES, [](auto& f) { ++f.head.nameBytes; }},
                    Damage{"FewerBytesOfNames", FILLED, [](auto& f) { --f.head.nameBytes; }},
                    Damage{"MoreHistories", HISTORY_DISORDER, [](auto& f) { ++f.head.histories; }},
                    Damage{"FewerHistories", FILLED, [](auto& f) { --f.head.histories; }},
                    Damage{"MoreTransactions", FILLED, [](auto& f) { ++f.head.transactions; }},
                    Damage{"FewerTransactions", FILLED, [](auto& f) { --f.head.transactions; }},
                    Damage{"MoreOccurrences", CUT_OFF, [](auto& f) { ++f.head.occurrences; }},
                    Damage{"FewerOccurrences", FILLED, [](auto& f) { --f.head.occurrences; }},
                    Damage{"NoOccurrences", BEHIND, [](auto& f) { f.head.occurrences = 0; }},
                    Damage{"FilledUpWithOthers", FILLED, [](auto& f) { f.fill = '\1'; }}),
    damageName);

INSTANTIATE_TEST_SUITE_P(
    OfItems, DamagedContents,
    testing::Values(
        Damage{"NamesBeginLate", NAMES, [](auto& f) { f.nameBegin[0] = 1; }},
        Damage{"NamesEndEarly", NAMES, [](auto& f) { f.nameBegin[3] = 3; }},
        Damage{"NamesEndLate", NAMES, [](auto& f) { f.nameBegin[3] = 5; }},
        Damage{"NamesGoBack", NAMES,
               [](auto& f) {
                   f.nameBegin = {0, 2, 1, 4};
               }},
        Damage{"NamesGoBackFromBeyond", NAMES, [](auto& f) { f.nameBegin[1] = LARGEST; }},
        Damage{"NamesDescend", NAMES, [](auto& f) { f.names = "bacd"; }},
        Damage{"NamesRepeat", NAMES, [](auto& f) { f.names = "aacd"; }},
        Damage{"NamesCompareAsSignedBytes", NAMES, [](auto& f) { f.names = "\x80 cd"; }},
        Damage{"EmptyNamesRepeat", NAMES,
               [](auto& f) {
                   f.nameBegin = {0, 0, 0, 4};
               }},
        Damage{"ACountBelowTheLeast", COUNTS, [](auto& f) { f.counts[2] = 0; }},
        Damage{"ACountBelowTheHistories", COUNTS, [](auto& f) { f.counts[1] = 1; }},
        Damage{"AnotherLeast", COUNTS, [](auto& f) { f.head.minCount = 2; }}),
    damageName);

INSTANTIATE_TEST_SUITE_P(
    OfHistories, DamagedContents,
    testing::Values(
        Damage{"HistoriesBeginLate", HISTORY_DISORDER, [](auto& f) { f.historyBegin[0] = 1; }},
        Damage{"HistoriesEndEarly", HISTORY_DISORDER, [](auto& f) { f.historyBegin[2] = 2; }},
        Damage{"HistoriesEndLate", HISTORY_DISORDER, [](auto& f) { f.historyBegin[2] = 4; }},
        Damage{"HistoriesGoBack", HISTORY_DISORDER, [](auto& f) { f.historyBegin[1] = 4; }},
        Damage{"TimesDescend", TIMES,
               [](auto& f) {
                   f.times = {7, 5, 5};
               }},
        Damage{"TimesRepeat", TIMES, [](auto& f) { f.times[0] = 7; }},
        Damage{"WideTimesDescend", TIMES,
               [](auto& f) {
                   f.head.timeBytes = 8;
                   f.times = {(std::uint64_t{1} << 32) + 5, 7, 5};
               }},
        Damage{"WideTimesRepeat", TIMES,
               [](auto& f) {
                   f.head.timeBytes = 8;
                   f.times = {LARGEST, LARGEST, 5};
               }}),
    damageName);

INSTANTIATE_TEST_SUITE_P(
    OfTransactions, DamagedContents,
    testing::Values(
        Damage{"TransactionsBeginLate", TRANSACTIONS, [](auto& f) { f.itemBegin[0] = 1; }},
        Damage{"TransactionsEndEarly", TRANSACTIONS, [](auto& f) { f.itemBegin[3] = 3; }},
        Damage{"TransactionsEndLate", TRANSACTIONS, [](auto& f) { f.itemBegin[3] = 5; }},
        Damage{"TransactionsGoBack", TRANSACTIONS, [](auto& f) { f.itemBegin[1] = 4; }},
        Damage{"ATransactionIsEmpty", TRANSACTIONS, [](auto& f) { f.itemBegin[1] = 0; }},
        Damage{"ItemsDescend", TRANSACTIONS,
               [](auto& f) {
                   f.occurrences = {0, 2, 1, 1};
               }},
        Damage{"ItemsRepeat", TRANSACTIONS,
               [](auto& f) {
                   f.occurrences = {0, 1, 1, 1};
               }},
        Damage{"AnItemIsUnknown", TRANSACTIONS, [](auto& f) { f.occurrences[2] = 3; }},
        Damage{"AnItemIsNone", TRANSACTIONS,
               [](auto& f) { f.occurrences[3] = std::uint32_t(LARGEST_32); }}),
    damageName);

/// Limits the data that the program may have to this many bytes, as long as it lives.
class MemoryLimit {
  public:
    explicit MemoryLimit(rlim_t bytes) {
        getrlimit(RLIMIT_DATA, &m_before);
        rlimit limit = m_before;
        limit.rlim_cur = bytes;
        setrlimit(RLIMIT_DATA, &limit);
    }
    MemoryLimit(const MemoryLimit&) = delete;
    MemoryLimit& operator=(const MemoryLimit&) = delete;
    ~MemoryLimit() { setrlimit(RLIMIT_DATA, &m_before); }

  private:
    rlimit m_before{};
};

/// The sizes are refused before memory is taken: there is none for such arrays.
TEST(IndexDamage, SizesOfMoreThanThereIsAreRefusedWithoutMemoryForThem) {
    if (ADDRESS_SANITIZED)
        GTEST_SKIP() << "The address sanitizer reserves more than any limit leaves.";
    const MemoryLimit limit(rlim_t{64} << 20);
    for (std::uint64_t IndexFile::Head::*const size :
         {&IndexFile::Head::items, &IndexFile::Head::nameBytes, &IndexFile::Head::histories,
          &IndexFile::Head::transactions, &IndexFile::Head::occurrences})
        for (const std::uint64_t timeBytes : {4U, 8U})
            for (const std::uint64_t large :
                 {LARGEST_32, LARGEST_32 - 1, LARGEST_32 / 4, std::uint64_t{1} << 29}) {
                IndexFile file;
                file.head.timeBytes = timeBytes;
                file.head.transactionsRead = LARGEST;
                file.head.*size = large;
                EXPECT_EQ("not a history index: it is cut off", refusalOf(file.bytes()));
            }
}

TEST(IndexDamage, NamesOfAsManyBytesAsThereAreNumbersAreRefused) {
    for (const std::uint64_t large :
         {LARGEST, LARGEST - 3, LARGEST - 7, LARGEST / 2, LARGEST / 8 + 1}) {
        IndexFile file;
        file.head.nameBytes = large;
        EXPECT_EQ("not a history index: it is cut off", refusalOf(file.bytes()));
    }
}

TEST(IndexDamage, AMessageSaysWhatIsWrong) {
    EXPECT_EQ("not a history index: it is cut off", refusalOf(""));
    EXPECT_EQ("not a history index: it is cut off", refusalOf("QVINDEX"));
    EXPECT_EQ("not a history index: its first letters are others",
              refusalOf("A text of some length"));
}

}  // namespace
}  // namespace quarvis::mining
