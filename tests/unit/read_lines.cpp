#include <sys/stat.h>

#include <string>
#include <vector>

#include "file_test.hpp"
#include "random_text.hpp"

using namespace displacement_generator;

namespace {

using support::stopped_with;

using read_lines = support::file_test;

using lines_of_200 = base::array1<base::text<200>>;

std::string padded(std::string text, std::size_t length) {
    text.resize(length, ' ');
    return text;
}

TEST_F(read_lines, cuts_and_pads_every_line) {
    support::write_file("text", std::string(250, 'a') + "\n1234567890\n\n  leading and trailing  \r\n\tlast");
    const lines_of_200 lines("lines", 1, 6);
    lines(6) = "as it was";
    file::read_lines("text  ", 5, base::view1<base::text<200>>(lines));
    const char* const expected[] = {"", "1234567890", "", "  leading and trailing  ", "\tlast", "as it was"};
    EXPECT_EQ(std::string_view(lines(1)), std::string(200, 'a'));
    for (int i = 2; i <= 6; ++i) {
        EXPECT_EQ(std::string_view(lines(i)), padded(expected[i - 1], 200)) << i;
    }
}

TEST_F(read_lines, reads_as_many_as_are_asked_for) {
    support::write_file("text", "a\nb\nc\n");
    const char* const expected[] = {"a", "b", "c"};
    for (int nline = -1; nline <= 3; ++nline) {
        SCOPED_TRACE(nline);
        const base::array1<base::text<1>> lines("lines", 1, 3);
        for (int i = 1; i <= 3; ++i) {
            lines(i) = "?";
        }
        file::read_lines("text", nline, base::view1<base::text<1>>(lines));
        for (int i = 1; i <= 3; ++i) {
            EXPECT_EQ(std::string_view(lines(i)), i <= nline ? expected[i - 1] : "?");
        }
    }
}

TEST_F(read_lines, reads_the_records_of_any_text) {
    support::random_texts random;
    for (int i = 0; i < 60; ++i) {
        const std::string text = random.text();
        support::write_file("text", text);
        const std::vector<std::string> expected = support::records_of(text);
        const int nline = file::num_file_lines("text");
        ASSERT_EQ(static_cast<std::size_t>(nline), expected.size());
        const base::array1<base::text<500>> lines("lines", 1, nline);
        file::read_lines("text", nline, base::view1<base::text<500>>(lines));
        for (int j = 1; j <= nline; ++j) {
            ASSERT_EQ(std::string_view(lines(j)), padded(expected[static_cast<std::size_t>(j - 1)], 500));
        }
    }
}

TEST_F(read_lines, of_a_file_that_cannot_be_opened_read_or_is_too_short_stops_the_run) {
    support::write_file("two", "a\nb");
    support::write_file("empty", "");
    std::filesystem::create_directory("folder");
    ASSERT_EQ(::mkfifo("fifo", 0600), 0);
    struct row {
        const char* fname;
        int nline;
        const char* expected;
    };
    const row rows[] = {
        {"missing  ", 1, "missing: cannot open: No such file or directory|standard error|2"},
        {"missing", 0, "missing: cannot open: No such file or directory|standard error|2"},
        {"no\nfile", 1, "no\\nfile: cannot open: No such file or directory|standard error|2"},
        {"folder", 1, "folder: cannot open: Is a directory|standard error|2"},
        {"fifo", 1, "fifo: cannot open: Not a regular file|standard error|2"},
        {"/dev/null", 1, "/dev/null: cannot open: Not a regular file|standard error|2"},
        {"/proc/self/mem", 1, "/proc/self/mem: cannot read: Input/output error|standard error|2"},
        {"two", 3, "two: found 2 lines, expected 3|standard error|2"},
        {"empty", 1, "empty: found 0 lines, expected 1|standard error|2"},
    };
    const lines_of_200 lines("lines", 1, 3);
    for (const row& tested : rows) {
        SCOPED_TRACE(tested.fname);
        lines(3) = "as it was";
        EXPECT_EQ(
            stopped_with([&] { file::read_lines(tested.fname, tested.nline, base::view1<base::text<200>>(lines)); }),
            tested.expected);
        EXPECT_EQ(lines(3).trimmed(), "as it was");
        EXPECT_FALSE(file::is_connected(100));
    }
    const lines_of_200 too_few("lines", 1, 1);
    EXPECT_EQ(stopped_with([&] { file::read_lines("two", 2, base::view1<base::text<200>>(too_few)); }),
              "array 'lines': index 2 is outside 1..1|standard error|2");
}

}  // namespace
