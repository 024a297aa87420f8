#pragma once

/// \file
/// Devices and the streams over them.
#include <moxtel/binary.hpp>
#include <moxtel/device.hpp>
#include <moxtel/file_stream.hpp>
#include <moxtel/text.hpp>
