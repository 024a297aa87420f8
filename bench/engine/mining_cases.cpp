#include "mining_cases.hpp"

#include <filesystem>

#include "support/check.hpp"
#include "support/child.hpp"
#include "support/generated_tables.hpp"

namespace bench {

namespace {

constexpr auto GIVEN = MiningCase::Origin::GIVEN;
constexpr auto GENERATED = MiningCase::Origin::GENERATED;

constexpr std::uint32_t MONTH = 30;  // days
constexpr std::uint32_t DAY_IN_SECONDS = 24 * 60 * 60;
constexpr std::uint32_t MONTH_IN_SECONDS = MONTH * DAY_IN_SECONDS;

}  // namespace

const std::vector<MiningCase>& miningCases() {
    static const std::vector<MiningCase> CASES = {
        {GIVEN, "online_retail", 100, 0, 0, 37'086, 14},
        {GIVEN, "online_retail", 100, MONTH_IN_SECONDS, 0, 37'086, 0},
        {GIVEN, "online_retail", 70, 0, 0, 239'333, 279},
        {GIVEN, "online_retail", 70, MONTH_IN_SECONDS, 0, 239'333, 0},
        {GIVEN, "online_retail_lines", 100, 0, 0, 37'086, 12},
        {GIVEN, "online_retail_lines", 100, MONTH, 0, 37'086, 0},
        {GIVEN, "completejourney_types", 100, 0, 0, 431, 39},
        {GIVEN, "log_traffic_fines", 20, 0, 0, 783, 273},
        {GIVEN, "synthea27", 14, 0, 2, 53'004, 559},
        {GIVEN, "bag-customers", 12, 0, 0, 381'914, 1'660},
        {GIVEN, "bag-customers", 12, 3 * MONTH_IN_SECONDS, 2, 9'591, 50},
        {GENERATED, "event_log", 64, 0, 0, 490'025, 85'111},
        {GENERATED, "event_log", 64, 10 * DAY_IN_SECONDS, 0, 490'025, 46'526},
        {GENERATED, "words", 200, 0, 0, 7'236, 2'953},
        {GENERATED, "words", 200, 5, 0, 7'236, 841},
        {GENERATED, "steep_words", 200, 0, 0, 18'373, 6'381},
        {GENERATED, "steep_words", 200, 5, 0, 18'373, 1'644},
        {GENERATED, "sparse", 40, 0, 0, 116'780, 0},
        {GENERATED, "sparse", 20, 0, 0, 304'775, 0},
    };
    return CASES;
}

Configuration MiningCase::config() const {
    Configuration config;
    config.minCount = minCount;
    config.windowSize = windowSize;
    config.maxOrder = maxOrder;
    return config;
}

std::string MiningCase::name() const {
    const auto option = [](const char* key, std::uint32_t value) {
        return value == 0 ? std::string() : key + std::to_string(value);
    };
    return table + option(" -c ", minCount) + option(" -w ", windowSize) + option(" -o ", maxOrder);
}

void MiningCase::check(std::size_t foundSets, std::size_t foundRules) const {
    checkCount("item sets of " + name(), foundSets, itemSets);
    checkCount("rules of " + name(), foundRules, rules);
}

std::string CaseFiles::path(const MiningCase& which) {
    if (which.origin == GIVEN) {
        const std::filesystem::path path = std::filesystem::path(m_folder) / (which.table + ".tsv");
        return std::filesystem::exists(path) ? path.string() : std::string();
    }
    std::unique_ptr<TempFile>& file = m_generated[which.table];
    if (!file) {
        file = std::make_unique<TempFile>();
        // The memory that this takes must not be on the heap of the runs.
        inChild([&] {
            generate(which.table, 0, file->path());
            return true;
        });
    }
    return file->path();
}

}  // namespace bench
