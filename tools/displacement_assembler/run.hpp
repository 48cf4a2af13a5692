#pragma once

#include "options.hpp"

namespace displacement_generator::assembler {

/// A whole run: files are written, notices go to standard error, and the table to standard output. Where something is
/// missing or refused all of it is listed on standard error, and the run is stopped with status 1; where something else
/// is wrong, with status 2. Then no file is written, and nothing is printed on standard output, unless the last step of
/// all fails, that of giving the files their names.
void run(const options& asked);

}  // namespace displacement_generator::assembler
