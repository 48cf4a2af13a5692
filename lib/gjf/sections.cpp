#include "gjf/sections.hpp"

#include <algorithm>

#include "base/error.hpp"
#include "file/file.hpp"

namespace displacement_generator::gjf {

namespace {

bool is_route(const base::text<200>& line) {
    const std::string_view text = base::left_adjusted(line);
    return !text.empty() && text.front() == '#';
}

bool is_blank(const base::text<200>& line) { return base::left_adjusted(line).empty(); }

/// The first blank line from line `first` on, or 0.
int find_blank(const input_lines& input, int first) {
    for (int i = first; i <= input.nline; ++i) {
        if (is_blank(input.lines(i))) {
            return i;
        }
    }
    return 0;
}

/// Stops the run: a section is missing after the route line.
///   from      in  the line where the search began; the message names the last line where there is no such line
///   expected  in  what was looked for
///   first_title, last_title
///             in  the first and the last line that count as the title, 0 where there is none
[[noreturn]] void section_error(const input_lines& input, int from, const std::string& expected, int first_title = 0,
                                int last_title = 0) {
    const int route = find_route(input);
    std::string message = input.name + ":" + std::to_string(std::min(from, input.nline)) + ": expected " + expected +
                          ", found the end of the file (line " + std::to_string(input.nline) +
                          "); the route line is line " + std::to_string(route) + ", the last one that begins with '#'";
    for (int i = 1; i < route; ++i) {
        if (is_route(input.lines(i))) {
            message += ", and line " + std::to_string(i) + " was passed over for it";
            break;
        }
    }
    throw base::run_error(message + long_title_hint(first_title, last_title) +
                          base::byte_order_mark_hint(input.lines(1).trimmed()));
}

}  // namespace

input_lines::input_lines(std::string_view fname)
    : name(base::shown(base::trimmed(fname), 200)),
      nline(file::num_file_lines(fname)),
      lines("lines", 1, nline, base::unset()) {
    file::read_lines(fname, nline, lines);
}

int find_route(const input_lines& input) {
    for (int i = input.nline; i >= 1; --i) {  // the last one counts, on purpose
        if (is_route(input.lines(i))) {
            return i;
        }
    }
    throw base::run_error(input.name +
                          ":1: expected a route line, that is one that begins with '#', found none up to " +
                          "the end of the file (line " + std::to_string(input.nline) + ")" +
                          base::byte_order_mark_hint(input.nline > 0 ? input.lines(1).trimmed() : ""));
}

int find_title(const input_lines& input) {
    const int first = find_route(input) + 1;
    const int blank = find_blank(input, first);
    if (blank == 0) {
        section_error(input, first, "a blank line that ends the route section");
    }
    if (blank == input.nline) {
        section_error(input, blank + 1, "a title line");
    }
    return blank + 1;
}

int find_charge(const input_lines& input) {
    const int title = find_title(input);
    const int from = title + 1;  // the first title line is never the blank line that ends the section
    const int blank = find_blank(input, from);
    if (blank == 0) {
        section_error(input, from, "a blank line that ends the title section", title, input.nline);
    }
    if (blank == input.nline) {
        section_error(input, blank + 1, "a charge and multiplicity line", title, blank - 1);
    }
    return blank + 1;
}

std::string long_title_hint(int first, int last) {
    return first >= last ? ""
                         : "; lines " + std::to_string(first) + " to " + std::to_string(last) +
                               " count as the title, is a blank line missing?";
}

int find_atom(const input_lines& input) { return find_charge(input) + 1; }

int count_atoms(const input_lines& input) {
    const int first = find_atom(input);
    const int blank = find_blank(input, first);
    return (blank == 0 ? input.nline + 1 : blank) - first;
}

}  // namespace displacement_generator::gjf
