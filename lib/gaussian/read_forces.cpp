#include <string>
#include <string_view>
#include <vector>

#include "base/error.hpp"
#include "gaussian/forces_file.hpp"
#include "gaussian/words.hpp"

namespace displacement_generator::gaussian {

namespace {

bool is_over(std::string_view rest) { return without_blanks(rest).empty(); }

[[noreturn]] void refuse_line(const source& from, const std::string& expected, std::string_view line) {
    from.refuse("expected " + expected + ", found '" + base::shown(line) + "'");
}

void take_energy(const source& from, std::string_view line, std::string_view rest, forces_file& found) {
    double energy = 0.0;
    if (!read_printed_real(next_word(rest), energy) || !is_over(rest)) {
        refuse_line(from, "a number after 'energy'", line);
    }
    if (found.energy) {
        refuse_line(from, "one energy", line);
    }
    found.energy = energy;
}

void take_dipole(const source& from, std::string_view line, std::string_view rest, forces_file& found) {
    double dipole[3];
    if (!next_three_reals(rest, dipole) || !is_over(rest)) {
        refuse_line(from, "three numbers after 'dipole'", line);
    }
    if (found.dipole) {
        refuse_line(from, "one dipole", line);
    }
    found.dipole = Eigen::Vector3d(dipole[0], dipole[1], dipole[2]);
}

/// How many characters stand after the point of a number.
std::size_t after_point(std::string_view word) {
    const std::size_t point = word.find('.');
    return point == std::string_view::npos ? 0 : word.size() - point - 1;
}

/// Whether a last row without a line end was cut in its last number: all numbers of it and of the row before are of one
/// format, but that one is shorter.
bool is_cut(std::string_view before, std::string_view last) {
    constexpr std::size_t numbers = 3;
    const std::size_t usual = after_point(next_word(last));
    const std::size_t second = after_point(next_word(last));
    bool is_fixed = second == usual;
    for (std::size_t i = 0; i < numbers && !without_blanks(before).empty(); ++i) {
        is_fixed = is_fixed && after_point(next_word(before)) == usual;
    }
    return is_fixed && after_point(next_word(last)) < usual;
}

}  // namespace

forces_file read_forces(source& from, int atoms) {
    forces_file found;
    std::vector<double> components;
    int count = 0;
    std::string row_before;
    std::string last_row;
    std::string_view line;
    while (from.next_line(line)) {
        const bool may_be_cut = !from.line_is_whole() && line.find('#') == std::string_view::npos;
        line = without_blanks(line.substr(0, line.find('#')));
        if (line.empty()) {
            continue;
        }
        std::string_view rest = line;
        double force[3];
        const std::string_view word = next_word(rest);
        if (word == "energy") {
            take_energy(from, line, rest, found);
        } else if (word == "dipole") {
            take_dipole(from, line, rest, found);
        } else if (rest = line; !next_three_reals(rest, force) || !is_over(rest)) {
            refuse_line(from, "three numbers, 'energy' or 'dipole'", line);
        } else if (count == atoms) {
            refuse_line(from, "forces on " + std::to_string(atoms) + " atoms and no more", line);
        } else {
            components.insert(components.end(), force, force + 3);
            ++count;
            row_before.swap(last_row);
            last_row = line;
            if (may_be_cut && is_cut(row_before, last_row)) {
                refuse_line(from, "a last number with as many digits as the others, or a line end after it", line);
            }
        }
    }
    if (count != atoms) {
        throw base::run_error(from.name() + ": expected forces on " + std::to_string(atoms) + " atoms, found " +
                              std::to_string(count));
    }
    found.forces = Eigen::Map<const Eigen::Matrix3Xd>(components.data(), 3, count);
    return found;
}

}  // namespace displacement_generator::gaussian
