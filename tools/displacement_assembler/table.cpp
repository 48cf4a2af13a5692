#include <cmath>
#include <string_view>

#include "analysis.hpp"
#include "base/error.hpp"
#include "gaussian/fields.hpp"
#include "gaussian/symbols.hpp"
#include "printed.hpp"

namespace displacement_generator::assembler {

namespace {

/// "C2v" of the list's "C2V".
std::string group_name(std::string_view label) {
    return std::string(label.substr(0, 1)) + gaussian::lower(label.substr(1));
}

/// What the results say that they were computed with; nothing where none of them says so.
std::string computed_with(const displacement_list& list, const results& found) {
    const bool has_route = !found.route.empty();
    const std::string& text = has_route ? found.route : found.method;
    if (text.empty()) {
        return {};
    }
    return (has_route ? "# route of " : "# method of ") +
           (found.described == list.files.size()
                ? "the results"
                : std::to_string(found.described) + " of " + std::to_string(list.files.size()) + " results") +
           ": " + base::shown(text, text.size()) + "\n";
}

std::string heading(const options& asked, const displacement_list& list, const results& found, const analysis& made) {
    const std::size_t natom = list.numbers.size();
    std::string text = "# point group " + group_name(list.group) + ", species of " + group_name(made.group.name) + "\n";
    text += printed("# %zu of %zu displacements computed, dx = %.6f\n", list.files.size() - 1, 6 * natom, list.dx);
    text += computed_with(list, found);
    text += found.reference.energy ? printed("# energy %.9f hartree\n", *found.reference.energy) : "# energy -\n";
    text += printed("# zero-point energy %.9f hartree", made.modes.zero_point_energy);
    text += made.modes.imaginary != 0
                ? printed(" without %d imaginary mode%s\n", made.modes.imaginary, made.modes.imaginary == 1 ? "" : "s")
                : "\n";
    text += printed("# largest force at the reference %.9f hartree/bohr%s\n", made.largest_force,
                    made.largest_force > force_of_stationary_point ? ": too large, not a stationary point" : "");
    text += printed("# largest asymmetry of the Hessian %.3e hartree/bohr^2\n", made.hessian.largest_asymmetry);
    text += printed("# %s molecule, masses: %s\n",
                    natom == 1          ? "one-atom"
                    : made.modes.linear ? "linear"
                                        : "nonlinear",
                    asked.average_masses ? "average over the isotopes" : "most abundant isotopes");
    text += "# atom symbol        mass (amu)\n";
    for (std::size_t i = 0; i < natom; ++i) {
        text += printed("# %4zu %6s %17.8f\n", i + 1, std::string(gaussian::symbol_of(list.numbers[i])).c_str(),
                        made.masses(static_cast<Eigen::Index>(i)));
    }
    return text;
}

}  // namespace

std::string table(const options& asked, const displacement_list& list, const results& found, const analysis& made) {
    const vibration::vibrations& modes = made.modes;
    std::string text = heading(asked, list, found, made) +
                       "# no species frequency   red.mass   frc.const   intensity\n"
                       "#               (cm-1)      (amu)   (mdyne/A)    (km/mol)\n";
    for (Eigen::Index i = 0; i < modes.frequencies.size(); ++i) {
        const auto species = static_cast<std::size_t>(modes.species[static_cast<std::size_t>(i)]);
        text += printed("%5d %-4s%12.4f%11.4f%12.4f", static_cast<int>(i) + 1, made.group.species[species].c_str(),
                        modes.frequencies(i), modes.reduced_masses(i), modes.force_constants(i));
        text += modes.intensities.size() != 0 ? printed("%12.4f\n", modes.intensities(i)) : printed("%12s\n", "-");
    }
    return text;
}

}  // namespace displacement_generator::assembler
