#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace moxtel::io {

/// A file descriptor, with the name that errors give the file. A call that a signal interrupts is
/// made again, and a short write goes on, so each operation does all of its work or throws
/// `FileError`.
class Descriptor {
  public:
    /// Opens the file `path` with these flags of `open`. The file is closed with the object.
    Descriptor(const std::string& path, int flags);

    /// An open descriptor that stays the caller's.
    Descriptor(int descriptor, const std::string& name);

    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor();

    /// False when the file could not be opened, and after `close`.
    bool isOpen() const { return m_descriptor >= 0; }

    /// Reads up to `n` bytes. Returns the number of bytes read; 0 at the end of the file and for a
    /// directory.
    std::size_t read(char* buf, std::size_t n);

    /// Writes all of `text`. A write that fails in the midst of a line takes back the beginning of
    /// that line, as far as this call wrote it, where the file is a regular one that ends there.
    void write(std::string_view text);

    /// Closes the descriptor, or a copy of one that stays the caller's: some systems report lost
    /// data only then. Throws again what a failed write threw before.
    void close();

  private:
    void m_takeBack(std::size_t n);

    int m_descriptor;
    bool m_owned;
    std::string m_name;
    int m_failure = 0;  ///< Why a write failed; 0 when none did.
};

}  // namespace moxtel::io
