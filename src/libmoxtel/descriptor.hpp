#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace moxtel::io {

/// A file descriptor under the name that errors call it by. Interrupted calls are made again and
/// short ones go on, so that each operation does the whole or throws `FileError`.
class Descriptor {
  public:
    /// Opens the file `path` with these flags of `open`; it is closed with the object.
    Descriptor(const std::string& path, int flags);

    /// An open descriptor that stays the caller's.
    Descriptor(int descriptor, const std::string& name);

    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor();

    /// False when the file could not be opened, and after `close`.
    bool isOpen() const { return m_descriptor >= 0; }

    /// Up to `n` bytes; 0 at the end of the file, and for a directory.
    std::size_t read(char* buf, std::size_t n);

    /// All of `text`. When that fails in the midst of a line, the beginning of that line is taken
    /// back, as far as this call wrote it, where the file is a regular one that ends there.
    void write(std::string_view text);

    /// Closes the descriptor, or a copy of one that stays the caller's: some systems tell only then
    /// that what was written is lost. Throws what a failed write threw before.
    void close();

  private:
    void m_takeBack(std::size_t n);

    int m_descriptor;
    bool m_owned;
    std::string m_name;
    int m_failure = 0;  ///< Why a write failed; 0 when none did.
};

}  // namespace moxtel::io
