#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <string>
#include <vector>

#include "faults.hpp"

using namespace displacement_generator;

// Every call of the system that a run makes goes wrong once, one run for each. Whatever happens, a list that ends as a
// complete one does stands beside files that are whole.

namespace {

namespace fs = std::filesystem;
using faults::error_line;
using faults::input_line;

struct failure {
    std::string call;
    std::string way;
    std::string reason = {};
};

struct observed {
    support::outcome result;
    bool happened;     ///< the call that was to go wrong was made
    std::string file;  ///< for this file
};

/// A run in the current folder, one call of which goes wrong.
observed run_with(const failure& what, int turn, const std::string& file = "") {
    const std::string mark = fs::current_path().string() + "-mark";
    fs::remove(mark);
    const support::outcome result =
        faults::run({std::string("LD_PRELOAD=") + FAILING_CALLS, "ASAN_OPTIONS=verify_asan_link_order=0",
                     "FAILING_CALL=" + what.call, "FAILING_WAY=" + what.way, "FAILING_TURN=" + std::to_string(turn),
                     "FAILING_FILE=" + file, "FAILING_MARK=" + mark});
    const bool happened = fs::exists(mark);
    const std::string name = support::read_file(mark);
    fs::remove(mark);
    return {result, happened, name};
}

bool is_output(const std::string& file) { return file.starts_with("PES-0/"); }

/// What the program may print where this call for this file goes wrong.
std::vector<std::string> messages(const failure& what, const std::string& file) {
    if (file == "control") {
        return {error_line("control: cannot " + what.call + " the control file: " + what.reason)};
    }
    if (is_output(file)) {
        const std::string call = what.call == "open" || what.call == "empty" ? "open for writing" : what.call;
        const bool full = what.reason == "No space left on device" || what.reason == "Disk quota exceeded";
        return {error_line(file + ": cannot " + call + ": " + what.reason + (full ? faults::need() : ""))};
    }
    if (what.call == "open") {
        return {input_line(file) + faults::input_reason(file, what.reason),
                error_line(file + ": cannot open: " + what.reason)};
    }
    return {error_line(file + ": cannot " + what.call + ": " + what.reason)};
}

void expect_message(const support::outcome& result, const std::vector<std::string>& expected) {
    const std::string printed = result.standard_output + result.standard_error;
    EXPECT_NE(std::find(expected.begin(), expected.end(), printed), expected.end()) << "printed: " << printed;
    EXPECT_EQ(result.status, result.standard_output.empty() ? 2 : 1);
}

/// Everything that must hold of a run that one call ended, in a folder that held `before`.
void expect_honest(const support::tree& before) {
    const support::tree after = faults::tree_here();
    if (faults::says_complete()) {
        // Either the last call of all was too late to do harm, or the first output was not yet opened.
        EXPECT_TRUE(after == faults::good_tree() || after == before);
    }
    for (const auto& [name, bytes] : before) {
        EXPECT_TRUE(is_output(name) || after.at(name) == bytes) << "changed: " << name;
    }
}

enum class folder { empty, with_an_earlier_run };

/// Inputs, and perhaps what an earlier run with another step left.
void lay_out(folder what) {
    if (what == folder::with_an_earlier_run) {
        faults::write_tree(faults::good_tree("0.5"));
    }
    faults::write_inputs();
}

/// Lets the calls go wrong one after the other, until a run makes fewer.
///   check  what must hold of one that went wrong
/// Result: how many there were.
template <class function>
int for_every_turn(const failure& what, folder start, const function& check) {
    for (int turn = 1;; ++turn) {
        const support::scratch_folder scratch;
        lay_out(start);
        const support::tree before = faults::tree_here();
        const observed seen = run_with(what, turn);
        if (!seen.happened) {
            faults::expect_good(seen.result);
            return turn - 1;
        }
        SCOPED_TRACE(what.call + " " + what.way + ", turn " + std::to_string(turn) + ", " + seen.file);
        check(seen);
        expect_honest(before);
        if (testing::Test::HasFailure()) {
            return turn;
        }
    }
}

/// Each file of a run is opened, written and closed once, but for the list; the control file and the input in their own
/// ways.
void expect_turns(const std::string& call, int turns) {
    const int outputs = static_cast<int>(faults::output_names().size());
    if (call == "lock" || call == "empty") {
        EXPECT_EQ(turns, 1);  // the list
    } else if (call == "write") {
        EXPECT_EQ(turns, outputs + 1);  // the last line of the list leaves by itself
    } else {
        EXPECT_GT(turns, call == "read" ? 2 : outputs + 2);
    }
}

class every_call : public testing::TestWithParam<folder> {};

TEST_P(every_call, that_fails_ends_the_run) {
    const failure failures[] = {
        {"open", std::to_string(EACCES), "Permission denied"},
        {"open", std::to_string(EMFILE), "Too many open files"},
        {"read", std::to_string(EIO), "Input/output error"},
        {"read", std::to_string(ESTALE), "Stale file handle"},
        {"write", std::to_string(ENOSPC), "No space left on device"},
        {"write", std::to_string(EIO), "Input/output error"},
        {"write", "none", "Input/output error"},
        {"empty", std::to_string(EIO), "Input/output error"},
    };
    for (const failure& what : failures) {
        const int turns = for_every_turn(what, GetParam(), [&](const observed& seen) {
            expect_message(seen.result, messages(what, seen.file));
            if (is_output(seen.file) && seen.file != "PES-0/files.out") {
                EXPECT_FALSE(faults::says_complete());
            }
        });
        expect_turns(what.call, turns);
    }
}

TEST_P(every_call, close_that_fails_ends_the_run_where_something_was_written) {
    for (const failure& what : {failure{"close", std::to_string(EIO), "Input/output error"},
                                failure{"close", std::to_string(EDQUOT), "Disk quota exceeded"},
                                failure{"close", std::to_string(EINTR), "Interrupted system call"}}) {
        const int turns = for_every_turn(what, GetParam(), [&](const observed& seen) {
            if (is_output(seen.file)) {
                expect_message(seen.result, messages(what, seen.file));
                EXPECT_FALSE(faults::says_complete());
            } else {
                EXPECT_EQ(seen.result.status, 0);  // all that was wanted of it has been read
                EXPECT_EQ(faults::tree_here(), faults::good_tree());
            }
        });
        expect_turns(what.call, turns);
    }
}

TEST_P(every_call, that_the_process_dies_in_leaves_no_list_that_says_more_than_is_true) {
    for (const std::string call : {"open", "lock", "empty", "read", "write", "close"}) {
        for (const std::string way : {"killed", "torn"}) {
            const bool transfer = call == "read" || call == "write";
            if (way == "torn" && !transfer) {
                continue;
            }
            const int turns = for_every_turn({call, way}, GetParam(), [&](const observed& seen) {
                EXPECT_EQ(seen.result.status, -SIGKILL);
                EXPECT_EQ(seen.result.standard_output + seen.result.standard_error, "");
                // Only the close of the list comes behind its last write, when everything is written.
                const bool all_written = call == "close" && seen.file == "PES-0/files.out";
                const bool list_opens = call == "lock" || call == "empty" || call == "open";
                const bool not_begun = !is_output(seen.file) || (list_opens && seen.file == "PES-0/files.out");
                EXPECT_EQ(faults::says_complete(),
                          all_written || (not_begun && GetParam() == folder::with_an_earlier_run));
            });
            expect_turns(call, turns);
        }
    }
}

TEST_P(every_call, that_is_interrupted_or_does_less_than_asked_is_continued) {
    for (const failure& what :
         {failure{"open", "interrupted"}, failure{"lock", "interrupted"}, failure{"empty", "interrupted"},
          failure{"write", "interrupted"}, failure{"write", "half"}, failure{"read", "half"}}) {
        for_every_turn(what, GetParam(), [](const observed& seen) { faults::expect_good(seen.result); });
    }
    for (const std::string call : {"open", "read", "write"}) {
        for (const std::string way : {"interrupted", "half", "byte"}) {
            const support::scratch_folder scratch;
            lay_out(GetParam());
            const observed seen = run_with({call, way}, 0);
            SCOPED_TRACE(call + " " + way + ", every turn");
            EXPECT_TRUE(seen.happened);
            faults::expect_good(seen.result);
        }
    }
}

std::string folder_name(const testing::TestParamInfo<folder>& tested) {
    return tested.param == folder::empty ? "in_an_empty_folder" : "over_an_earlier_run";
}

INSTANTIATE_TEST_SUITE_P(faults, every_call, testing::Values(folder::empty, folder::with_an_earlier_run), folder_name);

/// Devices and pipes cannot be emptied, and need not be.
TEST(list, that_cannot_be_emptied_by_its_nature_is_written) {
    const support::scratch_folder scratch;
    faults::write_inputs();
    const observed seen = run_with({"empty", std::to_string(EINVAL)}, 1);
    EXPECT_TRUE(seen.happened);
    faults::expect_good(seen.result);
}

/// The last line is in the list when its close fails; where it cannot be cut off, the list goes as a whole.
TEST(list, that_can_be_neither_closed_nor_cut_is_removed) {
    const support::scratch_folder scratch;
    faults::write_inputs();
    const observed seen = run_with({"close cut", std::to_string(EIO)}, 0, "PES-0/files.out");
    EXPECT_TRUE(seen.happened);
    faults::expect_stopped(seen.result, "PES-0/files.out: cannot close: Input/output error");
    support::tree expected = faults::good_tree();
    expected.erase("PES-0/files.out");
    EXPECT_EQ(faults::tree_here(), expected);
}

TEST(list, that_cannot_be_closed_loses_its_last_line_only) {
    const support::scratch_folder scratch;
    faults::write_inputs();
    const observed seen = run_with({"close", std::to_string(EIO)}, 1, "PES-0/files.out");
    faults::expect_stopped(seen.result, "PES-0/files.out: cannot close: Input/output error");
    support::tree expected = faults::good_tree();
    std::string& list = expected["PES-0/files.out"];
    list.resize(list.rfind("End_vesk_info"));
    EXPECT_EQ(faults::tree_here(), expected);
}

TEST(shell, that_cannot_be_started_shows_when_the_list_is_opened) {
    const support::scratch_folder scratch;
    faults::write_inputs();
    const support::tree before = faults::tree_here();
    const observed seen = run_with({"system", std::to_string(EAGAIN)}, 0);
    EXPECT_TRUE(seen.happened);
    EXPECT_EQ(seen.file, "/bin/mkdir -p PES-0");
    faults::expect_stopped(seen.result,
                           "PES-0: cannot make the folder: the command '/bin/mkdir -p PES-0' could not be started: "
                           "Resource temporarily unavailable");
    EXPECT_EQ(faults::tree_here(), before);
}

}  // namespace
