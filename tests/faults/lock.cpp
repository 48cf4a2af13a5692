#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <string>
#include <vector>

#include "faults.hpp"

using namespace displacement_generator;

// Two runs in one folder at the same time: the second one stops before it changes a byte. Which run is first is settled
// by a lock on the list, which goes with the process.

namespace {

namespace fs = std::filesystem;

constexpr const char* refused =
    "PES-0/files.out: cannot open for writing: another run is writing it, expected one run at a time in a folder";

/// What has one call of the run go wrong in this way.
std::vector<std::string> with_failing(const std::string& call, const std::string& way, const std::string& file = "",
                                      int turn = 1) {
    return {std::string("LD_PRELOAD=") + FAILING_CALLS,
            "ASAN_OPTIONS=verify_asan_link_order=0",
            "FAILING_CALL=" + call,
            "FAILING_WAY=" + way,
            "FAILING_FILE=" + file,
            "FAILING_TURN=" + std::to_string(turn)};
}

/// A run in the current folder that goes on beside this process.
class other_run {
  public:
    explicit other_run(const std::string& control, const std::vector<std::string>& environment = {})
        : process_(::fork()) {
        if (process_ == 0) {
            for (const std::string& setting : environment) {
                ::putenv(const_cast<char*>(setting.c_str()));
            }
            ::close(STDERR_FILENO);
            const std::string program = support::displacement_generator().string();
            ::execl(program.c_str(), program.c_str(), control.c_str(), nullptr);
            ::_exit(127);
        }
    }
    ~other_run() {
        if (process_ > 0) {
            ::kill(process_, SIGKILL);
            end();
        }
    }
    other_run(const other_run&) = delete;
    other_run& operator=(const other_run&) = delete;

    /// Waits until it stops in the call that it is to stop in.
    [[nodiscard]] bool stops() const {
        int status = 0;
        return ::waitpid(process_, &status, WUNTRACED) == process_ && WIFSTOPPED(status);
    }
    void send(int number) const { ::kill(process_, number); }
    /// Waits for its end. Result: the exit status, or minus the number of the signal that ended it.
    int end() {
        int status = 0;
        ::waitpid(process_, &status, 0);
        process_ = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    }

  private:
    pid_t process_;
};

/// The places at which another run may be: its list locked and not yet emptied; emptied; and about to be closed.
struct place {
    const char* call;
    const char* file;
};
constexpr place places[] = {{"empty", "PES-0/files.out"},
                            {"write", "PES-0/coord-0-00.com"},
                            {"open", "PES-0/coord-2+dz.com"},
                            {"write", "PES-0/files.out"},
                            {"close", "PES-0/files.out"}};

TEST(lock, second_run_stops_and_changes_nothing) {
    for (const place& at : places) {
        SCOPED_TRACE(std::string(at.call) + " " + at.file);
        const support::scratch_folder scratch;
        faults::write_tree(faults::good_tree("0.5"));
        faults::write_inputs();
        other_run first("control", with_failing(at.call, "stopped", at.file));
        ASSERT_TRUE(first.stops());
        const support::tree before = faults::tree_here();
        const support::outcome second = faults::run();
        EXPECT_EQ(second.status, 2);
        EXPECT_EQ(second.standard_output, "");
        EXPECT_EQ(second.standard_error, faults::error_line(refused));
        EXPECT_EQ(faults::tree_here(), before);
        first.send(SIGCONT);
        EXPECT_EQ(first.end(), 0);
        EXPECT_EQ(faults::tree_here(), faults::good_tree());
        faults::expect_good(faults::run());
    }
}

TEST(lock, goes_with_a_process_that_is_killed) {
    for (const place& at : places) {
        SCOPED_TRACE(std::string(at.call) + " " + at.file);
        const support::scratch_folder scratch;
        faults::write_inputs();
        other_run first("control", with_failing(at.call, "stopped", at.file));
        ASSERT_TRUE(first.stops());
        first.send(SIGKILL);
        EXPECT_EQ(first.end(), -SIGKILL);
        faults::expect_good(faults::run());
    }
}

/// A signal may interrupt the call of the system: it is made again, and the lock seen.
TEST(lock, is_asked_for_again_after_an_interruption) {
    const support::scratch_folder scratch;
    faults::write_inputs();
    other_run first("control", with_failing("write", "stopped", "PES-0/files.out"));
    ASSERT_TRUE(first.stops());
    const support::outcome second = faults::run(with_failing("lock", "interrupted"));
    EXPECT_EQ(second.status, 2);
    EXPECT_EQ(second.standard_error, faults::error_line(refused));
}

TEST(lock, of_one_folder_does_not_hinder_another) {
    const support::scratch_folder scratch;
    fs::create_directory("one");
    fs::create_directory("two");
    fs::current_path("one");
    faults::write_inputs();
    other_run first("control", with_failing("write", "stopped", "PES-0/files.out"));
    ASSERT_TRUE(first.stops());
    fs::current_path("../two");
    faults::write_inputs();
    faults::expect_good(faults::run());
    fs::current_path("..");
}

TEST(lock, that_another_machine_holds_stops_the_run) {
    for (const int error : {EAGAIN, EACCES}) {
        const support::scratch_folder scratch;
        faults::write_tree(faults::good_tree("0.5"));
        faults::write_inputs();
        const support::tree before = faults::tree_here();
        const support::outcome result = faults::run(with_failing("lock", std::to_string(error)));
        EXPECT_EQ(result.status, 2);
        EXPECT_EQ(result.standard_error, faults::error_line(refused));
        EXPECT_EQ(faults::tree_here(), before);
    }
}

TEST(lock, that_the_file_system_does_not_know_is_done_without) {
    for (const int error : {ENOLCK, EOPNOTSUPP, ENOSYS, EINVAL, EIO}) {
        SCOPED_TRACE(error);
        const support::scratch_folder scratch;
        faults::write_inputs();
        faults::expect_good(faults::run(with_failing("lock", std::to_string(error), "PES-0/files.out", 0)));
    }
}

/// The files of a folder are those of one run, whichever runs were let in.
TEST(lock, leaves_no_mixture_of_two_runs) {
    const std::string steps[] = {"0.25", "0.5"};
    int refusals = 0;
    for (int round = 0; round < 20; ++round) {
        const support::scratch_folder scratch;
        for (const std::string& step : steps) {
            faults::write_inputs(step);
            fs::rename("control", step);
        }
        other_run first(steps[0]);
        other_run second(steps[1]);
        const int ends[] = {first.end(), second.end()};
        refusals += (ends[0] == 2 ? 1 : 0) + (ends[1] == 2 ? 1 : 0);
        EXPECT_TRUE(ends[0] == 0 || ends[1] == 0) << ends[0] << ' ' << ends[1];
        support::tree found = support::read_tree("PES-0");
        bool whole = false;
        for (int i = 0; i < 2; ++i) {
            support::tree expected;
            for (const std::string& name : faults::output_names()) {
                expected[name.substr(6)] = faults::good_tree(steps[i]).at(name);
            }
            whole = whole || (ends[i] == 0 && found == expected);
        }
        EXPECT_TRUE(whole) << "round " << round;
    }
    RecordProperty("refusals", refusals);
}

}  // namespace
