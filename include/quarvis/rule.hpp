#pragma once

/// \file
/// The rule model: item sets and rules, transaction histories, and the mined results with their
/// files.

#include <quarvis/history.hpp>
#include <quarvis/implication.hpp>
#include <quarvis/item_set.hpp>
#include <quarvis/item_set_histogram.hpp>
#include <quarvis/parse.hpp>
#include <quarvis/rule_set.hpp>
