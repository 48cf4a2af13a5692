#include "file_list.hpp"

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include "base/error.hpp"
#include "base/fixed_columns.hpp"
#include "file/descriptor.hpp"

namespace displacement_generator::generator {

namespace {

/// Stops the run where there is no working directory, with the reason that the system has for it.
///   status  in  what the shell made of the command
///   error   in  errno after it
void require_work_dir(const std::string& command, int status, int error) {
    const std::string folder(work_dir);
    struct stat found {};
    if (::stat(folder.c_str(), &found) == 0 && S_ISDIR(found.st_mode)) {
        return;
    }
    std::string reason;
    bool has_room = true;
    constexpr mode_t everybody = 0777;  // less what the user's umask takes away
    if (::mkdir(folder.c_str(), everybody) == 0) {
        ::rmdir(folder.c_str());
        reason =
            "the command '" + command + "' " +
            (status == -1 ? "could not be started: " + file::system_reason(error)
                          : "ended with status " + std::to_string(WIFEXITED(status) ? WEXITSTATUS(status) : status));
    } else if (errno == EEXIST) {
        reason = ::stat(folder.c_str(), &found) == 0 ? "a file of this name exists"
                                                     : "a link of this name exists and leads to no folder";
    } else {
        has_room = errno != ENOSPC && errno != EDQUOT;
        reason = file::system_reason(errno);
    }
    const std::string message = folder + ": cannot make the folder: " + reason;
    if (!has_room) {
        throw file::no_room(message);
    }
    throw base::run_error(message);
}

/// The list, in a directory that the shell makes. Whether it could shows when the list is opened.
file::output_file opened_list() {
    const std::string command = "/bin/mkdir -p " + std::string(work_dir);
    const int status = std::system(command.c_str());
    const int error = errno;
    try {
        return file::output_file(std::string(work_dir) + "/files.out", file::writers::one);
    } catch (const base::run_error&) {
        require_work_dir(command, status, error);
        throw;
    }
}

}  // namespace

file_list::file_list(int natom, int ncalc, double dx) : file_(opened_list()) {
    lines_.reserve(large_write + 256);
    lines_ += "Number of atoms: ";
    base::append_integer(lines_, 6, natom);
    end_line();
    lines_ += "Number of files: ";
    base::append_integer(lines_, 6, ncalc + 1);
    end_line();
    lines_ += "dx=";
    base::append_real(lines_, 10, 6, dx);
    end_line();
}

void file_list::leave() {
    file_.write(lines_);
    lines_.clear();
}

void file_list::close(std::string_view last_line) {
    file_.write(lines_);
    file_.close(std::string(last_line) + '\n');
}

}  // namespace displacement_generator::generator
