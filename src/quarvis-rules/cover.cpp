#include "cover.hpp"

#include "bit_kernels.hpp"

namespace quarvis::rule {

namespace {

std::size_t wordsOf(std::size_t size) {
    return (size + 63) / 64;
}

}  // namespace

Cover intersect(const Cover& a, const Cover& b, std::size_t size, CoverStorage& storage) {
    Cover common;
    if (a.isBitmap() && b.isBitmap()) {
        const std::size_t words = wordsOf(size);
        common.count = bitKernels().countCommon(a.words, b.words, words);
        if (keptAsBitmap(common.count, size)) {
            storage.words.resize(words);
            for (std::size_t i = 0; i < words; ++i)
                storage.words[i] = a.words[i] & b.words[i];
            common.words = storage.words.data();
            return common;
        }
    }
    storage.positions.clear();
    forEachCommon(a, b, size, [&storage](Position at) {
        storage.positions.push_back(at);
        return true;
    });
    common.count = static_cast<std::uint32_t>(storage.positions.size());
    common.positions = storage.positions.data();
    return common;
}

std::uint32_t countCommon(const Cover& a, const Cover& b, std::size_t size, std::uint32_t least) {
    if (a.isBitmap() && b.isBitmap())
        return bitKernels().countCommon(a.words, b.words, wordsOf(size));
    std::uint32_t count = 0;
    if (a.isBitmap() || b.isBitmap()) {
        const Cover& bitmap = a.isBitmap() ? a : b;
        const Cover& list = a.isBitmap() ? b : a;
        for (std::uint32_t i = 0; i < list.count && count + (list.count - i) >= least; ++i)
            count += bitmap.contains(list.positions[i]) ? 1 : 0;
        return count;
    }
    std::uint32_t i = 0;
    std::uint32_t j = 0;
    while (i < a.count && j < b.count && count + (a.count - i) >= least) {
        const Position left = a.positions[i];
        const Position right = b.positions[j];
        count += left == right ? 1 : 0;
        i += left <= right ? 1 : 0;
        j += right <= left ? 1 : 0;
    }
    return count;
}

}  // namespace quarvis::rule
