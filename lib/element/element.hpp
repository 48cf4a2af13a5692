#pragma once

#include <string_view>

#include "../base/array.hpp"
#include "../base/text.hpp"

namespace displacement_generator::element {

/// Element symbols, atom(0..100): atom(k) is the symbol of atomic number k, atom(0) that of the dummy atom. Two entries
/// are not the chemical symbols of their numbers and are kept so: atom(83) is "Be" and atom(94) is "Ru".
extern const base::view1<const base::text<2>> atom;

/// Masses, mass(1..118): the mass in atomic mass units of the isotope that stands for each atomic number, as a rule the
/// most abundant one. 0.0 where there is none: 61 and 102..118.
extern const base::view1<const double> mass;

/// Fills atomic numbers from symbols or symbols from atomic numbers.
///   natom    in      number of atoms
///   nat      in/out  (1..natom) atomic numbers
///   symbol   in/out  (1..natom) element symbols, texts of any length; of a longer one only two characters count
///   sym_nat  in      the direction, a text of 8 characters; trailing blanks that are missing or too many do not count.
///                    "sym->nat": nat from symbol. Anything else: symbol from nat; an atomic number outside 0..100
///                    stops the run. So does a direction of more than 8 characters.
/// A symbol is taken without its leading blanks; a lower-case first letter counts as upper case; an upper-case second
/// letter counts as the lower-case form of the first, so that "CL" is no symbol. Of equal entries of `atom` the last
/// counts: "Be" is 83, "Ru" 94. An unknown symbol leaves its nat as it was.
void get_element_name(int natom, base::view1<int> nat, base::text_view symbol, std::string_view sym_nat);

/// Fills masses from atomic numbers.
///   natom  in   number of atoms
///   nat    in   (1..natom) atomic numbers
///   atmas  out  (1..natom) masses in atomic mass units; unchanged where nat is outside 1..118
void nat_to_mass(int natom, base::view1<const int> nat, base::view1<double> atmas);

}  // namespace displacement_generator::element
