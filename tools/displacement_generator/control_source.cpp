#include "control_source.hpp"

#include <cerrno>
#include <cstring>

#include "base/error.hpp"
#include "base/text.hpp"
#include "file/descriptor.hpp"

namespace displacement_generator::generator {

namespace {

/// No control file is as long as this; a device or a mistaken file name is, and must not be read for ever.
constexpr std::size_t longest_file = 1 << 20;

}  // namespace

control_source::control_source(std::string_view path) : name_(base::shown(path, 200)) {
    std::string reason;
    descriptor_ = file::open_to_read(path, false, reason);
    if (descriptor_ < 0) {
        const bool is_option = path.starts_with('-');  // there are none
        throw base::run_error(name_ + ": cannot open the control file: " + reason +
                              std::string(is_option ? usage : ""));
    }
}

control_source::~control_source() {
    if (descriptor_ >= 0) {
        file::close_descriptor(descriptor_);
    }
}

int control_source::peek() {
    const int c = peek_byte(0);
    if (c == '\r') {
        const int next = peek_byte(1);
        return next == '\n' || next == end_of_file ? '\n' : c;
    }
    return c;
}

int control_source::take() {
    const int c = peek();
    if (c == end_of_file) {
        return c;
    }
    ++column_;
    if (c == '\n') {
        ++line_;
        column_ = 1;
        if (block_[begin_] == '\r' && peek_byte(1) == '\n') {
            ++begin_;
        }
    }
    ++begin_;
    return c;
}

int control_source::peek_byte(std::size_t ahead) {
    while (begin_ + ahead >= end_) {
        if (!fill()) {
            return end_of_file;
        }
    }
    return static_cast<unsigned char>(block_[begin_ + ahead]);
}

bool control_source::fill() {
    if (ended_) {
        return false;
    }
    if (total_ >= longest_file) {
        throw base::run_error(name_ + ":" + std::to_string(line_) + ": found " + std::to_string(total_) +
                              " bytes without the end of a '&control' group, expected it before that");
    }
    std::memmove(block_, block_ + begin_, end_ - begin_);
    end_ -= begin_;
    begin_ = 0;
    const long count = file::read_some(descriptor_, block_ + end_, sizeof block_ - end_);
    if (count < 0) {
        throw base::run_error(name_ + ": cannot read the control file: " + file::system_reason(errno));
    }
    ended_ = count == 0;
    end_ += static_cast<std::size_t>(count);
    total_ += static_cast<std::size_t>(count);
    return count > 0;
}

}  // namespace displacement_generator::generator
