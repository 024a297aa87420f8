/// The text writer beside one that makes the calls of a stream byte by byte: random calls, with
/// results, counters, positions, stream states and what has arrived compared after each.

#include <moxtel/text.hpp>

#include <fstream>
#include <functional>
#include <ios>
#include <memory>
#include <ostream>
#include <sstream>
#include <streambuf>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "draws.hpp"
#include "support/temp_dir.hpp"

namespace moxtel::io {
namespace {

/// One byte after the other into a stream, as its device is to write it.
class PlainWriter {
  public:
    explicit PlainWriter(std::ostream& out) : m_out(out) {}

    std::size_t row() const { return m_row; }
    std::size_t col() const { return m_col; }

    std::size_t write(int c) {
        if (c == '\n')
            return writeLine();
        const bool taken = m_put(static_cast<char>(c));
        ++m_col;
        return taken ? 1 : 0;
    }
    std::size_t writeLine() {
        if (!m_put('\n'))
            return 0;
        ++m_row;
        m_col = 0;
        return 1;
    }
    std::size_t write(const char* buf, std::size_t len) {
        std::size_t written = 0;
        for (std::size_t i = 0; i < len; ++i)
            written += write(static_cast<signed char>(buf[i]));
        return written;
    }
    std::size_t write(const std::string& str, std::size_t i, std::size_t len) {
        if (len == std::string::npos || i + len > str.size())
            len = str.size();
        std::size_t written = 0;
        for (; i < len; ++i)
            written += write(static_cast<signed char>(str[i]));
        return written;
    }
    std::size_t writeLine(const char* str) {
        const std::size_t written = write(str, std::string(str).size());
        return written + writeLine();
    }

  private:
    bool m_put(char c) {
        const std::streamoff before = m_out.tellp();
        m_out.write(&c, 1);
        if ((m_out.rdstate() & (std::ios::failbit | std::ios::badbit)) != 0)
            return false;
        return before == -1 || std::streamoff(m_out.tellp()) - before == 1;
    }

    std::ostream& m_out;
    std::size_t m_row = 0;
    std::size_t m_col = 0;
};

/// Has room for some bytes, and tells a position that is `step` further on for each; -1 for the
/// step stands for no position.
class SmallBuf : public std::streambuf {
  public:
    SmallBuf(std::size_t capacity, int step) : m_room(capacity, '\0'), m_step(step) {
        setp(m_room.data(), m_room.data() + capacity);
    }
    std::string text() const { return std::string(pbase(), pptr()); }

  protected:
    pos_type seekoff(off_type, std::ios::seekdir, std::ios::openmode) override {
        return m_step == -1 ? off_type{-1} : (pptr() - pbase()) * m_step;
    }

  private:
    std::string m_room;
    int m_step;
};

class SmallStream : public std::iostream {
  public:
    SmallStream(std::size_t capacity, int step) : std::iostream(nullptr), m_buffer(capacity, step) {
        rdbuf(&m_buffer);
    }
    std::string text() const { return m_buffer.text(); }

