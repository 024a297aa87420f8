#include <quarvis/item_set_histogram.hpp>

#include <filesystem>
#include <ios>
#include <sstream>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "flush_log.hpp"
#include "items.hpp"
#include "support/error_output.hpp"
#include "support/temp_dir.hpp"

namespace {

using quarvis::rule::ItemSet;
using quarvis::rule::ItemSetHistogram;
using quarvis::test::FlushLog;
using quarvis::test::setOf;
using support::ErrorOutput;
using support::fileContent;
using support::TempDir;
using testing::ElementsAre;

std::string written(const ItemSetHistogram& histogram) {
    std::ostringstream os;
    histogram.write(os);
    return os.str();
}

ItemSetHistogram milk() {
    ItemSetHistogram histogram;
    histogram.add(setOf({"milk"}), 7);
    return histogram;
}

TEST(ItemSetFile, AnEmptyHistogramIsTheHeaderAlone) {
    EXPECT_EQ(written(ItemSetHistogram()), "Count\tItem Set\n");
}

TEST(ItemSetFile, ASingleItemStandsInBraces) {
    EXPECT_EQ(written(milk()), "Count\tItem Set\n7\t{milk}\n");
}

TEST(ItemSetFile, SetsComeInTheirOrder) {
    ItemSetHistogram histogram = milk();
    histogram.add(setOf({"milk", "tea"}), 2);
    histogram.add(setOf({"bread"}), 18446744073709551615U);
    histogram.add(ItemSet(), 0);
    EXPECT_EQ(written(histogram),
              "Count\tItem Set\n"
              "18446744073709551615\t{bread}\n"
              "2\t{milk,tea}\n"
              "7\t{milk}\n"
              "0\t{}\n");
}

TEST(ItemSetFile, ItemsAreNeitherQuotedNorEscaped) {
    ItemSetHistogram histogram;
    histogram.add(setOf({"a\tb", "c\nd", "e,f", "\"g\"", "{h}", ""}), 1);
    EXPECT_EQ(written(histogram), "Count\tItem Set\n1\t{,\"g\",a\tb,c\nd,e,f,{h}}\n");
}

TEST(ItemSetFile, NothingGoesToStandardError) {
    const ErrorOutput errors;
    const TempDir dir;
    EXPECT_EQ(written(milk()), "Count\tItem Set\n7\t{milk}\n");
    milk().write(dir / "sets");
    EXPECT_EQ(errors.text(), "");
}

TEST(ItemSetFile, TheStreamIsFlushedAfterEachLine) {
    FlushLog log;
    std::ostream os(&log);
    milk().write(os);
    EXPECT_THAT(log.pieces(), ElementsAre("Count\tItem Set\n", "7\t{milk}\n"));
    EXPECT_EQ(log.rest(), "");
}

TEST(ItemSetFilePath, AFileIsCreatedOrReplaced) {
    const TempDir dir;
    milk().write(dir / "new");
    EXPECT_EQ(fileContent(dir / "new"), "Count\tItem Set\n7\t{milk}\n");
    const std::string old = dir.write("old", std::string(1000, 'x'));
    milk().write(old);
    EXPECT_EQ(fileContent(old), "Count\tItem Set\n7\t{milk}\n");
}

TEST(ItemSetFilePath, WritingIntoAMissingDirectoryDoesNothing) {
    const TempDir dir;
    EXPECT_NO_THROW(milk().write(dir / "missing/sets"));
    EXPECT_NO_THROW(milk().write(dir.path().string()));
    EXPECT_TRUE(std::filesystem::is_empty(dir.path()));
}

TEST(ItemSetFile, ReadingChangesNothingAndLeavesTheStreamUnread) {
    ItemSetHistogram histogram = milk();
    std::istringstream in("Count\tItem Set\n9\t{bread}\n");
    histogram.readInto(in, '\t');
    EXPECT_EQ(written(histogram), "Count\tItem Set\n7\t{milk}\n");
    EXPECT_EQ(in.rdstate(), std::ios::goodbit);
    EXPECT_EQ(in.tellg(), std::streampos(0));
}

TEST(ItemSetFilePath, ReadingChangesNothing) {
    const TempDir dir;
    ItemSetHistogram histogram = milk();
    histogram.readInto(dir.write("sets", "Count\tItem Set\n9\t{bread}\n"), '\t');
    histogram.readInto(dir / "missing", '\t');
    EXPECT_EQ(written(histogram), "Count\tItem Set\n7\t{milk}\n");
}

}  // namespace
