#pragma once

#include <string>

#include "frame/frame.hpp"
#include "gaussian/molecule.hpp"

namespace displacement_generator::preparer {

/// Reads a prepared input as the generator does, and holds it against what was meant: charge and multiplicity, each
/// symbol and coordinate, the group, and the number of displacements to compute.
///   path      in  of the prepared input
///   meant     in  as written
///   promised  in  group and number
/// Stops the run where they differ.
void check_prepared(const std::string& path, const gaussian::molecule& meant,
                    const frame::displacement_count& promised);

}  // namespace displacement_generator::preparer
