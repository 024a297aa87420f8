#pragma once

#include <cstdint>

#include <quarvis/mining/history_index.hpp>
#include <quarvis/mining/mine.hpp>
#include <quarvis/mining/options.hpp>

#include "oracle/outcome.hpp"
#include "oracle/settings.hpp"
#include "oracle/table.hpp"

/// Conversions between the types of the oracle and those of the engine.
namespace support {

/// The options, with one thread; the caller may set more.
quarvis::mining::MiningOptions optionsOf(const oracle::Settings& settings);

/// The index of the table, with a row for each transaction, in the order of the histories. Throws
/// `std::invalid_argument` for a history without transactions, since the engine knows an entity
/// only by its rows.
quarvis::mining::HistoryIndex indexOf(
    const oracle::Table& table, std::uint32_t minCount,
    quarvis::mining::TimeWidth timeWidth = quarvis::mining::TimeWidth::BITS_32);

/// The result of a run, without messages, since the engine prints none.
oracle::Outcome outcomeOf(const quarvis::mining::HistoryIndex& index,
                          const quarvis::mining::Result& result);

}  // namespace support
