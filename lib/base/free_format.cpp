#include "base/free_format.hpp"

#include <algorithm>
#include <charconv>
#include <string>
#include <system_error>

namespace base {

namespace {

bool is_digit(char c) { return c >= '0' && c <= '9'; }
bool is_blank(char c) { return c == ' ' || c == '\t'; }
bool is_separator(char c) { return is_blank(c) || c == ',' || c == '/'; }

std::string_view without_leading_blanks(std::string_view record) {
    const auto* first = std::find_if_not(record.begin(), record.end(), is_blank);
    return record.substr(static_cast<std::size_t>(first - record.begin()));
}

/// `rest` behind a field: one comma belongs to the field before it.
std::string_view behind_separator(std::string_view rest) {
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

}  // namespace

field_kind next_field(std::string_view& rest, std::string_view& field) {
    rest = without_leading_blanks(rest);
    field = {};
    if (rest.empty() || rest.front() == '/') {
        return field_kind::end;
    }
    const auto* last = std::find_if(rest.begin(), rest.end(), is_separator);
    field = rest.substr(0, static_cast<std::size_t>(last - rest.begin()));
    rest = behind_separator(rest.substr(field.size()));
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
                rest = behind_separator(record.substr(i + 1));
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
    double magnitude = 0.0;
    if (mantissa.find_first_of("123456789") != std::string_view::npos) {
        const auto result = std::from_chars(field.data(), field.data() + field.size(), magnitude);
        if (result.ec == std::errc::result_out_of_range) {
            if (!is_tiny(mantissa, exponent)) {
                return number_status::out_of_range;
            }
            magnitude = 0.0;
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

}  // namespace base
