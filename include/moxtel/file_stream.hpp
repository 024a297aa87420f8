#pragma once

#include <istream>
#include <memory>
#include <ostream>
#include <string>
#include <system_error>

#pragma GCC visibility push(default)

/// \file
/// Standard streams over files that tell, by an exception, of every read and write that fails.
namespace moxtel::io {

/// A read or a write that failed after its file was open. Its message names the file and the reason
/// that the system gave, as in "cannot write rules.tsv: No space left on device"; its code is that
/// reason in the generic category.
class FileError : public std::system_error {
  public:
    /// `action` is "read" or "write"; `reason` is a value of `errno`.
    FileError(const char* action, const std::string& file, int reason);
};

/// A file to read from. A read that fails throws `FileError`, and memory that runs out during one
/// throws `std::bad_alloc`: an operation that a standard stream would end as if the data ended
/// throws here, as long as `exceptions()` stays as it is made.
///
/// A file that cannot be opened reads as empty, and so does a directory. The stream reads in
/// blocks of 64 KiB; it cannot seek.
class InputFile : public std::istream {
  public:
    /// Opens the file `path`; when that fails, `fail()` is true from the start.
    explicit InputFile(const std::string& path);

    /// Over an open descriptor, which stays the caller's. Errors call it `name`.
    InputFile(int descriptor, const std::string& name);

    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;
    ~InputFile() override;

  private:
    class [[gnu::visibility("hidden")]] Buffer;

    std::unique_ptr<Buffer> m_buffer;
};

/// A file to write to. A write that fails throws `FileError`, as long as `exceptions()` stays as it
/// is made. Nothing that was written after the last flush is sure to be in the file before `close`
/// returns.
///
/// Lines are passed on whole, those of a flush by one call of the system, which the buffer grows
/// for; a flush in the midst of a line passes on its beginning. A write that fails in the midst of
/// a line takes back what it wrote of that line, where the file is a regular one that ends there.
/// After a failure the stream keeps nothing, so that nothing is written twice.
///
/// A file that cannot be opened is not written, and nothing is thrown. The stream cannot seek.
class OutputFile : public std::ostream {
  public:
    /// Opens the file `path`, made or emptied; when that fails, `fail()` is true from the start.
    explicit OutputFile(const std::string& path);

    /// Over an open descriptor, which stays the caller's and open. Errors call it `name`.
    OutputFile(int descriptor, const std::string& name);

    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    /// Without `close` before, as when an exception unwinds the stack: passes on the lines that are
    /// whole, drops the beginning of another, and tells of no failure.
    ~OutputFile() override;

    /// Passes on what is left, and has the system finish the file. Throws `FileError` when that
    /// fails or when a write failed before, be it one that this stream was told not to throw for.
    /// Does nothing for a file that could not be opened, or was closed before.
    void close();

  private:
    class [[gnu::visibility("hidden")]] Buffer;

    std::unique_ptr<Buffer> m_buffer;
};

}  // namespace moxtel::io

#pragma GCC visibility pop
