#pragma once

#include <Eigen/Core>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "molecule.hpp"
#include "source.hpp"

namespace displacement_generator::gaussian {

/// What a formatted checkpoint holds, in atomic units and in its own frame: the standard orientation unless `nosymm`
/// was asked for. A quantity that it does not hold has no value, no columns or no size.
struct checkpoint {
    std::string title;   ///< line 1
    std::string job;     ///< line 2, columns 1-10: job type
    std::string method;  ///< columns 11-40
    std::string basis;   ///< columns 41-70
    std::string route;   ///< Gaussian 16 only
    int charge = 0;
    int multiplicity = 1;
    std::vector<int> numbers;      ///< atomic numbers, 1..118
    std::vector<int> ghosts;       ///< atoms without a nuclear charge, from 1
    int vectors = 0;               ///< translation vectors other than 0
    Eigen::Matrix3Xd coordinates;  ///< bohr, a column an atom
    Eigen::VectorXd weights;       ///< amu, one an atom
    std::optional<double> energy;  ///< hartree
    Eigen::Matrix3Xd gradient;     ///< hartree/bohr; minus the force
    std::optional<Eigen::Vector3d> dipole;
    Eigen::VectorXd force_constants;      ///< hartree/bohr^2; the lower triangle by rows, 3N(3N+1)/2
    Eigen::Matrix3Xd dipole_derivatives;  ///< a column a coordinate, 3N
};

/// Reads a formatted checkpoint in one pass; sections that nobody wants are not held.
///   from  in/out  to the end
/// Stops the run with "NAME:LINE: ..." where a section is broken, its size does not belong to the number of atoms, or
/// atoms or coordinates are missing. Charge and multiplicity must be there, too.
checkpoint read_checkpoint(source& from);

/// The molecule of a checkpoint in angstrom, in the checkpoint's frame.
molecule molecule_of(const checkpoint& from);

/// The text of a formatted checkpoint: what has a value, in the order in which Gaussian writes it.
///   what  in  numbers and coordinates must be there; sizes belong to them
/// Stops the run where a number is not finite, or a size is wrong.
std::string checkpoint_text(const checkpoint& what);

}  // namespace displacement_generator::gaussian
