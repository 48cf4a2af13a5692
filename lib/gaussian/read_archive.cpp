#include <algorithm>
#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/error.hpp"
#include "base/free_format.hpp"
#include "gaussian/archive.hpp"
#include "gaussian/read_input.hpp"
#include "gaussian/symbols.hpp"
#include "gaussian/words.hpp"

namespace displacement_generator::gaussian {

namespace {

/// More parts than the largest molecule that Gaussian takes has atoms; a text of separators alone shall not fill
/// memory.
constexpr std::size_t most_parts = 300000;

/// The parts of a text between separators; a text without one is one part. What is behind the last part that there may
/// be stays with it.
std::vector<std::string_view> split_at(std::string_view text, std::string_view separator) {
    std::vector<std::string_view> parts;
    for (;;) {
        const std::size_t at = text.find(separator);
        if (at == std::string_view::npos || parts.size() + 1 == most_parts) {
            parts.push_back(text);
            return parts;
        }
        parts.push_back(text.substr(0, at));
        text.remove_prefix(at + separator.size());
    }
}

bool read_charge(std::string_view field, archive_entry& entry) {
    const std::vector<std::string_view> numbers = split_at(field, ",");
    return numbers.size() == 2 && base::read_integer(numbers[0], entry.molecule.charge) == base::number_status::ok &&
           base::read_integer(numbers[1], entry.molecule.multiplicity) == base::number_status::ok;
}

/// Reads "C,0.,0.1,-0.2", perhaps with a freeze code behind the symbol and with what stands in brackets behind it.
bool read_atom(std::string_view field, int& number, double (&position)[3]) {
    std::vector<std::string_view> parts;
    const std::size_t bracket = field.find('(');
    std::string_view symbol = field.substr(0, field.find(','));
    std::size_t behind = symbol.size();
    if (bracket < behind) {  // a list in brackets may hold commas
        symbol = field.substr(0, bracket);
        behind = std::min(field.find(')'), field.size() - 1) + 1;
    }
    number = number_of(symbol);
    parts = split_at(field.substr(behind), ",");  // the first is what stands before the first comma: nothing
    const bool with_code = parts.size() == 5;
    if (number == 0 || (parts.size() != 4 && !with_code) || !parts[0].empty()) {
        return false;
    }
    int code = 0;
    if (with_code && base::read_integer(parts[1], code) != base::number_status::ok) {
        return false;
    }
    const std::size_t first = parts.size() - 3;
    return read_printed_real(parts[first], position[0]) && read_printed_real(parts[first + 1], position[1]) &&
           read_printed_real(parts[first + 2], position[2]);
}

/// Reads atoms in Cartesian coordinates. Result: false, and none, where one of them is of another kind.
///   fields  in  charge and multiplicity, and an atom each
bool read_atoms(const std::vector<std::string_view>& fields, archive_entry& entry) {
    const std::size_t atoms = fields.size() - 1;
    std::vector<int> numbers(atoms);
    Eigen::Matrix3Xd positions(3, static_cast<Eigen::Index>(atoms));
    for (std::size_t i = 0; i < atoms; ++i) {
        double position[3];
        if (!read_atom(fields[i + 1], numbers[i], position)) {
            return false;
        }
        positions.col(static_cast<Eigen::Index>(i)) = Eigen::Map<const Eigen::Vector3d>(position);
    }
    entry.molecule.numbers = std::move(numbers);
    entry.molecule.positions = std::move(positions);
    return true;
}

/// Reads a molecule of another kind, such as a Z-matrix with its values, as the input that it was made of. Where it is
/// none, the entry stays without atoms.
///   sections  in  the molecule and what stands between it and the results
void read_as_input(std::span<const std::string_view> sections, std::string_view separator, archive_entry& entry) {
    std::string text = "#\n\ntitle\n\n";
    for (const std::string_view section : sections) {
        for (const std::string_view line : split_at(section, separator)) {
            text.append(line).push_back('\n');
        }
        text.push_back('\n');
    }
    std::vector<notice> dropped;
    try {
        entry.molecule = read_input(text, "archive", dropped).atoms;
    } catch (const base::run_error&) {
        return;
    }
}

/// Whether a quantity of the last section is the energy of a level above the self-consistent field.
bool is_correlated(std::string_view name) {
    return name.starts_with("MP") || name.starts_with("CC") || name.starts_with("QCI") || name == "BD" ||
           name.starts_with("BD(");
}

void read_results(const std::vector<std::string_view>& fields, archive_entry& entry) {
    for (const std::string_view field : fields) {
        const std::size_t equals = field.find('=');
        if (equals == std::string_view::npos) {
            continue;
        }
        const std::string_view name = field.substr(0, equals);
        const std::string_view value = field.substr(equals + 1);
        double energy = 0.0;
        if (name == "PG") {
            entry.point_group = value.substr(0, value.find(' '));
        } else if ((name == "HF" || is_correlated(name)) && read_printed_real(without_blanks(value), energy)) {
            entry.energy = energy;
            entry.beyond_self_consistent = name != "HF";
        }
    }
}

}  // namespace

archive_entry read_archive(std::string_view text) {
    archive_entry entry;
    const std::string_view separator = text.starts_with("1|") ? "|" : "\\";
    const std::string twice = std::string(separator) + std::string(separator);
    const std::vector<std::string_view> sections = split_at(text, twice);
    // The results begin with the version. What stands before them is system, route, title and molecule; the values of
    // a Z-matrix are one more section. A title with a doubled separator would shift the sections: nothing is taken.
    constexpr std::size_t route_section = 1;
    constexpr std::size_t molecule_section = 3;
    std::size_t results = 0;
    while (results < sections.size() && !sections[results].starts_with("Version=")) {
        ++results;
    }
    if (results == sections.size() || results <= molecule_section) {
        return entry;
    }
    entry.route = without_blanks(sections[route_section]);
    // The first section: 1, 1, computer, kind of job, method, basis, formula, user, date, number of what follows.
    constexpr std::size_t method_field = 4;
    constexpr std::size_t basis_field = 5;
    if (const std::vector<std::string_view> top = split_at(sections[0], separator); top.size() > basis_field) {
        entry.method = without_blanks(top[method_field]);
        entry.basis = without_blanks(top[basis_field]);
    }
    const std::vector<std::string_view> fields = split_at(sections[molecule_section], separator);
    entry.has_charge = read_charge(fields[0], entry);
    if (!entry.has_charge) {
        entry.molecule = {};
    } else if (results != molecule_section + 1 || !read_atoms(fields, entry)) {
        read_as_input(std::span(sections).subspan(molecule_section, results - molecule_section), separator, entry);
    }
    read_results(split_at(sections[results], separator), entry);
    return entry;
}

}  // namespace displacement_generator::gaussian
