#include "base/free_format.hpp"

#include <cmath>
#include <limits>

#include "base/fixed_columns.hpp"
#include "harness.hpp"

using namespace displacement_generator;

// The input is one record. Its fields are taken off by the program and by the other reader, and each is read as every
// kind of number; what is written is read back.

namespace {

using base::field_kind;
using base::number_status;

void check_real(std::string_view field) {
    const double untouched = -12.5;
    double value = untouched;
    const number_status status = base::read_real(field, value);
    const std::optional<double> expected = fuzz::real(field);
    if (!expected) {
        fuzz::check(status == number_status::not_a_number, "what is not a number is not read as a real");
    } else if (std::isinf(*expected)) {
        fuzz::check(status == number_status::out_of_range, "what no double can hold is out of range");
    } else {
        fuzz::check(status == number_status::ok, "a real is read");
        fuzz::check(fuzz::same_bits(value, *expected), "a real is the double nearest to what is written");
    }
    fuzz::check(status == number_status::ok || fuzz::same_bits(value, untouched), "a failure leaves the real alone");
}

void check_integer(std::string_view field) {
    const int untouched = -77;
    int value = untouched;
    const number_status status = base::read_integer(field, value);
    const std::optional<long double> expected = fuzz::integer(field);
    if (!expected) {
        fuzz::check(status == number_status::not_a_number, "what is not a number is not read as an integer");
    } else if (*expected < std::numeric_limits<int>::min() || *expected > std::numeric_limits<int>::max()) {
        fuzz::check(status == number_status::out_of_range, "what 4 bytes cannot hold is out of range");
    } else {
        fuzz::check(status == number_status::ok && value == *expected, "an integer is what is written");
    }
    fuzz::check(status == number_status::ok || value == untouched, "a failure leaves the integer alone");
}

/// Every field lies in the record, in order, with nothing between them but blanks and one comma.
void check_fields(std::string_view record) {
    const std::vector<fuzz::field> expected = fuzz::fields(record);
    std::string_view rest = record;
    std::string_view field;
    std::string joined;
    std::size_t n = 0;
    for (;;) {
        const std::string_view before = rest;
        const field_kind kind = base::next_field(rest, field);
        fuzz::check(before.ends_with(rest), "what is left is the end of what there was");
        if (kind == field_kind::end) {
            joined += before;
            break;
        }
        fuzz::check(n < expected.size() && (kind == field_kind::value) == expected[n].has_value(),
                    "there are as many fields, and as many of them are empty");
        fuzz::check(field == expected[n].value_or(""), "a field has the characters that stand there");
        const std::string_view taken = before.substr(0, before.size() - rest.size());
        const std::size_t begin = taken.find_first_not_of(" \t");
        const bool whole = begin != std::string_view::npos && taken.substr(begin).starts_with(field);
        fuzz::check(whole, "a field follows nothing but blanks");
        const std::string_view gap = taken.substr(begin + field.size());
        const std::size_t comma = gap.find(',');
        fuzz::check(gap.find_first_not_of(" \t,") == std::string_view::npos &&
                        (comma == std::string_view::npos || comma + 1 == gap.size()),
                    "a field is followed by blanks and at most one comma");
        joined += taken;
        ++n;
        check_real(field);
        check_integer(field);
    }
    fuzz::check(n == expected.size(), "no field is left out");
    fuzz::check(joined == record, "the fields and what is between them make up the record");
    fuzz::check(field.empty() && (rest.empty() || rest.front() == '/'), "the fields end at a slash or with the record");
    const std::string_view end = rest;
    fuzz::check(base::next_field(rest, field) == field_kind::end && rest == end, "the end stays the end");
}

/// A text of n characters, read from a record, beside the same by hand.
template <std::size_t n>
void check_text(std::string_view record) {
    const base::text<n> untouched("?");
    base::text<n> item = untouched;
    std::string_view rest = record;
    const field_kind kind = base::next_text(rest, item);
    fuzz::check(kind == field_kind::value || item == untouched, "without a value a text stays what it was");
    const std::size_t begin = record.find_first_not_of(" \t");
    if (begin != std::string_view::npos && (record[begin] == '\'' || record[begin] == '"')) {
        const char mark = record[begin];
        std::string value;
        std::size_t at = begin + 1;
        while (at < record.size() && (record[at] != mark || record.substr(at + 1).starts_with(mark))) {
            value += record[at];
            at += record[at] == mark ? std::size_t{2} : std::size_t{1};
        }
        fuzz::check((kind == field_kind::value) == (at < record.size()), "a quoted text needs its second mark");
        fuzz::check(kind != field_kind::value || item == base::text<n>(std::string_view(value)),
                    "a quoted text is read");
        return;
    }
    std::string_view same_rest = record;
    std::string_view field;
    fuzz::check(base::next_field(same_rest, field) == kind && same_rest == rest, "a plain text is a field");
    fuzz::check(kind != field_kind::value || item == base::text<n>(field), "a plain text is cut or padded");
}

/// Any text at all comes back from between two marks, and what follows it is still there.
void check_quoted(std::string_view text, char mark) {
    std::string record = " ";
    record += mark;
    for (const char c : text) {
        record += c;
        if (c == mark) {
            record += mark;
        }
    }
    record += mark;
    record += " , next";
    std::string_view rest = record;
    base::text<200> item;
    fuzz::check(base::next_text(rest, item) == field_kind::value, "a quoted text is a text");
    fuzz::check(item == base::text<200>(text), "what is between the marks is what was written");
    std::string_view field;
    fuzz::check(base::next_field(rest, field) == field_kind::value && field == "next",
                "what follows a quoted text is the next field");
}

void check_columns(double value) {
    for (const auto& [width, decimals] : {std::pair{14, 8}, std::pair{10, 6}, std::pair{15, 9}, std::pair{30, 0}}) {
        std::string column;
        base::append_real(column, width, decimals, value);
        fuzz::check_equal(column, fuzz::in_columns(value, static_cast<std::size_t>(width), decimals),
                          "a real in columns is what the C library prints, or asterisks");
    }
    const std::string number = fuzz::in_full(value);
    double again = 0.0;
    fuzz::check(std::isfinite(value)
                    ? base::read_real(number, again) == number_status::ok && fuzz::same_bits(again, value)
                    : base::read_real(number, again) == number_status::not_a_number,
                "17 digits give back the double");
}

void check_columns(int value) {
    std::string column;
    base::append_integer(column, 12, value);
    std::string_view rest = column;
    std::string_view field;
    int again = 0;
    fuzz::check(column.size() == 12 && base::next_field(rest, field) == field_kind::value &&
                    base::read_integer(field, again) == number_status::ok && again == value,
                "an integer in columns is read back");
    column.clear();
    base::append_integer(column, 6, value);
    fuzz::check(value > 999999 || value < -99999 ? column == "******" : std::stoi(column) == value,
                "an integer that does not fit its columns shows as asterisks");
}

/// A number with many zeros before or behind the digits that count, and an exponent that may make up for them: both
/// ends of the range of a double lie within reach.
std::string drawn_number(fuzz::draw& values) {
    const std::size_t zeros = 2 * values.below(256);
    const std::size_t digits = values.below(40);
    const bool small = values.flag();
    const int off = values.integer() % 350;
    std::string number = values.flag() ? "-" : "";
    number += small ? "0." + std::string(zeros, '0') : "";
    for (std::size_t i = 0; i <= digits; ++i) {
        number += static_cast<char>('0' + values.below(10));
    }
    number += small ? "" : std::string(zeros, '0');
    return number + "eEdD"[values.below(4)] +
           std::to_string(off + static_cast<int>(small ? zeros : 0) - static_cast<int>(small ? 0 : zeros));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::vector<char> bytes(data, data + size);  // exactly as long as it is: what looks behind it is seen
    const std::string_view record(bytes.data(), bytes.size());
    check_fields(record);
    check_real(record);
    check_integer(record);
    check_text<1>(record);
    check_text<2>(record);
    check_text<200>(record);
    check_quoted(record, '\'');
    check_quoted(record, '"');
    fuzz::draw values(record);
    check_columns(values.any_real());
    check_columns(values.integer());
    check_real(drawn_number(values));
    if (const std::optional<double> value = fuzz::real(record); value && std::isfinite(*value)) {
        check_columns(*value);
    }
    return 0;
}
