#include "standard_streams.hpp"

#include <cerrno>
#include <cstdio>
#include <iostream>
#include <system_error>

#include <fcntl.h>
#include <unistd.h>

using moxtel::io::FileError;

void openStandardDescriptors() {
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(descriptor, F_GETFD) != -1 || errno != EBADF)
            continue;
        // `open` returns the lowest free descriptor, which is this one.
        if (open("/dev/null", descriptor == STDIN_FILENO ? O_RDONLY : O_WRONLY) != descriptor)
            throw std::system_error(errno, std::generic_category(), "cannot open /dev/null");
    }
}

StandardStreams::Former::Former(std::ios& streamAtHand)
    : stream(streamAtHand),
      buffer(streamAtHand.rdbuf()),
      state(streamAtHand.rdstate()),
      exceptions(streamAtHand.exceptions()),
      flags(streamAtHand.flags()) {}

void StandardStreams::Former::restore() {
    stream.exceptions(std::ios::goodbit);
    stream.rdbuf(buffer);
    stream.clear(state);
    stream.exceptions(exceptions);
    stream.flags(flags);
}

StandardStreams::StandardStreams()
    : m_formerIn(std::cin),
      m_formerOut(std::cout),
      m_formerErr(std::cerr),
      m_in(STDIN_FILENO, "standard input"),
      m_out(STDOUT_FILENO, "standard output"),
      m_err(STDERR_FILENO, "standard error") {
    std::cin.rdbuf(m_in.rdbuf());
    std::cin.exceptions(std::ios::badbit);
    std::cout.rdbuf(m_out.rdbuf());
    std::cout.exceptions(std::ios::badbit);
    std::cerr.rdbuf(m_err.rdbuf());
    // No flush is needed after each output: every message ends with one.
    std::cerr.unsetf(std::ios::unitbuf);
}

StandardStreams::~StandardStreams() {
    m_formerErr.restore();
    m_formerOut.restore();
    m_formerIn.restore();
}

void StandardStreams::close() {
    m_out.close();
    m_err.close();
    // Two losses bypass `m_err`: memory ran out inside the stream, or the argument parser, which
    // writes to `stderr`, failed to write.
    if (std::cerr.bad())
        throw FileError("write", "standard error", ENOMEM);
    if (std::ferror(stderr) != 0)
        throw FileError("write", "standard error", EIO);
}
