#pragma once

#include "vibration.hpp"

namespace displacement_generator::vibration {

/// The line that fits a molecule best.
struct fitted_line {
    Eigen::Vector3d direction;
    double largest_distance;  ///< bohr, of an atom from the line
};

/// The line through the mean position, in the direction in which the atoms spread most. Masses do not count, so that
/// isotopes do not make a molecule linear. Stops the run where several atoms are all at one place.
///   positions  in  (3, N) bohr
fitted_line fit_line(const Eigen::Matrix3Xd& positions);

/// Mass-weighted translations and rotations about the centre of mass, (3N, 6): translations along x, y and z, then
/// rotations about x, y and z. Not normalised; a rotation about the line of a linear molecule is near zero.
///   masses     in  (N) amu
///   positions  in  (3, N) bohr
Eigen::MatrixXd rigid_motions(const Eigen::VectorXd& masses, const Eigen::Matrix3Xd& positions);

}  // namespace displacement_generator::vibration
