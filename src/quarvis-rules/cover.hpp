#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace quarvis::rule {

/// A place in the list of histories of one item.
using Position = std::uint32_t;

/// The cover of an item set within the histories of its first item: the positions, in the list of
/// that item's histories, of those that contain the set. A bitmap where that is no larger than the
/// list of the positions, which it else is. A view.
struct Cover {
    std::uint32_t count = 0;
    const std::uint64_t* words = nullptr;  ///< The bitmap, or null.
    const Position* positions = nullptr;   ///< The ascending list, when there is no bitmap.

    bool isBitmap() const { return words != nullptr; }
    bool contains(Position at) const { return (words[at / 64] >> (at % 64) & 1) != 0; }
};

/// Whether `count` of `size` positions are kept as a bitmap.
inline bool keptAsBitmap(std::size_t count, std::size_t size) {
    return count * 32 >= size;
}

/// Room for one cover.
struct CoverStorage {
    std::vector<std::uint64_t> words;
    std::vector<Position> positions;
};

/// The intersection of two covers of one first item with `size` histories, in `storage`.
Cover intersect(const Cover& a, const Cover& b, std::size_t size, CoverStorage& storage);

/// The number of positions common to two covers; a number below `least` when that is below `least`.
std::uint32_t countCommon(const Cover& a, const Cover& b, std::size_t size, std::uint32_t least);

/// Calls `visit` with each position common to both, ascending, until it returns false.
template <class Visit>
void forEachCommon(const Cover& a, const Cover& b, std::size_t size, Visit visit) {
    if (a.isBitmap() && b.isBitmap()) {
        for (std::size_t word = 0; word * 64 < size; ++word)
            for (std::uint64_t bits = a.words[word] & b.words[word]; bits != 0; bits &= bits - 1)
                if (!visit(static_cast<Position>(word * 64 +
                                                 static_cast<std::size_t>(std::countr_zero(bits)))))
                    return;
    } else if (a.isBitmap() || b.isBitmap()) {
        const Cover& bitmap = a.isBitmap() ? a : b;
        const Cover& list = a.isBitmap() ? b : a;
        for (std::uint32_t i = 0; i < list.count; ++i)
            if (bitmap.contains(list.positions[i]) && !visit(list.positions[i]))
                return;
    } else {
        std::uint32_t i = 0;
        std::uint32_t j = 0;
        while (i < a.count && j < b.count) {
            const Position left = a.positions[i];
            const Position right = b.positions[j];
            if (left == right && !visit(left))
                return;
            i += left <= right ? 1 : 0;
            j += right <= left ? 1 : 0;
        }
    }
}

}  // namespace quarvis::rule
