#include "base/fixed_columns.hpp"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <random>
#include <string>

using namespace displacement_generator;

namespace {

/// What the C library writes, as a field: a number that needs more than `width` columns is asterisks.
std::string printed(int width, int decimals, double value) {
    std::array<char, 512> digits{};
    const int size = std::snprintf(digits.data(), digits.size(), "%*.*f", width, decimals, value);
    return size > width ? std::string(static_cast<std::size_t>(width), '*') : std::string(digits.data());
}

std::string real_field(int width, int decimals, double value) {
    std::string line;
    base::append_real(line, width, decimals, value);
    return line;
}

TEST(fixed_columns, integers_are_right_justified) {
    struct row {
        int width;
        int value;
        const char* expected;
    };
    const row rows[] = {
        {5, 0, "    0"},
        {5, 42, "   42"},
        {5, -42, "  -42"},
        {5, 99999, "99999"},
        {5, 100000, "*****"},
        {5, -9999, "-9999"},
        {5, -10000, "*****"},
        {1, 9, "9"},
        {1, 10, "*"},
        {1, -1, "*"},
        {11, INT_MIN, "-2147483648"},
        {10, INT_MIN, "**********"},
        {12, INT_MAX, "  2147483647"},
    };
    for (const row& tested : rows) {
        SCOPED_TRACE(tested.value);
        std::string line;
        base::append_integer(line, tested.width, tested.value);
        EXPECT_EQ(line, tested.expected);
    }
}

TEST(fixed_columns, texts_are_right_justified_and_cut) {
    struct row {
        int width;
        const char* value;
        const char* expected;
    };
    const row rows[] = {{4, "", "    "},      {4, "ab", "  ab"},  {4, "abcd", "abcd"},
                        {4, "abcde", "abcd"}, {4, "a  ", " a  "}, {1, "xyz", "x"}};
    for (const row& tested : rows) {
        SCOPED_TRACE(tested.value);
        std::string line;
        base::append_text(line, tested.width, tested.value);
        EXPECT_EQ(line, tested.expected);
    }
}

TEST(fixed_columns, reals_have_their_decimals_and_a_sign_that_is_kept) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    constexpr double no_number = std::numeric_limits<double>::quiet_NaN();
    struct row {
        int width;
        int decimals;
        double value;
        const char* expected;
    };
    const row rows[] = {
        {10, 4, 0.0, "    0.0000"},
        {10, 4, -0.0, "   -0.0000"},
        {10, 4, 1.0, "    1.0000"},
        {10, 4, -0.00004, "   -0.0000"},
        {10, 4, 0.00005, "    0.0001"},  // the double is a little more than a tie
        {10, 8, 1e-9, "0.00000000"},
        {11, 8, -1e-300, "-0.00000000"},
        {11, 8, 5e-324, " 0.00000000"},
        {11, 8, 5e-9, " 0.00000001"},  // the double is a little more than a tie
        {20, 9, 2147483647.9999998, "2147483647.999999762"},
        {20, 9, 2147483648.0, "2147483648.000000000"},
        {14, 0, 2147483647.5, "    2147483648"},  // a tie
        {14, 0, 2147483646.5, "    2147483646"},
        {10, 4, 99999.99994, "99999.9999"},
        {10, 4, 99999.99996, "**********"},  // rounds up to one digit more
        {10, 4, -9999.99996, "**********"},
        {6, 1, 0.25, "   0.2"},  // ties go to the even digit
        {6, 1, 0.75, "   0.8"},
        {6, 0, 0.5, "     0"},
        {6, 0, 1.5, "     2"},
        {6, 0, 2.5, "     2"},
        {6, 0, -3.5, "    -4"},
        {12, 3, infinity, "    Infinity"},
        {12, 3, -infinity, "   -Infinity"},
        {12, 3, no_number, "         NaN"},
        {12, 3, -no_number, "         NaN"},
        {8, 3, -infinity, "********"},
        {9, 3, -infinity, "-Infinity"},
        {8, 3, infinity, "Infinity"},
        {7, 3, infinity, "*******"},
        {3, 1, no_number, "NaN"},
        {2, 1, no_number, "**"},
        {20, 4, 1e300, "********************"},
        {20, 4, -1e300, "********************"},
        {40, 30, 0.1, "        0.100000000000000005551115123126"},
        {1, 0, 9.4, "9"},
        {1, 0, 9.5, "*"},
        {70, 66, 0.5, "  0.500000000000000000000000000000000000000000000000000000000000000000"},
    };
    for (const row& tested : rows) {
        SCOPED_TRACE(tested.value);
        EXPECT_EQ(real_field(tested.width, tested.decimals, tested.value), tested.expected);
    }
}

TEST(fixed_columns, a_real_of_more_than_512_characters_is_asterisks) {
    EXPECT_EQ(real_field(520, 509, 1.5), std::string(9, ' ') + "1.5" + std::string(508, '0'));
    EXPECT_EQ(real_field(520, 510, 1.5), std::string(8, ' ') + "1.5" + std::string(509, '0'));
    EXPECT_EQ(real_field(520, 511, 1.5), std::string(520, '*'));
    EXPECT_EQ(real_field(310, 0, 1e308), ' ' + printed(309, 0, 1e308));
}

TEST(fixed_columns, reals_are_what_the_c_library_writes) {
    std::mt19937_64 random(static_cast<unsigned>(testing::UnitTest::GetInstance()->random_seed()));
    const auto below = [&](std::uint64_t limit) { return static_cast<int>(random() % limit); };
    const auto any_bits = [&] { return std::bit_cast<double>(random()); };
    const auto coordinate = [&] { return static_cast<double>(static_cast<std::int64_t>(random())) * 0x1p-58; };
    const auto tie = [&] { return std::ldexp(below(200001) - 100000, -below(12)); };
    const auto decimal_tie = [&] { return (2 * below(2000001) - 2000001) * 0.5 / std::pow(10.0, below(9)); };
    const auto any_size = [&] { return std::ldexp(coordinate(), 40 - below(180)); };
    const auto about_a_power = [&] {
        double value = std::ldexp(1.0, 33 - below(80));
        for (int steps = below(4); steps > 0; --steps) {
            value = std::nextafter(value, below(2) == 0 ? 0.0 : 1e300);
        }
        return value;
    };
    for (int i = 0; i < 30000; ++i) {
        for (const double value : {any_bits(), coordinate(), tie(), decimal_tie(), any_size(), about_a_power()}) {
            const int width = 1 + below(60);
            const int decimals = below(20);
            if (std::isfinite(value)) {
                ASSERT_EQ(real_field(width, decimals, value), printed(width, decimals, value))
                    << std::hexfloat << value;
            }
        }
    }
}

TEST(fixed_columns, a_field_is_written_without_touching_what_is_beside_it) {
    std::string line = "<12345678>";
    base::put_real(line.data() + 1, 8, 3, -1.5);
    EXPECT_EQ(line, "<  -1.500>");
    base::put_integer(line.data() + 1, 8, 123456789);
    EXPECT_EQ(line, "<********>");
    base::put_text(line.data() + 1, 8, "ab");
    EXPECT_EQ(line, "<      ab>");
}

TEST(fixed_columns, fields_follow_one_another_at_the_end_of_a_line) {
    std::string line = "head";
    base::append_integer(line, 4, 7);
    base::append_real(line, 8, 2, 2.0);
    base::append_text(line, 3, "x");
    EXPECT_EQ(line, "head   7    2.00  x");
}

}  // namespace
