#pragma once

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <system_error>

namespace support {

/// A new, empty directory that is removed with the object. So tests can run in parallel and leave
/// nothing behind.
class TempDir {
  public:
    TempDir() {
        std::string name =
            (std::filesystem::temp_directory_path() / "quarvis-tests-XXXXXX").string();
        if (mkdtemp(name.data()) == nullptr)
            throw std::filesystem::filesystem_error("mkdtemp", name,
                                                    std::make_error_code(std::errc::io_error));
        m_path = name;
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;
    ~TempDir() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }

    const std::filesystem::path& path() const { return m_path; }

    /// The path of the entry `name`, which need not exist.
    std::string operator/(const std::string& name) const { return (m_path / name).string(); }

    /// Writes the file `name` and returns its path.
    std::string write(const std::string& name, const std::string& content) const {
        std::ofstream(*this / name, std::ios::binary) << content;
        return *this / name;
    }

  private:
    std::filesystem::path m_path;
};

/// The content of the file `path`; empty if it does not exist.
inline std::string fileContent(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

}  // namespace support
