#include "file/output_file.hpp"

#include <unistd.h>

#include <utility>

#include "base/error.hpp"
#include "base/text.hpp"
#include "file/descriptor.hpp"

namespace displacement_generator::file {

output_file::output_file(std::string path) : path_(std::move(path)) {
    path_.resize(base::trimmed(path_).size());
    std::string reason;
    descriptor_ = open_to_write(path_, reason);
    if (descriptor_ < 0) {
        throw base::run_error(base::shown(path_, 200) + ": cannot open for writing: " + reason);
    }
}

output_file::~output_file() {
    if (descriptor_ >= 0) {
        close_descriptor(descriptor_);
    }
}

void output_file::write(std::string_view bytes) {
    if (const int error = write_all(descriptor_, bytes); error != 0) {
        throw base::run_error(base::shown(path_, 200) + ": cannot write: " + system_reason(error));
    }
    size_ += bytes.size();
}

void output_file::close(std::string_view last) {
    const int write_error = write_all(descriptor_, last);
    const int close_error = close_descriptor(descriptor_);
    descriptor_ = -1;
    const int error = write_error != 0 ? write_error : close_error;
    if (error != 0) {
        if (!last.empty() && ::truncate(path_.c_str(), static_cast<off_t>(size_)) != 0) {
            ::unlink(path_.c_str());
        }
        throw base::run_error(base::shown(path_, 200) + ": cannot " + (write_error != 0 ? "write: " : "close: ") +
                              system_reason(error));
    }
}

}  // namespace displacement_generator::file
