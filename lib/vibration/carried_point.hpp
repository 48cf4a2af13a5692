#pragma once

#include <string_view>

#include "vibration.hpp"

// What the routines of this room share: checks of what they are given, and how an operation carries a point.

namespace displacement_generator::vibration {

/// Stops the run: "NAME: expected ROWS x COLUMNS values".
[[noreturn]] void size_error(std::string_view name, Eigen::Index rows, Eigen::Index columns);

/// Stops the run where a value is not finite: "NAME: found a value that is not finite".
void check_finite(const Eigen::Ref<const Eigen::MatrixXd>& values, std::string_view name);

/// Whether every atom is the image of exactly one atom.
bool is_permutation(const Eigen::VectorXi& images);

/// Stops the run unless every point has a computed source, and every derived point an operation that carries all atoms,
/// each onto another one. Gives the number of points.
Eigen::Index check_relations(const point_relations& relations);

/// The operation by which point p follows from its source.
const operation& operation_of(const point_relations& relations, Eigen::Index p);

/// 1 or -1, as the operation carries the coordinate of point `source` onto that of point `p` or onto its opposite;
/// where it does neither, the run is stopped.
double carried_direction(const operation& by, Eigen::Index source, Eigen::Index p);

}  // namespace displacement_generator::vibration
