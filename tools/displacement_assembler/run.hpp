#pragma once

#include <string>

#include "options.hpp"

namespace displacement_generator::assembler {

/// A whole run: files are written, notices go to standard error, and the table to standard output. Where something is
/// missing or refused all of it is listed on standard error, and the run is stopped with status 1; where something else
/// is wrong, with status 2. Then nothing is printed on standard output, and no file is written.
void run(const options& asked);

/// Prints on standard output.
void print(const std::string& text);

}  // namespace displacement_generator::assembler
