#include "gaussian/source.hpp"

#include <unistd.h>

#include <cstring>
#include <string>
#include <string_view>
#include <utility>

#include "base/error.hpp"
#include "file/descriptor.hpp"

namespace displacement_generator::gaussian {

namespace {

constexpr std::size_t enough_to_tell = 32768;
constexpr std::string_view byte_order_mark = "\xef\xbb\xbf";

}  // namespace

source::source(std::string name, opening what) : name_(std::move(name)) {
    if (name_ == "-") {
        name_ = "standard input";
        reader_.descriptor = STDIN_FILENO;
        return;
    }
    std::string reason;
    reader_.descriptor = file::open_to_read(name_, what == opening::regular_only, reason);
    if (reader_.descriptor < 0) {
        throw base::run_error(base::shown(name_) + ": cannot open: " + reason);
    }
    owned_ = true;
    name_ = base::shown(name_, name_.size());
}

source::source(std::string name, std::string_view bytes) : name_(std::move(name)) {
    reader_.block = base::allocate_for_overwrite<char>("text", bytes.size() + 1);
    if (!bytes.empty()) {
        std::memcpy(reader_.block.get(), bytes.data(), bytes.size());
    }
    reader_.capacity = bytes.size() + 1;
    reader_.end = bytes.size();
    reader_.ended = true;
}

source::~source() {
    if (owned_) {
        file::close_descriptor(reader_.descriptor);
    }
}

std::string_view source::first_bytes() {
    while (reader_.end < enough_to_tell && file::fill_block(reader_, 0)) {
    }
    check_read();
    return {reader_.block.get(), reader_.end};
}

bool source::next_line(std::string_view& line, std::size_t longest) {
    if (!file::next_record(reader_, longest, line)) {
        check_read();
        return false;
    }
    line_is_whole_ = reader_.block[reader_.begin - 1] == '\n';
    if (reader_.line_number == 1 && line.starts_with(byte_order_mark)) {
        line.remove_prefix(byte_order_mark.size());
    }
    return true;
}

std::string source::rest(std::size_t longest) {
    std::string bytes;
    do {
        bytes.append(reader_.block.get() + reader_.begin, reader_.end - reader_.begin);
        reader_.begin = reader_.end = 0;
        if (bytes.size() > longest) {
            throw base::run_error(name_ + ": expected at most " + std::to_string(longest) + " bytes, found more");
        }
    } while (file::fill_block(reader_, 0));
    check_read();
    return bytes;
}

void source::check_read() const {
    if (reader_.error != 0) {
        throw base::run_error(name_ + ": cannot read: " + file::system_reason(reader_.error));
    }
}

void source::refuse(const std::string& what) const {
    throw base::run_error(name_ + ":" + std::to_string(line_number()) + ": " + what);
}

}  // namespace displacement_generator::gaussian
