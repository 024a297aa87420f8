#pragma once

#include <istream>
#include <memory>
#include <ostream>
#include <string>
#include <system_error>

#pragma GCC visibility push(default)

/// \file
/// Standard streams over files that throw for every read and write that fails. A stream belongs to
/// one thread.
namespace moxtel::io {

/// A read or a write that failed after its file was open. The message names the file and the reason
/// that the system gave, as in "cannot write rules.tsv: No space left on device". The code is that
/// reason in the generic category.
class FileError : public std::system_error {
  public:
    /// `action` is "read" or "write"; `reason` is a value of `errno`.
    FileError(const char* action, const std::string& file, int reason);
};

/// A file to read from. A read that fails throws `FileError`, and a read that lacks memory throws
/// `std::bad_alloc`, as long as the caller leaves `exceptions()` alone. (A standard stream would
/// act as if the data ended.)
///
/// A file that cannot be opened reads as empty, and so does a directory. The stream reads in blocks
/// of 64 KiB and cannot seek.
class InputFile : public std::istream {
  public:
    /// Opens the file `path`; when that fails, `fail()` is true from the start.
    explicit InputFile(const std::string& path);

    /// Over an open descriptor, which stays the caller's and must outlive the stream. Errors call
    /// the file `name`.
    InputFile(int descriptor, const std::string& name);

    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;
    ~InputFile() override;

  private:
    class [[gnu::visibility("hidden")]] Buffer;

    std::unique_ptr<Buffer> m_buffer;
};

/// A file to write to. A write that fails throws `FileError`, as long as the caller leaves
/// `exceptions()` alone. What was written after the last flush may be missing in the file until
/// `close` returns.
///
/// The stream passes whole lines on. A flush passes all its lines on by one call of the system, for
/// which the buffer grows; in the midst of a line it also passes on the line's beginning. A write
/// that fails in the midst of a line takes the written part of that line back, where the file is a
/// regular one that ends there. After a failure the buffer is empty, so nothing is written twice.
///
/// A file that cannot be opened is not written, and nothing is thrown. The stream cannot seek.
class OutputFile : public std::ostream {
  public:
    /// Opens the file `path`, which is created or emptied; when that fails, `fail()` is true from
    /// the start.
    explicit OutputFile(const std::string& path);

    /// Over an open descriptor, which stays the caller's and open, and must outlive the stream.
    /// Errors call the file `name`.
    OutputFile(int descriptor, const std::string& name);

    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    /// Without a `close` before, as when an exception unwinds the stack, passes on the whole lines,
    /// drops the beginning of another line, and does not report failures.
    ~OutputFile() override;

    /// Passes on what is left, and has the system finish the file. Throws `FileError` when that
    /// fails or when any write failed before, thrown for or not. Does nothing for a file that could
    /// not be opened or was closed before.
    void close();

  private:
    class [[gnu::visibility("hidden")]] Buffer;

    std::unique_ptr<Buffer> m_buffer;
};

}  // namespace moxtel::io

#pragma GCC visibility pop
