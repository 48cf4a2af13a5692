#include <gtest/gtest.h>

#include <string>

#include "element/element.hpp"
#include "support.hpp"

using namespace displacement_generator;

namespace {

constexpr int untouched = -77;

/// The atomic number that a symbol of n characters gives.
template <std::size_t n>
int number_of(std::string_view symbol) {
    const base::array1<int> nat("nat", 1, 1);
    const base::array1<base::text<n>> symbols("symbol", 1, 1);
    nat(1) = untouched;
    symbols(1) = symbol;
    element::get_element_name(1, nat, base::view1<base::text<n>>(symbols), "sym->nat");
    EXPECT_EQ(symbols(1), base::text<n>(symbol));
    return nat(1);
}

TEST(get_element_name, gives_the_number_of_a_symbol) {
    struct row {
        const char* symbol;
        int expected;
    };
    const row rows[] = {
        {"C ", 6},          {"o ", 8},          {"cl", 17},        {"Cl", 17},
        {"X ", 0},          {"x", 0},           {"H", 1},          {"h ", 1},
        {" H", 1},          {" c", 6},          {"fm", 100},       {"Be", 83},
        {"be", 83},         {"Ru", 94},         {"ru", 94},        {"CL", untouched},
        {"cL", untouched},  {"BR", untouched},  {"HE", untouched}, {"BE", untouched},
        {"Bi", untouched},  {"Pu", untouched},  {"Md", untouched}, {"C1", untouched},
        {"6 ", untouched},  {"  ", untouched},  {"", untouched},   {"Xx", untouched},
        {"\tC", untouched}, {"C\t", untouched}, {"[ ", untouched}, {"`a", untouched},
        {"{ ", untouched},  {"c@", untouched},  {"c[", untouched}, {"\xc3\xa9", untouched},
        {"c`", untouched},  {"b{", untouched},  {"@a", untouched}, {"[a", untouched},
    };
    for (const row& tested : rows) {
        SCOPED_TRACE(tested.symbol);
        EXPECT_EQ(number_of<2>(tested.symbol), tested.expected);
    }
}

TEST(get_element_name, takes_two_capitals_for_the_first_letter_twice) {
    // Of all pairs of capitals, no element's symbol is one letter twice.
    for (char first = 'A'; first <= 'Z'; ++first) {
        for (char second = 'A'; second <= 'Z'; ++second) {
            EXPECT_EQ(number_of<2>(std::string{first, second}), untouched) << first << second;
        }
    }
}

TEST(get_element_name, takes_symbols_of_any_length) {
    EXPECT_EQ(number_of<1>("C"), 6);
    EXPECT_EQ(number_of<1>("l"), untouched);
    EXPECT_EQ(number_of<4>("  cl"), 17);
    EXPECT_EQ(number_of<4>("   c"), 6);
    EXPECT_EQ(number_of<8>("Carbon"), 20);  // of which the first two characters are calcium's
    EXPECT_EQ(number_of<8>("H 2"), 1);
    EXPECT_EQ(number_of<8>("H2"), untouched);
}

TEST(get_element_name, gives_every_symbol_its_last_number) {
    for (int number = 0; number <= 100; ++number) {
        SCOPED_TRACE(number);
        const int expected = number == 4 ? 83 : number == 44 ? 94 : number;
        std::string symbol(element::atom(number));
        EXPECT_EQ(number_of<2>(symbol), expected);
        if (symbol[0] >= 'A') {
            symbol[0] = static_cast<char>(symbol[0] - 'A' + 'a');
        }
        EXPECT_EQ(number_of<2>(symbol), expected);
    }
}

TEST(get_element_name, gives_as_many_numbers_as_there_are_atoms) {
    const base::array1<int> nat("nat", 1, 3);
    const base::array1<base::text<2>> symbol("symbol", 1, 3);
    for (int i = 1; i <= 3; ++i) {
        symbol(i) = i == 2 ? "??" : "C";
        nat(i) = untouched;
    }
    element::get_element_name(0, nat, base::view1<base::text<2>>(symbol), "sym->nat");
    EXPECT_EQ(nat(1), untouched);
    element::get_element_name(2, nat, base::view1<base::text<2>>(symbol), "sym->nat");
    EXPECT_EQ(nat(1), 6);
    EXPECT_EQ(nat(2), untouched);
    EXPECT_EQ(nat(3), untouched);
    EXPECT_EQ(support::stopped_with(
                  [&] { element::get_element_name(4, nat, base::view1<base::text<2>>(symbol), "sym->nat"); }),
              "array 'symbol': index 4 is outside 1..3|standard error|2");
}

/// The symbol of n characters that an atomic number gives, in a direction.
template <std::size_t n>
std::string symbol_of(int number, std::string_view direction = "nat->sym") {
    const base::array1<int> nat("nat", 1, 1);
    const base::array1<base::text<n>> symbols("symbol", 1, 1);
    nat(1) = number;
    symbols(1) = "??????";
    element::get_element_name(1, nat, base::view1<base::text<n>>(symbols), direction);
    EXPECT_EQ(nat(1), number);
    return std::string(std::string_view(symbols(1)));
}

TEST(get_element_name, gives_the_symbol_of_a_number_in_every_other_direction) {
    for (int number = 0; number <= 100; ++number) {
        EXPECT_EQ(symbol_of<2>(number), std::string_view(element::atom(number)));
    }
    EXPECT_EQ(symbol_of<2>(0), "X ");
    EXPECT_EQ(symbol_of<2>(83), "Be");
    EXPECT_EQ(symbol_of<2>(94), "Ru");
    EXPECT_EQ(symbol_of<5>(17), "Cl   ");
    EXPECT_EQ(symbol_of<1>(17), "C");
    for (const char* direction :
         {"SYM->NAT", "sym->naT", "        ", "", "sym->na", "sym->na ", "nat->sym", "nat->sym  "}) {
        EXPECT_EQ(symbol_of<2>(6, direction), "C ") << direction;
    }
}

TEST(get_element_name, takes_a_direction_without_its_trailing_blanks) {
    for (const std::string& direction : {std::string("sym->nat "), "sym->nat" + std::string(200, ' ')}) {
        const base::array1<int> nat("nat", 1, 1);
        const base::array1<base::text<2>> symbol("symbol", 1, 1);
        symbol(1) = "Cl";
        element::get_element_name(1, nat, base::view1<base::text<2>>(symbol), direction);
        EXPECT_EQ(nat(1), 17) << direction;
    }
}

TEST(get_element_name, in_a_direction_of_more_than_eight_characters_stops_the_run) {
    struct row {
        std::string_view direction;
        const char* expected;
    };
    const row rows[] = {
        {"sym->nat.", "direction 'sym->nat.': expected 8 characters, found 9|standard error|2"},
        {"sym->nat  x ", "direction 'sym->nat  x': expected 8 characters, found 11|standard error|2"},
        {" sym->nat", "direction ' sym->nat': expected 8 characters, found 9|standard error|2"},
        {"nat->symbol", "direction 'nat->symbol': expected 8 characters, found 11|standard error|2"},
    };
    for (const row& tested : rows) {
        const base::array1<int> nat("nat", 1, 1);
        const base::array1<base::text<2>> symbol("symbol", 1, 1);
        nat(1) = 8;
        symbol(1) = "Cl";
        EXPECT_EQ(support::stopped_with(
                      [&] { element::get_element_name(1, nat, base::view1<base::text<2>>(symbol), tested.direction); }),
                  tested.expected);
        EXPECT_EQ(nat(1), 8);
        EXPECT_EQ(symbol(1), "Cl");
    }
}

TEST(get_element_name, of_a_number_outside_the_table_stops_the_run) {
    for (const int number : {-1, 101, 118, 2147483647, -2147483647 - 1}) {
        const base::array1<int> nat("nat", 1, 3);
        const base::array1<base::text<2>> symbol("symbol", 1, 3);
        for (int i = 1; i <= 3; ++i) {
            nat(i) = i == 2 ? number : 8;
            symbol(i) = "??";
        }
        EXPECT_EQ(support::stopped_with(
                      [&] { element::get_element_name(3, nat, base::view1<base::text<2>>(symbol), "nat->sym"); }),
                  "array 'atom': index " + std::to_string(number) + " is outside 0..100|standard error|2");
        EXPECT_EQ(symbol(1), base::text<2>("O"));
        EXPECT_EQ(symbol(2), base::text<2>("??"));
        EXPECT_EQ(symbol(3), base::text<2>("??"));
    }
}

}  // namespace
