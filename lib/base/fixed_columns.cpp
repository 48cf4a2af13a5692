#include "base/fixed_columns.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstddef>

namespace base {

namespace {

void put_right_justified(char* field, std::size_t width, std::string_view number) {
    if (number.size() > width) {
        std::fill_n(field, width, '*');
        return;
    }
    const std::size_t blanks = width - number.size();
    std::fill_n(field, blanks, ' ');
    std::copy(number.begin(), number.end(), field + blanks);
}

/// Room for one more field at the end of a line.
char* grown(std::string& line, int width) {
    const std::size_t before = line.size();
    line.resize(before + static_cast<std::size_t>(width));
    return line.data() + before;
}

}  // namespace

void put_integer(char* field, int width, int value) {
    char* first = field + width;  // of what is written: from the last digit to the sign
    bool fits = true;
    const auto put = [&](char c) {
        fits = fits && first != field;
        if (fits) {
            *--first = c;
        }
    };
    auto rest = static_cast<unsigned>(value);
    rest = value < 0 ? 0 - rest : rest;
    do {
        put(static_cast<char>('0' + rest % 10));
        rest /= 10;
    } while (rest != 0);
    if (value < 0) {
        put('-');
    }
    std::fill(field, fits ? first : field + width, fits ? ' ' : '*');
}

void put_real(char* field, int width, int decimals, double value) {
    char digits[512];  // the largest double has 309 digits before its point
    std::string_view number;
    if (std::isfinite(value)) {
        const auto result = std::to_chars(digits, digits + sizeof digits, value, std::chars_format::fixed, decimals);
        if (result.ec != std::errc{}) {
            std::fill_n(field, static_cast<std::size_t>(width), '*');
            return;
        }
        number = {digits, static_cast<std::size_t>(result.ptr - digits)};
    } else {
        number = std::isnan(value) ? "NaN" : std::signbit(value) ? "-Infinity" : "Infinity";
    }
    put_right_justified(field, static_cast<std::size_t>(width), number);
}

void put_text(char* field, int width, std::string_view value) {
    put_right_justified(field, static_cast<std::size_t>(width), value.substr(0, static_cast<std::size_t>(width)));
}

void append_integer(std::string& line, int width, int value) { put_integer(grown(line, width), width, value); }

void append_real(std::string& line, int width, int decimals, double value) {
    put_real(grown(line, width), width, decimals, value);
}

void append_text(std::string& line, int width, std::string_view value) { put_text(grown(line, width), width, value); }

}  // namespace base
