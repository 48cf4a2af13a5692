#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>

#include "file/file.hpp"

using namespace displacement_generator;

namespace {

TEST(get_pid, is_the_process_that_asks) {
    EXPECT_EQ(std::filesystem::read_symlink("/proc/self"), std::to_string(file::get_pid()));
    const pid_t child = ::fork();
    if (child == 0) {
        ::_exit(file::get_pid() == ::getpid() && file::get_pid() != ::getppid() ? 0 : 1);
    }
    int status = -1;
    ::waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    EXPECT_NE(file::get_pid(), child);
}

}  // namespace
