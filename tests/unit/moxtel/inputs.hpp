#pragma once

#include <functional>
#include <istream>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <moxtel/device.hpp>

#include "support/plain_input.hpp"

namespace moxtel::io {

/// The same bytes twice: behind a device, and to be read plainly.
struct Input {
    Device* device;  ///< For a reader to take over.
    std::unique_ptr<plain::Source> source;

    /// The streams that the two read from, where they do.
    std::istream* stream = nullptr;
    std::istream* sourceStream = nullptr;

    std::vector<std::shared_ptr<void>> kept = {};
};

struct InputKind {
    std::string name;
    std::function<Input(const std::string& bytes)> open;

    /// Whether it reads from a stream whose buffer holds several characters at a time.
    bool buffered = false;
};

inline void PrintTo(const InputKind& kind, std::ostream* out) {
    *out << kind.name;
}

/// Every kind of device that reads; each wrap of a stream over every kind of stream buffer (a
/// string's, a file's, one that holds a few characters at a time, one that holds none).
std::vector<InputKind> inputKinds();

/// The name of a kind as part of a test's.
std::string inputKindName(const ::testing::TestParamInfo<InputKind>& info);

}  // namespace moxtel::io
