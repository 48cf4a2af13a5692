#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>

namespace displacement_generator::assembler {

/// One line on standard error that tells what takes so long, if that is a terminal. The line goes when this does.
class progress {
  public:
    progress();
    ~progress();
    progress(const progress&) = delete;
    progress& operator=(const progress&) = delete;

    /// Shows `before`, a number and `after`, a few times a second and not before a second has passed.
    void show_if_long(std::string_view before, std::size_t done, std::string_view after);
    /// Shows a text at once.
    void show(const std::string& text);

  private:
    bool shown_;
    std::size_t written_ = 0;
    std::chrono::steady_clock::time_point next_;
};

}  // namespace displacement_generator::assembler
