#include "descriptor.hpp"

#include <cerrno>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <moxtel/file_stream.hpp>

namespace moxtel::io {

namespace {

/// Repeats `call` as long as a signal interrupts it, and returns its result.
template <class Call>
auto uninterrupted(Call call) {
    auto result = call();
    while (result == -1 && errno == EINTR)
        result = call();
    return result;
}

int openFile(const std::string& path, int flags) {
    constexpr mode_t everyone = 0666;
    return uninterrupted([&] { return ::open(path.c_str(), flags | O_CLOEXEC, everyone); });
}

}  // namespace

Descriptor::Descriptor(const std::string& path, int flags)
    : m_descriptor(openFile(path, flags)), m_owned(true), m_name(path) {}

Descriptor::Descriptor(int descriptor, const std::string& name)
    : m_descriptor(descriptor), m_owned(false), m_name(name) {}

Descriptor::~Descriptor() {
    if (m_owned && isOpen())
        ::close(m_descriptor);
}

std::size_t Descriptor::read(char* buf, std::size_t n) {
    if (!isOpen())
        return 0;
    const ssize_t got = uninterrupted([&] { return ::read(m_descriptor, buf, n); });
    if (got >= 0)
        return static_cast<std::size_t>(got);
    if (errno == EISDIR)
        return 0;
    throw FileError("read", m_name, errno);
}

void Descriptor::write(std::string_view text) {
    for (std::size_t written = 0; isOpen() && written < text.size();) {
        const std::string_view rest = text.substr(written);
        const ssize_t result =
            uninterrupted([&] { return ::write(m_descriptor, rest.data(), rest.size()); });
        if (result > 0) {
            written += static_cast<std::size_t>(result);
            continue;
        }
        m_failure = result == 0 ? EIO : errno;
        m_takeBack(written - (text.substr(0, written).rfind('\n') + 1));
        throw FileError("write", m_name, m_failure);
    }
}

void Descriptor::close() {
    const int descriptor = m_owned ? std::exchange(m_descriptor, -1) : ::dup(m_descriptor);
    // An interrupted close has closed as well.
    if (descriptor >= 0 && ::close(descriptor) == -1 && errno != EINTR && m_failure == 0)
        m_failure = errno;
    if (m_failure != 0)
        throw FileError("write", m_name, m_failure);
}

/// Cuts off the `n` bytes that were written last.
void Descriptor::m_takeBack(std::size_t n) {
    struct stat status {};
    if (n == 0 || ::fstat(m_descriptor, &status) != 0 || !S_ISREG(status.st_mode))
        return;
    const off_t end = ::lseek(m_descriptor, 0, SEEK_CUR);
    const off_t begin = end - static_cast<off_t>(n);
    if (end == status.st_size && begin >= 0 && ::ftruncate(m_descriptor, begin) == 0)
        ::lseek(m_descriptor, begin, SEEK_SET);
}

}  // namespace moxtel::io
