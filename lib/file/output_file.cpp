#include "file/output_file.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "base/text.hpp"
#include "file/descriptor.hpp"

namespace displacement_generator::file {

namespace {

/// Makes a file end after `size` bytes that was closed and is locked no more. Where another run has locked it since,
/// that run has emptied it, and it is left alone. Result: false where the system refuses.
bool cut_closed_file(const std::string& path, std::size_t size) {
    const int descriptor = ::open(path.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0) {
        return false;
    }
    const bool done = !lock_file(descriptor) || cut_file(descriptor, size) == 0;
    return close_descriptor(descriptor) == 0 && done;
}

}  // namespace

output_file::output_file(std::string path, writers allowed) : path_(std::move(path)) {
    path_.resize(base::trimmed(path_).size());
    std::string reason;
    descriptor_ = open_to_write(path_, reason, allowed == writers::any);
    if (descriptor_ >= 0 && allowed == writers::one) {
        if (!lock_file(descriptor_)) {
            reason = "another run is writing it, expected one run at a time in a folder";
        } else if (const int error = cut_file(descriptor_, 0); error != 0 && error != EINVAL) {  // EINVAL: a device
            reason = system_reason(error);
        }
    }
    if (!reason.empty()) {
        if (descriptor_ >= 0) {
            close_descriptor(descriptor_);
        }
        stop("open for writing", reason);
    }
}

output_file::~output_file() {
    if (descriptor_ >= 0) {
        close_descriptor(descriptor_);
    }
}

void output_file::write(std::string_view bytes) {
    if (const int error = write_all(descriptor_, bytes); error != 0) {
        stop("write", system_reason(error));
    }
    size_ += bytes.size();
}

void output_file::close(std::string_view last) {
    const int write_error = write_all(descriptor_, last);
    bool last_is_off = last.empty();
    if (write_error != 0 && !last_is_off) {
        last_is_off = cut_file(descriptor_, size_) == 0;  // while the lock still holds
    }
    const int close_error = close_descriptor(descriptor_);
    descriptor_ = -1;
    if (write_error == 0 && close_error == 0) {
        return;
    }
    if (!last_is_off && !cut_closed_file(path_, size_)) {
        ::unlink(path_.c_str());
    }
    if (write_error != 0) {
        stop("write", system_reason(write_error));
    }
    stop("close", system_reason(close_error));
}

void output_file::stop(const char* what, const std::string& reason) const {
    const std::string message = base::shown(path_, 200) + ": cannot " + what + ": " + reason;
    if (reason == system_reason(ENOSPC) || reason == system_reason(EDQUOT)) {
        throw no_room(message);
    }
    throw base::run_error(message);
}

}  // namespace displacement_generator::file
