#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "config.hpp"
#include "support/temp_file.hpp"

namespace bench {

/// A run and what it finds. Windows are in the unit of the file: days, seconds or words.
struct MiningCase {
    enum class Origin { GIVEN, GENERATED };

    Origin origin;
    std::string
        table;  ///< A file of the user's folder without ".tsv", or a kind of generated table.
    std::uint32_t minCount;
    std::uint32_t windowSize;
    std::uint32_t maxOrder;
    std::size_t itemSets;
    std::size_t rules;

    Configuration config() const;

    /// The name of the run, such as "online_retail -c 100 -w 2592000".
    std::string name() const;

    /// Throws `std::runtime_error` unless a run found these numbers.
    void check(std::size_t foundSets, std::size_t foundRules) const;
};

/// The cases of given files and of generated tables. Their numbers are from an implementation that
/// shares no code with the engine.
const std::vector<MiningCase>& miningCases();

/// The transaction files of cases. A table is generated when it is first asked for, and removed
/// together with this object.
class CaseFiles {
  public:
    /// `folder` has some or all of the given files; empty for none.
    explicit CaseFiles(std::string folder) : m_folder(std::move(folder)) {}

    /// The path of the file; empty when it is not in the folder.
    std::string path(const MiningCase& which);

  private:
    std::string m_folder;
    std::map<std::string, std::unique_ptr<TempFile>> m_generated;  // by kind
};

}  // namespace bench
