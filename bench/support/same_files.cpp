#include "same_files.hpp"

#include <algorithm>
#include <cstddef>
#include <fstream>
#include <stdexcept>
#include <vector>

#include "check.hpp"

namespace bench {

namespace {

constexpr std::size_t BLOCK = std::size_t{1} << 20;

/// Fills the block as far as the file lasts.
void readBlock(std::ifstream& file, std::vector<char>& block) {
    block.resize(BLOCK);
    file.read(block.data(), static_cast<std::streamsize>(BLOCK));
    block.resize(static_cast<std::size_t>(file.gcount()));
}

std::ifstream opened(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file)
        throw std::runtime_error("cannot read " + path);
    return file;
}

}  // namespace

void checkSameFiles(const std::string& left, const std::string& right) {
    std::ifstream leftFile = opened(left);
    std::ifstream rightFile = opened(right);
    std::vector<char> leftBlock;
    std::vector<char> rightBlock;
    std::size_t line = 1;
    do {
        readBlock(leftFile, leftBlock);
        readBlock(rightFile, rightBlock);
        const auto differs =
            std::mismatch(leftBlock.begin(), leftBlock.end(), rightBlock.begin(), rightBlock.end())
                .first;
        line += static_cast<std::size_t>(std::count(leftBlock.begin(), differs, '\n'));
        check(leftBlock == rightBlock,
              left + " and " + right + " differ in line " + std::to_string(line));
    } while (!leftBlock.empty());
}

}  // namespace bench
