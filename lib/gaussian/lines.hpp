#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace displacement_generator::gaussian {

/// A line of an input.
struct input_line {
    int number = 0;         ///< from 1
    std::string_view raw;   ///< without what is blank at its end
    std::string_view text;  ///< without its comment, and without what is blank at both ends

    [[nodiscard]] bool is_blank() const { return raw.empty(); }
    /// A line that is a comment and nothing else ends no section: it is as if it were not there.
    [[nodiscard]] bool is_comment() const { return text.empty() && !raw.empty(); }
};

/// The lines of a text, without a byte order mark; they end in LF or CR LF.
std::vector<input_line> lines_of(std::string_view text, const std::string& name);

/// Where one stands in the lines of a job.
struct cursor {
    const std::vector<input_line>& lines;
    std::size_t at;
    std::size_t end;  ///< of the job: one behind its last line

    [[nodiscard]] bool ended() const { return at == end; }
    [[nodiscard]] const input_line& line() const { return lines[at]; }
    /// The line that a message names where something is missing: this one, or the last one. A job has a line.
    [[nodiscard]] int number() const { return lines[std::min(at, lines.size() - 1)].number; }
    void skip_blank() {
        while (!ended() && (line().is_blank() || line().is_comment())) {
            ++at;
        }
    }
};

/// "NAME:LINE", which a message begins with; of line 0, that is of the whole file, "NAME".
std::string place_of(const std::string& name, int line);

/// Stops the run with "NAME:LINE: WHAT".
[[noreturn]] void stop_at(const std::string& name, int line, const std::string& what);

}  // namespace displacement_generator::gaussian
