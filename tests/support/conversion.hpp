#pragma once

#include <string>

#include <quarvis/rule.hpp>

#include "config.hpp"
#include "mine.hpp"
#include "oracle/outcome.hpp"
#include "oracle/settings.hpp"
#include "oracle/table.hpp"

/// Conversions between the types of the oracle and those of the product.
namespace support {

/// `configurationOf` throws `std::out_of_range` for a window that the tool cannot have, and
/// `std::invalid_argument` for the setting "all splits", since the tool proposes rules by runs.
Configuration configurationOf(const oracle::Settings& settings);
oracle::Settings settingsOf(const Configuration& config);

/// Items may have any bytes. `transactionsOf` throws `std::out_of_range` for a time that the tool
/// cannot have, and `std::invalid_argument` for a history without transactions.
quarvis::rule::TransactionSet transactionsOf(const oracle::Table& table);
oracle::Table tableOf(const quarvis::rule::TransactionSet& txns);

quarvis::rule::ItemSet itemSetOf(const oracle::Items& items);

oracle::Outcome outcomeOf(const quarvis::rule::MiningResult& result, const std::string& messages);

/// The result of `quarvis::rule::mine`.
oracle::Outcome mined(const Configuration& config, const quarvis::rule::TransactionSet& txns);
oracle::Outcome mined(const oracle::Settings& settings, const oracle::Table& table);

}  // namespace support
