#include <algorithm>
#include <cstddef>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>

#include <moxtel/device.hpp>

#include "input.hpp"
#include "memory_file.hpp"
#include "require.hpp"
#include "support/plain_input.hpp"
#include "targets.hpp"

namespace fuzz {

namespace {

using moxtel::io::Device;
using moxtel::io::SeekWhence;

constexpr std::size_t MOST_BYTES = 40;
constexpr long MOST_OFFSET = 64;

SeekWhence whenceOf(std::uint8_t code) {
    constexpr SeekWhence all[] = {moxtel::io::WHENCE_SET, moxtel::io::WHENCE_CUR,
                                  moxtel::io::WHENCE_END};
    return all[code % 3];
}

/// Bytes and one position for reading and writing.
struct Model {
    std::string bytes;
    bool reads;
    bool writes;
    bool seeks;  ///< Also beyond the end; a write there fills the gap with zeros.
    std::size_t at = 0;

    std::string read(std::size_t n) {
        if (!reads || at >= bytes.size())
            return "";
        const std::string taken = bytes.substr(at, n);
        at += taken.size();
        return taken;
    }
    std::size_t write(const std::string& text) {
        if (!writes)
            return 0;
        std::size_t n = text.size();
        if (seeks && n > 0)
            bytes.resize(std::max(bytes.size(), at + n));
        n = std::min(n, bytes.size() - std::min(at, bytes.size()));
        std::copy_n(text.begin(), n, bytes.begin() + static_cast<std::ptrdiff_t>(at));
        at += n;
        return n;
    }
    void seek(long off, SeekWhence whence) {
        const std::size_t from = whence == moxtel::io::WHENCE_SET   ? 0
                                 : whence == moxtel::io::WHENCE_CUR ? at
                                                                    : bytes.size();
        const long to = static_cast<long>(from) + off;
        if (seeks && to >= 0)
            at = static_cast<std::size_t>(to);
    }
};

void requireRead(Device& device, Model& model, std::size_t n) {
    std::string got(n, '\0');
    got.resize(device.read(got.data(), n));
    requireEqual("a read", got, model.read(n));
}

/// Performs the operations of the input on the device and on the model.
void operate(Input& input, Device& device, Model& model) {
    while (!input.empty()) {
        switch (const std::uint8_t code = input.byte(); code % 8) {
            case 0:
            case 1:
                requireRead(device, model, input.byte() % MOST_BYTES);
                break;
            case 2: {
                const int c = device.read();
                const std::string expected = model.read(1);
                requireEqual("a byte", c,
                             expected.empty() ? -1 : static_cast<signed char>(expected[0]));
                break;
            }
            case 3:
            case 4: {
                const std::string text = input.text(MOST_BYTES);
                requireEqual("a write", device.write(text.data(), text.size()), model.write(text));
                break;
            }
            case 5: {
                const char c = static_cast<char>(input.byte());
                requireEqual("a byte written", device.write(c), model.write({c}) == 1);
                break;
            }
            default: {
                const long off = input.byte() % (2 * MOST_OFFSET) - MOST_OFFSET;
                const SeekWhence whence = whenceOf(code / 8);
                code % 2 == 0 ? device.seekg(off, whence) : device.seekp(off, whence);
                model.seek(off, whence);
            }
        }
        requireEqual("the position", std::streamoff(device.tellg()),
                     static_cast<std::streamoff>(model.at));
        requireEqual("the position of writing", std::streamoff(device.tellp()),
                     static_cast<std::streamoff>(model.at));
    }
}

void fileForReading(Input& input) {
    const std::string content = input.text(MOST_BYTES);
    const MemoryFile file(content);
    const std::unique_ptr<Device> device(Device::fromFile(file.path(), moxtel::io::OPEN_READ));
    Model model{content, true, false, true};
    operate(input, *device, model);
}

void fileForWriting(Input& input) {
    const MemoryFile file(input.text(MOST_BYTES));
    std::unique_ptr<Device> device(Device::fromFile(file.path(), moxtel::io::OPEN_WRITE));
    Model model{"", false, true, true};
    operate(input, *device, model);
    device.reset();
    requireEqual("the file", file.content(), model.bytes);
}

void array(Input& input) {
    // The array has the exact size, so that the address sanitizer detects access beyond it.
    const std::string content = input.text(MOST_BYTES);
    const std::unique_ptr<char[]> bytes(new char[content.size()]);
    std::copy(content.begin(), content.end(), bytes.get());
    const std::unique_ptr<Device> device(
        Device::wrapArray(bytes.get(), content.size(), moxtel::io::OPEN_READ_WRITE));
    Model model{content, true, true, false};
    operate(input, *device, model);
    requireEqual("the array", std::string(bytes.get(), content.size()), model.bytes);
}

void string(Input& input) {
    const std::string content = input.text(MOST_BYTES);
    const std::size_t start = input.byte() % (MOST_BYTES + 2);
    const std::size_t size = input.byte();
    std::unique_ptr<Device> device;
    try {
        device.reset(Device::wrapString(content, start, size));
    } catch (const std::out_of_range&) {
        requireEqual("whether it is refused", start > content.size(), true);
        return;
    }
    Model model{content.substr(start, size), true, false, false};
    operate(input, *device, model);
}

/// A device over an input stream, compared with direct calls of the same stream.
void inputStream(Input& input) {
    const std::string content = input.text(MOST_BYTES);
    std::istringstream in(content);
    std::istringstream other(content);
    const std::unique_ptr<Device> device(Device::wrap(static_cast<std::istream&>(in)));
    moxtel::io::plain::StreamSource plain(other);
    while (!input.empty()) {
        const std::uint8_t code = input.byte();
        const std::size_t n = input.byte() % MOST_BYTES;
        switch (code % 4) {
            case 0: {
                std::string got(n, '\0');
                std::string expected(n, '\0');
                const std::size_t size = device->read(got.data(), n);
                requireEqual("the size of a read", size, plain.read(expected.data(), n));
                requireEqual("a read", got, expected);
                break;
            }
            case 1:
                requireEqual("a byte", device->read(), plain.read());
                break;
            case 2: {
                const long off = static_cast<long>(n) - 8;
                device->seekg(off, whenceOf(code / 4));
                plain.seekg(off, whenceOf(code / 4));
                break;
            }
            default:
                requireEqual("the position", std::streamoff(device->tellg()),
                             std::streamoff(plain.tellg()));
        }
        requireEqual("the state", in.rdstate(), other.rdstate());
    }
}

void outputStream(Input& input) {
    std::ostringstream out;
    const std::unique_ptr<Device> device(Device::wrap(static_cast<std::ostream&>(out)));
    Model model{"", false, true, true};
    while (!input.empty()) {
        switch (input.byte() % 3) {
            case 0: {
                const std::string text = input.text(MOST_BYTES);
                requireEqual("a write", device->write(text.data(), text.size()), model.write(text));
                break;
            }
            case 1: {
                const char c = static_cast<char>(input.byte());
                requireEqual("a byte written", device->write(c), model.write({c}) == 1);
                break;
            }
            default: {
                // Never beyond the end: a string stream would fail from then on.
                const auto off = static_cast<long>(input.byte() % (model.bytes.size() + 1));
                device->seekp(off, moxtel::io::WHENCE_SET);
                model.seek(off, moxtel::io::WHENCE_SET);
            }
        }
        requireEqual("the position", std::streamoff(device->tellp()),
                     static_cast<std::streamoff>(model.at));
    }
    requireEqual("the text", out.str(), model.bytes);
}

}  // namespace

void fuzzDevices(Bytes bytes) {
    constexpr void (*kinds[])(Input&) = {fileForReading, fileForWriting, array,
                                         string,         inputStream,    outputStream};
    Input input(bytes);
    kinds[input.byte() % 6](input);
}

}  // namespace fuzz
