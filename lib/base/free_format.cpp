#include "base/free_format.hpp"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <string>
#include <system_error>

namespace displacement_generator::base {

namespace {

bool is_digit(char c) { return c >= '0' && c <= '9'; }
bool is_blank(char c) { return c == ' ' || c == '\t'; }
bool is_separator(char c) { return is_blank(c) || c == ',' || c == '/'; }

std::string_view without_leading_blanks(std::string_view record) {
    while (!record.empty() && is_blank(record.front())) {
        record.remove_prefix(1);
    }
    return record;
}

/// `rest` after a field: one comma belongs to the field before it.
std::string_view after_separator(std::string_view rest) {
    rest = without_leading_blanks(rest);
    if (!rest.empty() && rest.front() == ',') {
        rest.remove_prefix(1);
    }
    return rest;
}

/// The sign of a number, taken off its front.
bool take_minus(std::string_view& field) {
    const bool minus = !field.empty() && field.front() == '-';
    if (minus || (!field.empty() && field.front() == '+')) {
        field.remove_prefix(1);
    }
    return minus;
}

std::size_t take_digits(std::string_view& field) {
    const auto* last = std::find_if_not(field.begin(), field.end(), is_digit);
    const auto count = static_cast<std::size_t>(last - field.begin());
    field.remove_prefix(count);
    return count;
}

/// Reads a magnitude of at most 16 characters, digits with or without a point and nothing else, as nearly all are. With
/// a point they are at most 15 digits: both these, as an integer, and the power of ten below are doubles then, and
/// their quotient is the double nearest to what is written. Without one the integer becomes the nearest double. Result:
/// false where it is another magnitude, or none.
bool read_short_magnitude(std::string_view field, double& magnitude) {
    constexpr std::size_t longest = 16;
    static constexpr double divisors[] = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                          1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
    if (field.size() > longest) {
        return false;
    }
    const char* c = field.data();
    const char* end = c + field.size();
    std::int64_t whole = 0;
    const auto take = [&] {
        const char* first = c;
        for (; c != end && is_digit(*c); ++c) {
            whole = 10 * whole + (*c - '0');
        }
        return c - first;
    };
    std::ptrdiff_t digits = take();
    std::ptrdiff_t decimals = 0;
    if (c != end && *c == '.') {
        ++c;
        decimals = take();
        digits += decimals;
    }
    if (c != end || digits == 0) {
        return false;
    }
    magnitude = static_cast<double>(whole) / divisors[decimals];
    return true;
}

/// Whether a number that does not fit a double is too small for one rather than too large: the decimal exponent of its
/// first digit that is not zero tells, as the two ends of the range lie far on either side of 1.
///   mantissa  in  digits, with or without a point, one of them not zero
///   exponent  in  digits with an optional minus
bool is_tiny(std::string_view mantissa, std::string_view exponent) {
    const std::size_t point = std::min(mantissa.find('.'), mantissa.size());
    const std::size_t first = mantissa.find_first_of("123456789");
    const long long place = static_cast<long long>(point) - static_cast<long long>(first);
    long long power = 0;
    if (std::from_chars(exponent.data(), exponent.data() + exponent.size(), power).ec ==
        std::errc::result_out_of_range) {
        return exponent.front() == '-';
    }
    return power < -place;
}

/// Reads any magnitude.
number_status read_magnitude(std::string_view field, double& magnitude) {
    std::string_view rest = field;
    std::size_t digits = take_digits(rest);
    if (!rest.empty() && rest.front() == '.') {
        rest.remove_prefix(1);
        digits += take_digits(rest);
    }
    const std::string_view mantissa = field.substr(0, field.size() - rest.size());
    std::string_view exponent = "0";
    std::string with_e;
    if (!rest.empty()) {
        const char letter = rest.front();
        if (std::string_view("EeDd").find(letter) == std::string_view::npos) {
            return number_status::not_a_number;
        }
        rest.remove_prefix(1);
        exponent = rest;
        if (!take_minus(rest)) {
            exponent = rest;
        }
        if (take_digits(rest) == 0 || !rest.empty()) {
            return number_status::not_a_number;
        }
        if (letter == 'D' || letter == 'd') {
            with_e = field;
            with_e[mantissa.size()] = 'e';
            field = with_e;
        }
    }
    if (digits == 0) {
        return number_status::not_a_number;
    }
    magnitude = 0.0;
    if (mantissa.find_first_of("123456789") != std::string_view::npos) {
        const auto result = std::from_chars(field.data(), field.data() + field.size(), magnitude);
        if (result.ec == std::errc::result_out_of_range) {
            if (!is_tiny(mantissa, exponent)) {
                return number_status::out_of_range;
            }
            magnitude = 0.0;
        }
    }
    return number_status::ok;
}

}  // namespace

field_kind next_field(std::string_view& rest, std::string_view& field) {
    rest = without_leading_blanks(rest);
    field = {};
    if (rest.empty() || rest.front() == '/') {
        return field_kind::end;
    }
    std::size_t size = 0;
    while (size != rest.size() && !is_separator(rest[size])) {
        ++size;
    }
    field = rest.substr(0, size);
    rest = after_separator(rest.substr(field.size()));
    return field.empty() ? field_kind::null : field_kind::value;
}

field_kind next_text(std::string_view& rest, text_ref item) {
    std::string_view record = without_leading_blanks(rest);
    if (record.empty() || (record.front() != '\'' && record.front() != '"')) {
        std::string_view field;
        const field_kind kind = next_field(rest, field);
        if (kind == field_kind::value) {
            item.assign(field);
        }
        return kind;
    }
    const char mark = record.front();
    std::string value;
    for (std::size_t i = 1; i < record.size(); ++i) {
        if (record[i] == mark) {
            if (i + 1 == record.size() || record[i + 1] != mark) {
                rest = after_separator(record.substr(i + 1));
                item.assign(value);
                return field_kind::value;
            }
            ++i;
        }
        value += record[i];
    }
    rest = record;
    return field_kind::end;
}

number_status read_real(std::string_view field, double& value) {
    const bool minus = take_minus(field);
    double magnitude = 0.0;
    if (!read_short_magnitude(field, magnitude)) {
        const number_status status = read_magnitude(field, magnitude);
        if (status != number_status::ok) {
            return status;
        }
    }
    value = minus ? -magnitude : magnitude;
    return number_status::ok;
}

number_status read_integer(std::string_view field, int& value) {
    const bool minus = take_minus(field);
    std::string_view digits = field;
    if (take_digits(digits) == 0 || !digits.empty()) {
        return number_status::not_a_number;
    }
    std::string number = minus ? "-" : "";
    number += field;
    if (std::from_chars(number.data(), number.data() + number.size(), value).ec != std::errc{}) {
        return number_status::out_of_range;
    }
    return number_status::ok;
}

}  // namespace displacement_generator::base
