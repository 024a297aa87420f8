#pragma once

#include <memory>
#include <string>

#include <moxtel/exception.hpp>

namespace quarvis::test {

/// The message of the `IOException` to which `operation` throws a pointer; the object is deleted.
/// "nothing thrown" when it returns.
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
