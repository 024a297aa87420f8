#include "table.hpp"

#include <algorithm>
#include <cstdio>

namespace bench {

namespace {

constexpr std::size_t FIRST_WIDTH = 42;
constexpr std::size_t LEAST_WIDTH = 9;

}  // namespace

Table::Table(const std::string& title, const std::vector<std::string>& columns) {
    std::printf("\n### %s\n\n", title.c_str());
    for (const std::string& column : columns)
        m_widths.push_back(std::max(m_widths.empty() ? FIRST_WIDTH : LEAST_WIDTH, column.size()));
    row(columns);
    for (std::size_t i = 0; i < m_widths.size(); ++i)
        std::printf("%s%s%s", i == 0 ? "|" : "", std::string(m_widths[i] + 1, '-').c_str(),
                    i == 0 ? "-|" : ":|");
    std::printf("\n");
}

void Table::row(const std::vector<std::string>& cells) const {
    for (std::size_t i = 0; i < m_widths.size(); ++i) {
        const int width = static_cast<int>(m_widths[i]);
        std::printf(i == 0 ? "| %-*s |" : " %*s |", width, cells[i].c_str());
    }
    std::printf("\n");
    std::fflush(stdout);
}

std::string grouped(std::size_t number) {
    std::string text = std::to_string(number);
    for (std::size_t end = text.size(); end > 3; end -= 3)
        text.insert(end - 3, 1, ',');
    return text;
}

std::string fixed(double number, int digits) {
    char text[64];
    std::snprintf(text, sizeof text, "%.*f", digits, number);
    return text;
}

std::string megabytes(std::size_t bytes) {
    return fixed(static_cast<double>(bytes) / 1e6, 1);
}

std::string milliseconds(double seconds) {
    return fixed(seconds * 1e3, 2);
}

std::string millisecondRange(const Samples& seconds) {
    return milliseconds(seconds.least()) + ".." + milliseconds(seconds.greatest());
}

}  // namespace bench
