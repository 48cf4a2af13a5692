#include <algorithm>
#include <cstddef>
#include <string_view>

#include "base/free_format.hpp"
#include "gaussian/fields.hpp"
#include "gaussian/source.hpp"
#include "gaussian/words.hpp"

namespace displacement_generator::gaussian {

namespace {

/// Takes the next line off a text; false at its end.
bool take_line(std::string_view& text, std::string_view& line) {
    if (text.empty()) {
        return false;
    }
    line = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(line.size() + 1, text.size()));
    if (line.ends_with('\r')) {
        line.remove_suffix(1);
    }
    return true;
}

template <class condition>
bool any_line(std::string_view text, std::size_t most, const condition& holds) {
    std::string_view line;
    for (std::size_t count = 0; count < most && take_line(text, line); ++count) {
        if (holds(line)) {
            return true;
        }
    }
    return false;
}

bool is_number_of_atoms(std::string_view line) {
    constexpr std::size_t type_column = 43;
    return line.starts_with("Number of atoms  ") && line.size() > type_column && line[type_column] == 'I';
}

bool begins_gaussian(std::string_view line) {
    return line.starts_with(" Entering Gaussian System") || line.starts_with(" Entering Link 1 = ");
}

bool is_of_a_log(std::string_view line) {
    return line.starts_with(" SCF Done:") || line.starts_with(" Normal termination of Gaussian") ||
           line.starts_with(" Error termination") || line.starts_with(" Cite this work as:") ||
           line.starts_with(" 1\\1\\") || line.starts_with(" 1|1|") ||
           (line.starts_with("     ") && line.find(" orientation:") != std::string_view::npos);
}

bool begins_input(std::string_view text) {
    std::string_view line;
    while (take_line(text, line)) {
        line = without_blanks(line);
        if (!line.empty()) {
            return line[0] == '%' || line[0] == '#' || line[0] == '!' || begins_with(line, "$rungauss") ||
                   equal_words(line, "--link1--");
        }
    }
    return false;
}

bool is_xyz(std::string_view text) {
    std::string_view line;
    bool found = false;
    while (!found && take_line(text, line)) {
        found = !without_blanks(line).empty();
    }
    int count = 0;
    std::string_view rest = line;
    if (!found || base::read_integer(next_word(rest), count) != base::number_status::ok ||
        !without_blanks(rest).empty() || !take_line(text, line) || !take_line(text, line)) {
        return false;
    }
    double position[3];
    next_word(line);
    return !decimal_comma(line).empty() || next_three_reals(line, position);  // the reader tells of commas
}

}  // namespace

source_kind kind_of(source& from) {
    std::string_view text = from.first_bytes();
    constexpr std::string_view byte_order_mark = "\xef\xbb\xbf";
    if (text.starts_with(byte_order_mark)) {
        text.remove_prefix(byte_order_mark.size());
    }
    // The title of a checkpoint may be any text, so it comes before what only asks for the first line.
    constexpr std::size_t top = 10;
    constexpr auto all = static_cast<std::size_t>(-1);
    if (any_line(text, top, is_number_of_atoms)) {
        return source_kind::checkpoint;
    }
    if (any_line(text, all, begins_gaussian)) {
        return source_kind::log;
    }
    if (begins_input(text)) {
        return source_kind::input;
    }
    if (is_xyz(text)) {
        return source_kind::xyz;
    }
    return any_line(text, all, is_of_a_log) ? source_kind::log : source_kind::unknown;
}

}  // namespace displacement_generator::gaussian
