#pragma once

#include <sstream>
#include <string>

#include <moxtel/device.hpp>
#include <moxtel/text.hpp>

/// Text streams over strings.
namespace moxtel_tests {

inline moxtel::io::TextReader readerOf(const std::string& text,
                                       int acceptNewlines = moxtel::io::TextStream::NL_DEFAULT) {
    return moxtel::io::TextReader(moxtel::io::Device::wrapString(text, 0, text.size()),
                                  acceptNewlines);
}

/// A writer over a string stream.
struct Sheet {
    std::ostringstream out;
    moxtel::io::TextWriter writer{out};
};

}  // namespace moxtel_tests
