#pragma once

#include <string_view>

// Words and numbers of one line, for the readers of this room.

namespace displacement_generator::gaussian {

/// Takes the next word off a line: words are separated by blanks and tabs, and by nothing else, so that a decimal comma
/// stays inside its number and is refused there. Empty at the end of the line.
std::string_view next_word(std::string_view& rest);

/// A line without the blanks and tabs at both ends.
std::string_view without_blanks(std::string_view line);

/// Reads a whole word as a finite real, in any form that Fortran prints: also with a D, or with a sign alone before an
/// exponent of three digits (1.00000000-100). Result: false, and `value` unchanged, where it is none.
bool read_printed_real(std::string_view word, double& value);

/// Takes three reals off a line. Result: false where there are not three.
bool next_three_reals(std::string_view& rest, double (&values)[3]);

}  // namespace displacement_generator::gaussian
