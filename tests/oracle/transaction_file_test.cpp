#include "oracle/transaction_file.hpp"

#include <algorithm>
#include <map>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace oracle {
namespace {

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);)
        lines.push_back(line);
    return lines;
}

/// The items of each entity and time, where no cell is quoted.
std::map<std::string, History> readBack(const std::string& text) {
    std::map<std::string, History> histories;
    const std::vector<std::string> lines = linesOf(text);
    for (std::size_t line = 1; line < lines.size(); ++line) {
        std::istringstream cells(lines[line]);
        std::string entity;
        std::string time;
        std::getline(cells, entity, '\t');
        std::getline(cells, time, '\t');
        Items& items = histories[entity][std::stoull(time)];
        for (std::string item; std::getline(cells, item, '\t');)
            items.insert(item);
    }
    return histories;
}

Table sample() {
    Table table = tableOf({"1:a,b,c,d,e,f,g,h 5:c 7:", "3:x", "2:a 4:b 6:c 8:d"});
    table.entities = {"zoe", "ann", "bob b"};
    return table;
}

TEST(TransactionFile, HasARowForEachTransaction) {
    EXPECT_EQ("entity\ttime\titems\ne0\t1\ta\tb\ne0\t7\ne1\t18446744073709551615\tc\n",
              textOf(tableOf({"1:a,b 7:", "18446744073709551615:c"})));
}

TEST(TransactionFile, OfNoHistoriesIsAHeader) {
    EXPECT_EQ("entity\ttime\titems\n", textOf(Table()));
}

TEST(TransactionFile, QuotesNamesWithATab) {
    Table table;
    table.histories = {{{1, {"a\tb", "c\"d"}}}};
    EXPECT_EQ("entity\ttime\titems\ne0\t1\t\"a\tb\"\tc\"d\n", textOf(table));
}

TEST(TransactionFile, RefusesNamesThatWouldBeReadOtherwise) {
    for (const char* name : {"", "\"a", "a\nb", "a\rb", "a\xff", "a\t\""}) {
        Table table;
        table.histories = {{{1, {name}}}};
        EXPECT_THROW(textOf(table), std::invalid_argument) << name;
        table.histories = {{{1, {}}}};
        table.entities = {name};
        EXPECT_THROW(textOf(table), std::invalid_argument) << name;
    }
}

TEST(TransactionFile, ShuffledHasTheSameRowsInAnotherOrder) {
    std::vector<std::string> plain = linesOf(textOf(sample()));
    std::set<std::string> texts;
    for (std::uint64_t seed = 0; seed < 20; ++seed) {
        const std::string text = textOf(sample(), {.shuffled = true, .seed = seed});
        EXPECT_EQ("entity\ttime\titems", linesOf(text).front());
        EXPECT_THAT(linesOf(text), testing::UnorderedElementsAreArray(plain));
        texts.insert(text);
    }
    EXPECT_GT(texts.size(), 15U);
}

TEST(TransactionFile, SplitHasTheSameTransactionsInMoreRows) {
    const std::map<std::string, History> expected = readBack(textOf(sample()));
    ASSERT_EQ(sample().histories[0], expected.at("zoe"));
    std::size_t rows = 0;
    for (std::uint64_t seed = 0; seed < 20; ++seed)
        for (const bool shuffled : {false, true}) {
            const std::string text =
                textOf(sample(), {.shuffled = shuffled, .split = true, .seed = seed});
            EXPECT_EQ(expected, readBack(text));
            rows += linesOf(text).size() - 1;
        }
    // Forty files of eight transactions each; most files have at least two rows more.
    EXPECT_GT(rows, 40U * 10U);
}

TEST(TransactionFile, IsTheSameForTheSameSeed) {
    const FileForm form{.shuffled = true, .split = true, .seed = 3};
    EXPECT_EQ(textOf(sample(), form), textOf(sample(), form));
}

}  // namespace
}  // namespace oracle
