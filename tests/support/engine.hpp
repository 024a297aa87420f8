#pragma once

#include <cstdint>

#include <quarvis/mining/history_index.hpp>
#include <quarvis/mining/mine.hpp>
#include <quarvis/mining/options.hpp>

#include "oracle/outcome.hpp"
#include "oracle/settings.hpp"
#include "oracle/table.hpp"

/// The types of the oracle and those of the engine.
namespace support {

/// One thread; the caller may choose more.
quarvis::mining::MiningOptions optionsOf(const oracle::Settings& settings);

/// The table, a row for each transaction, in the order of the histories. The engine learns of an
/// entity by its rows, so a history without transactions throws `std::invalid_argument`.
quarvis::mining::HistoryIndex indexOf(
    const oracle::Table& table, std::uint32_t minCount,
    quarvis::mining::TimeWidth timeWidth = quarvis::mining::TimeWidth::BITS_32);

/// What a run found, without messages: the engine has none.
oracle::Outcome outcomeOf(const quarvis::mining::HistoryIndex& index,
                          const quarvis::mining::Result& result);

}  // namespace support
