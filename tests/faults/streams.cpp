#include <gtest/gtest.h>

#include "faults.hpp"

using namespace displacement_generator;

// Standard streams that are closed, full, or read by nobody any more. The numbers of closed ones would go to the first
// files that are opened, and a message would end up in one of them.

namespace {

namespace fs = std::filesystem;

constexpr const char* closings[] = {"<&-", ">&-", "2>&-", "<&- >&-", "<&- 2>&-", ">&- 2>&-", "<&- >&- 2>&-"};

std::string with(const std::string& redirections) { return "exec \"$0\" control " + redirections; }

TEST(streams, that_are_closed_are_not_needed) {
    for (const char* closing : closings) {
        SCOPED_TRACE(closing);
        const support::scratch_folder scratch;
        faults::write_inputs();
        faults::expect_good(faults::run_in_shell(with(closing)));
    }
}

/// The list and a geometry file are open, or were, when the message comes.
TEST(streams, that_are_closed_give_their_numbers_to_no_output) {
    for (const char* closing : closings) {
        SCOPED_TRACE(closing);
        const support::scratch_folder scratch;
        faults::write_inputs();
        fs::create_directory("PES-0");
        fs::create_symlink("/dev/full", "PES-0/coord-1-dx.com");
        const support::outcome result = faults::run_in_shell(with(closing));
        EXPECT_EQ(result.status, 2);
        EXPECT_EQ(result.standard_output, "");
        const bool told = std::string_view(closing).find("2>") == std::string_view::npos;
        EXPECT_EQ(
            result.standard_error,
            told ? faults::error_line("PES-0/coord-1-dx.com: cannot write: No space left on device" + faults::need())
                 : "");
        const support::tree& good = faults::good_tree();
        for (const auto& [name, bytes] : faults::tree_here()) {
            if (name == "PES-0/files.out") {
                EXPECT_EQ(bytes, "");
            } else if (name != "PES-0/coord-1-dx.com@") {
                EXPECT_EQ(bytes, good.at(name)) << name;
            }
        }
    }
}

TEST(streams, that_are_closed_do_not_change_the_status) {
    for (const char* closing : closings) {
        SCOPED_TRACE(closing);
        const std::string_view closed = closing;
        const support::scratch_folder scratch;
        support::write_file("control", "&control fxyz = 'missing.gjf' /\n");
        const support::tree before = faults::tree_here();
        const support::outcome missing = faults::run_in_shell(with(closing));
        EXPECT_EQ(missing.status, 1);
        EXPECT_EQ(missing.standard_output, closed.starts_with(">") || closed.find(" >") != std::string_view::npos
                                               ? ""
                                               : faults::input_line("missing.gjf"));
        EXPECT_EQ(missing.standard_error, closed.find("2>") != std::string_view::npos
                                              ? ""
                                              : faults::input_reason("missing.gjf", "No such file or directory"));
        const support::outcome no_control = faults::run_in_shell(std::string("exec \"$0\" none ") + closing);
        EXPECT_EQ(no_control.status, 2);
        EXPECT_EQ(no_control.standard_output, "");
        EXPECT_EQ(no_control.standard_error,
                  closed.find("2>") != std::string_view::npos
                      ? ""
                      : faults::error_line("none: cannot open the control file: No such file or directory"));
        EXPECT_EQ(faults::tree_here(), before);
    }
}

TEST(streams, that_are_full_do_not_change_the_status) {
    const support::scratch_folder scratch;
    support::write_file("control", "&control fxyz = 'missing.gjf' /\n");
    EXPECT_EQ(faults::run_in_shell(with(">/dev/full")).status, 1);
    EXPECT_EQ(faults::run_in_shell("exec \"$0\" none 2>/dev/full").status, 2);
}

/// Descriptor 5 becomes a pipe without a reader.
constexpr const char* break_pipe = "mkfifo broken; exec 4<>broken 5>broken 4<&-; rm broken; ";

TEST(streams, that_nobody_reads_do_not_change_the_status) {
    const support::scratch_folder scratch;
    support::write_file("control", "&control fxyz = 'missing.gjf' /\n");
    EXPECT_EQ(faults::run_in_shell(break_pipe + with(">&5")).status, 1);
    EXPECT_EQ(faults::run_in_shell(break_pipe + std::string("exec \"$0\" none 2>&5")).status, 2);
    faults::write_inputs();
    faults::expect_good(faults::run_in_shell(break_pipe + with(">&5 2>&5")));
}

}  // namespace
