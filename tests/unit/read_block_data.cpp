#include <algorithm>
#include <string>

#include "file_test.hpp"

using namespace displacement_generator;

namespace {

using file::action;
using support::stopped_with;

class read_block_data : public support::file_test {
  protected:
    /// What becomes of reading a text, and whether the unit is still connected.
    static std::string message_of(const std::string& text, int n, base::view2<double> a, int nb) {
        support::write_file("matrix", text);
        EXPECT_EQ(file::open_unit(100, "matrix", action::read), "");
        std::string message = stopped_with([&] { file::read_block_data(100, n, a, nb); });
        EXPECT_TRUE(file::is_connected(100));
        file::close_unit(100);
        return message;
    }

    /// A matrix as a program prints it: element (i, j) is 100 i + j.
    static std::string printed(int n, int nb) {
        std::string text;
        for (int first = 1; first <= n; first += nb) {
            const int last = std::min(first + nb - 1, n);
            text += "    columns " + std::to_string(first) + " to " + std::to_string(last) + '\n';
            for (int i = 1; i <= n; ++i) {
                text += std::to_string(i);
                for (int j = first; j <= last; ++j) {
                    text += "  " + std::to_string(100 * i + j) + ".0";
                }
                text += '\n';
            }
        }
        return text;
    }
};

TEST_F(read_block_data, reads_block_after_block_and_stays_behind_the_last_row) {
    struct row {
        int n;
        int nb;
        int lines;
    };
    const row rows[] = {{7, 5, 16}, {5, 5, 6}, {6, 5, 14}, {1, 5, 2}, {3, 1, 12}, {3, 2147483647, 4}, {10, 5, 22}};
    for (const row& tested : rows) {
        SCOPED_TRACE(std::to_string(tested.n) + " columns, " + std::to_string(tested.nb) + " a block");
        const std::string text = printed(tested.n, std::min(tested.nb, tested.n));
        EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), tested.lines);
        support::write_file("matrix", "before\n" + text + "behind\n");
        ASSERT_EQ(file::open_unit(100, "matrix", action::read), "");
        base::text<6> line;
        EXPECT_TRUE(file::read_record(100, line));
        const base::array2<double> a("a", tested.n, tested.n);
        file::read_block_data(100, tested.n, a, tested.nb);
        for (int i = 1; i <= tested.n; ++i) {
            for (int j = 1; j <= tested.n; ++j) {
                EXPECT_EQ(a(i, j), 100 * i + j);
            }
        }
        EXPECT_TRUE(file::read_record(100, line));
        EXPECT_EQ(std::string_view(line), "behind");
        file::close_unit(100);
    }
}

TEST_F(read_block_data, reads_free_format_rows) {
    const base::array2<double> a("a", 2, 2);
    EXPECT_EQ(message_of("\r\n 1, 1.5D0 ,-.25E+1 and more\r\n+02\t3d-1,4/", 2, a, 5), "no error");
    EXPECT_EQ(a(1, 1), 1.5);
    EXPECT_EQ(a(1, 2), -2.5);
    EXPECT_EQ(a(2, 1), 0.3);
    EXPECT_EQ(a(2, 2), 4.0);
}

TEST_F(read_block_data, reads_rows_of_any_length) {
    constexpr int n = 20000;
    std::string text = "heading\n1";
    for (int j = 1; j <= n; ++j) {
        text += ' ' + std::to_string(j);
    }
    support::write_file("matrix", text);
    ASSERT_EQ(file::open_unit(100, "matrix", action::read), "");
    const base::array2<double> a("a", 1, n);
    EXPECT_EQ(stopped_with([&] { file::read_block_data(100, n, a, n); }),
              "matrix:3: the file ends before this line, expected row 2 of columns 1 to 20000|standard error|2");
    EXPECT_EQ(a(1, n), n);
    file::close_unit(100);
}

TEST_F(read_block_data, takes_rows_of_a_mebibyte_and_no_longer_ones) {
    const base::array2<double> a("a", 1, 1);
    const std::string row = "1 2.5 ";
    const std::string rest((1 << 20) - row.size(), '!');
    EXPECT_EQ(message_of("heading" + rest + rest + "\n" + row + rest, 1, a, 1), "no error");
    EXPECT_EQ(a(1, 1), 2.5);
    EXPECT_EQ(message_of("heading\n" + row + rest + "!\n", 1, a, 1),
              "matrix:2: row 1 of columns 1 to 1: expected at most 1048576 characters|standard error|2");
}

TEST_F(read_block_data, of_order_zero_reads_nothing) {
    const base::array2<double> a("a", 0, 0);
    EXPECT_EQ(message_of("", 0, a, 5), "no error");
}

