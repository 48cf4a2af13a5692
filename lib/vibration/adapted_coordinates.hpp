#pragma once

#include <vector>

#include "vibration.hpp"

namespace displacement_generator::vibration {

/// A combination of coordinates that belongs to one species: `weight` times the sum of signs[k] times coordinate
/// coordinates[k]. Its length is 1.
struct adapted_coordinate {
    std::vector<Eigen::Index> coordinates;
    std::vector<double> signs;
    double weight;
};

/// All combinations of one species, in the order of their first atoms and of x, y, z. Those of all species together are
/// an orthonormal basis.
///   group    in  closed, with its characters
///   species  in  index of the species
///   natom    in  number of atoms
std::vector<adapted_coordinate> adapted_coordinates(const species_group& group, Eigen::Index species,
                                                    Eigen::Index natom);

/// Positions moved to the places where the operations of the group hold exactly: the mean over what each operation
/// makes of the molecule.
Eigen::Matrix3Xd symmetric_positions(const species_group& group, const Eigen::Matrix3Xd& positions);

}  // namespace displacement_generator::vibration
