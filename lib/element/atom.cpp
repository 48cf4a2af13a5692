#include "element/element.hpp"

#include <iterator>

namespace displacement_generator {

namespace {

// One row for every ten atomic numbers, from 0.
// clang-format off
constexpr base::text<2> symbols[101] = {
    "X ", "H ", "He", "Li", "Be", "B ", "C ", "N ", "O ", "F ",
    "Ne", "Na", "Mg", "Al", "Si", "P ", "S ", "Cl", "Ar", "K ",
    "Ca", "Sc", "Ti", "V ", "Cr", "Mn", "Fe", "Co", "Ni", "Cu",
    "Zn", "Ga", "Ge", "As", "Se", "Br", "Kr", "Rb", "Sr", "Y ",
    "Zr", "Nb", "Mo", "Tc", "Ru", "Rh", "Pd", "Ag", "Cd", "In",
    "Sn", "Sb", "Te", "I ", "Xe", "Cs", "Ba", "La", "Ce", "Pr",
    "Nd", "Pm", "Sm", "Eu", "Gd", "Tb", "Dy", "Ho", "Er", "Tm",
    "Yb", "Lu", "Hf", "Ta", "W ", "Re", "Os", "Ir", "Pt", "Au",
    "Hg", "Tl", "Pb", "Be", "Po", "At", "Rn", "Fr", "Ra", "Ac",
    "Th", "Pa", "U ", "Np", "Ru", "Am", "Cm", "Bk", "Cf", "Es",
    "Fm",
};
// clang-format on

}  // namespace

constinit const base::view1<const base::text<2>> element::atom("atom", symbols, 0, std::size(symbols) - 1);

}  // namespace displacement_generator
