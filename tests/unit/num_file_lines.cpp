#include <sys/stat.h>

#include <string>

#include "file_test.hpp"
#include "random_text.hpp"

using namespace displacement_generator;

namespace {

using support::stopped_with;

using num_file_lines = support::file_test;

TEST_F(num_file_lines, counts_every_record) {
    struct row {
        std::string text;
        int expected;
    };
    const row rows[] = {
        {"", 0},
        {"\n", 1},
        {"\r\n", 1},
        {"\r", 1},
        {"one", 1},
        {"one\n", 1},
        {"one\r\n", 1},
        {"one\rstill one\n", 1},
        {"one\ntwo\nthree", 3},
        {"a\n\nb\n", 3},
        {"a\n\nb\n\n", 4},
        {"a\n   \n", 2},
        {std::string("a\0\nb", 4), 2},
        {std::string(70000, 'a'), 1},
        {std::string(65536, 'a') + "\n", 1},
        {std::string(65535, 'a') + "\nb", 2},
        {std::string(300, '\n'), 300},
        {std::string(200000, '\n'), 200000},
    };
    for (const row& tested : rows) {
        SCOPED_TRACE(testing::PrintToString(tested.text.substr(0, 40)));
        support::write_file("text", tested.text);
        EXPECT_EQ(file::num_file_lines("text"), tested.expected);
        EXPECT_EQ(file::num_file_lines("text   "), tested.expected);
    }
    EXPECT_EQ(support::standard_output_of([] { static_cast<void>(file::num_file_lines("text")); }), "");
}

TEST_F(num_file_lines, counts_the_records_of_any_text) {
    support::random_texts random;
    for (int i = 0; i < 100; ++i) {
        const std::string text = random.text();
        support::write_file("text", text);
        ASSERT_EQ(static_cast<std::size_t>(file::num_file_lines("text")), support::records_of(text).size()) << i;
    }
}

TEST_F(num_file_lines, of_a_file_that_cannot_be_opened_stops_the_run_with_status_1) {
    std::filesystem::create_directory("folder");
    ASSERT_EQ(::mkfifo("fifo", 0600), 0);
    struct row {
        const char* fname;
        const char* expected;
    };
    const row rows[] = {
        {"missing.gjf", " Error in opening file 'missing.gjf' in function num_file_lines, stop!|standard output|1"},
        {"missing.gjf   ", " Error in opening file 'missing.gjf' in function num_file_lines, stop!|standard output|1"},
        {" a b ", " Error in opening file ' a b' in function num_file_lines, stop!|standard output|1"},
        {"", " Error in opening file '' in function num_file_lines, stop!|standard output|1"},
        {"folder", " Error in opening file 'folder' in function num_file_lines, stop!|standard output|1"},
        {"fifo", " Error in opening file 'fifo' in function num_file_lines, stop!|standard output|1"},
        {"/dev/null", " Error in opening file '/dev/null' in function num_file_lines, stop!|standard output|1"},
    };
    for (const row& tested : rows) {
        SCOPED_TRACE(tested.fname);
        EXPECT_EQ(stopped_with([&] { static_cast<void>(file::num_file_lines(tested.fname)); }), tested.expected);
        EXPECT_FALSE(file::is_connected(100));
    }
}

TEST_F(num_file_lines, of_a_file_that_cannot_be_read_stops_the_run) {
    EXPECT_EQ(stopped_with([] { static_cast<void>(file::num_file_lines("/proc/self/mem")); }),
              "/proc/self/mem: cannot read: Input/output error|standard error|2");
}

/// A message that held the byte would end there.
TEST_F(num_file_lines, shows_a_nul_in_a_name_as_a_question_mark) {
    const std::string name("missing\0.gjf", 12);
    EXPECT_EQ(stopped_with([&] { static_cast<void>(file::num_file_lines(name)); }),
              " Error in opening file 'missing?.gjf' in function num_file_lines, stop!|standard output|1");
}

}  // namespace
