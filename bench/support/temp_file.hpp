#pragma once

#include <functional>
#include <ostream>
#include <string>

namespace bench {

/// A file in the folder for temporary files. It is removed together with this object.
class TempFile {
  public:
    /// Makes the file and fills it by `write`. Throws `std::runtime_error` when there is no room
    /// for it.
    explicit TempFile(const std::function<void(std::ostream&)>& write = [](std::ostream&) {});
    TempFile(const TempFile&) = delete;
    TempFile& operator=(const TempFile&) = delete;
    ~TempFile();

    const std::string& path() const { return m_path; }

  private:
    std::string m_path;
};

/// The content of a file; empty when the file cannot be opened.
std::string contentOf(const std::string& path);

}  // namespace bench
