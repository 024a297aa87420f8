#include "temp_file.hpp"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace bench {

TempFile::TempFile(const std::function<void(std::ostream&)>& write)
    : m_path((std::filesystem::temp_directory_path() / "quarvis-bench-XXXXXX").string()) {
    const int file = mkstemp(m_path.data());
    if (file == -1)
        throw std::runtime_error("no temporary file " + m_path);
    close(file);
    std::ofstream out(m_path);
    write(out);
    if (!out.flush()) {
        unlink(m_path.c_str());
        throw std::runtime_error("no room for the temporary file " + m_path);
    }
}

TempFile::~TempFile() {
    unlink(m_path.c_str());
}

std::string contentOf(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

}  // namespace bench