TEST_F(read_block_data, stops_the_run_at_what_is_missing_or_no_number) {
    struct row {
        const char* text;
        const char* expected;
    };
    const row rows[] = {
        {"", "matrix:1: the file ends before this line, expected the heading of columns 1 to 2|standard error|2"},
        {"h\n", "matrix:2: the file ends before this line, expected row 1 of columns 1 to 2|standard error|2"},
        {"h\n1 1 2\n", "matrix:3: the file ends before this line, expected row 2 of columns 1 to 2|standard error|2"},
        {"h\n1 1 2\n2 3 4\n3 5 6\n",
         "matrix:5: the file ends before this line, expected the heading of columns 3 to 3|standard error|2"},
        {"h\n1 1 2\n2 3 4\n3 5 6\nh\n1 7\n",
         "matrix:7: the file ends before this line, expected row 2 of columns 3 to 3|standard error|2"},
        {"h\n\n", "matrix:2: row 1 of columns 1 to 2: expected the number of the row, found none|standard error|2"},
        {"h\n,1 2\n", "matrix:2: row 1 of columns 1 to 2: expected the number of the row, found none|standard error|2"},
        {"h\n1.0 1 2\n",
         "matrix:2: row 1 of columns 1 to 2: expected the number of the row, found '1.0'|standard error|2"},
        {"h\n1\n", "matrix:2: row 1 of columns 1 to 2: expected a number for column 1, found none|standard error|2"},
        {"h\n1 1\n", "matrix:2: row 1 of columns 1 to 2: expected a number for column 2, found none|standard error|2"},
        {"h\n1 1,,2\n",
         "matrix:2: row 1 of columns 1 to 2: expected a number for column 2, found none|standard error|2"},
        {"h\n1 1/2\n",
         "matrix:2: row 1 of columns 1 to 2: expected a number for column 2, found none|standard error|2"},
        {"h\n1 1 two\n",
         "matrix:2: row 1 of columns 1 to 2: expected a number for column 2, found 'two'|standard error|2"},
        {"h\n1 1e999 2\n",
         "matrix:2: row 1 of columns 1 to 2: expected a number for column 1, found '1e999'|standard error|2"},
        {"h\n1 NaN 2\n",
         "matrix:2: row 1 of columns 1 to 2: expected a number for column 1, found 'NaN'|standard error|2"},
    };
    for (const row& tested : rows) {
        SCOPED_TRACE(testing::PrintToString(tested.text));
        const base::array2<double> a("a", 3, 3);
        EXPECT_EQ(message_of(tested.text, 3, a, 2), tested.expected);
        EXPECT_EQ(a(3, 3), 0.0);
    }
}

TEST_F(read_block_data, keeps_what_was_read_before_it_stopped) {
    const base::array2<double> a("a", 2, 2);
    a(1, 2) = a(2, 2) = -77.0;
    EXPECT_EQ(message_of("h\n1 11\n2 21\nh\n1 x\n", 2, a, 1),
              "matrix:5: row 1 of columns 2 to 2: expected a number for column 2, found 'x'|standard error|2");
    EXPECT_EQ(a(1, 1), 11.0);
    EXPECT_EQ(a(2, 1), 21.0);
    EXPECT_EQ(a(1, 2), -77.0);
    EXPECT_EQ(a(2, 2), -77.0);
}

TEST_F(read_block_data, of_no_columns_or_no_unit_stops_the_run) {
    const base::array2<double> a("a", 2, 2);
    for (const int nb : {0, -1}) {
        EXPECT_EQ(message_of("h\n", 2, a, nb),
                  "matrix: found " + std::to_string(nb) + " columns a block, expected at least 1|standard error|2");
    }
    EXPECT_EQ(stopped_with([&] { file::read_block_data(100, 2, a, 5); }),
              "unit 100: not connected for reading|standard error|2");
    ASSERT_EQ(file::open_unit(100, "written", action::write), "");
    EXPECT_EQ(stopped_with([&] { file::read_block_data(100, 2, a, 5); }),
              "written: not connected for reading|standard error|2");
    file::close_unit(100);
    ASSERT_EQ(file::open_unit(100, "/proc/self/mem", action::read), "");
    EXPECT_EQ(stopped_with([&] { file::read_block_data(100, 2, a, 5); }),
              "/proc/self/mem:1: Input/output error before this line, expected the heading of columns 1 to 2"
              "|standard error|2");
    file::close_unit(100);
    const base::array2<double> small("small", 1, 1);
    EXPECT_EQ(message_of("h\n1 11 12\n", 2, small, 5),
              "array 'small': index 2 of dimension 2 is outside 1..1|standard error|2");
}

}  // namespace
