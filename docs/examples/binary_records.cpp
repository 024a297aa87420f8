// Writes records to a stream and reads them back.
#include <iostream>
#include <sstream>
#include <string>

#include <moxtel/io.hpp>

using moxtel::io::BinaryReader;
using moxtel::io::BinaryWriter;

int main() {
    std::stringstream file;

    BinaryWriter out(file, moxtel::ENDIAN_BIG);
    const std::string names[] = {"north", "south"};
    out.writeUI16(2);
    for (const std::string& name : names) {
        out.writePStr8(name, 0, name.size());
        out.writeSI32(-name.front());
    }
    std::cout << file.str().size() << " bytes\n";

    BinaryReader in(file, moxtel::ENDIAN_BIG);
    for (unsigned count = in.readUI16(); count > 0; --count) {
        const std::string name = in.readPStr8();
        std::cout << name << ' ' << in.readSI32() << '\n';
    }
}
