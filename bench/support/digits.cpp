#include "digits.hpp"

namespace bench {

void appendDigits(std::string& text, char prefix, std::size_t number, std::size_t width) {
    text += prefix;
    const std::size_t first = text.size();
    text.append(width - 1, '0');
    for (std::size_t at = text.size(); at > first && number != 0; number /= 10)
        text[--at] = static_cast<char>('0' + number % 10);
}

}  // namespace bench
