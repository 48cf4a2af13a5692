#include "progress.hpp"

#include <unistd.h>

#include <algorithm>

#include "file/descriptor.hpp"

namespace displacement_generator::assembler {

progress::progress()
    : shown_(::isatty(STDERR_FILENO) == 1), next_(std::chrono::steady_clock::now() + std::chrono::seconds(1)) {}

progress::~progress() {
    if (written_ != 0) {
        std::string blanks("\r");
        blanks.append(written_, ' ').push_back('\r');
        file::write_all(STDERR_FILENO, blanks);
    }
}

void progress::show_if_long(std::string_view before, std::size_t done, std::string_view after) {
    const auto now = std::chrono::steady_clock::now();
    if (shown_ && now >= next_) {
        next_ = now + std::chrono::milliseconds(200);
        show(std::string(before) + std::to_string(done) + std::string(after));
    }
}

void progress::show(const std::string& text) {
    if (shown_) {
        written_ = std::max(written_, text.size());
        file::write_all(STDERR_FILENO, "\r" + text);
    }
}

}  // namespace displacement_generator::assembler
