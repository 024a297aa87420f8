#pragma once

#include <quarvis/mining/measures.hpp>

/// The measures of the engine under the names of the rule model.
namespace quarvis::rule {

using mining::certainty;
using mining::confidence;
using mining::conviction;
using mining::lift;
using mining::probability;
using mining::support;

}  // namespace quarvis::rule
