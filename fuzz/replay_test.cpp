#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <ostream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "targets.hpp"

namespace fuzz {
namespace {

struct Target {
    const char* name;
    void (*body)(Bytes);
};

std::ostream& operator<<(std::ostream& os, const Target& target) {
    return os << target.name;
}

class FuzzTarget : public testing::TestWithParam<Target> {};

TEST_P(FuzzTarget, HoldsForItsCorpus) {
    int replayed = 0;
    for (const auto& entry :
         std::filesystem::directory_iterator(std::filesystem::path(CORPUS) / GetParam().name)) {
        std::ifstream file(entry.path(), std::ios::binary);
        const std::vector<char> bytes(std::istreambuf_iterator<char>(file), {});
        const std::vector<std::uint8_t> input(bytes.begin(), bytes.end());
        EXPECT_NO_THROW(GetParam().body(input)) << entry.path();
        ++replayed;
    }
    EXPECT_GE(replayed, 10);
}

TEST_P(FuzzTarget, HoldsForNoBytes) {
    EXPECT_NO_THROW(GetParam().body({}));
}

INSTANTIATE_TEST_SUITE_P(
    Targets, FuzzTarget,
    testing::Values(Target{"arguments", fuzzArguments}, Target{"values", fuzzValues},
                    Target{"delimited_text", fuzzDelimitedText},
                    Target{"rule_files", fuzzRuleFiles}, Target{"whole_run", fuzzWholeRun},
                    Target{"index_bytes", fuzzIndexBytes}, Target{"engine", fuzzEngine},
                    Target{"transactions", fuzzTransactions}, Target{"devices", fuzzDevices},
                    Target{"binary_streams", fuzzBinaryStreams},
                    Target{"text_writers", fuzzTextWriters},
                    Target{"hash_containers", fuzzHashContainers}, Target{"memory", fuzzMemory},
                    Target{"string_helpers", fuzzStringHelpers}, Target{"tool_run", fuzzToolRun}),
    [](const auto& target) { return std::string(target.param.name); });

}  // namespace
}  // namespace fuzz
