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
    char digits[16];
    const char* end = std::to_chars(digits, digits + sizeof digits, value).ptr;
    put_right_justified(field, static_cast<std::size_t>(width), {digits, static_cast<std::size_t>(end - digits)});
}

void put_real(char* field, int width, int decimals, double value) {
    char digits[64];
    std::string_view number;
    if (std::isfinite(value)) {
        const auto result = std::to_chars(digits, digits + sizeof digits, value, std::chars_format::fixed, decimals);
        // A number that does not fit 64 characters fits no field either: it shows as asterisks.
        const char* end = result.ec == std::errc{} ? result.ptr : digits + sizeof digits;
        number = {digits, static_cast<std::size_t>(end - digits)};
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
