#pragma once

#include <functional>
#include <ostream>
#include <string>

namespace bench {

/// A file in the folder for temporary files, which is removed at the end of the object.
class TempFile {
  public:
    /// Filled by `write`. Throws `std::runtime_error` when there is no room for it.
    explicit TempFile(const std::function<void(std::ostream&)>& write = [](std::ostream&) {});
    TempFile(const TempFile&) = delete;
    TempFile& operator=(const TempFile&) = delete;
    ~TempFile();

    const std::string& path() const { return m_path; }

  private:
    std::string m_path;
};

/// The whole of a file; empty when it cannot be opened.
std::string contentOf(const std::string& path);

}  // namespace bench
