#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "file/output_file.hpp"

namespace displacement_generator::generator {

/// The directory that holds every output of a run, relative to the current one.
constexpr std::string_view work_dir = "PES-0";

/// The list of geometry files, "PES-0/files.out", on its way to the disk. Its lines gather in memory and leave in large
/// writes; it says that it is complete only in its last line, which leaves last.
class file_list {
  public:
    /// Has the shell make the directory, opens the list and begins it with its three head lines:
    ///
    ///   columns 1-17 "Number of atoms: "  18-23 natom      I6
    ///   columns 1-17 "Number of files: "  18-23 ncalc + 1  I6, with the reference geometry
    ///   columns 1-3  "dx="                 4-13 dx         F10.6
    ///
    /// The list stays locked until it is closed. Where another run has it locked, this run stops and has changed
    /// nothing.
    file_list(int natom, int ncalc, double dx);

    /// The end of the list so far, to be appended to; end_line() ends the line.
    [[nodiscard]] std::string& line() { return lines_; }
    void end_line() { write("\n"); }

    /// Appends to the list, up to the end of a line.
    void write(std::string_view lines) {
        lines_ += lines;
        if (lines_.size() >= large_write) {
            leave();
        }
    }

    /// Ends the list with this line and closes it.
    void close(std::string_view last_line);

    static constexpr long long head_size = 24 + 24 + 14;  ///< bytes of the three head lines
    static constexpr long long name_size = 31;            ///< bytes of the line of a geometry file

  private:
    static constexpr std::size_t large_write = 1 << 16;

    void leave();

    file::output_file file_;
    std::string lines_;
};

}  // namespace displacement_generator::generator
