#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace displacement_generator::generator {

/// How the program is called, for the end of a message.
constexpr std::string_view usage =
    "; usage: displacement_generator CONTROL (version " DISPLACEMENT_GENERATOR_VERSION ")";

/// The characters of a control file, one after the other, read as they are needed: what follows the group is left
/// alone, so that a pipe that stays open does not keep the run waiting. A line ends in LF here, also one that ends in
/// CR LF.
class control_source {
  public:
    static constexpr int end_of_file = -1;

    explicit control_source(std::string_view path);
    ~control_source();
    control_source(const control_source&) = delete;
    control_source& operator=(const control_source&) = delete;

    /// The next character, or end_of_file; it stays the next one.
    int peek();
    /// The next character, taken off, or end_of_file.
    int take();

    /// Where the next character stands, both counted from 1.
    [[nodiscard]] int line() const { return line_; }
    [[nodiscard]] int column() const { return column_; }
    [[nodiscard]] const std::string& name() const { return name_; }

  private:
    int peek_byte(std::size_t ahead);
    bool fill();

    std::string name_;
    int descriptor_ = -1;
    char block_[4096] = {};
    std::size_t begin_ = 0;
    std::size_t end_ = 0;
    std::size_t total_ = 0;
    bool ended_ = false;
    int line_ = 1;
    int column_ = 1;
};

}  // namespace displacement_generator::generator
