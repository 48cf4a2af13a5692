#include "base/text.hpp"

#include <gtest/gtest.h>

#include <iomanip>
#include <sstream>
#include <string>
#include <utility>

#include "support.hpp"

using namespace displacement_generator;

namespace {

std::string whole(std::string_view text) { return std::string(text); }

TEST(text, trimmed_takes_off_trailing_spaces_only) {
    struct row {
        const char* value;
        const char* expected;
    };
    const row rows[] = {{"", ""},       {" ", ""},         {"    ", ""},
                        {"a", "a"},     {"a  ", "a"},      {"  a b  ", "  a b"},
                        {"a\t", "a\t"}, {"a \t ", "a \t"}, {"a\r", "a\r"}};
    for (const row& tested : rows) {
        SCOPED_TRACE(tested.value);
        EXPECT_EQ(base::trimmed(tested.value), tested.expected);
    }
}

TEST(text, left_adjusted_takes_off_leading_spaces_only) {
    struct row {
        const char* value;
        const char* expected;
    };
    const row rows[] = {{"", ""},         {" ", ""},        {"    ", ""},    {"a", "a"},
                        {"  a  ", "a  "}, {"\t a", "\t a"}, {"  \ta", "\ta"}};
    for (const row& tested : rows) {
        SCOPED_TRACE(tested.value);
        EXPECT_EQ(base::left_adjusted(tested.value), tested.expected);
    }
}

TEST(text, is_padded_or_cut_to_its_length) {
    EXPECT_EQ(whole(base::text<4>()), "    ");
    EXPECT_EQ(whole(base::text<4>("")), "    ");
    EXPECT_EQ(whole(base::text<4>("ab")), "ab  ");
    EXPECT_EQ(whole(base::text<4>("abcd")), "abcd");
    EXPECT_EQ(whole(base::text<4>("abcde")), "abcd");
    EXPECT_EQ(whole(base::text<4>(std::string_view("a\0b", 3))), std::string("a\0b ", 4));
    const base::text<4> padded(" ab");
    EXPECT_EQ(padded.trimmed(), " ab");
}

/// Whether two texts are equal; the same is found whichever of them stands first.
template <class one, class other>
bool are_equal(const one& a, const other& b) {
    const bool equal = a == b;
    EXPECT_EQ(b == a, equal);
    EXPECT_EQ(a != b, !equal);
    EXPECT_EQ(b != a, !equal);
    return equal;
}

TEST(text, is_equal_whatever_blanks_trail_and_is_never_cut_to_compare) {
    struct row {
        std::string_view value;
        std::string_view other;
        bool expected;
    };
    const row rows[] = {{"ab", "ab", true},     {"ab", "ab      ", true}, {"ab", "ab     x", false},
                        {"ab", "a", false},     {"ab", " ab", false},     {"ab", "abc", false},
                        {"", "", true},         {"", "    ", true},       {"", "x", false},
                        {"abcd", "abcd", true}, {"abcd", "abce", false},  {"abcd", "abcde", false},
                        {"abcd", "abc", false}, {"a b", "a b ", true},    {"a", "a\t", false}};
    for (const row& tested : rows) {
        SCOPED_TRACE(whole(tested.value) + "|" + whole(tested.other));
        base::text<4> value(tested.value);
        EXPECT_EQ(are_equal(value, base::text<8>(tested.other)), tested.expected);
        EXPECT_EQ(are_equal(value, tested.other), tested.expected);
        EXPECT_EQ(are_equal(value, whole(tested.other)), tested.expected);
        EXPECT_EQ(are_equal(value, whole(tested.other).c_str()), tested.expected);
        EXPECT_EQ(are_equal(base::text_ref(value), tested.other), tested.expected);
        EXPECT_EQ(are_equal(base::text_ref(value), base::text<8>(tested.other)), tested.expected);
    }
    EXPECT_FALSE(base::text<2>("Cl") == "Clx");
    EXPECT_TRUE("Cl" == base::text<4>("Cl"));
    EXPECT_FALSE(base::text<2>("Cl") == base::text<3>("Clx"));
}

TEST(text, converts_from_and_to_strings_with_its_blanks) {
    const std::string value = "abc";
    base::text<4> text = value;
    EXPECT_EQ(whole(text), "abc ");
    text = std::string("vwxyz");
    const std::string back = text;
    EXPECT_EQ(back, "vwxy");
    std::string assigned;
    assigned = text;
    EXPECT_EQ(assigned, "vwxy");
    text = "x";
    const std::string_view view = text;
    EXPECT_EQ(view, "x   ");
    const std::string from_reference = base::text_ref(text);
    EXPECT_EQ(from_reference, "x   ");
    base::text_ref(text).assign(value);
    EXPECT_EQ(whole(text), "abc ");
}

TEST(text, goes_to_a_stream_with_its_blanks) {
    base::text<4> text = "ab";
    std::ostringstream out;
    out << '|' << text << '|' << base::text_ref(text) << '|' << text.trimmed() << '|' << std::setw(6) << text << '|';
    EXPECT_EQ(out.str(), "|ab  |ab  |ab|  ab  |");
}

// A part of a string that ends with the statement would be read after its end.
template <class name>
concept has_parts = requires(name&& value) {
    base::trimmed(std::forward<name>(value));
    base::left_adjusted(std::forward<name>(value));
};
template <class name>
concept has_any_part = requires(name&& value) {
    base::trimmed(std::forward<name>(value));
}
|| requires(name&& value) { base::left_adjusted(std::forward<name>(value)); };
static_assert(has_parts<std::string&> && has_parts<const std::string&> && has_parts<std::string_view>);
static_assert(has_parts<const char*> && has_parts<const char (&)[3]> && has_parts<base::text<3>&>);
static_assert(!has_any_part<std::string> && !has_any_part<const std::string>);

TEST(text, assignment_keeps_the_length) {
    struct row {
        std::string_view value;
        const char* expected;
    };
    const row rows[] = {{"", "    |"}, {"a", "a   |"}, {"wxyz", "wxyz|"}, {"wxyz!!", "wxyz|"}, {{}, "    |"}};
    for (const row& tested : rows) {
        SCOPED_TRACE(tested.expected);
        std::string room = "abcd|";
        const base::text_ref item{room.data(), 4};
        item.assign(tested.value);
        EXPECT_EQ(room, tested.expected);
    }
}

TEST(text, assignment_may_overlap) {
    std::string room = "abcdef";
    const base::text_ref item{room.data(), 6};
    item.assign(std::string_view(room).substr(2));
    EXPECT_EQ(room, "cdef  ");
    const base::text_ref tail{room.data() + 2, 4};
    tail.assign(std::string_view(room).substr(0, 4));
    EXPECT_EQ(room, "cdcdef");
}

TEST(text, view_runs_over_each_text_once_wherever_it_begins) {
    for (const int lower : {-4, 0, 1, 7}) {
        const base::array1<base::text<3>> texts("texts", lower, lower + 2);
        const base::text_view view = base::view1<base::text<3>>(texts);
        auto end = view.begin();
        for (int i = 0; i < 3; ++i) {
            EXPECT_FALSE(end == view.end());
            ++end;
        }
        EXPECT_TRUE(end == view.end()) << lower;
    }
}

TEST(text, view_writes_to_the_texts_of_an_array) {
    const base::array1<base::text<3>> texts("texts", 0, 2);
    const base::text_view view = base::view1<base::text<3>>(texts);
    EXPECT_EQ(view.text_length(), 3U);
    view(0).assign("first");
    view(2).assign("x");
    EXPECT_EQ(whole(texts(0)), "fir");
    EXPECT_EQ(whole(texts(1)), "   ");
    EXPECT_EQ(whole(texts(2)), "x  ");
    std::string all;
    for (const base::text_ref text : view) {
        all += std::string_view(text);
        text.assign("all");
    }
    EXPECT_EQ(all, "fir   x  ");
    EXPECT_EQ(whole(texts(0)) + whole(texts(1)) + whole(texts(2)), "allallall");
    for (const int i : {-1, 3}) {
        EXPECT_EQ(support::stopped_with([&] { view(i).assign("x"); }),
                  "array 'texts': index " + std::to_string(i) + " is outside 0..2|standard error|2");
    }
}

}  // namespace
