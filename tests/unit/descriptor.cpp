#include "file/descriptor.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <string>

#include "file/output_file.hpp"
#include "file_test.hpp"

using namespace displacement_generator;

namespace {

namespace fs = std::filesystem;

using descriptor = support::file_test;

TEST_F(descriptor, opens_to_read_what_is_there) {
    support::write_file("regular", "bytes");
    fs::create_symlink("regular", "link");
    fs::create_directory("folder");
    ASSERT_EQ(::mkfifo("fifo", 0600), 0);
    struct row {
        const char* fname;
        bool regular_only;
        const char* reason;  ///< blank where it opens
    };
    const row rows[] = {
        {"regular", true, ""},
        {"regular   ", true, ""},
        {"link", true, ""},
        {"/proc/self/status", true, ""},
        {"missing", true, "No such file or directory"},
        {" regular", true, "No such file or directory"},
        {"", true, "No such file or directory"},
        {"   ", true, "No such file or directory"},
        {"regular/x", true, "Not a directory"},
        {"folder", true, "Is a directory"},
        {"fifo", true, "Not a regular file"},
        {"/dev/null", true, "Not a regular file"},
        {"/dev/full", true, "Not a regular file"},
        {"missing", false, "No such file or directory"},
        {"folder", false, ""},
        {"/dev/null", false, ""},
    };
    for (const row& tested : rows) {
        SCOPED_TRACE(tested.fname);
        std::string reason;
        const int opened = file::open_to_read(tested.fname, tested.regular_only, reason);
        EXPECT_EQ(reason, tested.reason);
        EXPECT_EQ(opened >= 0, reason.empty());
        if (opened >= 0) {
            ::close(opened);
        }
    }
}

TEST_F(descriptor, takes_no_name_for_a_shorter_one) {
    support::write_file("regular", "bytes");
    const std::string name("regular\0x", 9);
    std::string reason;
    EXPECT_EQ(file::open_to_read(name, true, reason), -1);
    EXPECT_EQ(reason, "No such file or directory");
    reason.clear();
    EXPECT_EQ(file::open_to_write(name, reason), -1);
    EXPECT_EQ(reason, "No such file or directory");
    EXPECT_EQ(support::read_file("regular"), "bytes");
    reason.clear();
    EXPECT_EQ(file::open_to_read(std::string(5000, 'a'), true, reason), -1);
    EXPECT_EQ(reason, "File name too long");
}

/// "NAME" after so many "/" that the path has this length.
std::string path_of_length(std::size_t length, const std::string& name) {
    return "." + std::string(length - 1 - name.size(), '/') + name;
}

/// With its end a path of the system has PATH_MAX bytes.
TEST_F(descriptor, takes_a_path_up_to_the_longest_of_the_system) {
    support::write_file("regular", "bytes");
    struct row {
        std::size_t length;
        const char* reason;  ///< blank where it opens
    };
    const row rows[] = {
        {PATH_MAX - 2, ""},
        {PATH_MAX - 1, ""},
        {PATH_MAX, "File name too long"},
        {PATH_MAX + 1, "File name too long"},
    };
    for (const row& tested : rows) {
        SCOPED_TRACE(tested.length);
        for (const std::string& after : {std::string(), std::string(3, ' ')}) {  // blanks that end a path do not count
            std::string reason;
            const int input = file::open_to_read(path_of_length(tested.length, "regular") + after, true, reason);
            EXPECT_EQ(reason, tested.reason);
            ASSERT_EQ(input >= 0, reason.empty());
            reason.clear();
            const int output = file::open_to_write(path_of_length(tested.length, "new") + after, reason);
            EXPECT_EQ(reason, tested.reason);
            ASSERT_EQ(output >= 0, reason.empty());
            if (reason.empty()) {
                char bytes[6] = {};
                EXPECT_EQ(file::read_some(input, bytes, 6), 5);
                EXPECT_TRUE(file::is_same_file(output, "new"));
                EXPECT_TRUE(file::is_same_file(output, path_of_length(tested.length, "new")));
                ::close(input);
                ::close(output);
            }
            EXPECT_EQ(fs::remove("new"), reason.empty());
        }
    }
    EXPECT_EQ(support::read_tree("."), (support::tree{{"regular", "bytes"}}));
}

TEST_F(descriptor, opens_to_write_an_empty_file) {
    support::write_file("old", "bytes");
    fs::create_directory("folder");
    ASSERT_EQ(::mkfifo("fifo", 0600), 0);
    struct row {
        const char* fname;
        const char* reason;
    };
    const row rows[] = {
        {"old", ""},
        {"new  ", ""},
        {"/dev/null", ""},
        {"missing/new", "No such file or directory"},
        {"old/new", "Not a directory"},
        {"folder", "Is a directory"},
        {"fifo", "No such device or address"},  // nobody reads it
        {"", "No such file or directory"},
    };
    for (const row& tested : rows) {
        SCOPED_TRACE(tested.fname);
        std::string reason;
        const int opened = file::open_to_write(tested.fname, reason);
        EXPECT_EQ(reason, tested.reason);
        EXPECT_EQ(opened >= 0, reason.empty());
        if (opened >= 0) {
            ::close(opened);
        }
    }
    EXPECT_EQ(support::read_tree("."), (support::tree{{"old", ""}, {"new", ""}, {"folder/", ""}, {"fifo@", ""}}));
}

TEST_F(descriptor, gives_a_new_file_the_rights_that_the_user_leaves) {
    struct row {
        mode_t umask;
        unsigned rights;
    };
    const row rows[] = {{0, 0666}, {022, 0644}, {027, 0640}, {0777, 0}};
    for (const row& tested : rows) {
        const mode_t before = ::umask(tested.umask);
        std::string reason;
        ::close(file::open_to_write("new", reason));
        ::umask(before);
        EXPECT_EQ(fs::status("new").permissions(), fs::perms(tested.rights));
        fs::remove("new");
    }
}

TEST_F(descriptor, is_not_inherited_by_a_command) {
    support::write_file("regular", "");
    std::string reason;
    const int input = file::open_to_read("regular", true, reason);
    const int output = file::open_to_write("new", reason);
    for (const int opened : {input, output}) {
        EXPECT_EQ(::fcntl(opened, F_GETFD), FD_CLOEXEC);
        ::close(opened);
    }
}

TEST_F(descriptor, may_be_number_0) {
    support::write_file("regular", "bytes");
    const support::no_standard_input closed;
    const auto before = support::open_descriptors();
    errno = EINTR;  // left by an earlier call
    std::string reason;
    const int opened = file::open_to_read("regular", true, reason);
    EXPECT_EQ(opened, 0);
    EXPECT_EQ(reason, "");
    EXPECT_EQ(support::open_descriptors(), before + 1);
    EXPECT_EQ(file::close_descriptor(opened), 0);
    EXPECT_EQ(file::open_to_read(".", true, reason), -1);
    EXPECT_EQ(support::open_descriptors(), before);
}

TEST_F(descriptor, of_number_0_serves_every_routine) {
    const file::output_file list("list", file::writers::one);
    const support::no_standard_input closed;
    const auto before = support::open_descriptors();
    { file::output_file("new").write("line\n"); }
    EXPECT_EQ(support::read_file("new"), "line\n");
    EXPECT_EQ(support::open_descriptors(), before);
    EXPECT_NE(support::stopped_with([] { const file::output_file second("list", file::writers::one); }), "no error");
    EXPECT_EQ(support::open_descriptors(), before);
    EXPECT_EQ(file::num_file_lines("new"), 1);
    file::copy("new", "copied");
    EXPECT_EQ(support::read_file("copied"), "line\n");
    EXPECT_EQ(support::open_descriptors(), before);
    file::copy("new", "./new");
    EXPECT_EQ(support::open_descriptors(), before);
    file::copy("missing", "copied");
    EXPECT_EQ(support::read_file("copied"), "");
    EXPECT_EQ(support::open_descriptors(), before);
    file::copy("new", "missing/copied");
    EXPECT_EQ(support::open_descriptors(), before);
    file::copy_old("new", "copied");
    EXPECT_EQ(support::read_file("copied").size(), 501U);
    EXPECT_EQ(support::open_descriptors(), before);
}

TEST_F(descriptor, tells_how_a_call_of_the_system_went) {
    std::string reason;
    const int full = file::open_to_write("/dev/full", reason);
    EXPECT_EQ(file::write_all(full, ""), 0);
    EXPECT_EQ(file::write_all(full, "x"), ENOSPC);
    EXPECT_EQ(file::close_descriptor(full), 0);
    EXPECT_EQ(file::close_descriptor(full), EBADF);
    EXPECT_EQ(file::write_all(full, "x"), EBADF);
    char byte = 0;
    EXPECT_EQ(file::read_some(full, &byte, 1), -1);
    EXPECT_EQ(errno, EBADF);
    EXPECT_EQ(file::system_reason(ENOSPC), "No space left on device");
}

TEST_F(descriptor, knows_a_file_by_all_its_names) {
    support::write_file("regular", "bytes");
    support::write_file("other", "bytes");
    fs::create_symlink("regular", "link");
    fs::create_hard_link("regular", "second-name");
    std::string reason;
    const int opened = file::open_to_read("regular", true, reason);
    for (const char* name : {"regular", "regular  ", "./regular", "link", "second-name"}) {
        EXPECT_TRUE(file::is_same_file(opened, name)) << name;
    }
    for (const char* name : {"other", "missing", "", "."}) {
        EXPECT_FALSE(file::is_same_file(opened, name)) << name;
    }
    ::close(opened);
    EXPECT_FALSE(file::is_same_file(opened, "regular"));
}

}  // namespace
