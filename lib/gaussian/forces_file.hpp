#pragma once

#include <Eigen/Core>
#include <optional>

#include "source.hpp"

namespace displacement_generator::gaussian {

/// What a program other than Gaussian has computed at one geometry, in atomic units and in the frame of that geometry.
struct forces_file {
    Eigen::Matrix3Xd forces;  ///< hartree/bohr, a column an atom
    std::optional<double> energy;
    std::optional<Eigen::Vector3d> dipole;
};

/// Reads a file of forces: a line "fx fy fz" for each atom, in the order of the input; "energy E" and "dipole X Y Z"
/// anywhere, once each; "#" begins a comment; empty lines count for nothing.
///   from   in/out  to the end
///   atoms  in      how many the molecule has
/// Stops the run with "NAME:LINE: ..." at what does not belong there, and with "NAME: ..." where atoms are missing.
forces_file read_forces(source& from, int atoms);

}  // namespace displacement_generator::gaussian
