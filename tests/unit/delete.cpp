#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "file/descriptor.hpp"
#include "file_test.hpp"

using namespace displacement_generator;

namespace {

namespace fs = std::filesystem;

using support::stopped_with;

// `delete` itself is a word of the language.
using delete_file = support::file_test;

TEST_F(delete_file, removes_the_file_and_no_other) {
    for (const char* name : {"a", "b", "empty", "linked-to"}) {
        support::write_file(name, name);
    }
    fs::create_symlink("linked-to", "link");
    file::delete_("a");
    file::delete_("b   ");
    file::delete_("link");
    EXPECT_EQ(support::read_tree("."), (support::tree{{"empty", "empty"}, {"linked-to", "linked-to"}}));
}

TEST_F(delete_file, that_cannot_be_opened_stops_the_run) {
    fs::create_directory("folder");
    ASSERT_EQ(::mkfifo("fifo", 0600), 0);
    struct row {
        const char* fname;
        const char* expected;
    };
    const row rows[] = {
        {"missing  ", "missing: cannot open: No such file or directory|standard error|2"},
        {"", ": cannot open: No such file or directory|standard error|2"},
        {"folder", "folder: cannot open: Is a directory|standard error|2"},
        {"fifo", "fifo: cannot open: Not a regular file|standard error|2"},
    };
    for (const row& tested : rows) {
        SCOPED_TRACE(tested.fname);
        EXPECT_EQ(stopped_with([&] { file::delete_(tested.fname); }), tested.expected);
    }
    EXPECT_EQ(support::read_tree("."), (support::tree{{"folder/", ""}, {"fifo@", ""}}));
}

TEST_F(delete_file, that_cannot_be_removed_stops_the_run) {
    // A file in a file system where none is ever removed; why not depends on who asks.
    ASSERT_NE(::unlink("/proc/self/status"), 0);
    const std::string reason = file::system_reason(errno);
    EXPECT_EQ(stopped_with([] { file::delete_("/proc/self/status"); }),
              "/proc/self/status: cannot remove: " + reason + "|standard error|2");
}

}  // namespace
