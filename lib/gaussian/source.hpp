#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "../file/record_reader.hpp"

// The text that a reader of this room takes its data from, and how to tell what it is.

namespace displacement_generator::gaussian {

/// What source::source does with a name that does not stand for a regular file.
enum class opening { anything, regular_only };

/// A text that is read once, from its beginning to its end: a file, standard input, or bytes in memory.
class source {
  public:
    /// Opens a file; "-" is standard input. Stops the run with "NAME: cannot open: REASON".
    ///   name  in  stands before every message about the text
    ///   what  in  `regular_only` refuses pipes and devices, so that opening cannot wait
    explicit source(std::string name, opening what = opening::anything);
    /// A text in memory, which is copied.
    source(std::string name, std::string_view bytes);
    ~source();
    source(const source&) = delete;
    source& operator=(const source&) = delete;

    [[nodiscard]] const std::string& name() const { return name_; }

    /// The first bytes, at least 32 KiB of a longer text. To be asked for before anything is taken.
    std::string_view first_bytes();

    /// Takes the next line, cut to `longest` characters, without its LF or CR LF and without the byte order mark of a
    /// first line. Result: false at the end. Stops the run with "NAME: cannot read: REASON".
    ///   line  out  valid until the next call
    bool next_line(std::string_view& line, std::size_t longest = 4096);

    /// Number of the line last taken.
    [[nodiscard]] long long line_number() const { return reader_.line_number; }

    /// Whether the line last taken had its line end; where a file was cut its last line has none.
    [[nodiscard]] bool line_is_whole() const { return line_is_whole_; }

    /// Takes all that is left. Stops the run where that is more than `longest` bytes.
    std::string rest(std::size_t longest);

    /// Stops the run with "NAME: cannot read: REASON" where a read failed.
    void check_read() const;
    /// Stops the run with "NAME:LINE: WHAT", LINE that of the line last taken.
    [[noreturn]] void refuse(const std::string& what) const;

    /// For the reader that goes through the blocks itself.
    file::record_reader& blocks() { return reader_; }

  private:
    std::string name_;
    file::record_reader reader_;
    bool line_is_whole_ = true;
    bool owned_ = false;  ///< whether the descriptor is this one's to close
};

/// What a text is, recognised by its beginning.
enum class source_kind { input, log, checkpoint, xyz, unknown };

/// Tells what a text is. Takes nothing of it, so that a pipe can still be read from its beginning.
///   checkpoint  a line near the top is the heading of a section
///   log         a line says that Gaussian begins, whatever a batch system printed before it; or, where no input
///               begins, a line shows what only a log holds
///   input       the first line with text begins with %, #, !, $RunGauss or --Link1--
///   xyz         a count, a comment, and an atom with three numbers
source_kind kind_of(source& from);

}  // namespace displacement_generator::gaussian
