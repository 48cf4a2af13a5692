#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <utility>

#include "faults.hpp"

using namespace displacement_generator;

// What stands where an output should go, or what has no room for it.

namespace {

namespace fs = std::filesystem;
using faults::expect_stopped;

constexpr const char* list_name = "PES-0/files.out";
constexpr const char* geometry_name = "PES-0/coord-1-dx.com";

/// A fresh folder with the inputs and an empty working directory, which any user may enter.
class output : public testing::Test {
  protected:
    output() {
        faults::write_inputs();
        fs::permissions(scratch_.path(), fs::perms(0755));
        fs::create_directory("PES-0");
    }

    /// What cannot be opened is the first geometry file of a step: the list and the reference have been opened by then.
    static void expect_only_reference() {
        support::tree whole = faults::good_tree();
        EXPECT_EQ(support::read_file("PES-0/coord-0-00.com"), whole["PES-0/coord-0-00.com"]);
        EXPECT_FALSE(fs::exists("PES-0/coord-1-dy.com"));
    }

  private:
    support::scratch_folder scratch_;
};

TEST_F(output, geometry_on_a_full_device) {
    fs::create_symlink("/dev/full", geometry_name);
    expect_stopped(faults::run(),
                   std::string("PES-0/coord-1-dx.com: cannot write: No space left on device") + faults::need());
    expect_only_reference();
}

TEST_F(output, list_on_a_full_device) {
    fs::create_symlink("/dev/full", list_name);
    expect_stopped(faults::run(),
                   std::string("PES-0/files.out: cannot write: No space left on device") + faults::need());
}

TEST_F(output, folder_in_place_of_a_file) {
    fs::create_directory(geometry_name);
    expect_stopped(faults::run(), "PES-0/coord-1-dx.com: cannot open for writing: Is a directory");
    expect_only_reference();
    fs::remove_all("PES-0");
    fs::create_directories(list_name);
    expect_stopped(faults::run(), "PES-0/files.out: cannot open for writing: Is a directory");
    EXPECT_FALSE(fs::exists("PES-0/coord-0-00.com"));
}

TEST_F(output, link_to_nowhere) {
    fs::create_symlink("missing/file", geometry_name);
    expect_stopped(faults::run(), "PES-0/coord-1-dx.com: cannot open for writing: No such file or directory");
    expect_only_reference();
    fs::create_symlink("missing/list", "link");
    fs::rename("link", list_name);
    expect_stopped(faults::run(), "PES-0/files.out: cannot open for writing: No such file or directory");
}

TEST_F(output, link_in_a_circle) {
    fs::create_symlink("files.out", list_name);
    expect_stopped(faults::run(), "PES-0/files.out: cannot open for writing: Too many levels of symbolic links");
}

TEST_F(output, link_to_a_file_that_can_be_made) {
    fs::create_symlink("elsewhere.com", geometry_name);
    const support::outcome result = faults::run();
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(support::read_file("PES-0/elsewhere.com"), faults::good_tree().at(geometry_name));
}

TEST_F(output, fifo_that_nobody_reads_is_not_waited_for) {
    ::mkfifo(geometry_name, 0600);
    expect_stopped(faults::run(), "PES-0/coord-1-dx.com: cannot open for writing: No such device or address");
    expect_only_reference();
    fs::remove(list_name);
    ::mkfifo(list_name, 0600);
    expect_stopped(faults::run(), "PES-0/files.out: cannot open for writing: No such device or address");
}

/// The reader takes a few bytes and goes; the signal that this sends would end a process that does not expect it.
TEST_F(output, fifo_whose_reader_goes_away) {
    constexpr std::string_view title = "title";
    std::string input = support::read_file("mol.gjf");
    input += std::string(100000, '!') + "\n";  // cut on reading
    for (int line = 0; line < 1000; ++line) {
        input += std::string(400, '!') + "\n";  // more than a pipe holds
    }
    support::write_file("mol.gjf", input + std::string(title));
    ::mkfifo(geometry_name, 0600);
    const support::outcome result =
        faults::run_in_shell("head -c 1 <PES-0/coord-1-dx.com >/dev/null & sleep 0.1; exec \"$0\" control");
    const std::string where = "PES-0/coord-1-dx.com: cannot write: ";
    EXPECT_TRUE(result.standard_error == faults::error_line(where + "Broken pipe") ||
                result.standard_error == faults::error_line(where + "Resource temporarily unavailable"))
        << result.standard_error;
    EXPECT_EQ(result.status, 2);
    EXPECT_FALSE(faults::says_complete());
}

TEST_F(output, socket_in_place_of_a_file) {
    const faults::listening_socket socket(list_name);
    expect_stopped(faults::run(), "PES-0/files.out: cannot open for writing: No such device or address");
}

TEST_F(output, file_in_place_of_the_working_directory) {
    fs::remove("PES-0");
    support::write_file("PES-0", "not a folder");
    const support::tree before = faults::tree_here();
    const support::outcome result = faults::run({"LC_ALL=C"});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.standard_output, "");
    EXPECT_EQ(result.standard_error,
              "/bin/mkdir: cannot create directory 'PES-0': File exists\n" +
                  faults::error_line("PES-0: cannot make the folder: a file of this name exists"));
    EXPECT_EQ(faults::tree_here(), before);
}

