#include <moxtel/device.hpp>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <fstream>
#include <istream>
#include <memory>
#include <ostream>
#include <sstream>
#include <streambuf>
#include <string_view>
#include <type_traits>
#include <typeinfo>
#include <utility>

#include <moxtel/exception.hpp>
#include <moxtel/memory.hpp>

#include "get_area.hpp"

namespace moxtel::io {

namespace {

/// Does nothing when `whence` is not one of the three.
template <class Seek>
void withDirection(SeekWhence whence, Seek seek) {
    switch (whence) {
        case WHENCE_SET:
            return seek(std::ios::beg);
        case WHENCE_CUR:
            return seek(std::ios::cur);
        case WHENCE_END:
            return seek(std::ios::end);
    }
}

void doSeekg(std::istream& peer, long off, SeekWhence whence) {
    withDirection(whence, [&](std::ios::seekdir direction) { peer.seekg(off, direction); });
}

void doSeekp(std::ostream& peer, long off, SeekWhence whence) {
    withDirection(whence, [&](std::ios::seekdir direction) { peer.seekp(off, direction); });
}

void doSeek(std::FILE* peer, long off, SeekWhence whence) {
    int origin = SEEK_SET;
    if (whence == WHENCE_CUR)
        origin = SEEK_CUR;
    else if (whence == WHENCE_END)
        origin = SEEK_END;
    std::fseek(peer, off, origin);
}

/// A file. The peer is null when the file could not be opened.
class StdioDevice final : public Device {
  public:
    StdioDevice(std::FILE* peer, int flags) : m_peer(peer), m_flags(flags) {}
    ~StdioDevice() override { StdioDevice::close(); }

    using Device::read;
    using Device::write;

    bool canRead() const override { return (m_flags & OPEN_READ) != 0; }
    bool canWrite() const override { return (m_flags & OPEN_READ) != 0; }
    int seekCapability() const override { return 0; }
    std::size_t read(char* buf, std::size_t n) override {
        return m_peer == nullptr ? 0 : std::fread(buf, 1, n, m_peer);
    }
    std::size_t write(const char* buf, std::size_t n) override {
        return m_peer == nullptr ? 0 : std::fwrite(buf, 1, n, m_peer);
    }
    void seekg(long off, SeekWhence whence) override {
        if (m_peer != nullptr)
            doSeek(m_peer, off, whence);
    }
    void seekp(long off, SeekWhence whence) override { seekg(off, whence); }
    std::streampos tellg() override { return m_peer == nullptr ? -1 : std::ftell(m_peer); }
    std::streampos tellp() override { return tellg(); }
    bool flush() override {
        // In a file that is read, a flush would move the position.
        if (m_peer != nullptr && (m_flags & OPEN_READ_WRITE) == OPEN_WRITE)
            m_lost = std::fflush(m_peer) != 0 || std::ferror(m_peer) != 0 || m_lost;
        return !m_lost;
    }
    bool close() override {
        flush();
        if (m_peer != nullptr)
            m_lost = std::fclose(std::exchange(m_peer, nullptr)) != 0 || m_lost;
        return !m_lost;
    }

  private:
    std::FILE* m_peer;
    int m_flags;
    bool m_lost = false;  ///< Whether bytes were lost on the way to the file.
};

class ArrayDevice final : public Device {
  public:
    ArrayDevice(char* buf, std::size_t len, int flags) : m_buf(buf), m_len(len), m_flags(flags) {}

    using Device::read;
    using Device::write;

    bool canRead() const override { return (m_flags & OPEN_READ) != 0; }
    bool canWrite() const override { return (m_flags & OPEN_READ) != 0; }
    int seekCapability() const override { return 0; }
    std::size_t read(char* buf, std::size_t n) override {
        const std::size_t count = mem::makeInBounds(m_i, n, m_len);
        std::copy_n(m_buf + m_i, count, buf);
        m_i += count;
        return count;
    }
    std::size_t write(const char* buf, std::size_t n) override {
        const std::size_t count = mem::makeInBounds(m_i, n, m_len);
        std::copy_n(buf, count, m_buf + m_i);
        m_i += count;
        return count;
    }
    void seekg(long, SeekWhence) override {}
    void seekp(long, SeekWhence) override {}
    std::streampos tellg() override { return static_cast<std::streamoff>(m_i); }
    std::streampos tellp() override { return tellg(); }

