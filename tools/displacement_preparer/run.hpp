#pragma once

#include "options.hpp"

namespace displacement_generator::preparer {

/// A whole run: SOURCE becomes OUTPUT, and the report goes to standard error. Stops where something is wrong; there is
/// no OUTPUT then, and one that was there before stays as it was.
void run(const options& asked);

}  // namespace displacement_generator::preparer