TEST_F(output, link_to_nowhere_in_place_of_the_working_directory) {
    fs::remove("PES-0");
    fs::create_symlink("missing", "PES-0");
    const support::tree before = faults::tree_here();
    const support::outcome result = faults::run({"LC_ALL=C"});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(
        result.standard_error,
        "/bin/mkdir: cannot create directory 'PES-0': File exists\n" +
            faults::error_line("PES-0: cannot make the folder: a link of this name exists and leads to no folder"));
    EXPECT_EQ(faults::tree_here(), before);
}

TEST_F(output, link_to_a_folder_in_place_of_the_working_directory) {
    fs::rename("PES-0", "elsewhere");
    fs::create_symlink("elsewhere", "PES-0");
    EXPECT_EQ(faults::run().status, 0);
    for (const std::string& name : faults::output_names()) {
        EXPECT_EQ(support::read_file(name), faults::good_tree().at(name)) << name;
    }
}

TEST_F(output, working_directory_that_may_not_be_written) {
    std::string as_user;
    if (!faults::find_plain_user(as_user)) {
        GTEST_SKIP() << "there is no user but root who could run the program";
    }
    const std::string run = as_user + "\"$0\" control";
    fs::permissions("PES-0", fs::perms(0555));
    expect_stopped(faults::run_in_shell(run), "PES-0/files.out: cannot open for writing: Permission denied");
    EXPECT_TRUE(fs::is_empty("PES-0"));
    fs::permissions("PES-0", fs::perms(0666));  // not to be entered
    expect_stopped(faults::run_in_shell(run), "PES-0/files.out: cannot open for writing: Permission denied");
    fs::permissions("PES-0", fs::perms(0777));
}

TEST_F(output, working_directory_that_may_not_be_made) {
    std::string as_user;
    if (!faults::find_plain_user(as_user)) {
        GTEST_SKIP() << "there is no user but root who could run the program";
    }
    fs::remove("PES-0");
    fs::permissions(".", fs::perms(0555));
    const support::outcome result = faults::run_in_shell(as_user + "\"$0\" control", {"LC_ALL=C"});
    fs::permissions(".", fs::perms(0755));
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.standard_error, "/bin/mkdir: cannot create directory 'PES-0': Permission denied\n" +
                                         faults::error_line("PES-0: cannot make the folder: Permission denied"));
}

