#include "symmetry/operations.hpp"
#include "symmetry/symmetry.hpp"

namespace symmetry {

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

}  // namespace

void point_group(int disp_sign, int natom, base::view2<double> x, base::view1<const int> nat,
                 base::view1<const double> mass, double tol, bool std_orient, int n6, int& ncalc,
                 base::view1<int> n_calc_n6, base::view1<int> m_calc, base::view1<bool> f_calc, base::view1<int> m_symm,
                 int& ipg, base::view1<bool> op, base::view2<int> jrels) {
    const int nop = search_operations(natom, x, nat, mass, tol, op, jrels);
    symmetry::std_orient(natom, x, nop, ipg, op, std_orient);
    search_operations(natom, x, nat, mass, tol, op, jrels);  // turning has changed which operation is which
    search_symm_xyz(disp_sign, natom, x, symm_op, jrels, op, tol, n6, ncalc, f_calc, n_calc_n6, m_calc, m_symm);
}

}  // namespace symmetry
