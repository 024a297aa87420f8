#include "allocation_failure.hpp"

#include <cstddef>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <moxtel/pointer.hpp>
#include <moxtel/set.hpp>

namespace moxtel {
namespace {

using TextSet = util::LinkedHashSet<std::string>;

/// The texts of a set in the order of its walk.
std::vector<std::string> textsOf(const TextSet& set) {
    std::vector<std::string> texts;
    for (auto i = set.iterator(); i.hasNext(); i.next())
        texts.push_back(i.current());
    return texts;
}

TEST(AllocationFailure, SetAndMapAreMadeOrThrow) {
    withEveryAllocationFailing([](const Attempt& attempt) { attempt([] { TextSet set(7); }); });
    withEveryAllocationFailing([](const Attempt& attempt) {
        attempt([] { util::LinkedHashMap<std::string, std::string> map; });
    });
}

TEST(AllocationFailure, SetTakesAValueInOrStaysAsItWas) {
    void (*const insertions[])(TextSet&, const std::string&) = {
        [](TextSet& set, const std::string& text) { set.add(text); },
        [](TextSet& set, const std::string& text) { set[text]; },
    };
    for (const auto insertion : insertions) {
        for (const std::size_t buckets : {1U, 0U}) {
            withEveryAllocationFailing([&](const Attempt& attempt) {
                TextSet set(buckets);
                set.add(longText("b"));
                set.add(longText("a"));
                std::vector<std::string> expected = {longText("b"), longText("a")};
                const std::string added = longText("c");
                if (attempt([&] { insertion(set, added); }))
                    expected.push_back(added);
                EXPECT_EQ(textsOf(set), expected);
                EXPECT_EQ(set.size(), expected.size());
                EXPECT_EQ(set.containsKey(added), expected.size() == 3);
                // It works on.
                set.add(added);
                set.eraseByKey(longText("a"));
                EXPECT_EQ(textsOf(set), std::vector<std::string>({longText("b"), added}));
            });
        }
    }
}

TEST(AllocationFailure, SetStaysAsItWasWhenItsHookFails) {
    class Completing : public TextSet::EntryActions {
      public:
        void created(std::string& value) override { m_made += longText(value); }

      private:
        std::string m_made;
    };
    withEveryAllocationFailing([](const Attempt& attempt) {
        TextSet set;
        set.add("b");
        const bool added = attempt([&] {
            set.setEntryActions(mem::Pointer<TextSet::EntryActions>(new Completing));
            set.add("a");
        });
        EXPECT_EQ(set.size(), added ? 2U : 1U);
        EXPECT_EQ(set.containsKey("a"), added);
    });
}

/// An element with a part that may fail to be copied after the key was.
struct Entry {
    int key = 0;
    std::string text;
};

}  // namespace
}  // namespace moxtel

template <>
struct moxtel::util::KeyOperations<moxtel::Entry> {
    static int extract(const Entry& entry) { return entry.key; }
    static bool equals(int a, int b) { return a == b; }
    static void createValue(int key, Entry& entry) { entry.key = key; }
};

namespace moxtel {
namespace {

TEST(AllocationFailure, SetDoesNotKeepAHalfCopiedValue) {
    withEveryAllocationFailing([](const Attempt& attempt) {
        util::LinkedHashSet<Entry> set;
        set.add({1, longText("one")});
        const Entry two{2, longText("two")};
        const bool added = attempt([&] { set.add(two); });
        EXPECT_EQ(set.size(), added ? 2U : 1U);
        EXPECT_EQ(set.containsKey(2), added);
        EXPECT_EQ(set[1].text, longText("one"));
    });
}

using TextMap = util::LinkedHashMap<std::string, std::string>;

TEST(AllocationFailure, MapTakesAPairInOrStaysAsItWas) {
    withEveryAllocationFailing([](const Attempt& attempt) {
        TextMap map(1);
        map[longText("a")] = longText("one");
        const std::string key = longText("b");
        const std::string value = longText("two");
        const bool mapped = attempt([&] { map[key] = value; });
        EXPECT_EQ(map.lookup(longText("a")), longText("one"));
        // The pair is put in before its value is assigned.
        if (map.containsKey(key)) {
            EXPECT_EQ(map.lookup(key), mapped ? value : "");
        } else {
            EXPECT_EQ(map.size(), 1U);
            EXPECT_FALSE(mapped);
        }
    });
}

TEST(AllocationFailure, IteratorsAreMadeOrThrow) {
    withEveryAllocationFailing([](const Attempt& attempt) {
        TextMap map;
        map["a"] = "one";
        std::string seen;
        const bool walked = attempt([&] {
            seen += map.iterator()->first;
            seen += *map.keyIterator();
            seen += *map.valueIterator();
        });
        EXPECT_EQ(seen == "aaone", walked);
        EXPECT_EQ(map.size(), 1U);
    });
}

}  // namespace
}  // namespace moxtel
