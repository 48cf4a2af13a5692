#pragma once

#include "control.hpp"

namespace displacement_generator::generator {

/// One run, from the settings to the complete directory "PES-0" in the current directory. What goes wrong stops the
/// run.
void run(const control& settings);

}  // namespace displacement_generator::generator
