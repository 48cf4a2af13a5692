#include <algorithm>
#include <cstddef>
#include <cstring>

#include "symmetry/operations.hpp"
#include "symmetry/symmetry.hpp"

namespace displacement_generator::symmetry {

namespace {

/// Looks for operations 1..8. Result: how many are present.
int search_operations(int natom, base::view2<const double> x, base::view1<const int> nat,
                      base::view1<const double> mass, double tol, base::view1<bool> op, base::view2<int> jrels) {
    int nop = 0;
    for (int k = 1; k <= tested_operations; ++k) {
        search_op(natom, x, nat, mass, symm_op.matrix(k), jrels.column(k), op(k), tol);
        nop += op(k) ? 1 : 0;
    }
    return nop;
}

void copy(int natom, base::view2<const double> from, base::view2<double> to) {
    std::copy_n(from.first_of(natom), 3 * std::max(natom, 0), to.first_of(natom));
}

bool is_same(int natom, base::view2<const double> a, base::view2<const double> b) {
    return natom < 1 ||
           std::memcmp(a.first_of(natom), b.first_of(natom), 3 * static_cast<std::size_t>(natom) * sizeof(double)) == 0;
}

}  // namespace

void point_group(int disp_sign, int natom, base::view2<double> x, base::view1<const int> nat,
                 base::view1<const double> mass, double tol, bool std_orient, int n6, int& ncalc,
                 base::view1<int> n_calc_n6, base::view1<int> m_calc, base::view1<bool> f_calc, base::view1<int> m_symm,
                 int& ipg, base::view1<bool> op, base::view2<int> jrels) {
    base::array2<double> given("given", 3, natom);
    copy(natom, x, given);
    const int nop = search_operations(natom, x, nat, mass, tol, op, jrels);
    symmetry::std_orient(natom, x, nop, ipg, op, std_orient);
    // Turning changes which operation is which. Of coordinates that are the same to the last bit the search, which
    // depends on nothing else, would give the same once more.
    if (!is_same(natom, x, given)) {
        search_operations(natom, x, nat, mass, tol, op, jrels);
    }
    search_symm_xyz(disp_sign, natom, x, symm_op, jrels, op, tol, n6, ncalc, f_calc, n_calc_n6, m_calc, m_symm);
}

}  // namespace displacement_generator::symmetry