  private:
    SmallBuf m_buffer;
};

/// A stream to write to and a way to see what has arrived behind it.
struct Sink {
    std::unique_ptr<std::iostream> stream;
    std::function<std::string()> arrived;
};

struct SinkKind {
    std::string name;
    std::function<Sink()> open;
};

void PrintTo(const SinkKind& kind, std::ostream* out) {
    *out << kind.name;
}

SinkKind strings(const std::string& name, std::ios::openmode mode) {
    return {name, [mode] {
                auto stream = std::make_unique<std::stringstream>("0123456789", mode);
                const auto* peer = stream.get();
                return Sink{std::move(stream), [peer] { return peer->str(); }};
            }};
}

SinkKind files(const std::string& name, std::ios::openmode mode) {
    return {name, [mode] {
                const auto dir = std::make_shared<support::TempDir>();
                const std::string path = dir->write("sink", "0123456789");
                return Sink{std::make_unique<std::fstream>(path, mode),
                            [dir, path] { return support::fileContent(path); }};
            }};
}

SinkKind small(const std::string& name, std::size_t capacity, int step) {
    return {name, [capacity, step] {
                auto stream = std::make_unique<SmallStream>(capacity, step);
                const auto* peer = stream.get();
                return Sink{std::move(stream), [peer] { return peer->text(); }};
            }};
}

std::vector<SinkKind> sinkKinds() {
    using std::ios;
    return {strings("Strings", ios::out),
            strings("StringsAppended", ios::out | ios::ate),
            strings("StringsReadOnly", ios::in),
            files("Files", ios::out),
            files("FilesAppended", ios::out | ios::app),
            files("FilesReadToo", ios::in | ios::out),
            files("FilesReadOnly", ios::in),
            small("Small", 30, 1),
            small("SmallWithoutPosition", 30, -1),
            small("SmallWithPositionThatStays", 30, 0),
            small("SmallWithPositionThatLeaps", 30, 2)};
}

class WriterDraws : public moxtel_tests::Draws {
  public:
    using Draws::Draws;
    std::string bytes() {
        std::string text(oneIn(100) ? below(20'000) : below(12), '\0');
        for (char& c : text)
            c = oneIn(3) ? '\n' : static_cast<char>(below(256));
        return text;
    }
};

struct WriterCall {
    enum Kind : unsigned { CHARACTER, LINE_END, BLOCK, PART, LINE, SEEK, FLUSH, FAIL, CLEAR };

    Kind kind;
    int character;
    std::string text;
    std::size_t begin;
    std::size_t end;
};

WriterCall drawWriterCall(WriterDraws& draws) {
    WriterCall call{};
    call.kind = static_cast<WriterCall::Kind>(draws.below(9));
    call.character = draws.oneIn(4) ? '\n' : static_cast<int>(draws.below(512)) - 256;
    call.text = draws.bytes();
    call.begin = draws.below(10);
    call.end = draws.oneIn(4) ? std::string::npos : draws.below(15);
    return call;
}

template <class Writer>
std::string outcome(const WriterCall& call, bool tells, Writer& writer, const Sink& sink,
                    std::ostream& stream) {
    std::ostringstream out;
    try {
        switch (call.kind) {
            case WriterCall::CHARACTER:
                out << writer.write(call.character);
                break;
            case WriterCall::LINE_END:
                out << writer.writeLine();
                break;
            case WriterCall::BLOCK:
                out << writer.write(call.text.data(), call.text.size());
                break;
            case WriterCall::PART:
                out << writer.write(call.text, call.begin, call.end);
                break;
            case WriterCall::LINE:
                out << writer.writeLine(call.text.c_str());
                break;
            case WriterCall::SEEK:
                stream.seekp(static_cast<std::streamoff>(call.begin));
                break;
            case WriterCall::CLEAR:
                stream.clear();
                break;
            case WriterCall::FLUSH:
                stream.flush();
                break;
            case WriterCall::FAIL:
                stream.setstate(call.begin % 2 == 0 ? std::ios::failbit : std::ios::eofbit);
                break;
        }
        if (tells)
            out << " told " << stream.tellp();
    } catch (const std::ios_base::failure&) {
        out << " failure";
    }
    out << ", at " << writer.row() << ':' << writer.col() << ", state " << stream.rdstate() << ": "
        << sink.arrived();
    return out.str();
}

class TextWriterBesidePlain : public ::testing::TestWithParam<SinkKind> {};

TEST_P(TextWriterBesidePlain, WritesTheSame) {
    for (unsigned seed = 0; seed < 200; ++seed) {
        WriterDraws draws(seed);
        Sink sink = GetParam().open();
        Sink plainSink = GetParam().open();
        std::ostream& stream = *sink.stream;
        std::ostream& plainStream = *plainSink.stream;
        TextWriter writer = draws.oneIn(2)
                                ? TextWriter(Device::wrap(static_cast<std::ostream&>(stream)))
                                : TextWriter(Device::wrap(*sink.stream));
        PlainWriter plainWriter(plainStream);
        const bool tells = draws.oneIn(2);
        // Each byte goes on to the sink at once.
        const bool unbuffered = draws.oneIn(4);
        const bool throws = draws.oneIn(4);
        for (std::ostream* each : {&stream, &plainStream}) {
            if (unbuffered)
                *each << std::unitbuf;
            each->exceptions(throws ? std::ios::badbit | std::ios::failbit : std::ios::goodbit);
        }
        for (int i = 0; i < 20; ++i) {
            const WriterCall call = drawWriterCall(draws);
            ASSERT_EQ(outcome(call, tells, writer, sink, stream),
                      outcome(call, tells, plainWriter, plainSink, plainStream))
                << "seed " << seed << ", call " << i << " of kind " << call.kind;
        }
    }
}

/// A stream that is tied to another flushes that before each of its bytes.
TEST_P(TextWriterBesidePlain, FlushesTheTiedStreamBefore) {
    Sink sink = GetParam().open();
    const support::TempDir dir;
    const std::string path = dir / "tied";
    std::ofstream tied(path);
    sink.stream->tie(&tied);
    TextWriter writer(Device::wrap(*sink.stream));
    tied << "before";
    const bool good = sink.stream->good();
    writer.write('a');
    EXPECT_EQ(support::fileContent(path), good ? "before" : "");
}

INSTANTIATE_TEST_SUITE_P(Sinks, TextWriterBesidePlain, ::testing::ValuesIn(sinkKinds()),
                         [](const auto& kind) { return kind.param.name; });

}  // namespace
}  // namespace moxtel::io
