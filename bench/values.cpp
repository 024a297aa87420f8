/// Measures the parsing of values beside the conversions of the standard library, and binary
/// records beside the same fields by `fwrite` and `fread`.

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#include <moxtel/binary.hpp>
#include <moxtel/parse.hpp>

#include "support/check.hpp"
#include "support/draws.hpp"
#include "support/duel_table.hpp"
#include "support/program.hpp"
#include "support/temp_file.hpp"

namespace {

using bench::Arguments;
using bench::Draws;
using bench::DuelTable;
using bench::TempFile;
using moxtel::io::BinaryReader;
using moxtel::io::BinaryWriter;

constexpr std::uint64_t SEED = 8859;

template <class T>
std::string formatted(const char* format, T value) {
    char text[64];
    std::snprintf(text, sizeof text, format, value);
    return text;
}

/// Parses all texts in both ways and compares the results by `equal`.
template <class T>
void measureParse(DuelTable& table, const std::string& name, const std::vector<std::string>& texts,
                  T (*standard)(const char*), bool (*equal)(T, T)) {
    std::vector<T> here(texts.size());
    std::vector<T> expected(texts.size());
    const auto parseHere = [&] {
        for (std::size_t i = 0; i < texts.size(); ++i)
            here[i] = moxtel::string::parse<T>(texts[i]);
    };
    const auto parseStandard = [&] {
        for (std::size_t i = 0; i < texts.size(); ++i)
            expected[i] = standard(texts[i].c_str());
    };
    parseHere();
    parseStandard();
    for (std::size_t i = 0; i < texts.size(); ++i)
        bench::check(equal(here[i], expected[i]), name + " of " + texts[i]);
    table.measure(name, texts.size(), parseHere, parseStandard);
}

void measureParsing(const Arguments& arguments) {
    Draws draws(SEED);
    std::vector<std::string> times;
    std::vector<std::string> counts;
    std::vector<std::string> measures;
    std::vector<std::string> exponents;
    for (std::size_t i = 0; i < arguments.rows; ++i) {
        times.push_back(std::to_string(1'200'000'000 + draws.below(400'000'000)));
        counts.push_back(std::to_string(draws.below(1000)));
        measures.push_back(formatted("%g", draws.uniform()));
        exponents.push_back(formatted("%.16e", draws.uniform() * std::pow(10, draws.below(30))));
    }

    DuelTable table("Values from text", "values", arguments.runs);
    const auto toUnsigned = [](const char* text) {
        return static_cast<unsigned int>(std::strtoul(text, nullptr, 10));
    };
    const auto sameUnsigned = [](unsigned int a, unsigned int b) { return a == b; };
    measureParse<unsigned int>(table, "unsigned, 10 digits: strtoul", times, toUnsigned,
                               sameUnsigned);
    measureParse<unsigned int>(table, "unsigned, to 3 digits: strtoul", counts, toUnsigned,
                               sameUnsigned);
    const auto toDouble = [](const char* text) { return std::strtod(text, nullptr); };
    // The standard library's last bits may differ from the nearest value.
    const auto nearDouble = [](double a, double b) {
        return std::abs(a - b) <= 1e-13 * std::abs(b);
    };
    measureParse<double>(table, "double, 6 digits: strtod", measures, toDouble, nearDouble);
    measureParse<double>(table, "double, 17 digits and exponent: strtod", exponents, toDouble,
                         nearDouble);
}

struct Record {
    std::uint32_t id;
    double value;
    std::string name;  // shorter than 65536 bytes

    bool operator==(const Record&) const = default;
};

std::vector<Record> records(std::size_t number) {
    Draws draws(SEED);
    std::vector<Record> all;
    for (std::uint32_t i = 0; i < number; ++i)
        all.push_back({i, draws.uniform(), std::string(1 + draws.below(20), 'n')});
    return all;
}

void writeHere(BinaryWriter out, const std::vector<Record>& all) {
    for (const Record& record : all) {
        out.writeUI32(record.id);
        out.writeDouble(record.value);
        out.writePStr16(record.name, 0, record.name.size());
    }
}

std::vector<Record> readHere(BinaryReader in, std::size_t number) {
    std::vector<Record> all(number);
    for (Record& record : all) {
        record.id = in.readUI32();
        record.value = in.readDouble();
        record.name = in.readPStr16();
    }
    return all;
}

void writeStandard(std::FILE* out, const std::vector<Record>& all) {
    for (const Record& record : all) {
        const auto size = static_cast<std::uint16_t>(record.name.size());
        std::fwrite(&record.id, sizeof record.id, 1, out);
        std::fwrite(&record.value, sizeof record.value, 1, out);
        std::fwrite(&size, sizeof size, 1, out);
        std::fwrite(record.name.data(), 1, size, out);
    }
    std::fclose(out);
}

std::vector<Record> readStandard(std::FILE* in, std::size_t number) {
    std::vector<Record> all(number);
    for (Record& record : all) {
        std::uint16_t size = 0;
        std::size_t got = std::fread(&record.id, sizeof record.id, 1, in);
        got += std::fread(&record.value, sizeof record.value, 1, in);
        got += std::fread(&size, sizeof size, 1, in);
        record.name.resize(size);
        got += std::fread(record.name.data(), 1, size, in);
        bench::checkCount("fields of a record", got, 3U + size);
    }
    std::fclose(in);
    return all;
}

/// `fwrite` writes numbers in the byte order of this machine. To compare the bytes, that must be
/// the little-endian order of the library's files.
void measureBinary(const Arguments& arguments) {
    const std::vector<Record> all = records(arguments.rows);
    const std::size_t number = all.size();
    const TempFile here;
    const TempFile standard;
    std::vector<Record> read;

    const auto toFile = [&] { writeHere(BinaryWriter::fromFile(here.path()), all); };
    const auto toStandard = [&] { writeStandard(std::fopen(standard.path().c_str(), "wb"), all); };
    toFile();
    toStandard();
    std::string bytes = bench::contentOf(here.path());
    bench::check(bytes == bench::contentOf(standard.path()), "the binary file");
    const auto inMemory = [&] {
        writeHere(BinaryWriter(bytes.data(), bytes.size(), moxtel::ENDIAN_LITTLE), all);
    };
    const auto fromFile = [&] { read = readHere(BinaryReader::fromFile(here.path()), number); };
    const auto fromMemory = [&] {
        read = readHere(BinaryReader(bytes.data(), bytes.size(), moxtel::ENDIAN_LITTLE), number);
    };
    const auto fromStandard = [&] {
        read = readStandard(std::fopen(standard.path().c_str(), "rb"), number);
    };
    bytes.assign(bytes.size(), '\0');
    inMemory();
    bench::check(bytes == bench::contentOf(standard.path()), "the binary records in memory");
    for (const std::function<void()>& reading :
         {std::function<void()>(fromFile), std::function<void()>(fromMemory),
          std::function<void()>(fromStandard)}) {
        read.clear();
        reading();
        bench::check(read == all, "the binary records read back");
    }

    DuelTable table("Binary records of 4 + 8 + 2 + 1..20 bytes", "records", arguments.runs);
    table.measure("write a file: fwrite", number, toFile, toStandard);
    table.measure("write memory: fwrite to a file", number, inMemory, toStandard);
    table.measure("read a file: fread", number, fromFile, fromStandard);
    table.measure("read memory: fread from a file", number, fromMemory, fromStandard);
}

void run(const Arguments& arguments) {
    measureParsing(arguments);
    measureBinary(arguments);
}

}  // namespace

int main(int argc, char** argv) {
    return bench::runProgram(argc, argv, run);
}
