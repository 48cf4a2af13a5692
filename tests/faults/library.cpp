#include <gtest/gtest.h>

#include <cerrno>
#include <string>
#include <vector>

#include "faults.hpp"

using namespace displacement_generator;

// Calls of the system that go wrong below routines of the module `file` that the program itself does not use.

namespace {

struct fault {
    std::string call;
    std::string way;
    int turn = 0;
    std::string file = {};
};

support::outcome run_with(const fault& what, const std::vector<std::string>& arguments) {
    return support::run_program(LIBRARY_CALL, arguments,
                                {std::string("LD_PRELOAD=") + FAILING_CALLS, "ASAN_OPTIONS=verify_asan_link_order=0",
                                 "FAILING_CALL=" + what.call, "FAILING_WAY=" + what.way,
                                 "FAILING_TURN=" + std::to_string(what.turn), "FAILING_FILE=" + what.file});
}

void expect_stopped(const support::outcome& result, const std::string& message) {
    EXPECT_EQ(result.standard_error, message + "\n");
    EXPECT_EQ(result.status, 2);
}

std::string numbered_lines() {
    std::string bytes;
    for (int i = 0; i < 100000; ++i) {
        bytes += std::to_string(i) + "\n";
    }
    return bytes;
}

/// The kernel copies at most 2 GiB at a time, and may copy less than it was asked for, or stop in the middle.
TEST(copy, goes_on_where_the_kernel_stopped) {
    const support::scratch_folder scratch;
    const std::string bytes = numbered_lines();
    support::write_file("source", bytes);
    for (const int turn : {0, 1, 2, 3}) {
        for (const std::string& way :
             {std::string("half"), std::string("interrupted"), std::to_string(EXDEV), std::to_string(EIO)}) {
            SCOPED_TRACE(way + ", turn " + std::to_string(turn));
            support::write_file("copied", "what was there");
            EXPECT_EQ(run_with({"copy_file_range", way, turn}, {"copy", "source", "copied"}).status, 0);
            EXPECT_TRUE(support::read_file("copied") == bytes);
        }
    }
    // Two calls that each do half of the file, then one that cannot: the rest goes through this process.
    support::write_file("copied", "");
    EXPECT_EQ(run_with({"copy_file_range", "none", 1}, {"copy", "source", "copied"}).status, 0);
    EXPECT_TRUE(support::read_file("copied") == bytes);
}

TEST(copy, in_blocks_goes_on_after_short_reads_and_writes) {
    const support::scratch_folder scratch;
    const std::string bytes = numbered_lines();
    support::write_file("source", bytes);
    for (const fault& what : {fault{"copy_file_range read", "half"}, fault{"copy_file_range read write", "half"},
                              fault{"copy_file_range read write", "interrupted"}}) {
        SCOPED_TRACE(what.call + " " + what.way);
        EXPECT_EQ(run_with(what, {"copy", "source", "copied"}).status, 0);
        EXPECT_TRUE(support::read_file("copied") == bytes);
    }
}

/// What is read up to an error is copied, and nothing is told.
TEST(copy, of_a_source_that_cannot_be_read_is_silent) {
    const support::scratch_folder scratch;
    support::write_file("source", "bytes");
    for (const int error : {EIO, ESTALE}) {
        support::write_file("copied", "what was there");
        const support::outcome result =
            run_with({"copy_file_range read", std::to_string(error)}, {"copy", "source", "copied"});
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.standard_error, "");
        EXPECT_EQ(support::read_file("copied"), "");
    }
}

/// Two file systems count their files each for itself.
TEST(copy, between_files_of_one_inode_number_is_made) {
    const support::scratch_folder scratch;
    for (const std::string routine : {"copy", "copy_old"}) {
        support::write_file("source", "bytes\n");
        support::write_file("copied", "what was there");
        const support::outcome result = run_with({"stat", "twin", 0, "copied"}, {routine, "source", "copied"});
        EXPECT_EQ(result.status, 0) << result.standard_error;
        EXPECT_EQ(support::read_file("copied").substr(0, 5), "bytes");
        EXPECT_EQ(support::read_file("source"), "bytes\n");
    }
}

TEST(copy_old, tells_why_a_call_failed) {
    const support::scratch_folder scratch;
    support::write_file("source", "bytes\n");
    struct row {
        fault what;
        std::string message;
    };
    const row rows[] = {
        {{"close", std::to_string(EIO), 0, "copied"}, "copied: cannot close: Input/output error"},
        {{"close", std::to_string(EDQUOT), 0, "copied"}, "copied: cannot close: Disk quota exceeded"},
        {{"write", std::to_string(EIO), 0, "copied"}, "copied: cannot write: Input/output error"},
        {{"write", std::to_string(ENOSPC), 0, "copied"}, "copied: cannot write: No space left on device"},
        {{"write close", std::to_string(EFBIG), 0, "copied"}, "copied: cannot write: File too large"},
        {{"write", "none", 0, "copied"}, "copied: cannot write: Input/output error"},
        {{"open", std::to_string(EROFS), 0, "copied"}, "copied: cannot open: Read-only file system"},
        {{"open", std::to_string(EIO), 0, "copied"}, "copied: cannot open: Input/output error"},
        {{"read", std::to_string(EIO), 1, "source"}, "source: cannot read: Input/output error"},
        {{"read", std::to_string(ESTALE), 1, "source"}, "source: cannot read: Stale file handle"},
        {{"read", std::to_string(ESTALE), 3, "source"}, "source: cannot read: Stale file handle"},
    };
    for (const row& tested : rows) {
        SCOPED_TRACE(tested.message);
        expect_stopped(run_with(tested.what, {"copy_old", "source", "copied"}), tested.message);
        EXPECT_EQ(support::read_file("source"), "bytes\n");
    }
}

/// A source that was only read may fail to close.
TEST(copy_old, does_not_mind_a_source_that_cannot_be_closed) {
    const support::scratch_folder scratch;
    support::write_file("source", "bytes\n");
    EXPECT_EQ(run_with({"close", std::to_string(EIO), 0, "source"}, {"copy_old", "source", "copied"}).status, 0);
    EXPECT_EQ(support::read_file("copied").size(), 501U);
}

TEST(write_records, tells_why_a_call_failed) {
    const support::scratch_folder scratch;
    expect_stopped(run_with({"write", std::to_string(EDQUOT), 2}, {"write_records", "new"}),
                   "new: cannot write: Disk quota exceeded");
    EXPECT_EQ(support::read_file("new"), "a record\n");
    expect_stopped(run_with({"close", std::to_string(ENOSPC)}, {"write_records", "new"}),
                   "new: cannot close: No space left on device");
}

TEST(read_lines, tells_why_a_read_failed) {
    const support::scratch_folder scratch;
    support::write_file("source", numbered_lines());
    for (int turn = 1; turn <= 3; ++turn) {
        expect_stopped(run_with({"read", std::to_string(ESTALE), turn}, {"read_lines", "source"}),
                       "source: cannot read: Stale file handle");
        expect_stopped(run_with({"read", std::to_string(EIO), turn}, {"read_lines", "source"}),
                       "source: cannot read: Input/output error");
    }
}

}  // namespace
