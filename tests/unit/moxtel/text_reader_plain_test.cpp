/// The text reader beside one that makes the calls of its device byte by byte: random bytes and
/// random calls, with results, counters, positions and stream states compared after each.

#include <moxtel/text.hpp>

#include <algorithm>
#include <ios>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "../../../src/libmoxtel/in_place.hpp"
#include "draws.hpp"
#include "inputs.hpp"
#include "support/sanitized.hpp"

namespace moxtel::io {
namespace {

/// A call and its arguments, to be made of both readers.
struct ReaderCall {
    enum Kind : unsigned { PEEK, READ, UNTIL, LINE, BLOCK, DEVICE_BYTE, DEVICE_BLOCK, SEEK, CLEAR };

    Kind kind;
    char stop;
    std::size_t size;
    long offset;
    SeekWhence whence;
    bool tells;
};

void PrintTo(const ReaderCall& call, std::ostream* out) {
    *out << "call " << call.kind << " stop " << static_cast<int>(call.stop) << " size " << call.size
         << " offset " << call.offset << " whence " << call.whence;
}

class ReaderDraws : public moxtel_tests::Draws {
  public:
    using Draws::Draws;

    /// All bytes, or mostly those that are treated in a way of their own.
    std::string bytes(std::size_t most) {
        const std::string special = "\n\r\n\r\xff\x80\x7f,a";
        const std::size_t others = below(4);
        std::string text(below(most + 1), '\0');
        for (char& c : text)
            c = below(4) < others ? static_cast<char>(below(256)) : special[below(special.size())];
        return text;
    }

