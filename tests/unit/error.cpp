#include "base/error.hpp"

#include <gtest/gtest.h>

#include <string>

#include "support.hpp"

using namespace displacement_generator;

namespace {

TEST(error, belongs_on_standard_error_with_status_2_unless_said_otherwise) {
    EXPECT_EQ(support::stopped_with([] { throw base::run_error("what"); }), "what|standard error|2");
    EXPECT_EQ(support::stopped_with([] { throw base::run_error("what", base::message_stream::standard_output, 1); }),
              "what|standard output|1");
}

TEST(error, shown_makes_any_text_fit_for_a_message) {
    struct row {
        std::string text;
        std::size_t longest;
        std::string expected;
    };
    const row rows[] = {
        {"", 60, ""},
        {"plain text, with 'marks' and ~", 60, "plain text, with 'marks' and ~"},
        {"\t\r\n", 60, R"(\t\r\n)"},
        {std::string("\0\x01\x1f\x7f", 4), 60, R"(\x00\x01\x1f\x7f)"},
        {"\x80\xc3\xa9\xff", 60, R"(\x80\xc3\xa9\xff)"},
        {"abcdef", 6, "abcdef"},
        {"abcdef", 5, "abcde... (1 more characters)"},
        {"\n\n\n", 1, "\\n... (2 more characters)"},
        {"abc", 0, "... (3 more characters)"},
    };
    for (const row& tested : rows) {
        SCOPED_TRACE(tested.expected);
        EXPECT_EQ(base::shown(tested.text, tested.longest), tested.expected);
    }
    EXPECT_EQ(base::shown(std::string(60, 'a')), std::string(60, 'a'));
    EXPECT_EQ(base::shown(std::string(61, 'a')), std::string(60, 'a') + "... (1 more characters)");
}

TEST(error, keeps_its_detail) {
    const base::run_error plain("what");
    const base::run_error detailed("what", base::message_stream::standard_output, 1, "more");
    EXPECT_EQ(plain.detail, "");
    EXPECT_EQ(detailed.detail, "more");
}

TEST(error, byte_order_mark_hint_sees_the_marks_of_utf_8_and_utf_16) {
    const std::string hint = "; the file begins with a byte order mark, save it as plain text without one";
    for (const std::string start : {"\xef\xbb\xbf", "\xef\xbb\xbf&control", "\xff\xfe#", "\xfe\xff"}) {
        EXPECT_EQ(base::byte_order_mark_hint(start), hint) << base::shown(start);
    }
    for (const std::string start : {"", "#", "\xef\xbb", " \xef\xbb\xbf", "\xff", "\xfe\xfe"}) {
        EXPECT_EQ(base::byte_order_mark_hint(start), "") << base::shown(start);
    }
}

}  // namespace
