#include <sys/stat.h>
#include <unistd.h>

#include <string>

#include "file_test.hpp"

using namespace displacement_generator;

namespace {

namespace fs = std::filesystem;

using file::action;
using file::disposition;
using support::stopped_with;

using unit = support::file_test;

/// The descriptor under which this process has a file open.
int descriptor_of(const fs::path& name) {
    for (const auto& entry : fs::directory_iterator("/proc/self/fd")) {
        std::error_code gone;  // the descriptor of this loop itself
        if (fs::read_symlink(entry.path(), gone) == fs::absolute(name)) {
            return std::stoi(entry.path().filename());
        }
    }
    return -1;
}

TEST_F(unit, free_one_is_the_first_from_100_upward) {
    support::write_file("f", "");
    const auto free_fid = [] {
        int fid = -77;
        file::get_free_fid(fid);
        return fid;
    };
    EXPECT_EQ(free_fid(), 100);
    EXPECT_EQ(free_fid(), 100);  // asking takes nothing
    EXPECT_EQ(file::open_unit(99, "f", action::read), "");
    EXPECT_EQ(free_fid(), 100);
    EXPECT_EQ(file::open_unit(101, "f", action::read), "");
    EXPECT_EQ(free_fid(), 100);
    EXPECT_EQ(file::open_unit(100, "f", action::read), "");
    EXPECT_EQ(free_fid(), 102);
    file::close_unit(101);
    EXPECT_EQ(free_fid(), 101);
    for (int fid = 101; fid <= 150; ++fid) {
        EXPECT_EQ(file::open_unit(fid, "f", action::read), "");
    }
    EXPECT_EQ(free_fid(), 151);
    for (int fid = 99; fid <= 150; ++fid) {
        file::close_unit(fid);
    }
    EXPECT_EQ(free_fid(), 100);
}

TEST_F(unit, 5_and_6_are_standard_input_and_output) {
    EXPECT_TRUE(file::is_connected(5));
    EXPECT_TRUE(file::is_connected(6));
    for (const int fid : {-1, 0, 1, 2, 4, 7, 99, 100}) {
        EXPECT_FALSE(file::is_connected(fid)) << fid;
    }
    EXPECT_EQ(support::standard_output_of([] { file::write_record(6, "a record"); }), "a record\n");
    EXPECT_EQ(stopped_with([] { file::write_record(5, "x"); }),
              "standard input: not connected for writing|standard error|2");
    EXPECT_EQ(stopped_with([] { static_cast<void>(file::open_unit(6, "f", action::write)); }),
              "unit 6: already connected to standard output|standard error|2");
    EXPECT_FALSE(fs::exists("f"));

    support::write_file("input", "first\nsecond");
    const int saved = ::dup(STDIN_FILENO);
    ASSERT_NE(std::freopen("input", "r", stdin), nullptr);
    base::text<8> line("12345678");
    EXPECT_FALSE(file::read_record(6, line));
    EXPECT_EQ(std::string_view(line), "12345678");
    EXPECT_TRUE(file::read_record(5, line));
    EXPECT_EQ(std::string_view(line), "first   ");
    EXPECT_TRUE(file::read_record(5, line));
    EXPECT_EQ(std::string_view(line), "second  ");
    EXPECT_FALSE(file::read_record(5, line));
    ::dup2(saved, STDIN_FILENO);
    ::close(saved);
}

TEST_F(unit, reads_regular_files_only) {
    support::write_file("f", "");
    fs::create_directory("folder");
    fs::create_symlink("circle", "circle");
    ASSERT_EQ(::mkfifo("fifo", 0600), 0);
    struct row {
        const char* fname;
        const char* reason;
    };
    const row rows[] = {
        {"missing", "No such file or directory"},
        {"", "No such file or directory"},
        {" f", "No such file or directory"},
        {"f/x", "Not a directory"},
        {"circle", "Too many levels of symbolic links"},
        {"folder", "Is a directory"},
        {"fifo", "Not a regular file"},
        {"/dev/null", "Not a regular file"},
        {"/dev/zero", "Not a regular file"},
    };
    for (const row& tested : rows) {
        SCOPED_TRACE(tested.fname);
        EXPECT_EQ(file::open_unit(100, tested.fname, action::read), tested.reason);
        EXPECT_FALSE(file::is_connected(100));
    }
    EXPECT_EQ(file::open_unit(100, "f   ", action::read), "");
    EXPECT_TRUE(file::is_connected(100));
    file::close_unit(100);
    EXPECT_FALSE(file::is_connected(100));
}

TEST_F(unit, that_is_connected_cannot_be_connected_again) {
    support::write_file("one\n", "");
    support::write_file("two", "bytes");
    ASSERT_EQ(file::open_unit(100, "one\n", action::read), "");
    for (const action what : {action::read, action::write}) {
        EXPECT_EQ(stopped_with([&] { static_cast<void>(file::open_unit(100, "two", what)); }),
                  "unit 100: already connected to one\\n|standard error|2");
    }
    EXPECT_EQ(support::read_file("two"), "bytes");
    EXPECT_TRUE(file::is_connected(100));
    file::close_unit(100);
}

TEST_F(unit, has_a_positive_number) {
    support::write_file("f", "bytes");
    for (const int fid : {0, -1, -100}) {
        for (const action what : {action::read, action::write}) {
            EXPECT_EQ(stopped_with([&] { static_cast<void>(file::open_unit(fid, "f", what)); }),
                      "unit " + std::to_string(fid) + ": expected a positive number|standard error|2");
        }
        EXPECT_FALSE(file::is_connected(fid));
    }
    EXPECT_EQ(support::read_file("f"), "bytes");
    EXPECT_EQ(file::open_unit(1, "f", action::read), "");
    file::close_unit(1);
}

TEST_F(unit, reads_record_after_record_into_a_text) {
    support::write_file("f", "first\n\n  third is longer\r\nlast");
    ASSERT_EQ(file::open_unit(100, "f", action::read), "");
    base::text<7> line;
    for (const char* expected : {"first  ", "       ", "  third", "last   "}) {
        EXPECT_TRUE(file::read_record(100, line));
        EXPECT_EQ(std::string_view(line), expected);
    }
    for (int again = 0; again < 2; ++again) {
        EXPECT_FALSE(file::read_record(100, line));
        EXPECT_EQ(std::string_view(line), "last   ");
    }
    file::close_unit(100);
    EXPECT_FALSE(file::read_record(100, line));
    EXPECT_EQ(std::string_view(line), "last   ");
}

TEST_F(unit, starts_anew_when_it_is_connected_again) {
    support::write_file("f", "first\nsecond\n");
    base::text<6> line;
    for (int again = 0; again < 2; ++again) {
        ASSERT_EQ(file::open_unit(100, "f", action::read), "");
        EXPECT_TRUE(file::read_record(100, line));
        EXPECT_EQ(std::string_view(line), "first ");
        file::close_unit(100);
    }
}

TEST_F(unit, writes_record_after_record) {
    support::write_file("f", "what was there before\n");
    ASSERT_EQ(file::open_unit(100, "f ", action::write), "");
    file::write_record(100, "first  ");
    file::write_record(100, "");
    base::text<6> line("before");
    EXPECT_FALSE(file::read_record(100, line));
    EXPECT_EQ(std::string_view(line), "before");
    file::write_record(100, "third");
    file::close_unit(100);
    EXPECT_EQ(support::read_tree("."), (support::tree{{"f", "first  \n\nthird\n"}}));
}

TEST_F(unit, that_cannot_be_written_stops_the_run) {
    EXPECT_EQ(stopped_with([] { file::write_record(100, "x"); }),
              "unit 100: not connected for writing|standard error|2");
    support::write_file("f", "bytes");
    ASSERT_EQ(file::open_unit(100, "f", action::read), "");
    EXPECT_EQ(stopped_with([] { file::write_record(100, "x"); }), "f: not connected for writing|standard error|2");
    file::close_unit(100);
    EXPECT_EQ(support::read_file("f"), "bytes");
    ASSERT_EQ(file::open_unit(100, "/dev/full", action::write), "");
    EXPECT_EQ(stopped_with([] { file::write_record(100, "x"); }),
              "/dev/full: cannot write: No space left on device|standard error|2");
    file::close_unit(100);
}

TEST_F(unit, closing_keeps_or_removes_the_file) {
    support::write_file("f", "bytes");
    ASSERT_EQ(file::open_unit(100, "f  ", action::read), "");
    file::close_unit(100);
    EXPECT_EQ(support::read_file("f"), "bytes");
    ASSERT_EQ(file::open_unit(100, "f  ", action::read), "");
    file::close_unit(100, disposition::remove);
    ASSERT_EQ(file::open_unit(100, "new", action::write), "");
    file::close_unit(100, disposition::remove);
    EXPECT_EQ(support::read_tree("."), support::tree{});
    for (const disposition what : {disposition::keep, disposition::remove}) {
        EXPECT_EQ(stopped_with([&] { file::close_unit(100, what); }), "no error");
    }
}

TEST_F(unit, that_cannot_be_closed_or_removed_stops_the_run_disconnected) {
    support::write_file("f", "");
    ASSERT_EQ(file::open_unit(100, "f", action::read), "");
    fs::remove("f");
    EXPECT_EQ(stopped_with([] { file::close_unit(100, disposition::remove); }),
              "f: cannot remove: No such file or directory|standard error|2");
    EXPECT_FALSE(file::is_connected(100));
    ASSERT_EQ(file::open_unit(100, "new", action::write), "");
    ::close(descriptor_of("new"));
    EXPECT_EQ(stopped_with([] { file::close_unit(100); }), "new: cannot close: Bad file descriptor|standard error|2");
    EXPECT_FALSE(file::is_connected(100));
}

TEST_F(unit, record_length_tells_whether_it_is_connected) {
    EXPECT_EQ(file::record_length(5), 2147483647);
    EXPECT_EQ(file::record_length(6), 2147483647);
    EXPECT_EQ(file::record_length(100), -1);
    ASSERT_EQ(file::open_unit(100, "f", action::write), "");
    EXPECT_EQ(file::record_length(100), 2147483647);
    file::close_unit(100);
    EXPECT_EQ(file::record_length(100), -1);
}

}  // namespace
