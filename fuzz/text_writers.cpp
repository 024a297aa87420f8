#include <algorithm>
#include <cstddef>
#include <memory>
#include <sstream>
#include <string>

#include <moxtel/text.hpp>

#include "input.hpp"
#include "memory_file.hpp"
#include "require.hpp"
#include "targets.hpp"

namespace fuzz {

namespace {

using moxtel::io::Device;
using moxtel::io::TextWriter;

constexpr std::size_t MOST_BYTES = 60;

/// The text that a writer must have written, limited by the room for it.
struct Model {
    std::size_t room;
    std::string text = {};
    std::size_t row = 0;
    std::size_t col = 0;

    bool isFull() const { return text.size() == room; }

    std::size_t write(char c) {
        if (isFull())
            return 0;
        text += c;
        row += c == '\n' ? 1 : 0;
        col = c == '\n' ? 0 : col + 1;
        return 1;
    }
    std::size_t write(const std::string& characters) {
        std::size_t written = 0;
        for (const char c : characters)
            written += write(c);
        return written;
    }
};

void operate(Input& input, TextWriter& writer, Model& model) {
    while (!input.empty()) {
        switch (input.byte() % 8) {
            case 0: {
                const int c = input.byte();
                requireEqual("a character", writer.write(c), model.write(static_cast<char>(c)));
                break;
            }
            case 1:
                requireEqual("a line end", writer.writeLine(), model.write('\n'));
                break;
            case 2: {
                const std::string text = input.text(MOST_BYTES);
                requireEqual("a block", writer.write(text.data(), text.size()), model.write(text));
                break;
            }
            case 3: {
                const std::string text = input.text(MOST_BYTES);
                requireEqual("a text", writer.write(text), model.write(text));
                break;
            }
            case 4: {
                // The second number is the end of the part.
                const std::string text = input.text(MOST_BYTES);
                const std::size_t begin = input.byte() % (MOST_BYTES + 8);
                const std::uint8_t last = input.byte();
                const std::size_t end = last == 255 ? std::string::npos : last % (MOST_BYTES + 8);
                const bool pastEnd = end == std::string::npos || begin + end > text.size();
                const std::size_t stop = pastEnd ? text.size() : end;
                const std::string part = begin < stop ? text.substr(begin, stop - begin) : "";
                requireEqual("a part", writer.write(text, begin, end), model.write(part));
                break;
            }
            case 5: {
                const std::string text = input.text(MOST_BYTES).c_str();
                requireEqual("a C text", writer.writeString(text.c_str()), model.write(text));
                break;
            }
            case 6: {
                const std::string text = input.text(MOST_BYTES).c_str();
                requireEqual("a line", writer.writeLine(text.c_str()), model.write(text + '\n'));
                break;
            }
            default: {
                // A copy continues at the position of the writer.
                TextWriter copy(writer);
                writer = copy;
            }
        }
        requireEqual("the row", writer.row(), model.row);
        if (!model.isFull())
            requireEqual("the column", writer.col(), model.col);
    }
}

void toStream(Input& input) {
    std::ostringstream out;
    TextWriter writer(out);
    Model model{std::string::npos};
    operate(input, writer, model);
    requireEqual("the text", out.str(), model.text);
}

void toArray(Input& input) {
    const std::size_t room = input.byte();
    const std::unique_ptr<char[]> array(new char[room]());
    Model model{room};
    {
        TextWriter writer(Device::wrapArray(array.get(), room, moxtel::io::OPEN_WRITE));
        operate(input, writer, model);
    }
    model.text.resize(room);
    requireEqual("the array", std::string(array.get(), room), model.text);
}

void toFile(Input& input) {
    const MemoryFile file("old");
    Model model{std::string::npos};
    {
        TextWriter writer = TextWriter::fromFile(file.path());
        operate(input, writer, model);
    }
    requireEqual("the file", file.content(), model.text);
}

void toNothing(Input& input) {
    TextWriter writer;
    Model model{0};
    operate(input, writer, model);
}

}  // namespace

void fuzzTextWriters(Bytes bytes) {
    constexpr void (*kinds[])(Input&) = {toStream, toArray, toFile, toNothing};
    Input input(bytes);
    kinds[input.byte() % 4](input);
}

}  // namespace fuzz
