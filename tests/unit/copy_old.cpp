#include <sys/stat.h>

#include <string>

#include "file_test.hpp"
#include "random_text.hpp"

using namespace displacement_generator;

namespace {

namespace fs = std::filesystem;

using support::stopped_with;

using copy_old = support::file_test;

/// Records as they are copied.
std::string padded(const std::string& text) {
    std::string result;
    for (std::string record : support::records_of(text)) {
        record.resize(500, ' ');
        result += record + '\n';
    }
    return result;
}

TEST_F(copy_old, makes_every_line_500_characters_long) {
    const std::string blanks(500, ' ');
    struct row {
        std::string text;
        std::string expected;
    };
    const row rows[] = {
        {"ab\nc\n", "ab" + blanks.substr(2) + "\nc" + blanks.substr(1) + '\n'},
        {"ab\r\nc", "ab" + blanks.substr(2) + "\nc" + blanks.substr(1) + '\n'},
        {"\n", blanks + '\n'},
        {"  a  ", "  a" + blanks.substr(3) + '\n'},
        {std::string(500, 'a'), std::string(500, 'a') + '\n'},
        {std::string(501, 'a') + "\nb", std::string(500, 'a') + "\nb" + blanks.substr(1) + '\n'},
        {std::string(200000, 'a') + '\n', std::string(500, 'a') + '\n'},
    };
    for (const row& tested : rows) {
        SCOPED_TRACE(testing::PrintToString(tested.text.substr(0, 20)));
        support::write_file("src", tested.text);
        support::write_file("dst", std::string(5000, '?'));
        file::copy_old("src  ", "dst  ");
        EXPECT_EQ(support::read_file("dst"), tested.expected);
        EXPECT_EQ(support::read_file("src"), tested.text);
    }
    file::copy_old("src", "new");
    EXPECT_EQ(support::read_file("new"), rows[6].expected);
    EXPECT_EQ(support::read_tree(".").size(), 3U);
}

TEST_F(copy_old, copies_the_records_of_any_text) {
    support::random_texts random;
    for (int i = 0; i < 60; ++i) {
        const std::string text = "a\n" + random.text();
        support::write_file("src", text);
        file::copy_old("src", "dst");
        ASSERT_TRUE(support::read_file("dst") == padded(text)) << i;
    }
}

TEST_F(copy_old, of_an_empty_file_creates_nothing) {
    support::write_file("empty", "");
    support::write_file("old", "bytes");
    file::copy_old("empty", "new");
    file::copy_old("empty", "old");
    file::copy_old("empty", "empty");
    EXPECT_EQ(support::read_tree("."), (support::tree{{"empty", ""}, {"old", "bytes"}}));
}

TEST_F(copy_old, of_a_source_that_cannot_be_read_stops_the_run_and_leaves_the_destination) {
    support::write_file("dst", "bytes");
    fs::create_directory("folder");
    struct row {
        const char* src;
        const char* expected;
    };
    const row rows[] = {
        {"missing ", " Error in opening file 'missing' in function num_file_lines, stop!|standard output|1"},
        {"folder", " Error in opening file 'folder' in function num_file_lines, stop!|standard output|1"},
        {"/proc/self/mem", "/proc/self/mem: cannot read: Input/output error|standard error|2"},
    };
    for (const row& tested : rows) {
        SCOPED_TRACE(tested.src);
        EXPECT_EQ(stopped_with([&] { file::copy_old(tested.src, "dst"); }), tested.expected);
        EXPECT_FALSE(file::is_connected(100));
    }
    EXPECT_EQ(support::read_tree("."), (support::tree{{"dst", "bytes"}, {"folder/", ""}}));
}

TEST_F(copy_old, to_a_destination_that_cannot_be_written_stops_the_run) {
    support::write_file("src", "a\nb\n");
    fs::create_directory("folder");
    fs::create_symlink("src", "link");
    fs::create_hard_link("src", "second-name");
    ASSERT_EQ(::mkfifo("fifo", 0600), 0);
    struct row {
        const char* dst;
        const char* expected;
    };
    const row rows[] = {
        {"missing/dst ", "missing/dst: cannot open: No such file or directory|standard error|2"},
        {"folder", "folder: cannot open: Is a directory|standard error|2"},
        {"fifo", "fifo: cannot open: No such device or address|standard error|2"},
        {"/dev/full", "/dev/full: cannot write: No space left on device|standard error|2"},
        {"src ", "src: source and destination are the same file|standard error|2"},
        {"link", "src: source and destination are the same file|standard error|2"},
        {"second-name", "src: source and destination are the same file|standard error|2"},
    };
    for (const row& tested : rows) {
        SCOPED_TRACE(tested.dst);
        EXPECT_EQ(stopped_with([&] { file::copy_old("src ", tested.dst); }), tested.expected);
        EXPECT_FALSE(file::is_connected(100));
        EXPECT_FALSE(file::is_connected(101));
    }
    EXPECT_EQ(support::read_file("src"), "a\nb\n");
}

}  // namespace
