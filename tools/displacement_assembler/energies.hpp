#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace displacement_generator::assembler {

/// The energy of a geometry, and what its forces tell of it.
struct energy_point {
    std::string name;  ///< of the file of both
    std::size_t file;  ///< its number in the list
    double energy;     ///< hartree
    /// Energy above that of the reference by the trapezoidal rule (hartree): minus the step times the mean of the
    /// forces along it, here and at the reference. 0 for the reference.
    double by_forces;
    /// Whether the energy may be of another level than the forces, as logs of excited states print it.
    bool is_of_other_level = false;
};

/// Whether energies are those of the forces.
struct energy_verdict {
    double reference = 0.0;             ///< energy of the reference to which most points lead
    std::vector<std::size_t> off;       ///< points whose energy does not follow from the forces
    bool most_agree = true;             ///< whether there are fewer of them than of those that show to follow
    bool one_number = false;            ///< whether one number stands for all energies, which the forces tell apart
    std::optional<double> all_by_this;  ///< all energies follow from forces so many times as large
};

/// Holds energies against forces. If both are of one potential, E(h) - E(0) = -h (f(0) + f(h)) / 2 but for terms of
/// third order.
///   points  in  fewer than three tell nothing
///   step    in  the longest, bohr
energy_verdict judge_energies(const std::vector<energy_point>& points, double step);

/// What a user is told of energies that are not those of the forces.
struct energy_messages {
    std::vector<std::size_t> refused;   ///< files
    std::vector<std::string> refusals;  ///< a whole message for each
    std::string refusal_of_all;         ///< without its place; empty: nothing is wrong with all of them
    std::vector<std::string> notices;
};

/// Refuses results whose forces are of another geometry, state or unit than their energies, as far as that is certain.
/// Energies of another level than the forces, which some logs hold, bring a notice only.
///   points, step  in  as for judge_energies
energy_messages check_energies(const std::vector<energy_point>& points, double step);

}  // namespace displacement_generator::assembler