TEST_F(output, file_that_may_not_be_written) {
    std::string as_user;
    if (!faults::find_plain_user(as_user)) {
        GTEST_SKIP() << "there is no user but root who could run the program";
    }
    fs::permissions("PES-0", fs::perms(0777));
    support::write_file(geometry_name, "of another run\n");
    fs::permissions(geometry_name, fs::perms(0444));
    const std::string run = as_user + "\"$0\" control";
    expect_stopped(faults::run_in_shell(run), "PES-0/coord-1-dx.com: cannot open for writing: Permission denied");
    expect_only_reference();
    EXPECT_EQ(support::read_file(geometry_name), "of another run\n");
}

/// Result: whether this process may mount, in a view of the file systems that is its own and gone when it ends. Below a
/// changed root "/" may be no mount point, and then cannot be made private; a mount may be seen outside until it is
/// undone.
bool mounts_privately() {
    static const bool result = ::unshare(CLONE_NEWNS) == 0 &&
                               (::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 || errno == EINVAL);
    return result;
}

/// A file system of so many pages and files in place of the working directory.
class small_device {
  public:
    explicit small_device(const std::string& options, std::string folder = "PES-0")
        : folder_(std::move(folder)),
          mounted_(mounts_privately() && ::mount("none", folder_.c_str(), "tmpfs", 0, options.c_str()) == 0) {}
    ~small_device() {
        if (mounted_) {
            ::umount(folder_.c_str());
        }
    }
    small_device(const small_device&) = delete;
    small_device& operator=(const small_device&) = delete;
    [[nodiscard]] bool mounted() const { return mounted_; }

  private:
    std::string folder_;
    bool mounted_;
};

/// Every output takes a page, the list takes its own last.
TEST_F(output, device_that_becomes_full) {
    const std::vector<std::string> names = faults::output_names();
    const long page = ::sysconf(_SC_PAGESIZE);
    for (std::size_t pages = 1; pages <= names.size(); ++pages) {
        const small_device device("size=" + std::to_string(static_cast<long>(pages) * page));
        if (!device.mounted()) {
            GTEST_SKIP() << "a file system can be mounted by root only";
        }
        SCOPED_TRACE(pages);
        const support::outcome result = faults::run();
        if (pages == names.size()) {
            faults::expect_good(result);
        } else {
            const std::string& name = pages + 1 == names.size() ? names[0] : names[pages + 1];
            expect_stopped(result, name + ": cannot write: No space left on device" + faults::need());
        }
    }
}

TEST_F(output, device_that_has_no_room_for_another_file) {
    const std::vector<std::string> names = faults::output_names();
    for (std::size_t files = 0; files <= names.size(); ++files) {
        const small_device device("nr_inodes=" + std::to_string(files + 1));  // one is that of the folder
        if (!device.mounted()) {
            GTEST_SKIP() << "a file system can be mounted by root only";
        }
        SCOPED_TRACE(files);
        const support::outcome result = faults::run();
        if (files == names.size()) {
            faults::expect_good(result);
        } else {
            expect_stopped(result,
                           names[files] + ": cannot open for writing: No space left on device" + faults::need());
        }
    }
}

TEST_F(output, device_that_has_no_room_for_the_folder) {
    std::filesystem::create_directory("device");
    const small_device device("nr_inodes=3", "device");  // of the folder and the two inputs
    if (!device.mounted()) {
        GTEST_SKIP() << "a file system can be mounted by root only";
    }
    const support::outcome result =
        faults::run_in_shell(R"(cp control mol.gjf device && cd device && LC_ALL=C "$0" control)");
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.standard_output, "");
    EXPECT_EQ(result.standard_error,
              "/bin/mkdir: cannot create directory 'PES-0': No space left on device\n" +
                  faults::error_line("PES-0: cannot make the folder: No space left on device" + faults::need()));
}

TEST_F(output, device_that_is_read_only) {
    const small_device device("ro");
    if (!device.mounted() || ::mount("none", "PES-0", "tmpfs", MS_REMOUNT | MS_RDONLY, "") != 0) {
        GTEST_SKIP() << "a file system can be mounted by root only";
    }
    expect_stopped(faults::run(), "PES-0/files.out: cannot open for writing: Read-only file system");
}

}  // namespace
