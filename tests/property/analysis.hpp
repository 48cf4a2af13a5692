#pragma once

#include <array>
#include <vector>

#include "molecules.hpp"

namespace displacement_generator::property {

/// What the symmetry analysis says of a molecule, counted from 1 as it counts: element 0 of every list is not used.
struct analysis {
    int ipg = 0;
    std::vector<int> operations;
    std::array<std::vector<int>, 9> jrels;
    int ncalc = 0;
    std::vector<bool> f_calc;
    std::vector<int> n_calc_n6;
    std::vector<int> m_calc;
    std::vector<int> m_symm;
    std::vector<point> x;  ///< as it was turned
};

analysis analyse(const molecule& atoms, bool std_orient, int disp_sign = -1);

}  // namespace displacement_generator::property
