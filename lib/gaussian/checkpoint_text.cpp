#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <string>
#include <string_view>

#include "base/error.hpp"
#include "base/fixed_columns.hpp"
#include "gaussian/checkpoint.hpp"
#include "gaussian/words.hpp"

namespace displacement_generator::gaussian {

namespace {

/// A left-justified text of a fixed width, of which only printable characters are kept.
void append_left(std::string& text, std::size_t width, std::string_view what) {
    for (std::size_t i = 0; i < width; ++i) {
        const char c = i < what.size() ? what[i] : ' ';
        text += c >= ' ' && c <= '~' ? c : ' ';
    }
}

/// A real in exponential form, one digit before the point; an exponent of three digits stands without its letter.
void append_exponential(std::string& text, int width, int decimals, double value) {
    if (!std::isfinite(value)) {
        throw base::run_error("checkpoint_text: expected a finite number, found one that is not");
    }
    std::array<char, 64> digits{};
    const auto result =
        std::to_chars(digits.data(), digits.data() + digits.size(), value, std::chars_format::scientific, decimals);
    std::string field(digits.data(), result.ptr);
    const std::size_t letter = field.find('e');
    constexpr std::size_t two_digit_exponent = 4;  // e+01
    if (field.size() - letter > two_digit_exponent) {
        field.erase(letter, 1);
    } else {
        field[letter] = 'E';
    }
    base::append_text(text, width, field);
}

/// Columns of a heading: name A40, 3 blanks, type A1, 3 blanks, then "N=" and size I12, or 5 blanks and the value.
void append_array_heading(std::string& text, std::string_view name, char type, Eigen::Index size) {
    append_left(text, 40, name);
    text += "   ";
    text += type;
    text += "   N=";
    base::append_integer(text, 12, static_cast<int>(size));
    text += '\n';
}

void append_value_heading(std::string& text, std::string_view name, char type) {
    append_left(text, 40, name);
    text += "   ";
    text += type;
    text += "     ";
}

void append_integer_value(std::string& text, std::string_view name, int value) {
    append_value_heading(text, name, 'I');
    base::append_integer(text, 12, value);
    text += '\n';
}

/// Ends a line after every `per_line` values, and after the last one.
void end_value(std::string& text, Eigen::Index index, Eigen::Index size, Eigen::Index per_line) {
    if ((index + 1) % per_line == 0 || index + 1 == size) {
        text += '\n';
    }
}

void append_reals(std::string& text, std::string_view name, const double* values, Eigen::Index size,
                  Eigen::Index expected) {
    if (size == 0) {
        return;
    }
    if (size != expected) {
        throw base::run_error("checkpoint_text: expected " + std::to_string(expected) + " values of '" +
                              std::string(name) + "', found " + std::to_string(size));
    }
    append_array_heading(text, name, 'R', size);
    for (Eigen::Index i = 0; i < size; ++i) {
        append_exponential(text, 16, 8, values[i]);
        end_value(text, i, size, 5);
    }
}

void append_route_section(std::string& text, std::string_view route) {
    constexpr std::size_t width = 12;
    if (route.empty()) {
        return;
    }
    const auto size = static_cast<Eigen::Index>((route.size() + width - 1) / width);
    append_array_heading(text, "Route", 'C', size);
    for (Eigen::Index i = 0; i < size; ++i) {
        append_left(text, width, route.substr(static_cast<std::size_t>(i) * width, width));
        end_value(text, i, size, 5);
    }
}

}  // namespace

std::string checkpoint_text(const checkpoint& what) {
    const auto atoms = static_cast<Eigen::Index>(what.numbers.size());
    if (atoms == 0 || what.coordinates.cols() != atoms) {
        throw base::run_error("checkpoint_text: expected atoms and their coordinates, found " + std::to_string(atoms) +
                              " numbers and " + std::to_string(what.coordinates.cols()) + " positions");
    }
    std::string text;
    append_left(text, 72, what.title);
    text += '\n';
    append_left(text, 10, what.job);
    append_left(text, 30, what.method);
    append_left(text, 30, what.basis);
    text += '\n';
    append_integer_value(text, "Number of atoms", static_cast<int>(atoms));
    append_integer_value(text, "Charge", what.charge);
    append_integer_value(text, "Multiplicity", what.multiplicity);
    append_route_section(text, what.route);
    append_array_heading(text, "Atomic numbers", 'I', atoms);
    for (Eigen::Index i = 0; i < atoms; ++i) {
        base::append_integer(text, 12, what.numbers[static_cast<std::size_t>(i)]);
        end_value(text, i, atoms, 6);
    }
    append_reals(text, "Current cartesian coordinates", what.coordinates.data(), what.coordinates.size(), 3 * atoms);
    append_reals(text, "Real atomic weights", what.weights.data(), what.weights.size(), atoms);
    if (what.energy) {
        append_value_heading(text, "Total Energy", 'R');
        append_exponential(text, 22, 15, *what.energy);
        text += '\n';
    }
    append_reals(text, "Cartesian Gradient", what.gradient.data(), what.gradient.size(), 3 * atoms);
    append_reals(text, "Cartesian Force Constants", what.force_constants.data(), what.force_constants.size(),
                 3 * atoms * (3 * atoms + 1) / 2);
    if (what.dipole) {
        append_reals(text, "Dipole Moment", what.dipole->data(), 3, 3);
    }
    append_reals(text, "Dipole Derivatives", what.dipole_derivatives.data(), what.dipole_derivatives.size(), 9 * atoms);
    return text;
}

}  // namespace displacement_generator::gaussian
