#pragma once

#include <Eigen/Core>
#include <array>
#include <bit>
#include <vector>

#include "../symmetry/operations.hpp"
#include "frame.hpp"

// Not public: the generator's eight operations as sign changes, and how many displacements a group leaves.
//
// Operation `flips`, 0..7, changes the sign of x, y and z where its bits 0, 1 and 2 are set; two after one another are
// their exclusive or. A set of operations has bit 1 << flips for each.

namespace displacement_generator::frame {

constexpr unsigned operations = 8;
constexpr unsigned inverted = 7;  ///< all three signs

/// The generator's number of each.
constexpr std::array<int, operations> operation_number = {symmetry::identity, symmetry::syz,      symmetry::szx,
                                                          symmetry::c2z,      symmetry::sxy,      symmetry::c2y,
                                                          symmetry::c2x,      symmetry::inversion};

constexpr unsigned axis_along(unsigned c) { return inverted ^ (1U << c); }
constexpr unsigned plane_across(unsigned c) { return 1U << c; }

/// The smallest group that holds a set.
constexpr unsigned group_of(unsigned set) {
    unsigned group = set | 1U;
    for (unsigned f = 0; f < operations; ++f) {
        if ((set >> f & 1U) == 0) {
            continue;
        }
        for (unsigned g = 0, before = group; g < operations; ++g) {
            group |= (before >> g & 1U) << (f ^ g);
        }
    }
    return group;
}

/// The number of displacements to compute, which is that of the classes of points that go over into one another: the
/// mean over the operations of how many points each leaves as they are. A point stays where its atom does and its
/// direction is not turned round.
///   kept  in  by operation: how many atoms it leaves in their place
inline int displacements_left(unsigned group, const std::array<int, operations>& kept) {
    int points = 0;
    for (unsigned f = 0; f < operations; ++f) {
        if ((group >> f & 1U) != 0) {
            points += kept[f] * 2 * (3 - std::popcount(f));
        }
    }
    return points / std::popcount(group);
}

struct generator_finding {
    displacement_count count;
    unsigned present = 0;  ///< the set of operations found
};

/// What symmetry::point_group finds.
generator_finding apply_generator_rules(const std::vector<int>& kinds, const Eigen::Matrix3Xd& positions);

}  // namespace displacement_generator::frame
