#pragma once

#include <Eigen/Core>
#include <string>
#include <vector>

// From forces to vibrations: numbers in, numbers out.
//
// Atomic units: lengths in bohr, forces in hartree/bohr, dipole moments in e bohr; masses in amu. All is counted from
// 0: atom i and direction j (x, y, z) make coordinate c = 3 i + j, its two steps make points 2 c (lower) and 2 c + 1
// (higher). So point p is displacement p + 1 of the list.
//
// A routine stops the run where its arguments do not fit one another, or hold a value that is not finite.

namespace displacement_generator::vibration {

/// An operation of the list: a point r goes to matrix r, and atom i to atom images[i].
struct operation {
    Eigen::Matrix3d matrix;
    Eigen::VectorXi images;
};

/// How the points follow from the computed ones: point p from sources[p] by operation operations[p]. A computed point
/// follows from itself, and its operation is not looked at.
struct point_relations {
    std::vector<operation> symmetry;
    Eigen::VectorXi sources;
    Eigen::VectorXi operations;
};

// ---- Forces and dipole moments of all points

/// Fills in the derived points: their forces, and the steps that were taken. For each of them the operation must carry
/// the displacement of its source, one coordinate of one atom, onto its own.
///   relations  in      for all 6N points
///   forces     in/out  (3N, 6N) a point a column; the columns of computed points are given, the others are filled
///   steps      in/out  (6N) displacement of each point's coordinate from the reference, with its sign; given and
///                      filled in the same way
void rebuild_forces(const point_relations& relations, Eigen::MatrixXd& forces, Eigen::VectorXd& steps);

/// The same for dipole moments, which turn with the molecule. Operations leave the origin where it is, so this holds
/// for ions too, if their moments are those about the origin.
///   relations  in      for all 6N points
///   dipoles    in/out  (3, 6N) a point a column
void rebuild_dipoles(const point_relations& relations, Eigen::Matrix3Xd& dipoles);

// ---- Derivatives

/// A Hessian, and how far its two computations of an element differ.
struct hessian_result {
    Eigen::MatrixXd hessian;         ///< (3N, 3N) hartree/bohr^2, symmetric
    double largest_asymmetry = 0.0;  ///< largest |H(row, column) - H(column, row)| before it was made symmetric
    int row = 0;                     ///< where that is; row < column, or both 0 where there is no asymmetry
    int column = 0;
};

/// The Hessian by central differences, made symmetric as (H + H^T) / 2:
///     H(:, c) = -(F(:, 2c + 1) - F(:, 2c)) / (step(2c + 1) - step(2c))
/// The two steps of a coordinate must go in opposite directions.
///   forces  in  (3N, 6N) of all points
///   steps   in  (6N) as for rebuild_forces
hessian_result central_differences(const Eigen::MatrixXd& forces, const Eigen::VectorXd& steps);

/// Dipole derivatives, (3, 3N) in e: D(:, c) = (mu(2c + 1) - mu(2c)) / (step(2c + 1) - step(2c)).
///   dipoles  in  (3, 6N) of all points
///   steps    in  (6N) as for rebuild_forces
Eigen::Matrix3Xd dipole_derivatives(const Eigen::Matrix3Xd& dipoles, const Eigen::VectorXd& steps);

// ---- Symmetry species

/// An operation of the list by which species are not told, and why.
struct left_out_operation {
    std::string name;    ///< "C2z", ...
    std::string reason;  ///< "the masses differ", ...
};

/// The operations by which species are told: one of the eight groups, as far as masses, positions and Hessian have it.
struct species_group {
    std::string name;                          ///< as in the list, without blanks: "C1", "CS", ..., "D2H"
    std::vector<operation> symmetry;           ///< closed, E first, in the order of the list
    std::vector<std::string> species;          ///< labels, in the order of the table of the group
    Eigen::MatrixXi characters;                ///< (species, operations), 1 or -1
    std::vector<left_out_operation> left_out;  ///< in the order of the list
    double largest_variance =
        0.0;  ///< largest change (hartree/bohr^2) of an element of the Hessian by an operation used
};

/// An operation counts as one of masses, positions or Hessian if these change by no more than so much under it.
constexpr double mass_tolerance = 1e-8;       ///< amu
constexpr double position_tolerance = 0.002;  ///< bohr; the generator's search allows 0.001 angstrom, 0.0019 bohr
constexpr double hessian_tolerance = 1e-3;    ///< of the largest element of the Hessian

/// The largest group among the operations of the list under which masses, positions and Hessian do not change. Of
/// several that are equally large the one with the lowest operations in the order E, C2z, C2y, C2x, I, Sxy, Szx, Syz.
///
/// The labels are those of the symmetry tables, with "Ag" and "Au" for Ci and "A" for C1. They go by the axes of the
/// list if the axis of the group (C2, C2v, C2h) or the normal of its plane (Cs) is z. If it is x, x and z change
/// places first; if it is y, y and z do: the turn of the standard orientation. In C2v, B1 is the species of x and B2
/// that of y; a planar molecule counts as lying in yz, so that B2 is in plane. In D2 and D2h, B1 goes with z, B2 with
/// y, and B3 with x. In C2h, Au and Bg change their sign under the mirror plane.
///   masses     in  (N) amu
///   positions  in  (3, N) bohr
///   hessian    in  (3N, 3N)
///   listed     in  operations of the list; matrices must be diagonal with elements 1 and -1, E among them or not
species_group find_species_group(const Eigen::VectorXd& masses, const Eigen::Matrix3Xd& positions,
                                 const Eigen::MatrixXd& hessian, const std::vector<operation>& listed);

// ---- Vibrations

/// Normal modes in ascending order of frequency, imaginary ones first. Modes of different species that lie within
/// `same_frequency` of one another stand in the order of their species.
struct vibrations {
    bool linear = false;
    Eigen::VectorXd frequencies;      ///< cm-1; an imaginary one is negative
    Eigen::VectorXd reduced_masses;   ///< amu, for Cartesian displacements normalised to 1
    Eigen::VectorXd force_constants;  ///< mdyne/angstrom, of those displacements; positive for imaginary modes too
    Eigen::VectorXd intensities;      ///< km/mol; empty where no dipole derivatives were given
    Eigen::MatrixXd displacements;    ///< (3N, modes) Cartesian displacements, each column normalised to 1
    std::vector<int> species;         ///< of each mode, an index into the labels of the group
    double zero_point_energy = 0.0;   ///< hartree, over the real modes
    int imaginary = 0;                ///< how many frequencies are imaginary
    double line_deviation = 0.0;      ///< bohr, largest distance of an atom from the line that fits the molecule best
};

/// A molecule none of whose atoms is farther than this (0.001 angstrom in bohr) from one line is linear. It has 3N - 5
/// vibrations, any other one 3N - 6, a single atom none.
constexpr double linear_tolerance = 0.001 / 0.529177210903;

/// Frequencies (cm-1) that differ by less count as equal where modes are put into order.
constexpr double same_frequency = 1e-3;

/// Harmonic vibrations. Coordinates adapted to the species split the mass-weighted Hessian into one block a species;
/// translations and rotations about the centre of mass are projected out of each, and what is left is diagonalised. So
/// every mode belongs to one species exactly, whatever is degenerate. Elements of the Hessian between species, which
/// are at most as large as `largest_variance`, are not used. The largest component of a displacement is positive; of
/// several that are equal to 1 in 10^6, the first.
///   masses     in  (N) amu, above 0
///   positions  in  (3, N) bohr; of several atoms, not all at one place
///   hessian    in  (3N, 3N) hartree/bohr^2, symmetric
///   dipoles    in  (3, 3N) dipole derivatives in e, or without a column where there are none
///   group      in  from find_species_group with the same masses, positions and Hessian
vibrations harmonic_vibrations(const Eigen::VectorXd& masses, const Eigen::Matrix3Xd& positions,
                               const Eigen::MatrixXd& hessian, const Eigen::Matrix3Xd& dipoles,
                               const species_group& group);

}  // namespace displacement_generator::vibration
