#include "base/free_format.hpp"

#include <gtest/gtest.h>
#include <regex.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <random>
#include <string>

using namespace displacement_generator;

namespace {

using base::field_kind;
using base::number_status;

/// All fields of a record in one text: "[FIELD]" for a value, "," for a null one, then "|" and what is left behind
/// them.
std::string fields_of(std::string_view record) {
    std::string result;
    std::string_view rest = record;
    for (;;) {
        std::string_view field = "before";
        const field_kind kind = base::next_field(rest, field);
        if (kind == field_kind::end) {
            EXPECT_EQ(field, "");
            return result + '|' + std::string(rest);
        }
        EXPECT_EQ(field.empty(), kind == field_kind::null);
        result += kind == field_kind::null ? "," : '[' + std::string(field) + ']';
    }
}

TEST(free_format, fields_are_separated_by_blanks_tabs_or_one_comma) {
    struct row {
        const char* record;
        const char* expected;
    };
    const row rows[] = {
        {"", "|"},
        {"   ", "|"},
        {" \t ", "|"},
        {"a", "[a]|"},
        {"  a  ", "[a]|"},
        {"a b", "[a][b]|"},
        {"O,0.0,0.0,0.117", "[O][0.0][0.0][0.117]|"},
        {"  H   0.0   0.757  -0.470", "[H][0.0][0.757][-0.470]|"},
        {"a\tb\t\tc", "[a][b][c]|"},
        {"a , b", "[a][b]|"},
        {"a\t,\tb", "[a][b]|"},
        {"a,,b", "[a],[b]|"},
        {"a, ,b", "[a],[b]|"},
        {",a", ",[a]|"},
        {" , , a", ",,[a]|"},
        {"a,", "[a]|"},
        {"a,,", "[a],|"},
        {"a ,b ,", "[a][b]|"},
        {"a/b", "[a]|/b"},
        {"a / b", "[a]|/ b"},
        {"a,/b", "[a]|/b"},
        {"a,,/b", "[a],|/b"},
        {"/", "|/"},
        {"  /a", "|/a"},
        {"C(Iso=13) 1;2", "[C(Iso=13)][1;2]|"},
        {"a\rb", "[a\rb]|"},
        {"'a b'", "['a][b']|"},
    };
    for (const row& tested : rows) {
        SCOPED_TRACE(tested.record);
        EXPECT_EQ(fields_of(tested.record), tested.expected);
    }
}

TEST(free_format, fields_stay_over_once_they_are_over) {
    for (const char* record : {"", "  ", "/ 1 2"}) {
        SCOPED_TRACE(record);
        std::string_view rest = record;
        std::string_view field;
        EXPECT_EQ(base::next_field(rest, field), field_kind::end);
        const std::string_view left = rest;
        EXPECT_EQ(base::next_field(rest, field), field_kind::end);
        EXPECT_EQ(rest.data(), left.data());
        EXPECT_EQ(rest.size(), left.size());
    }
}

TEST(free_format, text_items_are_cut_or_padded) {
    struct row {
        const char* record;
        field_kind kind;
        const char* item;  ///< "??" where it is unchanged
        const char* rest;
    };
    const row rows[] = {
        {"C 1", field_kind::value, "C ", "1"},
        {"Cl 1", field_kind::value, "Cl", "1"},
        {"C12,1", field_kind::value, "C1", "1"},
        {"  Carbon", field_kind::value, "Ca", ""},
        {"", field_kind::end, "??", ""},
        {"   ", field_kind::end, "??", ""},
        {"/C", field_kind::end, "??", "/C"},
        {",C", field_kind::null, "??", "C"},
        {"'C' 1", field_kind::value, "C ", "1"},
        {R"("C" 1)", field_kind::value, "C ", "1"},
        {" 'C' , 1", field_kind::value, "C ", " 1"},
        {"' H',1", field_kind::value, " H", "1"},
        {"'/,' 1", field_kind::value, "/,", "1"},
        {"'a''b' 1", field_kind::value, "a'", "1"},
        {R"("a""b" 1)", field_kind::value, "a\"", "1"},
        {"'\"' 1", field_kind::value, "\" ", "1"},
        {R"("'" 1)", field_kind::value, "' ", "1"},
        {"''''", field_kind::value, "' ", ""},
        {"'' 1", field_kind::value, "  ", "1"},
        {"'C'1", field_kind::value, "C ", "1"},
        {"'C", field_kind::end, "??", "'C"},
        {"  'C 1", field_kind::end, "??", "'C 1"},
        {"'", field_kind::end, "??", "'"},
        {"'''", field_kind::end, "??", "'''"},
        {"'C\"", field_kind::end, "??", "'C\""},
        {"O' 1", field_kind::value, "O'", "1"},
    };
    for (const row& tested : rows) {
        SCOPED_TRACE(tested.record);
        std::string_view rest = tested.record;
        base::text<2> item("??");
        EXPECT_EQ(base::next_text(rest, item), tested.kind);
        EXPECT_EQ(std::string_view(item), tested.item);
        EXPECT_EQ(rest, tested.rest);
    }
}

TEST(free_format, reals_may_have_a_sign_a_point_and_an_exponent) {
    struct row {
        const char* field;
        double expected;
    };
    const row rows[] = {
        {"0", 0.0},
        {"-0", -0.0},
        {"+0", 0.0},
        {"1", 1.0},
        {"+1", 1.0},
        {"-1", -1.0},
        {"1.", 1.0},
        {".5", 0.5},
        {"-.5", -0.5},
        {"007.50", 7.5},
        {"1.5D0", 1.5},
        {"1.5d0", 1.5},
        {"1.5E0", 1.5},
        {"1.5e0", 1.5},
        {"1.5D+01", 15.0},
        {"125D-02", 1.25},
        {"1.e1", 10.0},
        {".1e1", 1.0},
        {"1e-400", 0.0},
        {"-1e-400", -0.0},
        {"0e400", 0.0},
        {"-0e400", -0.0},
        {"0.000e99999", 0.0},
        {"5e-324", 0x1p-1074},
        {"2e-324", 0.0},
        {"0.1", 0x1.999999999999ap-4},
        {"1.7976931348623157e308", 0x1.fffffffffffffp1023},
        {"1e-99999999999999999999", 0.0},
        {"-1e-99999999999999999999", -0.0},
        {"0e99999999999999999999", 0.0},
        {"1e00000000000000000000000000001", 10.0},
    };
    for (const row& tested : rows) {
        SCOPED_TRACE(tested.field);
        double value = -77.0;
        EXPECT_EQ(base::read_real(tested.field, value), number_status::ok);
        EXPECT_EQ(std::bit_cast<std::uint64_t>(value), std::bit_cast<std::uint64_t>(tested.expected));
    }
}

TEST(free_format, reals_out_of_range_or_malformed_leave_the_value) {
    struct row {
        const char* field;
        number_status expected;
    };
    const row rows[] = {
        {"1e309", number_status::out_of_range},
        {"-1e309", number_status::out_of_range},
        {"1.8e308", number_status::out_of_range},
        {"1e99999999999999999999", number_status::out_of_range},
        {"0.0001e99999999999999999999", number_status::out_of_range},
        {"", number_status::not_a_number},
        {"+", number_status::not_a_number},
        {"-", number_status::not_a_number},
        {".", number_status::not_a_number},
        {"-.", number_status::not_a_number},
        {"e5", number_status::not_a_number},
        {".e5", number_status::not_a_number},
        {"1e", number_status::not_a_number},
        {"1e+", number_status::not_a_number},
        {"1e-+5", number_status::not_a_number},
        {"1e5.0", number_status::not_a_number},
        {"1e5x", number_status::not_a_number},
        {"+-1", number_status::not_a_number},
        {"--1", number_status::not_a_number},
        {"1-5", number_status::not_a_number},
        {"1.2.3", number_status::not_a_number},
        {"1q5", number_status::not_a_number},
        {"0x10", number_status::not_a_number},
        {"1 ", number_status::not_a_number},
        {" 1", number_status::not_a_number},
        {"Inf", number_status::not_a_number},
        {"infinity", number_status::not_a_number},
        {"NaN", number_status::not_a_number},
        {"abc", number_status::not_a_number},
        {"1,5", number_status::not_a_number},
    };
    for (const row& tested : rows) {
        SCOPED_TRACE(tested.field);
        double value = -77.0;
        EXPECT_EQ(base::read_real(tested.field, value), tested.expected);
        EXPECT_EQ(value, -77.0);
    }
}

class random_fields {
  public:
    /// Any few characters of which numbers are made, most often no number.
    std::string soup() { return characters("0123456789.+-eEdD", 1 + below(9)); }

    /// A real, most often one that some double is near to.
    std::string real() {
        std::string field = sign();
        field += characters("0123456789", below(4) == 0 ? below(400) : below(20));
        if (below(3) != 0) {
            field += '.' + characters("0123456789", below(4) == 0 ? below(400) : below(20));
        }
        if (below(2) != 0) {
            field +=
                characters("eEdD", 1) + sign() + characters("0", below(3)) + characters("0123456789", 1 + below(3));
        }
        return field;
    }

    std::string integer() { return sign() + characters("0", below(3)) + characters("0123456789", below(12)); }

  private:
    std::size_t below(std::size_t limit) { return random_() % limit; }
    std::string sign() {
        static const char* const signs[] = {"", "", "+", "-"};
        return signs[below(4)];
    }
    std::string characters(std::string_view from, std::size_t count) {
        std::string result;
        while (result.size() < count) {
            result += from[below(from.size())];
        }
        return result;
    }

    std::mt19937 random_{static_cast<unsigned>(testing::UnitTest::GetInstance()->random_seed())};
};

/// A regular expression that a whole field matches or not.
class pattern {
  public:
    explicit pattern(const char* expression) {
        EXPECT_EQ(::regcomp(&compiled_, expression, REG_EXTENDED | REG_NOSUB), 0);
    }
    ~pattern() { ::regfree(&compiled_); }
    pattern(const pattern&) = delete;
    pattern& operator=(const pattern&) = delete;

    [[nodiscard]] bool matches(const std::string& field) const {
        return ::regexec(&compiled_, field.c_str(), 0, nullptr, 0) == 0;
    }

  private:
    regex_t compiled_{};
};

double read_by_library(std::string field) {
    std::replace(field.begin(), field.end(), 'd', 'e');
    std::replace(field.begin(), field.end(), 'D', 'e');
    return std::strtod(field.c_str(), nullptr);
}

TEST(free_format, reals_are_what_the_c_library_reads) {
    const pattern real("^[+-]?([0-9]+[.]?[0-9]*|[.][0-9]+)([eEdD][+-]?[0-9]+)?$");
    random_fields fields;
    int numbers = 0;
    for (int i = 0; i < 20000; ++i) {
        const std::string field = i % 2 == 0 ? fields.soup() : fields.real();
        SCOPED_TRACE(field);
        double value = -77.0;
        const number_status status = base::read_real(field, value);
        if (!real.matches(field)) {
            ASSERT_EQ(status, number_status::not_a_number);
            ASSERT_EQ(value, -77.0);
            continue;
        }
        ++numbers;
        const double expected = read_by_library(field);
        if (std::isfinite(expected)) {
            ASSERT_EQ(status, number_status::ok);
            ASSERT_EQ(std::bit_cast<std::uint64_t>(value), std::bit_cast<std::uint64_t>(expected));
        } else {
            ASSERT_EQ(status, number_status::out_of_range);
            ASSERT_EQ(value, -77.0);
        }
    }
    EXPECT_GT(numbers, 8000);
}

// Numbers as they stand in inputs, of few digits and of as many as a double has and a few more.
TEST(free_format, decimals_are_what_the_c_library_reads) {
    std::mt19937_64 random(static_cast<unsigned>(testing::UnitTest::GetInstance()->random_seed()));
    for (int i = 0; i < 20000; ++i) {
        const std::size_t size = 1 + random() % 19;
        const std::string digits = std::to_string(random() % 10000000000000000000U).substr(0, size);
        const std::size_t point = random() % (digits.size() + 1);
        std::string field = digits.substr(0, point);
        field += i % 8 == 0 ? "" : ".";
        field += digits.substr(point);
        SCOPED_TRACE(field);
        double value = -77.0;
        ASSERT_EQ(base::read_real(field, value), number_status::ok);
        ASSERT_EQ(value, read_by_library(field));
    }
}

TEST(free_format, integers_are_of_four_bytes) {
    struct row {
        const char* field;
        number_status status;
        int expected;  ///< -77 where it is unchanged
    };
    const row rows[] = {
        {"0", number_status::ok, 0},
        {"+12", number_status::ok, 12},
        {"-12", number_status::ok, -12},
        {"0012", number_status::ok, 12},
        {"2147483647", number_status::ok, 2147483647},
        {"-2147483648", number_status::ok, -2147483647 - 1},
        {"2147483648", number_status::out_of_range, -77},
        {"-2147483649", number_status::out_of_range, -77},
        {"99999999999999999999999", number_status::out_of_range, -77},
        {"", number_status::not_a_number, -77},
        {"+", number_status::not_a_number, -77},
        {"-", number_status::not_a_number, -77},
        {"--1", number_status::not_a_number, -77},
        {"+-1", number_status::not_a_number, -77},
        {"1.0", number_status::not_a_number, -77},
        {"1e1", number_status::not_a_number, -77},
        {"12a", number_status::not_a_number, -77},
        {" 1", number_status::not_a_number, -77},
        {"1 ", number_status::not_a_number, -77},
    };
    for (const row& tested : rows) {
        SCOPED_TRACE(tested.field);
        int value = -77;
        EXPECT_EQ(base::read_integer(tested.field, value), tested.status);
        EXPECT_EQ(value, tested.expected);
    }
}

TEST(free_format, integers_are_what_the_c_library_reads) {
    const pattern integer("^[+-]?[0-9]+$");
    random_fields fields;
    for (int i = 0; i < 10000; ++i) {
        const std::string field = i % 3 == 0 ? fields.soup() : fields.integer();
        SCOPED_TRACE(field);
        int value = -77;
        const number_status status = base::read_integer(field, value);
        const long long expected = std::strtoll(field.c_str(), nullptr, 10);
        if (!integer.matches(field)) {
            ASSERT_EQ(status, number_status::not_a_number);
            ASSERT_EQ(value, -77);
        } else if (expected < -2147483648LL || expected > 2147483647LL) {
            ASSERT_EQ(status, number_status::out_of_range);
            ASSERT_EQ(value, -77);
        } else {
            ASSERT_EQ(status, number_status::ok);
            ASSERT_EQ(value, expected);
        }
    }
}

}  // namespace
