#pragma once

#include <cstdarg>
#include <exception>
#include <string>

#include <moxtel/printf.hpp>

#pragma GCC visibility push(default)

/// \file
/// The exception family of the library, and `exceptf`, which makes an exception from a printf
/// format. Most exceptions are thrown by value. An operation that throws a pointer to a heap object
/// says so; the handler deletes the object. Each thread may use exceptions of its own.
namespace moxtel {

/// The root of the family. It owns its message.
class Exception : public std::exception {
  public:
    /// With an empty message.
    Exception() = default;

    /// With a copy of `why` as its message.
    explicit Exception(const std::string& why) : m_why(why) {}

    Exception(const Exception&) = default;
    Exception& operator=(const Exception&) = default;
    ~Exception() override = default;

    /// @{
    /// The message, valid as long as the exception object.
    const char* what() const noexcept override { return m_why.c_str(); }
    const std::string& why() const { return m_why; }
    /// @}

  private:
    std::string m_why;
};

/// Access to something that is not there.
class AccessException : public Exception {
  public:
    using Exception::Exception;
};

/// A key that was looked up is absent.
class NotFoundException : public AccessException {
  public:
    using AccessException::AccessException;
};

/// A device or a stream failed, or a file has wrong content.
class IOException : public Exception {
  public:
    using Exception::Exception;
};

/// An object does not offer the operation.
class UnsupportedOperationException : public Exception {
  public:
    using Exception::Exception;
};

/// A key was bound twice.
class AlreadyExistsException : public UnsupportedOperationException {
  public:
    using UnsupportedOperationException::UnsupportedOperationException;
};

/// An object that an operation needs could not be allocated. Thrown as a pointer.
class AllocationException : public Exception {
  public:
    using Exception::Exception;
};

/// The exception of class `E` whose message is `fmt` formatted with `args` by the printf rules. The
/// object is returned, not thrown; `args` is consumed. `fmt` is not null, and the compiler checks
/// it. Throws what `string::vstrprintf` throws.
template <class E>
[[gnu::format(printf, 1, 0)]] E vexceptf(const char* fmt, std::va_list args) {
    return E(string::vstrprintf(fmt, args));
}

/// As `vexceptf`, for use as `throw exceptf<IOException>("Bad row %u", row)`.
template <class E>
[[gnu::format(printf, 1, 2)]] E exceptf(const char* fmt, ...) {
    std::va_list args;
    va_start(args, fmt);
    try {
        E exception = vexceptf<E>(fmt, args);
        va_end(args);
        return exception;
    } catch (...) {
        va_end(args);
        throw;
    }
}

}  // namespace moxtel

#pragma GCC visibility pop
