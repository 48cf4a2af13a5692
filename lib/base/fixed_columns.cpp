#include "base/fixed_columns.hpp"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>

namespace displacement_generator::base {

namespace {

constexpr std::uint32_t powers_of_ten[] = {1, 10, 100, 1000, 10000, 100000, 1000000, 10000000, 100000000, 1000000000};
constexpr int short_decimals = 9;  ///< the last of these powers
constexpr double short_limit = 0x1p31;

/// A magnitude below `short_limit` times a power of ten, as an integer: rounded from the exact product, a tie to the
/// even one.
std::uint64_t scaled(double magnitude, std::uint32_t power_of_ten) {
    __extension__ using wide = unsigned __int128;
    // The magnitude is m / 2^shift, with m < 2^53 and a shift of 22 or more; so the product has at most 83 bits.
    // Shifted by 127 or more they round to 0: such a magnitude, 0 and those without a hidden bit included, needs no m
    // of its own.
    constexpr int mantissa_bits = 52;
    constexpr std::uint64_t hidden_bit = std::uint64_t{1} << mantissa_bits;
    const auto bits = std::bit_cast<std::uint64_t>(magnitude);
    const int shift = std::min(1075 - static_cast<int>(bits >> mantissa_bits), 127);
    const wide half = wide{1} << (shift - 1);
    const wide sum = wide{(bits & (hidden_bit - 1)) | hidden_bit} * power_of_ten + half;
    const auto rounded = static_cast<std::uint64_t>(sum >> shift);
    const bool tie = sum << (128 - shift) == 0;
    return tie ? rounded - rounded % 2 : rounded;
}

/// The digits of a magnitude below `short_limit` with at most `short_decimals` after its point, before `last`. Result:
/// where the first one stands.
char* put_short_magnitude(char* last, int decimals, double magnitude) {
    std::uint64_t rest = scaled(magnitude, powers_of_ten[decimals]);
    const auto put_digit = [&] {
        *--last = static_cast<char>('0' + rest % 10);
        rest /= 10;
    };
    if (decimals > 0) {
        for (int i = 0; i < decimals; ++i) {
            put_digit();
        }
        *--last = '.';
    }
    do {
        put_digit();
    } while (rest != 0);
    return last;
}

/// Room for one more field at the end of a line.
char* grown(std::string& line, int width) {
    const std::size_t before = line.size();
    line.resize(before + static_cast<std::size_t>(width));
    return line.data() + before;
}

}  // namespace

void put_real(char* field, int width, int decimals, double value) {
    char digits[512];  // the largest double has 309 digits before its point
    std::string_view number;
    const double magnitude = std::abs(value);
    if (magnitude < short_limit && decimals <= short_decimals) {
        char* last = digits + sizeof digits;
        char* first = put_short_magnitude(last, decimals, magnitude);
        first[-1] = '-';  // no branch: it would be mispredicted for every other number
        first -= std::signbit(value) ? 1 : 0;
        number = {first, static_cast<std::size_t>(last - first)};
    } else if (std::isfinite(value)) {
        const auto result = std::to_chars(digits, digits + sizeof digits, value, std::chars_format::fixed, decimals);
        if (result.ec != std::errc{}) {
            std::fill_n(field, static_cast<std::size_t>(width), '*');
            return;
        }
        number = {digits, static_cast<std::size_t>(result.ptr - digits)};
    } else {
        number = std::isnan(value) ? "NaN" : std::signbit(value) ? "-Infinity" : "Infinity";
    }
    if (number.size() > static_cast<std::size_t>(width)) {
        std::fill_n(field, width, '*');
    } else {
        put_text(field, width, number);
    }
}

void append_integer(std::string& line, int width, int value) { put_integer(grown(line, width), width, value); }

void append_real(std::string& line, int width, int decimals, double value) {
    put_real(grown(line, width), width, decimals, value);
}

void append_text(std::string& line, int width, std::string_view value) { put_text(grown(line, width), width, value); }

}  // namespace displacement_generator::base
