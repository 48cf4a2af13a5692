#pragma once

#include <string_view>

namespace displacement_generator::gaussian {

constexpr int largest_atomic_number = 118;

/// The chemical symbol of an atomic number, "H" to "Og"; stops the run outside 1..largest_atomic_number.
std::string_view symbol_of(int number);

/// The atomic number of a chemical symbol in any case; 0 where it is none.
int number_of(std::string_view symbol);

}  // namespace displacement_generator::gaussian
