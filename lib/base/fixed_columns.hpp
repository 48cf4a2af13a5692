#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

// Fields of fixed-column output, each exactly `width` columns. A number that does not fit its field shows as asterisks,
// and so does a real of more than 512 characters in any field.

namespace displacement_generator::base {

/// Writes an integer, right-justified, with no plus sign.
///   field  out  `width` characters
inline void put_integer(char* field, int width, int value) {  // here, as most callers know their width beforehand
    std::fill_n(field, width, ' ');
    char* first = field + width;
    auto rest = static_cast<std::uint32_t>(value);
    rest = value < 0 ? 0 - rest : rest;
    do {
        if (first == field) {
            std::fill_n(field, width, '*');
            return;
        }
        *--first = static_cast<char>('0' + rest % 10);
        rest /= 10;
    } while (rest != 0);
    if (value < 0) {
        if (first == field) {
            std::fill_n(field, width, '*');
            return;
        }
        *--first = '-';
    }
}

/// Writes a real in fixed notation with `decimals` digits after the point, right-justified. It is rounded from its
/// exact binary value, a tie to the even digit; a minus sign is kept by a negative zero and by what rounds to zero.
/// What is not finite shows as Infinity, -Infinity or NaN.
///   field     out  `width` characters
///   decimals  in   0 or more
void put_real(char* field, int width, int decimals, double value);

/// Writes a text, right-justified; of a text longer than the field its first `width` characters.
///   field  out  `width` characters
inline void put_text(char* field, int width, std::string_view value) {
    const std::size_t length = std::min(value.size(), static_cast<std::size_t>(width));
    std::fill_n(field, width, ' ');
    std::copy_n(value.data(), length, field + width - length);
}

/// The same fields at the end of a growing text.
void append_integer(std::string& line, int width, int value);
void append_real(std::string& line, int width, int decimals, double value);
void append_text(std::string& line, int width, std::string_view value);

}  // namespace displacement_generator::base
