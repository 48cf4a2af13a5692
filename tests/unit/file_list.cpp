#include "displacement_generator/file_list.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "support.hpp"

using namespace displacement_generator;

namespace {

using generator::file_list;

constexpr const char* list_name = "PES-0/files.out";

TEST(file_list, head_lines) {
    struct row {
        int natom;
        int ncalc;
        double dx;
        std::string_view expected;
    };
    const std::vector<row> rows = {
        {3, 5, 0.001F, "Number of atoms:      3\nNumber of files:      6\ndx=  0.001000\nEnd\n"},
        {1, 3, 0.01, "Number of atoms:      1\nNumber of files:      4\ndx=  0.010000\nEnd\n"},
        {3, 18, -0.002, "Number of atoms:      3\nNumber of files:     19\ndx= -0.002000\nEnd\n"},
        {0, 0, 0.0, "Number of atoms:      0\nNumber of files:      1\ndx=  0.000000\nEnd\n"},
        {999999, 999998, 999.999999, "Number of atoms: 999999\nNumber of files: 999999\ndx=999.999999\nEnd\n"},
        {1000000, 999999, 1000.0, "Number of atoms: ******\nNumber of files: ******\ndx=**********\nEnd\n"},
        {10, 10, 999.9999994, "Number of atoms:     10\nNumber of files:     11\ndx=999.999999\nEnd\n"},
        {10, 10, 999.9999996, "Number of atoms:     10\nNumber of files:     11\ndx=**********\nEnd\n"},
        {10, 10, -99.999999, "Number of atoms:     10\nNumber of files:     11\ndx=-99.999999\nEnd\n"},
        {10, 10, -100.0, "Number of atoms:     10\nNumber of files:     11\ndx=**********\nEnd\n"},
        {10, 10, -1e-9, "Number of atoms:     10\nNumber of files:     11\ndx= -0.000000\nEnd\n"},
        {-1, -2, 1.0, "Number of atoms:     -1\nNumber of files:     -1\ndx=  1.000000\nEnd\n"},
    };
    for (const row& tested : rows) {
        SCOPED_TRACE(tested.expected);
        const support::scratch_folder scratch;
        file_list list(tested.natom, tested.ncalc, tested.dx);
        list.close("End");
        EXPECT_EQ(support::read_tree("."), (support::tree{{"PES-0/", ""}, {list_name, std::string(tested.expected)}}));
    }
}

TEST(file_list, lines_in_their_order) {
    const support::scratch_folder scratch;
    file_list list(1, 6, 0.5);
    list.line() += "one ";
    list.line() += "line";
    list.end_line();
    list.end_line();
    list.line() += "unended, ";
    list.close("the last");
    EXPECT_EQ(support::read_file(list_name),
              "Number of atoms:      1\nNumber of files:      7\ndx=  0.500000\none line\n\nunended, the last\n");
}

TEST(file_list, in_a_folder_that_is_there) {
    const support::scratch_folder scratch;
    std::filesystem::create_directory("PES-0");
    support::write_file("PES-0/other", "stays");
    support::write_file(list_name, std::string(1000, 'x'));
    file_list list(1, 6, 0.5);
    list.close("End");
    EXPECT_EQ(support::read_file(list_name), "Number of atoms:      1\nNumber of files:      7\ndx=  0.500000\nEnd\n");
    EXPECT_EQ(support::read_file("PES-0/other"), "stays");
}

// A list that leaves memory in several writes. On the disk is always a beginning of it, and the last line comes last.
TEST(file_list, a_long_list) {
    const support::scratch_folder scratch;
    file_list list(1, 6, 0.5);
    std::string expected = "Number of atoms:      1\nNumber of files:      7\ndx=  0.500000\n";
    EXPECT_EQ(support::read_file(list_name), "");
    std::size_t writes = 0;
    std::size_t on_disk = 0;
    for (int i = 0; i < 20000; ++i) {
        const std::string line = "line " + std::to_string(i);
        list.line() += line;
        list.end_line();
        expected += line + '\n';
        const std::size_t size = std::filesystem::file_size(list_name);
        writes += size != on_disk ? 1 : 0;
        on_disk = size;
        ASSERT_LT(expected.size() - size, std::size_t{1} << 16);
    }
    EXPECT_EQ(writes, expected.size() >> 16);
    EXPECT_EQ(support::read_file(list_name), expected.substr(0, on_disk));
    list.close("End");
    EXPECT_EQ(support::read_file(list_name), expected + "End\n");
}

TEST(file_list, without_its_last_line_when_the_run_stops) {
    const support::scratch_folder scratch;
    { const file_list list(1, 6, 0.5); }
    EXPECT_EQ(support::read_file(list_name), "");
}

TEST(file_list, that_will_not_open) {
    const support::scratch_folder scratch;
    std::filesystem::create_directories(list_name);
    EXPECT_EQ(support::stopped_with([] { const file_list list(1, 6, 0.5); }),
              "PES-0/files.out: cannot open for writing: Is a directory|standard error|2");
}

TEST(file_list, a_folder_that_cannot_be_made) {
    const support::scratch_folder scratch;
    std::filesystem::create_symlink("nowhere", "PES-0");  // mkdir says so itself, on standard error
    EXPECT_EQ(support::stopped_with([] { const file_list list(1, 6, 0.5); }),
              "PES-0: cannot make the folder: a link of this name exists and leads to no folder|standard error|2");
    std::filesystem::remove("PES-0");
    support::write_file("PES-0", "a file");
    EXPECT_EQ(support::stopped_with([] { const file_list list(1, 6, 0.5); }),
              "PES-0: cannot make the folder: a file of this name exists|standard error|2");
    EXPECT_EQ(support::read_file("PES-0"), "a file");
}

}  // namespace
