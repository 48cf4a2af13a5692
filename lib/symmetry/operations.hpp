#pragma once

namespace displacement_generator::symmetry {

/// Operation numbers.
enum operation { identity = 1, c2z, c2y, c2x, inversion, sxy, szx, syz, c4z, c4y, c4x };

/// Operations 1..8 are looked for; 9..11 only turn the molecule.
constexpr int tested_operations = 8;

}  // namespace displacement_generator::symmetry
