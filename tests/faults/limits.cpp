#include <gtest/gtest.h>

#include <cstddef>

#include "faults.hpp"

using namespace displacement_generator;

// What the system or the user allows a process: length of files, number of open ones, memory.

namespace {

namespace fs = std::filesystem;

/// A molecule without symmetry; its list is too long to leave in one write.
void write_large_inputs(int natom) {
    std::string input = "#\n\nlarge\n\n0 1\n";
    for (int i = 1; i <= natom; ++i) {
        input += "C " + std::to_string(i) + " " + std::to_string(i * i % 17) + " 0.5\n";
    }
    support::write_file("mol.gjf", input);
    support::write_file("control", "&control fxyz = 'mol.gjf', symm = F /\n");
}

/// The limit is a number of blocks of 512 bytes: every geometry file is shorter, the list is longer.
TEST(file_size_limit, that_the_list_exceeds) {
    const support::scratch_folder scratch;
    faults::write_inputs();
    faults::expect_stopped(faults::run_in_shell("ulimit -f 1; exec \"$0\" control"),
                           "PES-0/files.out: cannot write: File too large");
    EXPECT_EQ(fs::file_size("PES-0/files.out"), 512U);
}

TEST(file_size_limit, that_a_geometry_exceeds) {
    const support::scratch_folder scratch;
    faults::write_inputs();
    support::write_file("mol.gjf", support::read_file("mol.gjf") + std::string(400, '!') + "\n");
    faults::expect_stopped(faults::run_in_shell("ulimit -f 1; exec \"$0\" control"),
                           "PES-0/coord-0-00.com: cannot write: File too large");
    EXPECT_EQ(fs::file_size("PES-0/files.out"), 0U);
}

/// Whatever part of its last line does not fit, the line goes as a whole.
TEST(file_size_limit, that_the_last_line_of_the_list_exceeds) {
    const support::scratch_folder scratch;
    faults::write_inputs();
    const std::string& list = faults::good_tree().at("PES-0/files.out");
    const std::string last = "End_vesk_info\n";
    for (std::size_t missing = 1; missing <= last.size(); ++missing) {
        SCOPED_TRACE(missing);
        faults::expect_stopped(
            faults::run_in_shell("exec prlimit --fsize=" + std::to_string(list.size() - missing) + " \"$0\" control"),
            "PES-0/files.out: cannot write: File too large");
        EXPECT_EQ(support::read_file("PES-0/files.out"), list.substr(0, list.size() - last.size()));
    }
}

/// A write in the middle of the list fails, when its first part is on the disk and files are still to come.
TEST(file_size_limit, that_a_long_list_exceeds) {
    const support::scratch_folder scratch;
    write_large_inputs(230);
    for (const int blocks : {100, 140, 180}) {
        SCOPED_TRACE(blocks);
        faults::expect_stopped(faults::run_in_shell("ulimit -f " + std::to_string(blocks) + "; exec \"$0\" control"),
                               "PES-0/files.out: cannot write: File too large");
        EXPECT_EQ(fs::file_size("PES-0/files.out"), static_cast<std::uintmax_t>(blocks) * 512);
    }
    EXPECT_EQ(faults::run().status, 0);
    EXPECT_TRUE(faults::says_complete());
}

/// The list stays open, so a geometry file needs one more than all that was opened before.
TEST(open_file_limit, that_leaves_one_file_at_a_time) {
    if (support::sanitized) {
        GTEST_SKIP() << "the sanitizers open files of their own";
    }
    const support::scratch_folder scratch;
    faults::write_inputs();
    faults::expect_stopped(faults::run_in_shell("ulimit -n 4; exec \"$0\" control"),
                           "PES-0/coord-0-00.com: cannot open for writing: Too many open files");
    EXPECT_EQ(fs::file_size("PES-0/files.out"), 0U);
    fs::remove_all("PES-0");
    faults::expect_good(faults::run_in_shell("ulimit -n 5; exec \"$0\" control"));
}

/// Four million lines take two gigabytes where every line has its 500 characters.
TEST(memory_limit, that_the_lines_of_the_input_exceed) {
    if (support::sanitized) {
        GTEST_SKIP() << "the sanitizers need more address space than this limit leaves";
    }
    const support::scratch_folder scratch;
    support::write_file("control", "&control fxyz = 'mol.gjf' /\n");
    support::write_file("mol.gjf", std::string(4000000, '\n'));
    const support::tree before = faults::tree_here();
    const support::outcome result = faults::run_in_shell("ulimit -v 1000000; exec \"$0\" control");
    faults::expect_stopped(result, "array 'lines': 4000000 elements of 500 bytes each would exceed the memory limit");
    EXPECT_EQ(faults::tree_here(), before);
}

/// One endless line costs no memory, only the reading of it.
TEST(memory_limit, that_a_large_sparse_input_does_not_touch) {
    const support::scratch_folder scratch;
    support::write_file("control", "&control fxyz = 'mol.gjf' /\n");
    support::write_file("mol.gjf", "");
    fs::resize_file("mol.gjf", std::uintmax_t{1} << 28);
    const support::outcome result =
        faults::run_in_shell((support::sanitized ? "" : "ulimit -v 100000; ") + std::string("exec \"$0\" control"));
    faults::expect_stopped(result,
                           "mol.gjf:1: expected a route line, that is one that begins with '#', found none up to the "
                           "end of the file (line 1)");
    EXPECT_FALSE(fs::exists("PES-0"));
}

/// From a limit at which the program does not even start to one that is enough: whatever runs out on the way, the run
/// tells, or is whole.
TEST(memory_limit, that_grows_until_it_suffices) {
    if (support::sanitized) {
        GTEST_SKIP() << "the sanitizers need more address space than this limit leaves";
    }
    constexpr std::string_view told = " would exceed the memory limit\n";
    constexpr int step = 100;  // kB
    int stopped = 0;
    bool enough = false;
    for (int limit = 2000; limit < 20000 && !enough; limit += step) {
        SCOPED_TRACE(limit);
        const support::scratch_folder scratch;
        write_large_inputs(60);
        fs::create_directory("PES-0");  // no shell is needed then, which has the same limit
        const support::outcome result =
            faults::run_in_shell("ulimit -v " + std::to_string(limit) + "; exec \"$0\" control");
        enough = result.status == 0;
        EXPECT_EQ(faults::says_complete(), enough);
        EXPECT_EQ(result.standard_output, "");
        if (result.standard_error.starts_with("displacement_generator: error: ")) {
            EXPECT_EQ(result.status, 2);
            EXPECT_TRUE(result.standard_error.ends_with(told)) << result.standard_error;
            ++stopped;
        } else {
            EXPECT_TRUE(enough || stopped == 0) << result.status << ' ' << result.standard_error;
        }
    }
    EXPECT_TRUE(enough);
    EXPECT_GT(stopped, 0);
}

}  // namespace
