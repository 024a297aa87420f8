#pragma once

#include <ios>
#include <streambuf>

#include <moxtel/file_stream.hpp>

/// Opens each of the descriptors 0 to 2 that is closed on /dev/null. Otherwise a file of the run
/// would get its number, and with it what is meant for a standard stream. Throws
/// `std::system_error` when that fails.
void openStandardDescriptors();

/// As long as it lives, `std::cin` and `std::cout` throw `moxtel::io::FileError` where a read or a
/// write fails, and `std::cerr` passes on whole lines.
///
/// A message that cannot be written does not keep the results from being written: the messages
/// after it are dropped, and `close` tells of it.
class StandardStreams {
  public:
    StandardStreams();
    StandardStreams(const StandardStreams&) = delete;
    StandardStreams& operator=(const StandardStreams&) = delete;
    ~StandardStreams();

    /// The run is over: throws `moxtel::io::FileError` when something that was meant for standard
    /// output or standard error is lost.
    void close();

  private:
    /// What a stream had before.
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
