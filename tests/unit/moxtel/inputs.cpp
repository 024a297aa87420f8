#include "inputs.hpp"

#include <algorithm>
#include <cstddef>
#include <fstream>
#include <functional>
#include <istream>
#include <sstream>
#include <streambuf>
#include <utility>

#include "support/temp_dir.hpp"

namespace moxtel::io {

namespace {

/// Holds up to `chunk` characters ready, with none, hands over each when it is asked for.
class ChunkedBuf : public std::streambuf {
  public:
    ChunkedBuf(std::string text, std::size_t chunk) : m_text(std::move(text)), m_chunk(chunk) {
        m_moveTo(0);
    }

  protected:
    int_type underflow() override {
        if (egptr() == m_end())
            return traits_type::eof();
        if (m_chunk != 0) {
            const auto left = static_cast<std::size_t>(m_end() - egptr());
            setg(egptr(), egptr(), egptr() + std::min(m_chunk, left));
        }
        return traits_type::to_int_type(*gptr());
    }

    int_type uflow() override {
        const int_type c = underflow();
        if (c == traits_type::eof())
            return c;
        if (m_chunk == 0)
            m_moveTo(gptr() - m_text.data() + 1);
        else
            gbump(1);
        return c;
    }

    pos_type seekoff(off_type off, std::ios::seekdir direction, std::ios::openmode) override {
        const off_type origin = direction == std::ios::beg   ? 0
                                : direction == std::ios::cur ? gptr() - m_text.data()
                                                             : m_end() - m_text.data();
        if (origin + off < 0 || origin + off > m_end() - m_text.data())
            return off_type{-1};
        if (direction != std::ios::cur || off != 0)
            m_moveTo(origin + off);
        return origin + off;
    }

  private:
    char* m_end() { return m_text.data() + m_text.size(); }
    void m_moveTo(off_type at) {
        char* const next = m_text.data() + at;
        setg(next, next, next);
    }

    std::string m_text;
    std::size_t m_chunk;
};

class ChunkedStream : public std::iostream {
  public:
    ChunkedStream(const std::string& text, std::size_t chunk)
        : std::iostream(nullptr), m_buffer(text, chunk) {
        rdbuf(&m_buffer);
    }

  private:
    ChunkedBuf m_buffer;
};

/// A file of these bytes, in a directory that goes with the program. The next call writes over it.
std::string fileOf(const std::string& bytes) {
    static const support::TempDir DIR;
    return DIR.write("input", bytes);
}

using MakeStream = std::function<std::unique_ptr<std::iostream>(const std::string&)>;

template <class Stream>
Input openOwned(const MakeStream& make, const std::string& bytes) {
    std::unique_ptr<std::iostream> stream = make(bytes);
    std::shared_ptr<std::iostream> other = make(bytes);
    std::istream* const peer = stream.get();
    return {Device::wrap(static_cast<Stream*>(stream.release())),
            std::make_unique<plain::StreamSource>(*other),
            peer,
            other.get(),
            {other}};
}

template <class Stream>
Input openReferred(const MakeStream& make, const std::string& bytes) {
    std::shared_ptr<std::iostream> stream = make(bytes);
    std::shared_ptr<std::iostream> other = make(bytes);
    return {Device::wrap(static_cast<Stream&>(*stream)),
            std::make_unique<plain::StreamSource>(*other),
            stream.get(),
            other.get(),
            {stream, other}};
}

void addWraps(std::vector<InputKind>& kinds, const std::string& buffer, bool buffered,
              const MakeStream& make) {
    const auto add = [&](const std::string& wrap,
                         Input (*open)(const MakeStream&, const std::string&)) {
        kinds.push_back({buffer + ", " + wrap, std::bind_front(open, make), buffered});
    };
    add("istream", openReferred<std::istream>);
    add("owned istream", openOwned<std::istream>);
    add("iostream", openReferred<std::iostream>);
    add("owned iostream", openOwned<std::iostream>);
}

Input openString(const std::string& bytes) {
    return {Device::wrapString(bytes, 0, bytes.size()),
            std::make_unique<plain::TextSource>(bytes, false)};
}

Input openBlock(const std::string& bytes) {
    const auto block = std::make_shared<std::string>(bytes);
    return {Device::wrapArray(block->data(), block->size(), OPEN_READ),
            std::make_unique<plain::TextSource>(bytes, false),
            nullptr,
            nullptr,
            {block}};
}

Input openFile(const std::string& bytes) {
    return {Device::fromFile(fileOf(bytes), OPEN_READ),
            std::make_unique<plain::TextSource>(bytes, true)};
}

}  // namespace

std::vector<InputKind> inputKinds() {
    std::vector<InputKind> kinds = {
        {"string", openString}, {"block", openBlock}, {"file", openFile}};
    addWraps(kinds, "string buffer", true,
             [](const std::string& bytes) { return std::make_unique<std::stringstream>(bytes); });
    addWraps(kinds, "file buffer", true, [](const std::string& bytes) {
        return std::make_unique<std::fstream>(fileOf(bytes), std::ios::in | std::ios::binary);
    });
    for (const std::size_t chunk : {0U, 1U, 3U, 40U})
        addWraps(kinds, "buffer of " + std::to_string(chunk), chunk > 1,
                 [chunk](const std::string& bytes) {
                     return std::make_unique<ChunkedStream>(bytes, chunk);
                 });
    return kinds;
}

std::string inputKindName(const ::testing::TestParamInfo<InputKind>& info) {
    std::string name = info.param.name;
    std::replace_if(
        name.begin(), name.end(), [](char c) { return c == ' ' || c == ','; }, '_');
    return name;
}

}  // namespace moxtel::io
