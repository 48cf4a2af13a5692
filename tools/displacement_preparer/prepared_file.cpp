#include "prepared_file.hpp"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <utility>

#include "base/error.hpp"
#include "companion/program.hpp"
#include "file/descriptor.hpp"
#include "options.hpp"

namespace displacement_generator::preparer {

namespace {

[[noreturn]] void stop(const std::string& name, const char* what, int error) {
    throw base::run_error(base::shown(name, 200) + ": cannot " + what + ": " + file::system_reason(error));
}

std::string shown_name(const std::string& output) { return output == "-" ? "standard output" : output; }

/// The folder of the temporary file: that of OUTPUT, so that a rename is possible.
std::filesystem::path folder_of(const std::string& output, bool is_stream) {
    if (is_stream) {
        const char* named = std::getenv("TMPDIR");
        return named != nullptr && *named != '\0' ? named : "/tmp";
    }
    return std::filesystem::path(output).parent_path();
}

}  // namespace

file_identity identity_of(int descriptor) {
    struct stat status {};
    if (::fstat(descriptor, &status) != 0) {
        return {};
    }
    return {S_ISREG(status.st_mode), status.st_dev, status.st_ino};
}

bool is_same(const file_identity& a, const file_identity& b) {
    return a.is_regular && b.is_regular && a.device == b.device && a.inode == b.inode;
}

prepared_file::prepared_file(std::string output, const file_identity& source)
    : output_(std::move(output)), is_stream_(output_ == "-") {
    struct stat status {};
    const bool exists = is_stream_ ? ::fstat(STDOUT_FILENO, &status) == 0 : ::stat(output_.c_str(), &status) == 0;
    if (exists && is_same(source, {S_ISREG(status.st_mode), status.st_dev, status.st_ino})) {
        throw base::run_error(base::shown(shown_name(output_), 200) +
                              ": expected another file than the source, which is never overwritten");
    }
    if (exists && S_ISDIR(status.st_mode)) {
        stop(output_, "open for writing", EISDIR);
    }
    is_stream_ = is_stream_ || (exists && !S_ISREG(status.st_mode));
    replaced_ = is_stream_ ? output_ : companion::replaced_by(output_);
    temporary_.emplace(program_name, folder_of(replaced_, is_stream_), shown_name(output_));
}

void prepared_file::put_in_place(std::string_view text) {
    if (!is_stream_) {
        temporary_->rename_to(replaced_);
        return;
    }
    if (output_ == "-") {
        companion::print(text);
        return;
    }
    std::string reason;
    const int descriptor = file::open_to_write(output_, reason);
    if (descriptor < 0) {
        throw base::run_error(base::shown(output_, 200) + ": cannot open for writing: " + reason);
    }
    const int error = file::write_all(descriptor, text);
    const int close_error = file::close_descriptor(descriptor);
    if (error != 0 || close_error != 0) {
        stop(output_, error != 0 ? "write" : "close", error != 0 ? error : close_error);
    }
}

}  // namespace displacement_generator::preparer
