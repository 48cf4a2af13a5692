#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/error.hpp"

// What the harnesses share: files in memory, assertions that end the process, and readers that come to their result in
// another way than the program does.

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace displacement_generator::fuzz {

[[noreturn]] void failed(std::string_view what);

/// Ends the process where something that must hold does not.
inline void check(bool holds, std::string_view what) {
    if (!holds) {
        failed(what);
    }
}

template <class value>
void check_equal(const value& found, const value& expected, std::string_view what) {
    if (!(found == expected)) {
        std::cerr << "found:    '" << found << "'\nexpected: '" << expected << "'\n";
        failed(what);
    }
}

/// Equal to the last bit, the sign of a zero included.
bool same_bits(double a, double b);

/// A regular file without a place on a disk, which anybody in this process can open by its name.
class memory_file {
  public:
    memory_file();
    ~memory_file();
    memory_file(const memory_file&) = delete;
    memory_file& operator=(const memory_file&) = delete;

    void set(std::string_view bytes) const;
    [[nodiscard]] const std::string& name() const { return name_; }

  private:
    int descriptor_;
    std::string name_;
};

/// The error with which `work` stopped, if it did.
template <class function>
std::optional<base::run_error> stopped(const function& work) {
    try {
        work();
    } catch (const base::run_error& error) {
        return error;
    }
    return std::nullopt;
}

/// Checks what holds for every message on standard error: its stream and status, one line of printable ASCII of bounded
/// length, and the name of the file in front.
void check_message(const base::run_error& error, std::string_view file);

/// The line number behind the name of the file, checked to be one of first..last.
int checked_line(const base::run_error& error, std::string_view file, int first, int last);

/// The records of a file.
std::vector<std::string> records(std::string_view bytes);

/// A record cut to `length` characters, without the blanks that padding would add.
std::string cut(std::string_view record, std::size_t length);

/// One free-format field; without a value where there is nothing between two commas.
using field = std::optional<std::string>;

/// All fields of a record up to its end or a "/".
std::vector<field> fields(std::string_view record);

/// A number as the C library reads it, where the text is one at all; infinite where it is too large.
std::optional<double> real(std::string_view text);
std::optional<long double> integer(std::string_view text);

/// A real with so many digits that they give back the same double.
std::string in_full(double value);

/// A real in fixed columns as the C library prints it, in asterisks where it does not fit.
std::string in_columns(double value, std::size_t width, int decimals);

/// A number from 0 to almost `length`, in proportion to a byte.
inline std::size_t scaled(std::uint8_t byte, std::size_t length) { return byte * length / 256; }

/// Values drawn off the front of an input; zeros when it is used up.
class draw {
  public:
    explicit draw(std::string_view bytes) : bytes_(bytes) {}

    std::uint8_t byte() { return static_cast<std::uint8_t>(text(1)[0]); }
    bool flag() { return (byte() & 1) != 0; }
    std::size_t below(std::size_t count) { return byte() % count; }
    int integer();
    double any_real();
    double finite();
    /// As many characters as asked for, padded with zero bytes.
    std::string text(std::size_t length);
    [[nodiscard]] bool empty() const { return bytes_.empty(); }

  private:
    std::string_view bytes_;
};

}  // namespace displacement_generator::fuzz