  private:
    char* m_buf;
    std::size_t m_len;
    std::size_t m_i = 0;
    int m_flags;
};

/// Bytes that are only read. `Text` is a string, or a view of memory that stays the caller's.
template <class Text>
class StringDevice final : public Device {
  public:
    explicit StringDevice(Text text) : m_buf(std::move(text)) {}

    using Device::read;

    bool canRead() const override { return true; }
    bool canWrite() const override { return false; }
    int seekCapability() const override { return 0; }
    std::size_t read(char* buf, std::size_t n) override {
        const std::size_t count = m_buf.copy(buf, n, m_i);
        m_i += count;
        return count;
    }
    std::size_t write(const char*, std::size_t) override { return 0; }
    bool write(char) override { return false; }
    void seekg(long, SeekWhence) override {}
    void seekp(long, SeekWhence) override {}
    std::streampos tellg() override { return static_cast<std::streamoff>(m_i); }
    std::streampos tellp() override { return tellg(); }

  private:
    Text m_buf;
    std::size_t m_i = 0;
};

/// The room in a stream buffer. What writing there does to the position depends on the type of the
/// buffer, and is known only for buffers of the standard library.
class PutArea : public std::streambuf {
  public:
    PutArea() = delete;

    /// The buffer of a stream where writing a byte to the stream only fills the next place of the
    /// buffer; otherwise null. Filling the last place would write a file's buffer out.
    static std::streambuf* of(const std::ostream& stream) {
        std::streambuf* const buffer = stream.rdbuf();
        const bool aside = stream.tie() != nullptr || (stream.flags() & std::ios::unitbuf) != 0;
        return stream.good() && !aside && s_room(*buffer) > 1 && s_known(*buffer) ? buffer
                                                                                  : nullptr;
    }

  private:
    static std::ptrdiff_t s_room(const std::streambuf& buffer) {
        return (buffer.*&PutArea::epptr)() - (buffer.*&PutArea::pptr)();
    }
    static bool s_known(const std::streambuf& buffer) {
        return typeid(buffer) == typeid(std::filebuf) || typeid(buffer) == typeid(std::stringbuf);
    }
};

/// The six wraps of standard streams. `Peer` is a plain pointer to a stream that stays the
/// caller's, or a unique pointer to a stream that the device owns. The type of the stream says what
/// the device can do.
template <class Peer>
class StreamWrap final : public Device {
    using Stream = typename std::pointer_traits<Peer>::element_type;
    static constexpr bool INPUT = std::is_base_of_v<std::istream, Stream>;
    static constexpr bool OUTPUT = std::is_base_of_v<std::ostream, Stream>;

  public:
    explicit StreamWrap(Stream* peer) : m_peer(peer) {}

    using Device::read;
    using Device::write;

    bool canRead() const override { return INPUT; }
    bool canWrite() const override { return OUTPUT; }
    int seekCapability() const override { return std::is_same_v<Peer, std::istream*> ? 1 : 0; }

    std::size_t read(char* buf, std::size_t n) override {
        if constexpr (INPUT) {
            Stream& peer = m_stream();
            if (peer.eof() || peer.read(buf, static_cast<std::streamsize>(n)).fail())
                return FAILED;
            return static_cast<std::size_t>(peer.gcount());
        } else {
            return FAILED;
        }
    }

    /// Has the effect of reading one byte through the stream while its buffer holds some.
    int read() override {
        if constexpr (INPUT)
            if (std::streambuf* const ready = GetArea::of(m_stream()))
                return static_cast<signed char>(ready->sbumpc());
        return Device::read();
    }

