#include <fcntl.h>
#include <sched.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>
#include <string>

#include "file_test.hpp"

using namespace displacement_generator;

namespace {

namespace fs = std::filesystem;

class get_exe_dir : public support::file_test {
  protected:
    /// What a process says for which this folder is the whole file system, so that its memory map can be made up, and
    /// is `map`. Without one it has no map at all.
    ///   length  in  of the text for the directory
    /// Result: "[DIR]" or the message with which the run stopped; blank where the system does not allow this.
    static std::string said_by_process(const char* map, std::size_t length) {
        int ends[2] = {-1, -1};
        EXPECT_EQ(::pipe(ends), 0);
        const pid_t child = ::fork();
        if (child == 0) {
            const fs::path folder = fs::path("proc") / std::to_string(::getpid());
            fs::create_directories(folder);
            if (map != nullptr) {
                support::write_file(folder / "maps", map);
            }
            if (::chroot(".") != 0 && (::unshare(CLONE_NEWUSER) != 0 || ::chroot(".") != 0)) {
                ::_exit(0);
            }
            std::string dir(length, '?');
            std::string said = support::stopped_with([&] { file::get_exe_dir({dir.data(), dir.size()}); });
            if (said == "no error") {
                said = '[' + dir + ']';
            }
            ::_exit(::write(ends[1], said.data(), said.size()) < 0 ? 1 : 0);
        }
        ::close(ends[1]);
        std::string said(4096, '\0');
        said.resize(static_cast<std::size_t>(::read(ends[0], said.data(), said.size())));
        ::close(ends[0]);
        int status = -1;
        ::waitpid(child, &status, 0);
        EXPECT_EQ(status, 0);
        // What the process is called is of no interest here.
        const std::string pid = std::to_string(child);
        const std::size_t place = said.find(pid);
        return place == std::string::npos ? said : said.replace(place, pid.size(), "PID");
    }
};

TEST_F(get_exe_dir, is_the_folder_of_this_program) {
    // The address sanitizer has mappings of its own before the first one of the program.
    if (support::sanitized) {
        GTEST_SKIP();
    }
    const std::string expected = fs::read_symlink("/proc/self/exe").parent_path();
    base::text<1000> dir("as it was");
    file::get_exe_dir(dir);
    EXPECT_EQ(dir.trimmed(), expected);
    base::text<3> start;
    file::get_exe_dir(start);
    EXPECT_EQ(std::string_view(start), expected.substr(0, 3));
}

TEST_F(get_exe_dir, is_taken_from_column_74_of_the_first_mapping) {
    const std::string head = "55d0c8a00000-55d0c8a02000 r--p 00000000 08:01 1234567                    ";
    ASSERT_EQ(head.size(), 73U);
    // Its path has a last "/" in column 1000, the last one that is read.
    const std::string long_dir = '/' + std::string(925, 'd');
    struct row {
        std::string map;
        std::size_t length;
        std::string expected;
    };
    const row rows[] = {
        {head + "/opt/tools/bin/prog\n" + head + "/other/place/prog\n", 16, "[/opt/tools/bin  ]"},
        {head + "/opt/tools/bin/prog", 16, "[/opt/tools/bin  ]"},
        {head + "/opt/tools/bin/prog\n", 5, "[/opt/]"},
        {head + "/opt/my tools/prog (deleted)\n", 16, "[/opt/my tools   ]"},
        {head + "/prog\n", 4, "[    ]"},
        {head + "[heap]\n", 4, "[    ]"},
        {head + "\n", 4, "[    ]"},
        {"too short\n", 4, "[    ]"},
        {"\n", 4, "[    ]"},
        {std::string(73, '-') + "/opt/prog\n", 4, "[/opt]"},
        {head + long_dir + "/prog\n", 926, '[' + long_dir + ']'},
        {head + long_dir + "d/prog\n", 4, "[    ]"},
        {"", 4, "/proc/PID/maps: found no line, expected the program's first mapping|standard error|2"},
    };
    for (const row& tested : rows) {
        SCOPED_TRACE(tested.map.substr(0, 120));
        const std::string said = said_by_process(tested.map.c_str(), tested.length);
        if (said.empty()) {
            GTEST_SKIP() << "this system lets the test change the root of no process";
        }
        EXPECT_EQ(said, tested.expected);
    }
    EXPECT_EQ(said_by_process(nullptr, 4), "/proc/PID/maps: cannot open: No such file or directory|standard error|2");
}

}  // namespace
