#include <iterator>

#include "symmetry/symmetry.hpp"

namespace displacement_generator::symmetry {

namespace {

using label = base::text<3>;

// One row a point group: the labels are kept with their blanks, as they are printed.
// clang-format off
constexpr label pg_names[] = {" C1", " CS", " C2", "C2V", "D2H", " CI", "C2H", " D2"};
constexpr int orders[]     = {   1,     2,     2,     4,     8,     2,     4,     4};

constexpr label irreps[][8] = {
    {"N  ", "N  ", "N  ", "N  ", "N  ", "N  ", "N  ", "N  "},  // C1
    {"A' ", "A\" "},                                           // Cs
    {"A  ", "B  "},                                            // C2
    {"A1 ", "A2 ", "B1 ", "B2 "},                              // C2v
    {"Ag ", "Au ", "B1g", "B1u", "B2g", "B2u", "B3g", "B3u"},  // D2h
    {"g  ", "u  "},                                            // Ci
    {"Ag ", "Au ", "Bg ", "Bu "},                              // C2h
    {"A  ", "B1 ", "B2 ", "B3 "},                              // D2
};

constexpr label op_names[] = {"  E", "C2z", "C2y", "C2x", "  I", "Sxy", "Szx", "Syz", "C4z", "C4y", "C4x"};

// One row an operation, its matrix column by column.
constexpr double matrices[] = {
     1, 0, 0,   0, 1, 0,   0, 0, 1,  // E    x,  y,  z
    -1, 0, 0,   0,-1, 0,   0, 0, 1,  // C2z -x, -y,  z
    -1, 0, 0,   0, 1, 0,   0, 0,-1,  // C2y -x,  y, -z
     1, 0, 0,   0,-1, 0,   0, 0,-1,  // C2x  x, -y, -z
    -1, 0, 0,   0,-1, 0,   0, 0,-1,  // I   -x, -y, -z
     1, 0, 0,   0, 1, 0,   0, 0,-1,  // Sxy  x,  y, -z
     1, 0, 0,   0,-1, 0,   0, 0, 1,  // Szx  x, -y,  z
    -1, 0, 0,   0, 1, 0,   0, 0, 1,  // Syz -x,  y,  z
     0,-1, 0,   1, 0, 0,   0, 0, 1,  // C4z  y, -x,  z   +y goes to +x
     0, 0, 1,   0, 1, 0,  -1, 0, 0,  // C4y -z,  y,  x   +x goes to +z
     1, 0, 0,   0, 0,-1,   0, 1, 0,  // C4x  x,  z, -y   +y goes to -z
};
// clang-format on

static_assert(std::size(pg_names) == 8 && std::size(orders) == 8 && std::size(irreps) == 8);
static_assert(std::size(op_names) == 11 && std::size(matrices) == 9 * std::size(op_names));

}  // namespace

constinit const base::view1<const label> pg_name("pg_name", pg_names, 1, 8);
constinit const base::view1<const int> nrep("nrep", orders, 1, 8);
constinit const base::view2<const label> irrep("irrep", irreps[0], 8, 8);
constinit const base::view1<const label> op_name("op_name", op_names, 1, 11);
constinit const base::view3<const double> symm_op("symm_op", matrices, 3, 3, 11);

}  // namespace displacement_generator::symmetry