    std::size_t write(const char* buf, std::size_t n) override {
        if constexpr (OUTPUT) {
            Stream& peer = m_stream();
            const std::streamoff before = peer.tellp();
            if (peer.write(buf, static_cast<std::streamsize>(n)).fail())
                return FAILED;
            if (before == -1)
                return n;
            return static_cast<std::size_t>(std::streamoff(peer.tellp()) - before);
        } else {
            return FAILED;
        }
    }

    /// Has the effect of writing a block of one byte while the buffer has room, without asking
    /// twice for the position.
    bool write(char c) override {
        if constexpr (OUTPUT)
            if (std::streambuf* const ready = PutArea::of(m_stream())) {
                ready->sputc(c);
                return true;
            }
        return Device::write(c);
    }

    void seekg(long off, SeekWhence whence) override {
        if constexpr (INPUT)
            doSeekg(m_stream(), off, whence);
        else
            Device::seekg(off, whence);
    }
    void seekp(long off, SeekWhence whence) override {
        if constexpr (OUTPUT)
            doSeekp(m_stream(), off, whence);
        else
            Device::seekp(off, whence);
    }
    std::streampos tellg() override {
        if constexpr (INPUT)
            return m_stream().tellg();
        else
            return Device::tellg();
    }
    std::streampos tellp() override {
        if constexpr (OUTPUT)
            return m_stream().tellp();
        else
            return Device::tellp();
    }

    std::istream* m_input() override {
        if constexpr (INPUT)
            return std::to_address(m_peer);
        else
            return nullptr;
    }

    bool flush() override {
        if constexpr (OUTPUT)
            return !m_stream().flush().fail();
        else
            return true;
    }

  private:
    Stream& m_stream() const {
        if (m_peer == nullptr)
            throw AccessException("The device has no stream.");
        return *m_peer;
    }

    Peer m_peer;
};

}  // namespace

const char* fopenFlags(int flags) {
    static constexpr const char* MODES[] = {"", "r", "w", "rw"};
    return MODES[flags & 3];
}

Device* Device::wrap(std::istream& in) {
    return new StreamWrap<std::istream*>(&in);
}

Device* Device::wrap(std::istream* in) {
    return new StreamWrap<std::unique_ptr<std::istream>>(in);
}

Device* Device::wrap(std::ostream& out) {
    return new StreamWrap<std::ostream*>(&out);
}

Device* Device::wrap(std::ostream* out) {
    return new StreamWrap<std::unique_ptr<std::ostream>>(out);
}

Device* Device::wrap(std::iostream& inOut) {
    return new StreamWrap<std::iostream*>(&inOut);
}

Device* Device::wrap(std::iostream* inOut) {
    return new StreamWrap<std::unique_ptr<std::iostream>>(inOut);
}

Device* Device::fromFile(const std::string& path, int flags) {
    return new StdioDevice(std::fopen(path.c_str(), fopenFlags(flags)), flags);
}

Device* Device::wrapArray(void* buf, std::size_t len, int flags) {
    return new ArrayDevice(static_cast<char*>(buf), len, flags);
}

Device* Device::wrapArray(const void* buf, std::size_t len) {
    return new StringDevice(std::string_view(static_cast<const char*>(buf), len));
}

Device* Device::wrapString(const std::string& s, std::size_t start, std::size_t len) {
    return new StringDevice<std::string>(s.substr(start, len));
}

int Device::read() {
    char c = 0;
    return read(&c, 1) == 1 ? static_cast<signed char>(c) : -1;
}

bool Device::write(char c) {
    return write(&c, 1) == 1;
}

void Device::seekg(long, SeekWhence) {
    throw UnsupportedOperationException("Stream incapable of seekg");
}

void Device::seekp(long, SeekWhence) {
    throw UnsupportedOperationException("Stream incapable of seekp");
}

std::streampos Device::tellg() {
    throw UnsupportedOperationException("Stream incapable of tellg");
}

std::streampos Device::tellp() {
    throw UnsupportedOperationException("Stream incapable of tellp");
}

Device* Device::makeProxy() {
    return this;
}

std::istream* Device::m_input() {
    return nullptr;
}

bool Device::flush() {
    return true;
}

bool Device::close() {
    return flush();
}

}  // namespace moxtel::io
