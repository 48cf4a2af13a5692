#pragma once

#include <string>

#include "frame/frame.hpp"
#include "gaussian/molecule.hpp"
#include "options.hpp"
#include "source_molecule.hpp"

namespace displacement_generator::preparer {

/// What a run makes of SOURCE.
struct prepared {
    std::string text;    ///< the ready input
    std::string report;  ///< with all notices
    file_identity source;
    gaussian::molecule atoms;         ///< as they stand in the text
    frame::displacement_count count;  ///< what the generator finds and computes
};

/// Prepares SOURCE; writes nothing. Stops the run where something is wrong.
prepared prepare(const options& asked);

/// A whole run: SOURCE becomes OUTPUT, and the report goes to standard error. Stops where something is wrong; there is
/// no OUTPUT then, and one that was there before stays as it was.
void run(const options& asked);

}  // namespace displacement_generator::preparer
