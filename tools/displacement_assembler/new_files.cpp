#include "new_files.hpp"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>

#include "base/error.hpp"
#include "file/descriptor.hpp"

namespace displacement_generator::assembler {

namespace {

[[noreturn]] void stop(const std::string& name, const char* what, int error) {
    throw base::run_error(base::shown(name, 200) + ": cannot " + what + ": " + file::system_reason(error));
}

/// What a new file gets: read and write for everybody, less what the user's mask takes away.
mode_t usual_mode() {
    constexpr mode_t everybody = 0666;
    const mode_t mask = ::umask(0);
    ::umask(mask);
    return everybody & ~mask;
}

/// Where a file of this name ends up: a link stays one, and what it leads to is replaced. What has no such place yet
/// is compared by its folder.
std::string real_place(const std::string& name) {
    std::error_code error;
    const std::filesystem::path target = std::filesystem::weakly_canonical(std::filesystem::absolute(name), error);
    return error ? name : target.string();
}

}  // namespace

new_files::~new_files() {
    for (const file& one : files_) {
        if (!one.temporary.empty()) {
            ::unlink(one.temporary.c_str());
        }
    }
}

void new_files::write(const std::string& name, std::string_view text) {
    files_.push_back({name, real_place(name), {}});
    file& made = files_.back();
    const std::filesystem::path folder = std::filesystem::path(made.replaced).parent_path();
    std::string path = ((folder.empty() ? "." : folder) / ".displacement_assembler-XXXXXX").string();
    const int descriptor = ::mkstemp(path.data());
    if (descriptor < 0) {
        stop(name, "open for writing", errno);
    }
    made.temporary = path;
    int error = ::fchmod(descriptor, usual_mode()) == 0 ? 0 : errno;
    error = error != 0 ? error : displacement_generator::file::write_all(descriptor, text);
    const int close_error = displacement_generator::file::close_descriptor(descriptor);
    if (error != 0 || close_error != 0) {
        stop(name, error != 0 ? "write" : "close", error != 0 ? error : close_error);
    }
}

void new_files::put_in_place() {
    for (file& one : files_) {
        if (::rename(one.temporary.c_str(), one.replaced.c_str()) != 0) {
            stop(one.name, "put in place", errno);
        }
        one.temporary.clear();
    }
}

void check_outputs(const std::vector<std::string>& outputs, const std::vector<std::string>& inputs) {
    for (std::size_t i = 0; i < outputs.size(); ++i) {
        for (std::size_t j = 0; j < i; ++j) {
            if (real_place(outputs[i]) == real_place(outputs[j])) {
                throw base::run_error(base::shown(outputs[i], 200) +
                                      ": expected another file for each output, found the same one twice");
            }
        }
        struct stat output {};
        if (::stat(outputs[i].c_str(), &output) != 0) {
            continue;
        }
        if (!S_ISREG(output.st_mode)) {
            throw base::run_error(base::shown(outputs[i], 200) +
                                  ": expected the name of a file to write, found something else of this name");
        }
        for (const std::string& path : inputs) {
            struct stat input {};
            if (::stat(path.c_str(), &input) == 0 && input.st_dev == output.st_dev && input.st_ino == output.st_ino) {
                throw base::run_error(base::shown(outputs[i], 200) +
                                      ": expected another file than an input, which is " + "never overwritten");
            }
        }
    }
}

}  // namespace displacement_generator::assembler
