#pragma once

#include <string>
#include <vector>

#include "lines.hpp"
#include "notice.hpp"
#include "read_input.hpp"

namespace displacement_generator::gaussian {

/// The units of a molecule's numbers: what turns them into angstrom and radians.
struct input_units {
    double length = 1.0;
    double angle = 1.0;
};

/// Reads the lines of the atoms, and those of the variables and constants where there are names among their numbers.
///   here     in/out  at the first line of an atom; afterwards behind the last line of the molecule, that is at a blank
///                    line or at the end
///   units    in
///   job      in/out  gets `atoms` but for charge and multiplicity, `dummies` and the lines of types and fragments
///   notices  in/out
void read_molecule(cursor& here, const input_units& units, input& job, std::vector<notice>& notices);

}  // namespace displacement_generator::gaussian
