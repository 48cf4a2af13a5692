#pragma once

#include <Eigen/Core>
#include <random>
#include <string>
#include <vector>

// Molecules of any point group, and the fewest displacements of one by trying every frame.

namespace displacement_generator::point_groups {

using engine = std::mt19937_64;

struct molecule {
    std::vector<int> kinds;
    Eigen::Matrix3Xd positions;
};

struct named_group {
    std::string name;
    std::vector<Eigen::Matrix3d> operations;  ///< all of them
};

/// C1, Ci, Cs, Cn, Cnv, Cnh, Dn, Dnh, Dnd, S2n, T, Td, Th, O, Oh, I, Ih.
const std::vector<named_group>& all_groups();
const named_group& group(const std::string& name);

/// A random rotation; each is as likely as any other.
Eigen::Matrix3d any_rotation(engine& random);

/// Atoms in general places, of which there are enough that the molecule has no higher symmetry, and with
/// `special` > 0 so many more orbits on elements.
molecule molecule_of(const named_group& group, int special, engine& random);

/// Moves each atom by a random vector of at most this length.
void shake(molecule& atoms, double longest, engine& random);

/// Turned and shifted.
molecule moved(const molecule& atoms, engine& random);

/// The fewest displacements over all frames made of the involutions among `operations`, which all map the molecule
/// onto itself: orbits counted point by point.
int fewest_by_trial(const molecule& atoms, const std::vector<Eigen::Matrix3d>& operations);

/// All involutions about the centroid that map the molecule onto itself within 1e-6, found by trying all directions
/// that two atoms or a pair of pairs can give.
std::vector<Eigen::Matrix3d> involutions_by_trial(const molecule& atoms);

}  // namespace displacement_generator::point_groups