    /// Now and then one that no line end ends for long, to leave the buffers of files behind.
    std::string input() {
        if (!oneIn(40))
            return bytes(80);
        std::string text(below(20'000), 'a');
        for (std::size_t specials = below(20); specials > 0 && !text.empty(); --specials)
            text[below(text.size())] = static_cast<char>(below(256));
        return text;
    }

    ReaderCall call() {
        static constexpr ReaderCall::Kind KINDS[] = {
            ReaderCall::PEEK,         ReaderCall::PEEK,  ReaderCall::READ,  ReaderCall::READ,
            ReaderCall::READ,         ReaderCall::UNTIL, ReaderCall::UNTIL, ReaderCall::UNTIL,
            ReaderCall::LINE,         ReaderCall::LINE,  ReaderCall::BLOCK, ReaderCall::DEVICE_BYTE,
            ReaderCall::DEVICE_BLOCK, ReaderCall::SEEK,  ReaderCall::CLEAR};
        static constexpr SeekWhence WHENCES[] = {WHENCE_SET, WHENCE_CUR, WHENCE_END};
        static constexpr char STOPS[] = {',', '\t', '\n', '\r', '\xff', '\x80', 'a'};
        ReaderCall call{};
        call.kind = KINDS[below(std::size(KINDS))];
        call.stop = oneIn(2) ? STOPS[below(std::size(STOPS))] : static_cast<char>(below(256));
        call.size = oneIn(4) ? below(100) : below(8);
        call.offset = static_cast<long>(below(40)) - 20;
        call.whence = WHENCES[below(std::size(WHENCES))];
        call.tells = oneIn(2);
        return call;
    }
};

std::string readUntil(TextReader& reader, char stop, int& end) {
    return InPlace::readUntil(reader, stop, end);
}

std::string readUntil(plain::Reader& reader, char stop, int& end) {
    return reader.readUntil(stop, end);
}

/// What a call gives, and how the reader and its input then stand. `Bytes` is what the reader reads
/// from.
template <class Reader, class Bytes>
std::string outcome(const ReaderCall& call, Reader& reader, Bytes& bytes, std::istream* stream) {
    std::ostringstream out;
    std::string buffer(call.size, '?');
    try {
        int end = 0;
        switch (call.kind) {
            case ReaderCall::PEEK:
                out << reader.peek();
                break;
            case ReaderCall::READ:
                out << reader.read();
                break;
            case ReaderCall::UNTIL:
                out << readUntil(reader, call.stop, end) << " before " << end;
                break;
            case ReaderCall::LINE:
                out << reader.readLine();
                break;
            case ReaderCall::BLOCK:
                out << reader.read(buffer.data(), call.size) << ' ' << buffer;
                break;
            case ReaderCall::DEVICE_BYTE:
                out << bytes.read();
                break;
            case ReaderCall::DEVICE_BLOCK:
                out << bytes.read(buffer.data(), call.size) << ' ' << buffer;
                break;
            case ReaderCall::SEEK:
                bytes.seekg(call.offset, call.whence);
                break;
            case ReaderCall::CLEAR:
                if (stream != nullptr)
                    stream->clear();
                break;
        }
        if (call.tells)
            out << " told " << bytes.tellg();
    } catch (const std::ios_base::failure&) {
        out << " failure";
    }
    out << ", at " << reader.row() << ':' << reader.col();
    if (stream != nullptr)
        out << ", state " << stream->rdstate();
    return out.str();
}

void expectPlainReading(const InputKind& kind, int acceptNewlines, unsigned seed) {
    ReaderDraws draws(seed);
    const std::string bytes = draws.input();
    Input input = kind.open(bytes);
    TextReader reader(input.device, acceptNewlines);
    plain::Reader plainReader(*input.source, acceptNewlines);
    if (input.stream != nullptr && draws.oneIn(4)) {
        const std::ios::iostate thrown = draws.oneIn(2) ? std::ios::eofbit : std::ios::failbit;
        input.stream->exceptions(thrown);
        input.sourceStream->exceptions(thrown);
    }
    std::vector<ReaderCall> calls;
    for (int i = 0; i < 40; ++i) {
        calls.push_back(draws.call());
        ASSERT_EQ(outcome(calls.back(), reader, *input.device, input.stream),
                  outcome(calls.back(), plainReader, *input.source, input.sourceStream))
            << kind.name << ", accepting " << acceptNewlines << ", seed " << seed << ", of "
            << ::testing::PrintToString(bytes) << " after " << ::testing::PrintToString(calls);
    }
}

/// How many characters were at hand.
std::size_t expectPlainSkips(const InputKind& kind, unsigned seed) {
    ReaderDraws draws(seed);
    const std::string bytes = draws.input();
    Input input = kind.open(bytes);
    TextReader reader(input.device, TextStream::NL_DEFAULT);
    plain::Reader plainReader(*input.source, TextStream::NL_DEFAULT);
    std::size_t shown = 0;
    for (int i = 0; i < 40; ++i) {
        const std::string_view text = InPlace::atHand(reader);
        shown += text.size();
        const std::size_t most = std::min(text.find_first_of("\n\r\xff"), text.size());
        const std::size_t count = draws.oneIn(2) ? most : draws.below(most + 1);
        const std::string expected(text.substr(0, count));
        InPlace::skip(reader, count);
        std::string skipped;
        while (skipped.size() < count)
            skipped += static_cast<char>(plainReader.read());
        EXPECT_EQ(skipped, expected) << kind.name << ", seed " << seed << ", call " << i;

        ReaderCall call = draws.call();
        call.kind = draws.oneIn(2) ? ReaderCall::PEEK : call.kind;
        EXPECT_EQ(outcome(call, reader, *input.device, input.stream),
                  outcome(call, plainReader, *input.source, input.sourceStream))
            << kind.name << ", seed " << seed << ", call " << i << ": "
            << ::testing::PrintToString(call);
    }
    return shown;
}

class TextReaderBesidePlain : public ::testing::TestWithParam<InputKind> {};

TEST_P(TextReaderBesidePlain, DoesTheSameWhateverIsAccepted) {
    for (int acceptNewlines = 0; acceptNewlines < 16; ++acceptNewlines)
        for (unsigned seed = 0; seed < 60; seed += DRAWN_EVERY) {
            const unsigned own = static_cast<unsigned>(acceptNewlines) * 1000 + seed;
            ASSERT_NO_FATAL_FAILURE(expectPlainReading(GetParam(), acceptNewlines, own));
        }
}

TEST_P(TextReaderBesidePlain, ReadsBlocksOfEverySizeTheSame) {
    const std::string bytes = "a\r\nb\n\rc\r\rd\n\n\xff\r\ne\n";
    for (std::size_t size = 0; size <= bytes.size() + 1; ++size)
        for (int acceptNewlines = 0; acceptNewlines < 16; ++acceptNewlines) {
            Input input = GetParam().open(bytes);
            TextReader reader(input.device, acceptNewlines);
            plain::Reader plainReader(*input.source, acceptNewlines);
            ReaderCall call{};
            call.kind = ReaderCall::BLOCK;
            call.size = size;
            call.tells = true;
            for (std::size_t i = 0; i < bytes.size() / (size + 1) + 2; ++i)
                ASSERT_EQ(outcome(call, reader, *input.device, input.stream),
                          outcome(call, plainReader, *input.source, input.sourceStream))
                    << "block " << i << " of " << size << ", accepting " << acceptNewlines;
        }
}

TEST_P(TextReaderBesidePlain, SkipsWhatIsAtHand) {
    std::size_t shown = 0;
    for (unsigned seed = 0; seed < 400 && !HasFailure(); ++seed)
        shown += expectPlainSkips(GetParam(), seed);
    EXPECT_EQ(shown > 0, GetParam().buffered);
}

INSTANTIATE_TEST_SUITE_P(Kinds, TextReaderBesidePlain, ::testing::ValuesIn(inputKinds()),
                         inputKindName);

}  // namespace
}  // namespace moxtel::io
