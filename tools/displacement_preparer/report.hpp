#pragma once

#include <string>

#include "frame/frame.hpp"
#include "source_molecule.hpp"

namespace displacement_generator::preparer {

/// The report: source, group, displacements, route, and then every notice, a line each.
///   found    in  what was read
///   written  in  group and number of displacements in the source's own frame
///   now      in  what was made of it
std::string report(const source_molecule& found, const frame::displacement_count& written,
                   const frame::frame_result& now);

}  // namespace displacement_generator::preparer
