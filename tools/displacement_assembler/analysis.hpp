#pragma once

#include <Eigen/Core>
#include <string>
#include <vector>

#include "geometry.hpp"
#include "options.hpp"
#include "result.hpp"
#include "vibration/vibration.hpp"

namespace displacement_generator::assembler {

/// The masses of the atoms in amu: those of their elements, or what the command line gives.
/// Stops the run where it names an atom that there is not.
Eigen::VectorXd atom_masses(const options& asked, const std::vector<int>& numbers);

/// All that follows from the forces, in atomic units; masses in amu.
struct analysis {
    Eigen::VectorXd masses;
    Eigen::Matrix3Xd positions;  ///< of the reference, bohr
    double longest_step = 0.0;   ///< bohr, without its sign
    double largest_force = 0.0;  ///< component at the reference, hartree/bohr
    vibration::hessian_result hessian;
    Eigen::Matrix3Xd dipole_derivatives;  ///< without columns where there are no dipole moments
    vibration::species_group group;
    vibration::vibrations modes;
};

/// Rebuilds the forces of all points, and computes Hessian and vibrations.
///   masses      in      from atom_masses
///   list        in
///   geometries  in
///   found       in/out  the forces and dipole moments of all points are filled in
analysis vibrations_of(const Eigen::VectorXd& masses, const displacement_list& list, const geometry_set& geometries,
                       results& found);

/// A largest force (hartree/bohr) beyond this is far from a stationary point: the threshold at which an optimisation
/// of Gaussian ends.
constexpr double force_of_stationary_point = 0.00045;

/// Result: how asymmetric (hartree/bohr^2) forces of one potential may make a Hessian where they are very noisy and the
/// potential is as anharmonic as any. A tenth of it is worth a word.
///   step  in  bohr, the longest, above 0
double largest_asymmetry(double step);

/// Stops the run with status 1 at a Hessian that no molecule has: one far too asymmetric for any noise of forces and
/// any anharmonicity, or, of `.forces` files, one of gradients or of another unit.
///   place     in  what the message begins with
///   made      in
///   is_plain  in  whether the results are `.forces` files, of which nothing else tells sign and unit
void check_hessian(const std::string& place, const analysis& made, bool is_plain);

/// The table: comment lines that begin with '#', then a row a mode.
///   columns  1-5 number  7-10 species  11-22 frequency (cm-1)  23-33 reduced mass (amu)
///            34-45 force constant (mdyne/angstrom)  46-57 intensity (km/mol), or '-'
std::string table(const options& asked, const displacement_list& list, const results& found, const analysis& made);

/// The text of a Molden file: geometry, frequencies, intensities where there are any, normal modes.
std::string molden_text(const displacement_list& list, const analysis& made);

}  // namespace displacement_generator::assembler
