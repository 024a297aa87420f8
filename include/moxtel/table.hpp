#pragma once

/// \file
/// Delimited tables: the formats of their rows, and the parser.
#include <moxtel/row_format.hpp>
#include <moxtel/row_parser.hpp>
