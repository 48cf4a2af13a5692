#include "gaussian/log_rows.hpp"

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "base/error.hpp"
#include "base/free_format.hpp"
#include "gaussian/symbols.hpp"
#include "gaussian/words.hpp"

namespace displacement_generator::gaussian {

namespace {

constexpr int dummy = -1;
constexpr int translation_vector = -2;

/// Atomic types of molecular mechanics have more digits. These are of atoms that hold basis functions alone.
constexpr int first_ghost_type = 1000;
constexpr int last_ghost_type = 1999;

struct row {
    int center = 0;
    int number = 0;
    int type = 0;
    double values[3] = {};
};

/// Three reals in as many words, or, where they touch, in the last three fields of the line.
bool read_values(std::string_view line, std::string_view rest, std::size_t width, double (&values)[3]) {
    std::string_view words = rest;
    if (next_three_reals(words, values) && without_blanks(words).empty()) {
        return true;
    }
    if (line.size() < 3 * width || static_cast<std::size_t>(rest.data() - line.data()) > line.size() - 3 * width) {
        return false;
    }
    const std::string_view fields = line.substr(line.size() - 3 * width);
    for (std::size_t i = 0; i < 3; ++i) {
        if (!read_printed_real(without_blanks(fields.substr(i * width, width)), values[i])) {
            return false;
        }
    }
    return true;
}

/// Column map of positions: center I7 (I5), number I11, type I12 (I14), 4 blanks, x y z 3F12.6. Older versions have no
/// type.
bool read_position_row(std::string_view line, row& found) {
    constexpr std::size_t width = 12;
    std::string_view rest = line;
    if (base::read_integer(next_word(rest), found.center) != base::number_status::ok ||
        base::read_integer(next_word(rest), found.number) != base::number_status::ok) {
        return false;
    }
    std::string_view behind_type = rest;
    if (base::read_integer(next_word(behind_type), found.type) == base::number_status::ok) {
        rest = behind_type;
    }
    return read_values(line, rest, width, found.values);
}

/// Column map of forces: center I7 (I5), number I9 (I11), 4 blanks or more, x y z 3F15.9.
bool read_force_row(std::string_view line, row& found) {
    constexpr std::size_t width = 15;
    std::string_view rest = line;
    return base::read_integer(next_word(rest), found.center) == base::number_status::ok &&
           base::read_integer(next_word(rest), found.number) == base::number_status::ok &&
           read_values(line, rest, width, found.values);
}

template <class reading>
log_rows read_rows(const std::string& name, const log_table& table, const char* what, const reading& read) {
    constexpr int lines_above_rows = 3;  // heading, second heading, rule; behind the line of the heading itself
    const auto count = static_cast<std::size_t>(std::count(table.rows.begin(), table.rows.end(), '\n'));
    log_rows result;
    result.values.resize(3, static_cast<Eigen::Index>(count));
    std::string_view text = table.rows;
    int previous = 0;
    for (std::size_t i = 0; i < count; ++i) {
        std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(line.size() + 1);
        line = line.substr(0, line.find_last_not_of(" \t\r") + 1);
        row found;
        if (!read(line, found) || found.center <= previous || found.number < translation_vector ||
            found.number > largest_atomic_number) {
            throw base::run_error(name + ":" + std::to_string(table.line + lines_above_rows + static_cast<int>(i)) +
                                  ": expected " + what + ", found '" + base::shown(without_blanks(line), 100) + "'");
        }
        previous = found.center;
        if (found.number > 0 && found.type >= first_ghost_type && found.type <= last_ghost_type) {
            found.number = 0;
        }
        result.typed += found.type != 0 && found.number > 0 ? 1 : 0;
        if (found.number > 0) {
            result.values.col(static_cast<Eigen::Index>(result.numbers.size())) =
                Eigen::Map<const Eigen::Vector3d>(found.values);
            result.numbers.push_back(found.number);
        } else {
            ++(found.number == 0 ? result.ghosts : found.number == dummy ? result.dummies : result.vectors);
        }
    }
    result.values.conservativeResize(3, static_cast<Eigen::Index>(result.numbers.size()));
    return result;
}

}  // namespace

log_rows read_positions(const std::string& name, const log_table& table) {
    return read_rows(name, table, "an atom's number and position", read_position_row);
}

log_rows read_force_rows(const std::string& name, const log_table& table) {
    return read_rows(name, table, "an atom's number and the force on it", read_force_row);
}

}  // namespace displacement_generator::gaussian
