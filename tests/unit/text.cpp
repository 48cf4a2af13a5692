#include "base/text.hpp"

#include <gtest/gtest.h>

#include <string>

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
    EXPECT_EQ(base::text<4>(" ab").trimmed(), " ab");
}

TEST(text, compares_with_its_padding) {
    EXPECT_TRUE(base::text<4>("ab") == base::text<4>("ab  "));
    EXPECT_FALSE(base::text<4>("ab") == base::text<4>(" ab"));
    EXPECT_FALSE(base::text<4>("abcd") == base::text<4>("abce"));
}

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

TEST(text, view_writes_to_the_texts_of_an_array) {
    const base::array1<base::text<3>> texts("texts", 0, 2);
    const base::text_view view = base::view1<base::text<3>>(texts);
    EXPECT_EQ(view.text_length(), 3U);
    view(0).assign("first");
    view(2).assign("x");
    EXPECT_EQ(whole(texts(0)), "fir");
    EXPECT_EQ(whole(texts(1)), "   ");
    EXPECT_EQ(whole(texts(2)), "x  ");
    for (const int i : {-1, 3}) {
        EXPECT_EQ(support::stopped_with([&] { view(i).assign("x"); }),
                  "array 'texts': index " + std::to_string(i) + " is outside 0..2|standard error|2");
    }
}

}  // namespace
