#include <algorithm>
#include <climits>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "base/error.hpp"
#include "base/free_format.hpp"
#include "gaussian/atom_label.hpp"
#include "gaussian/fields.hpp"
#include "gaussian/symbols.hpp"
#include "gaussian/words.hpp"
#include "gaussian/xyz.hpp"

namespace displacement_generator::gaussian {

namespace {

int number_or_symbol(std::string_view word) {
    int number = 0;
    if (base::read_integer(word, number) == base::number_status::ok) {
        return number >= 1 && number <= largest_atomic_number ? number : 0;
    }
    return number_of(word);
}

/// Takes the line with the count of the next frame, past empty lines. Result: false at the end.
bool next_count(source& from, int& count) {
    std::string_view line;
    do {
        if (!from.next_line(line)) {
            return false;
        }
    } while (without_blanks(line).empty());
    std::string_view rest = line;
    if (base::read_integer(next_word(rest), count) != base::number_status::ok || count < 1 ||
        !without_blanks(rest).empty()) {
        from.refuse("expected the number of atoms of a frame, found '" + base::shown(without_blanks(line)) + "'");
    }
    return true;
}

}  // namespace

xyz_contents read_xyz(source& from) {
    xyz_contents contents;
    std::vector<double> coordinates;  // gathered as they come, so that a count alone takes no memory
    int count = 0;
    while (next_count(from, count)) {
        std::vector<int>& numbers = contents.molecule.numbers;
        contents.line = static_cast<int>(std::min<long long>(from.line_number(), INT_MAX));
        ++contents.frames;
        numbers.clear();
        coordinates.clear();
        std::string_view line;
        bool more = from.next_line(line);  // the comment
        for (int i = 0; i < count; ++i) {
            more = more && from.next_line(line);
            if (!more) {
                from.refuse("expected " + std::to_string(count) + " atoms of the frame that begins in line " +
                            std::to_string(contents.line) + ", found " + std::to_string(i));
            }
            std::string_view rest = line;
            const std::string_view symbol = next_word(rest);
            if (is_one_of(symbol, {"d", "t"})) {
                from.refuse(isotope_refused(symbol));
            }
            const int number = number_or_symbol(symbol);
            double position[3];
            if (number == 0 || !next_three_reals(rest, position)) {
                if (const std::string_view word = decimal_comma(line); !word.empty()) {
                    from.refuse("expected a decimal point, found a comma in '" + base::shown(word) + "'");
                }
                from.refuse("expected a symbol or an atomic number and x, y and z, found '" +
                            base::shown(without_blanks(line)) + "'");
            }
            numbers.push_back(number);
            coordinates.insert(coordinates.end(), position, position + 3);
        }
    }
    if (contents.frames == 0) {
        throw base::run_error(from.name() + ": expected a frame of atoms, found no text");
    }
    contents.molecule.positions = Eigen::Map<const Eigen::Matrix3Xd>(
        coordinates.data(), 3, static_cast<Eigen::Index>(contents.molecule.numbers.size()));
    return contents;
}

}  // namespace displacement_generator::gaussian
