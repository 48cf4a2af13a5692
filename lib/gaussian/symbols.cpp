#include "gaussian/symbols.hpp"

#include <cstddef>
#include <iterator>
#include <string>
#include <string_view>

#include "base/error.hpp"

namespace displacement_generator::gaussian {

namespace {

constexpr std::string_view symbols[] = {
    "H",  "He", "Li", "Be", "B",  "C",  "N",  "O",  "F",  "Ne", "Na", "Mg", "Al", "Si", "P",  "S",  "Cl",
    "Ar", "K",  "Ca", "Sc", "Ti", "V",  "Cr", "Mn", "Fe", "Co", "Ni", "Cu", "Zn", "Ga", "Ge", "As", "Se",
    "Br", "Kr", "Rb", "Sr", "Y",  "Zr", "Nb", "Mo", "Tc", "Ru", "Rh", "Pd", "Ag", "Cd", "In", "Sn", "Sb",
    "Te", "I",  "Xe", "Cs", "Ba", "La", "Ce", "Pr", "Nd", "Pm", "Sm", "Eu", "Gd", "Tb", "Dy", "Ho", "Er",
    "Tm", "Yb", "Lu", "Hf", "Ta", "W",  "Re", "Os", "Ir", "Pt", "Au", "Hg", "Tl", "Pb", "Bi", "Po", "At",
    "Rn", "Fr", "Ra", "Ac", "Th", "Pa", "U",  "Np", "Pu", "Am", "Cm", "Bk", "Cf", "Es", "Fm", "Md", "No",
    "Lr", "Rf", "Db", "Sg", "Bh", "Hs", "Mt", "Ds", "Rg", "Cn", "Nh", "Fl", "Mc", "Lv", "Ts", "Og"};
static_assert(std::size(symbols) == largest_atomic_number);

char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

bool same_in_any_case(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) {
        return false;
    }
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (lower(a[i]) != lower(b[i])) {
            return false;
        }
    }
    return true;
}

}  // namespace

std::string_view symbol_of(int number) {
    if (number < 1 || number > static_cast<int>(std::size(symbols))) {
        throw base::run_error("symbol_of: expected an atomic number from 1 to 118, found " + std::to_string(number));
    }
    return symbols[number - 1];
}

int number_of(std::string_view symbol) {
    for (std::size_t i = 0; i < std::size(symbols); ++i) {
        if (same_in_any_case(symbol, symbols[i])) {
            return static_cast<int>(i) + 1;
        }
    }
    return 0;
}

}  // namespace displacement_generator::gaussian
