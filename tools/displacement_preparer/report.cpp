#include "report.hpp"

#include <array>
#include <cmath>
#include <cstdio>
#include <string_view>

#include "base/error.hpp"
#include "base/text.hpp"
#include "gaussian/lines.hpp"
#include "gaussian/route.hpp"
#include "symmetry/symmetry.hpp"

namespace displacement_generator::preparer {

namespace {

/// "D2h" of the table's "D2H".
std::string group_name(int group) {
    const std::string_view label = base::left_adjusted(symmetry::pg_name(group).trimmed());
    std::string name(label);
    for (std::size_t i = 1; i < name.size(); ++i) {
        name[i] = name[i] >= 'A' && name[i] <= 'Z' ? static_cast<char>(name[i] - 'A' + 'a') : name[i];
    }
    return name;
}

/// A distance that no atom was moved by more than: rounded up, but for what is the rounding of a sum alone.
std::string upper_bound(double distance) {
    constexpr double last_digit = 1e-6;
    constexpr double of_a_sum = 1e-3;  // of the last digit
    std::array<char, 32> text{};
    static_cast<void>(std::snprintf(text.data(), text.size(), "%.6f",
                                    std::ceil(distance / last_digit - of_a_sum) * last_digit + 0.0));
    return text.data();
}

std::string route_line(const source_molecule& found) {
    const std::string& now = found.ready.route;
    const std::string& before = found.old_route;
    std::string line = "route: " + base::shown(now, now.size());
    if (!before.empty() && gaussian::text_of(gaussian::parse_route(before, found.name)) != now) {
        line += "  (was: " + base::shown(before, before.size()) + ")";
    }
    return line + "\n";
}

}  // namespace

std::string report(const source_molecule& found, const frame::displacement_count& written,
                   const frame::frame_result& now) {
    const gaussian::molecule& atoms = found.ready.atoms;
    const std::size_t natom = atoms.numbers.size();
    std::string text = found.name + ": " + found.description + ": " + std::to_string(natom) +
                       (natom == 1 ? " atom" : " atoms") + ", charge " + std::to_string(atoms.charge) +
                       ", multiplicity " + std::to_string(atoms.multiplicity) + "\n";
    text += "group " + group_name(written.group) + " as written, " + group_name(now.group) +
            " now; no atom moved by more than " + upper_bound(now.largest_move) + " angstrom\n";
    text += std::to_string(now.computed) + " of " + std::to_string(6 * natom) + " displacements to compute (" +
            std::to_string(written.computed) + " as written)\n";
    text += route_line(found);
    for (const gaussian::notice& notice : found.notices) {
        text += gaussian::place_of(found.name, notice.line);
        text += ": notice: ";
        text += notice.text;
        text += '\n';
    }
    return text;
}

}  // namespace displacement_generator::preparer
