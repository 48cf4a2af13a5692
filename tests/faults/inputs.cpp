#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string_view>
#include <utility>

#include "faults.hpp"

using namespace displacement_generator;

// Inputs that are no text files. A run on one of them ends at once, with a message, and leaves no trace.

namespace {

namespace fs = std::filesystem;

/// Runs the program on a control file and checks that it says this, and nothing else, and leaves nothing.
void expect_refused(const std::string& control, const std::string& message) {
    SCOPED_TRACE(control);
    const support::tree before = faults::tree_here();
    const support::outcome result = support::run_program(support::displacement_generator(), {control});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.standard_output, "");
    EXPECT_EQ(result.standard_error, faults::error_line(message));
    EXPECT_EQ(faults::tree_here(), before);
}

TEST(control_file, that_is_no_file) {
    const support::scratch_folder scratch;
    fs::create_directory("folder");
    const faults::listening_socket socket("socket");
    fs::create_symlink("circle", "circle");
    fs::create_symlink("missing", "nowhere");
    support::write_file("file", "");
    expect_refused("folder", "folder: cannot read the control file: Is a directory");
    expect_refused("socket", "socket: cannot open the control file: No such device or address");
    expect_refused("circle", "circle: cannot open the control file: Too many levels of symbolic links");
    expect_refused("nowhere", "nowhere: cannot open the control file: No such file or directory");
    expect_refused("file/control", "file/control: cannot open the control file: Not a directory");
    const std::string no_group = ":1: expected a line whose first word is '&control', found the end of the file";
    expect_refused("file", "file" + no_group);
    expect_refused("/dev/null", "/dev/null" + no_group);
}

TEST(control_file, that_may_not_be_read) {
    const support::scratch_folder scratch;
    faults::write_inputs();
    fs::permissions(scratch.path(), fs::perms(0755));
    fs::permissions("control", fs::perms::none);
    std::string as_user;
    if (!faults::find_plain_user(as_user)) {
        GTEST_SKIP() << "there is no user but root who could run the program";
    }
    const support::outcome result = faults::run_in_shell(as_user + "\"$0\" control");
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.standard_error, faults::error_line("control: cannot open the control file: Permission denied"));
    EXPECT_FALSE(fs::exists("PES-0"));
}

TEST(control_file, that_has_no_end) {
    const std::string too_long = ": found 1048576 bytes without the end of a '&control' group, expected it before that";
    const support::scratch_folder scratch;
    expect_refused("/dev/zero", "/dev/zero:1" + too_long);
    for (const std::string start : {"", "&control\n", "&control ! comment", "&control fxyz = '", "&control dx = "}) {
        support::write_file("control", start);
        fs::resize_file("control", std::uintmax_t{1} << 30);
        faults::expect_stopped(faults::run(), (start.ends_with('\n') ? "control:2" : "control:1") + too_long);
        EXPECT_FALSE(fs::exists("PES-0"));
    }
}

/// A text with every number in it shown as one N.
std::string without_numbers(std::string_view text) {
    std::string result;
    for (const char c : text) {
        const bool digit = c >= '0' && c <= '9';
        if (!digit || !result.ends_with('N')) {
            result += digit ? 'N' : c;
        }
    }
    return result;
}

/// Where reading stopped depends on how the bytes came through the pipe.
TEST(control_file, that_is_an_endless_pipe) {
    const support::scratch_folder scratch;
    for (const char* start : {"", "&control\n", "&control fxyz = '"}) {
        SCOPED_TRACE(start);
        support::write_file("start", start);
        const support::outcome result = faults::run_in_shell("{ cat start; yes 'symm = T'; } | \"$0\" /dev/stdin");
        EXPECT_EQ(result.status, 2);
        EXPECT_EQ(result.standard_output, "");
        EXPECT_EQ(without_numbers(result.standard_error),
                  faults::error_line("/dev/stdin:N: found N bytes without the end of a '&control' group, expected it "
                                     "before that"));
        EXPECT_FALSE(fs::exists("PES-0"));
    }
}

TEST(control_file, that_comes_through_a_pipe) {
    const support::scratch_folder scratch;
    faults::write_inputs();
    faults::expect_good(faults::run_in_shell("cat control | \"$0\" /dev/stdin"));
    fs::remove_all("PES-0");
    faults::expect_good(faults::run_in_shell(
        "{ printf '&con'; sleep 0.1; printf 'trol fxyz = \"mol.gjf\",dx=1'; sleep 0.1; printf 'D-2/'; } | "
        "\"$0\" /dev/stdin"));
}

