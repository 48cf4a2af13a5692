#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <functional>
#include <string>

#include "command_folder.hpp"
#include "file_test.hpp"

using namespace displacement_generator;

namespace {

namespace fs = std::filesystem;

class nfile_dir : public support::file_test {
  protected:
    /// Runs `work` without what the shell's commands complain of.
    static std::string message_of(const std::function<void()>& work) {
        const int saved = ::dup(STDERR_FILENO);
        const int nowhere = ::open("/dev/null", O_WRONLY);
        ::dup2(nowhere, STDERR_FILENO);
        ::close(nowhere);
        std::string message = support::stopped_with(work);
        ::dup2(saved, STDERR_FILENO);
        ::close(saved);
        return message;
    }
};

TEST_F(nfile_dir, counts_the_regular_files_whose_line_matches) {
    for (const char* name : {"w.gjf", "x.gjf", "y.log", "W.GJF", ".hidden.gjf"}) {
        support::write_file(name, "");
    }
    fs::create_directory("gjfdir");
    support::write_file("gjfdir/inner.gjf", "");
    fs::create_symlink("w.gjf", "link.gjf");
    ASSERT_EQ(::mkfifo("fifo.gjf", 0600), 0);
    struct row {
        const char* dir;
        int expected;
    };
    const row rows[] = {{"gjf", 2},
                        {"gjf   ", 2},
                        {"w.gjf", 1},
                        {"nothing", 0},
                        {".", 4},
                        {"gjf$", 2},
                        {"-i gjf", 3},
                        {"'[wxy][.]'", 3},
                        {"gjfdir", 0},
                        {"-v gjf", 2},
                        {"gjf | head -1", 0},
                        {"total", 0},
                        {"gjf >/dev/null ; ls -l | grep log", 1}};
    const support::tree before = support::read_tree(".");
    for (const row& tested : rows) {
        SCOPED_TRACE(tested.dir);
        EXPECT_EQ(file::nfile_dir(tested.dir), tested.expected);
        EXPECT_EQ(support::read_tree("."), before);
    }
}

TEST_F(nfile_dir, counts_the_lines_whose_first_word_begins_with_a_hyphen) {
    const support::command_folder commands;
    support::command_folder::add("ls", "[ \"$*\" = -l ] && cat listing\n");
    support::write_file("listing",
                        "total 8 x\n"
                        "-rw-r--r-- x\n"
                        "   -rw-r--r-- x\n"
                        "-x\n"
                        "drwxr-xr-x x\n"
                        "x - x\n"
                        "lrwxrwxrwx - x\n"
                        "-rw " +
                            std::string(300, '.') + "x\n" + std::string(200, ' ') + "-x\n-x");
    EXPECT_EQ(file::nfile_dir("x"), 5);
    EXPECT_FALSE(fs::exists(".tmp.nfile_dir"));
}

TEST_F(nfile_dir, overwrites_an_old_listing) {
    support::write_file(".tmp.nfile_dir", "-rw-r--r-- old\n-rw-r--r-- older\n");
    EXPECT_EQ(file::nfile_dir("anything"), 0);
    EXPECT_FALSE(fs::exists(".tmp.nfile_dir"));
}

TEST_F(nfile_dir, is_0_where_the_command_fails) {
    support::write_file("file", "");
    for (const char* dir : {"", "   ", "'['"}) {
        int count = -77;
        EXPECT_EQ(message_of([&] { count = file::nfile_dir(dir); }), "no error");
        EXPECT_EQ(count, 0);
    }
}

TEST_F(nfile_dir, without_its_listing_stops_the_run) {
    const auto run = [] { static_cast<void>(file::nfile_dir("x")); };
    fs::create_directory(".tmp.nfile_dir");
    EXPECT_EQ(message_of(run), ".tmp.nfile_dir: cannot open: Is a directory|standard error|2");
    fs::remove(".tmp.nfile_dir");
    const fs::path here = fs::current_path();
    fs::create_directory("gone");
    fs::current_path("gone");
    fs::remove(here / "gone");
    EXPECT_EQ(message_of(run), ".tmp.nfile_dir: cannot open: No such file or directory|standard error|2");
    fs::current_path(here);
}

TEST_F(nfile_dir, cuts_its_command_at_500_characters) {
    EXPECT_EQ(file::nfile_dir(std::string(470, 'x') + "   "), 0);
    EXPECT_EQ(support::read_tree("."), support::tree{});
    // One character more, and the name of the listing loses its last one.
    EXPECT_EQ(support::stopped_with([] { static_cast<void>(file::nfile_dir(std::string(471, 'x'))); }),
              ".tmp.nfile_dir: cannot open: No such file or directory|standard error|2");
    EXPECT_EQ(support::read_tree("."), (support::tree{{".tmp.nfile_di", ""}}));
}

}  // namespace
