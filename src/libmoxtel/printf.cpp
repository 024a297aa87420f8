#include <moxtel/printf.hpp>

#include <cstddef>
#include <cstdio>
#include <memory>
#include <stdexcept>

#include "printf_specifier.hpp"

namespace moxtel::string {

std::string vstrprintf(const std::string& fmt, std::va_list args) {
    return vstrprintf(fmt.c_str(), args);
}

std::string vstrprintf(const char* fmt, std::va_list args) {
    std::va_list copy;
    va_copy(copy, args);
    const int length = std::vsnprintf(nullptr, 0, fmt, copy);
    va_end(copy);
    if (length < 0)
        throw std::invalid_argument("vstrprintf: a value cannot be encoded");
    const auto size = static_cast<std::size_t>(length) + 1;
    const std::unique_ptr<char[]> buffer(new char[size]);
    std::vsnprintf(buffer.get(), size, fmt, args);
    return std::string(buffer.get());
}

namespace {

bool isOneOf(char c, const char* characters) {
    for (; *characters != '\0'; ++characters)
        if (*characters == c)
            return true;
    return false;
}

}  // namespace

std::size_t consumePrintfSpecifier(const std::string& src, std::size_t i, std::size_t len) {
    const std::size_t start = i++;
    if (i >= len)
        return start;
    // A terminator stands past the end of the text, and no step below accepts it.
    const auto at = [&src](std::size_t position) {
        return position < src.size() ? src[position] : '\0';
    };
    char c = at(i);
    // A flag is stepped over but stays the character that the later steps see. Digits and a point
    // are not taken. So no specifier with a flag, a width in digits or a precision is recognised.
    if (isOneOf(c, " #+-0"))
        ++i;
    if (c == '*')
        c = at(++i);
    if (isOneOf(c, "Ljtz")) {
        c = at(++i);
    } else if (c == 'h' || c == 'l') {
        if (at(i + 1) == c)
            ++i;
        c = at(++i);
    }
    return isOneOf(c, "%AEFGXadefgnopsux") ? i : start;
}

}  // namespace moxtel::string
