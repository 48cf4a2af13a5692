#include <algorithm>
#include <cmath>

#include "base/error.hpp"
#include "energies.hpp"
#include "printed.hpp"
#include "result.hpp"

namespace displacement_generator::assembler {

namespace {

/// How far (hartree) the energy of a log or checkpoint may be off before it is of another state. Less can be a coarse
/// grid or a loose convergence.
constexpr double of_another_state = 1e-4;

std::string shown_name(const energy_point& one) { return base::shown(one.name, one.name.size()); }

}  // namespace

energy_messages check_energies(const std::vector<energy_point>& points, double step) {
    energy_messages told;
    const energy_verdict verdict = judge_energies(points, step);
    if (verdict.all_by_this &&
        std::all_of(points.begin(), points.end(), [](const energy_point& one) { return is_plain(one.name); })) {
        told.refusal_of_all = "expected energies that follow from the forces, found those of forces " +
                              printed("%.3g", *verdict.all_by_this) +
                              " times as large; .forces files have forces and not gradients, in hartree/bohr, of these "
                              "geometries, and energies in hartree";
        return told;
    }
    if (verdict.one_number) {
        told.notices.emplace_back("all energies are the same: they could not be compared with the forces");
        return told;
    }
    const auto distance = [&](std::size_t i) { return points[i].energy - points[i].by_forces - verdict.reference; };
    std::size_t worst = points.size();
    for (const std::size_t i : verdict.off) {
        const energy_point& one = points[i];
        if (verdict.most_agree &&
            (is_plain(one.name) || (!one.is_of_other_level && std::abs(distance(i)) > of_another_state))) {
            told.refused.push_back(one.file);
            told.refusals.push_back(
                shown_name(one) + ": expected an energy of " + printed("%.7f", verdict.reference + one.by_forces) +
                " hartree by its forces and those of the reference, found " + printed("%.7f", one.energy) +
                "; energy or forces are of another geometry or state, compute it again" +
                (is_plain(one.name) ? ", and write all digits of the energy" : ""));
        } else if (worst == points.size() || std::abs(distance(i)) > std::abs(distance(worst))) {
            worst = i;
        }
    }
    if (worst != points.size()) {
        told.notices.push_back((verdict.most_agree ? "some energies do not follow from the forces, that of "
                                                   : "the energies do not follow from the forces, that of ") +
                               shown_name(points[worst]) + " is off by " + printed("%.1e", distance(worst)) +
                               " hartree" +
                               (verdict.most_agree ? ""
                                                   : ": they are of another level, or the forces are not of these "
                                                     "geometries"));
    }
    return told;
}

}  // namespace displacement_generator::assembler
