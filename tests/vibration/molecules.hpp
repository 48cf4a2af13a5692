#pragma once

#include <Eigen/Core>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "vibration/vibration.hpp"

// Molecules, potentials, and a second way to the frequencies that shares nothing with the library.

namespace displacement_generator::vibration_tests {

/// A molecule in angstrom, whose atoms are told apart by atomic number.
struct molecule {
    Eigen::VectorXi numbers;
    Eigen::Matrix3Xd positions;
};

/// What the generator says of it, counted from 0; positions (bohr) may be turned.
struct listing {
    Eigen::VectorXi numbers;
    Eigen::Matrix3Xd positions;
    vibration::point_relations relations;
    int group;  ///< 1..8
};

listing list(const molecule& from, bool std_orient = true, int disp_sign = -1);

/// The same without symmetry: E alone, and every point computed.
listing without_symmetry(const listing& from);

/// A molecule that the operations (1..8) make of some atoms in general positions and some on elements.
molecule generate(const std::vector<int>& operations, std::mt19937& random);

/// The operations of each of the eight groups about the axes of the standard orientation.
std::vector<int> operations_of(int group);

molecule water();
molecule ethylene();
/// Tetrahedral, with the hydrogen atoms at corners of a cube whose faces lie across the axes; `turned` by 45 degrees
/// about z.
molecule methane(bool turned);

Eigen::VectorXd masses_of(const Eigen::VectorXi& numbers);

/// A symmetric matrix of random elements with the symmetry of the listing, and nothing else.
Eigen::MatrixXd random_hessian(const listing& of, std::mt19937& random);

/// The Hessian of springs between all pairs of atoms, at rest; their force constants depend on the kinds of the two
/// atoms and their distance. It has all the symmetry of the molecule, and does not feel rigid motions.
Eigen::MatrixXd spring_hessian(const Eigen::VectorXi& numbers, const Eigen::Matrix3Xd& positions);

/// Dipole derivatives of fixed charges on the atoms, by atomic number.
Eigen::Matrix3Xd charge_derivatives(const Eigen::VectorXi& numbers);

/// Forces and steps of all points of a quadratic potential; of points that are not computed, not-a-number.
struct computed_points {
    Eigen::MatrixXd forces;
    Eigen::VectorXd steps;
};
computed_points compute(const listing& of, const Eigen::MatrixXd& hessian, std::mt19937& random);

/// The frequencies (cm-1) of a Hessian, ascending, by one plain diagonalisation without symmetry: the rigid motions are
/// moved far above all others, and left out.
Eigen::VectorXd plain_frequencies(const Eigen::VectorXd& masses, const Eigen::Matrix3Xd& positions,
                                  const Eigen::MatrixXd& hessian);

vibration::species_group group_of(const listing& of, const Eigen::VectorXd& masses, const Eigen::MatrixXd& hessian);

vibration::vibrations vibrate(const listing& of, const Eigen::VectorXd& masses, const Eigen::MatrixXd& hessian);

/// The label of each mode.
std::vector<std::string> labels(const vibration::vibrations& modes, const vibration::species_group& group);

}  // namespace displacement_generator::vibration_tests
