#pragma once

#include <memory>
#include <string>

#include <moxtel/exception.hpp>

namespace quarvis::test {

/// The message of the `IOException` that `operation` throws by pointer; deletes the exception.
/// "nothing thrown" if the operation returns.
template <class Operation>
std::string ioErrorOf(Operation operation) {
    try {
        operation();
    } catch (moxtel::IOException* thrown) {
        return std::unique_ptr<moxtel::IOException>(thrown)->what();
    }
    return "nothing thrown";
}

}  // namespace quarvis::test
