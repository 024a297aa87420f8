#pragma once

#include <ios>
#include <streambuf>

#include <moxtel/file_stream.hpp>

/// Opens /dev/null on each closed descriptor of 0 to 2. Otherwise a file of the run could get such
/// a number and receive the output of a standard stream. Throws `std::system_error` when the open
/// fails.
void openStandardDescriptors();

/// During its lifetime `std::cin` and `std::cout` throw `moxtel::io::FileError` when a read or a
/// write fails, and `std::cerr` writes whole lines.
///
/// A message that cannot be written does not prevent the results from being written: later
/// messages are dropped, and `close` throws.
class StandardStreams {
  public:
    StandardStreams();
    StandardStreams(const StandardStreams&) = delete;
    StandardStreams& operator=(const StandardStreams&) = delete;
    ~StandardStreams();

    /// Ends the output. Throws `moxtel::io::FileError` when anything written to standard output or
    /// standard error was lost.
    void close();

  private:
    /// The former state of a stream.
    struct Former {
        explicit Former(std::ios& stream);
        void restore();

        std::ios& stream;
        std::streambuf* buffer;
        std::ios::iostate state;
        std::ios::iostate exceptions;
        std::ios::fmtflags flags;
    };

    Former m_formerIn;
    Former m_formerOut;
    Former m_formerErr;
    moxtel::io::InputFile m_in;
    moxtel::io::OutputFile m_out;
    moxtel::io::OutputFile m_err;
};