/// The end of the group is all that is waited for.
TEST(control_file, that_is_a_fifo_whose_writer_stays) {
    const support::scratch_folder scratch;
    faults::write_inputs();
    const std::string text = support::read_file("control");
    ::mkfifo("fifo", 0600);
    const int writer = ::open("fifo", O_RDWR | O_CLOEXEC);
    ASSERT_EQ(::write(writer, text.data(), text.size()), static_cast<ssize_t>(text.size()));
    const support::outcome result = support::run_program(support::displacement_generator(), {"fifo"});
    ::close(writer);
    fs::remove("fifo");
    faults::expect_good(result);
}

TEST(control_file, that_is_a_fifo_with_a_writer) {
    const support::scratch_folder scratch;
    faults::write_inputs();
    fs::rename("control", "text");
    ::mkfifo("control", 0600);
    const support::outcome result = faults::run_in_shell("cat text >control & exec \"$0\" control");
    EXPECT_EQ(result.standard_error, "");
    EXPECT_EQ(result.status, 0);
    fs::remove("control");
    fs::rename("text", "control");
    EXPECT_EQ(faults::tree_here(), faults::good_tree());
}

TEST(gaussian_input, that_is_no_file) {
    const support::scratch_folder scratch;
    fs::create_directory("folder");
    const faults::listening_socket socket("socket");
    fs::create_symlink("circle", "circle");
    fs::create_symlink("missing", "nowhere");
    ::mkfifo("fifo", 0600);
    const std::string not_regular = "Not a regular file";
    const std::string missing = "No such file or directory";
    const std::pair<std::string, std::string> rows[] = {{"folder", "Is a directory"},
                                                        {"socket", "No such device or address"},
                                                        {"circle", "Too many levels of symbolic links"},
                                                        {"nowhere", missing},
                                                        {"fifo", not_regular},
                                                        {"missing", missing},
                                                        {"folder/", "Is a directory"},
                                                        {"fifo/below", "Not a directory"},
                                                        {"/dev/null", not_regular},
                                                        {"/dev/zero", not_regular},
                                                        {"/dev/full", not_regular},
                                                        {"/dev/stdin", not_regular},
                                                        {"", ""}};
    for (const auto& [name, reason] : rows) {
        SCOPED_TRACE(name);
        support::write_file("control", "&control fxyz = '" + name + "' /\n");
        const support::tree before = faults::tree_here();
        const support::outcome result = faults::run();
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.standard_output, faults::input_line(name));
        EXPECT_EQ(result.standard_error, faults::input_reason(name, reason));
        EXPECT_EQ(faults::tree_here(), before);
    }
}

/// A file that the input may well come from, but not twice.
TEST(gaussian_input, that_is_a_pipe_with_a_writer) {
    const support::scratch_folder scratch;
    faults::write_inputs();
    support::write_file("control", "&control fxyz = '/dev/stdin' /\n");
    const support::outcome result = faults::run_in_shell("cat mol.gjf | \"$0\" control");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.standard_output, faults::input_line("/dev/stdin"));
    EXPECT_EQ(result.standard_error, faults::input_reason("/dev/stdin", "Not a regular file"));
    EXPECT_FALSE(fs::exists("PES-0"));
}

TEST(gaussian_input, that_may_not_be_read) {
    const support::scratch_folder scratch;
    faults::write_inputs();
    fs::permissions(scratch.path(), fs::perms(0755));
    fs::permissions("mol.gjf", fs::perms::none);
    std::string as_user;
    if (!faults::find_plain_user(as_user)) {
        GTEST_SKIP() << "there is no user but root who could run the program";
    }
    const support::outcome result = faults::run_in_shell(as_user + "\"$0\" control");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.standard_output, faults::input_line("mol.gjf"));
    EXPECT_EQ(result.standard_error, faults::input_reason("mol.gjf", "Permission denied"));
    EXPECT_FALSE(fs::exists("PES-0"));
}

/// A file below /proc reports itself as regular and as empty, and its reads fail.
TEST(gaussian_input, that_opens_and_cannot_be_read) {
    const support::scratch_folder scratch;
    support::write_file("control", "&control fxyz = '/proc/self/mem' /\n");
    const support::tree before = faults::tree_here();
    faults::expect_stopped(faults::run(), "/proc/self/mem: cannot read: Input/output error");
    EXPECT_EQ(faults::tree_here(), before);
}

}  // namespace
