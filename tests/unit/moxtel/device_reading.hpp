#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <moxtel/device.hpp>
#include <moxtel/exception.hpp>

namespace moxtel::io {

using Owner = std::unique_ptr<Device>;

/// What the device reads byte by byte up to its end.
inline std::vector<int> bytesOf(Device& device) {
    std::vector<int> bytes;
    for (int c = device.read(); c != -1; c = device.read())
        bytes.push_back(c);
    return bytes;
}

/// The message of the exception that `action` ends with.
inline std::string unsupported(const std::function<void()>& action) {
    try {
        action();
    } catch (const UnsupportedOperationException& e) {
        return e.what();
    }
    return "nothing thrown";
}

}  // namespace moxtel::io
