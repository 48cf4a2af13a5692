#include "file/shell.hpp"

#include <sys/wait.h>

#include <string>

#include "command_folder.hpp"
#include "file_test.hpp"

using namespace displacement_generator;

namespace {

namespace fs = std::filesystem;

class shell : public support::file_test {};

/// The commands that the shell is given run nothing here: they write down how they were called, and fail.
class shell_command : public support::file_test {
  protected:
    shell_command() {
        for (const char* name : {"mv", "mkdir", "sh"}) {
            support::command_folder::add(name,
                                         "{ printf '%s' \"${0##*/}\"; [ $# = 0 ] || printf '[%s]' \"$@\"; } >>called\n"
                                         "exit 3\n");
        }
    }

    /// Commands and their arguments, in brackets, since this was last asked.
    static std::string called() {
        std::string calls = support::read_file("called");
        fs::remove("called");
        return calls;
    }

  private:
    support::command_folder commands_;
};

TEST_F(shell_command, mv_runs_mv_with_both_names) {
    struct row {
        std::string src;
        std::string dst;
        std::string expected;
    };
    const row rows[] = {
        {"a.txt", "b.txt", "mv[a.txt][b.txt]"},
        {"a.txt   ", "b dir/x", "mv[a.txt][b][dir/x]"},  // nothing is quoted
        {"  a", "  b  ", "mv[a][b]"},
        {"", "", "mv"},
        {"'a  ", "b'", "mv[a b]"},  // one blank between the names, be there more behind the first
        {"a;mkdir", "b", "mv[a]mkdir[b]"},
        {"$((1+1))", "~nobody-of-that-name", "mv[2][~nobody-of-that-name]"},
        {std::string(490, 'a'), "123456", "mv[" + std::string(490, 'a') + "][123456]"},  // 500 characters
        {std::string(490, 'a'), "1234567", "mv[" + std::string(490, 'a') + "][123456]"},
        {std::string(600, 'a'), "b", "mv[" + std::string(497, 'a') + "]"},
    };
    for (const row& tested : rows) {
        SCOPED_TRACE(tested.src + '|' + tested.dst);
        file::mv(tested.src, tested.dst);
        EXPECT_EQ(called(), tested.expected);
    }
}

TEST_F(shell_command, mkdir_runs_mkdir_with_parents) {
    struct row {
        std::string dir;
        std::string expected;
    };
    const row rows[] = {
        {"PES-0", "mkdir[-p][PES-0]"},
        {"PES-0   ", "mkdir[-p][PES-0]"},
        {"a b", "mkdir[-p][a][b]"},
        {"", "mkdir[-p]"},
        {"' a'", "mkdir[-p][ a]"},
        {std::string(491, 'd'), "mkdir[-p][" + std::string(491, 'd') + "]"},
        {std::string(492, 'd'), "mkdir[-p][" + std::string(491, 'd') + "]"},
    };
    for (const row& tested : rows) {
        SCOPED_TRACE(tested.dir);
        file::mkdir(tested.dir);
        EXPECT_EQ(called(), tested.expected);
    }
}

TEST_F(shell_command, sh_runs_sh_with_a_script) {
    struct row {
        std::string cmd;
        std::string expected;
    };
    const row rows[] = {
        {"job.sh", "sh[job.sh]"},
        {"job.sh   ", "sh[job.sh]"},
        {"job.sh one 'two words'", "sh[job.sh][one][two words]"},
        {"", "sh"},
        {std::string(497, 's'), "sh[" + std::string(497, 's') + "]"},
        {std::string(498, 's'), "sh[" + std::string(497, 's') + "]"},
    };
    for (const row& tested : rows) {
        SCOPED_TRACE(tested.cmd);
        file::sh(tested.cmd);
        EXPECT_EQ(called(), tested.expected);
    }
}

TEST_F(shell_command, says_nothing_of_a_command_that_fails) {
    EXPECT_EQ(support::standard_output_of([] {
                  file::mv("a", "b");
                  file::mkdir("d");
                  file::sh("s");
              }),
              "");
    EXPECT_EQ(called(), "mv[a][b]mkdir[-p][d]sh[s]");
}

TEST_F(shell, has_done_its_work_when_the_routine_returns) {
    support::write_file("a", "bytes");
    file::mkdir("one/two");
    EXPECT_TRUE(fs::is_directory("one/two"));
    file::mkdir("one/two");
    file::mv("a", "one/two/b");
    EXPECT_EQ(support::read_file("one/two/b"), "bytes");
    EXPECT_FALSE(fs::exists("a"));
    support::write_file("script", "sleep 0.1\necho \"$1\" >written\n");
    file::sh("script word");
    EXPECT_EQ(support::read_file("written"), "word\n");
}

TEST_F(shell, gives_back_the_status_of_the_command) {
    EXPECT_EQ(file::run_shell("true"), 0);
    EXPECT_EQ(WEXITSTATUS(file::run_shell("exit 7   ")), 7);
}

}  // namespace
