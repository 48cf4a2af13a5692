#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <numeric>

#include "symmetry/operations.hpp"
#include "symmetry/symmetry.hpp"

namespace displacement_generator::symmetry {

namespace {

/// The displacements of one atom in the order of its points: x step 1, x step 2, y step 1, ...
constexpr int displacements = 6;

/// carries[from]: the displacements `to` into whose unit vector an operation turns that of `from`, as bits 1 << to.
using carries = std::array<unsigned, displacements>;

/// Whether step 1 is the negative one and step 2 the positive one or the other way round does not matter: both vectors
/// of every pair change sign, and their distance stays what it is to the last bit.
void set_unit_vector(int displacement, base::view2<double> v) {
    for (int i = 1; i <= 3; ++i) {
        v(i, 1) = 0.0;
    }
    v(displacement / 2 + 1, 1) = displacement % 2 == 0 ? -1.0 : 1.0;
}

carries find_carries(base::view2<const double> r, double tol) {
    double turned[3];
    double other[3];
    const base::view2<double> v1("v1", turned, 3, 1);
    const base::view2<double> vj("vj", other, 3, 1);
    carries result{};
    for (int from = 0; from < displacements; ++from) {
        set_unit_vector(from, v1);
        rotn(1, r, v1);
        for (int to = 0; to < displacements; ++to) {
            set_unit_vector(to, vj);
            double sum = 0.0;
            for (int i = 1; i <= 3; ++i) {
                sum += (v1(i, 1) - vj(i, 1)) * (v1(i, 1) - vj(i, 1));
            }
            if (tol >= std::sqrt(sum)) {
                result[static_cast<std::size_t>(from)] |= 1U << to;
            }
        }
    }
    return result;
}

/// For every atom i and operation g the atoms j with jrels(j, g) = i, chained in ascending order: looking for them
/// costs no more than there are, whatever the correspondence is.
struct atom_chains {
    base::array2<int> first;  ///< (natom, 8) the lowest j, or 0
    base::array2<int> next;   ///< (natom, 8) the next j after j, or 0

    atom_chains(int natom, base::view2<const int> jrels)
        : first("first", natom, tested_operations), next("next", natom, tested_operations) {
        for (int g = 1; g <= tested_operations; ++g) {
            const int* image = jrels.column(g).first_of(natom);  // atom j is element j - 1
            int* lowest = first.column(g).first_of(natom);
            int* after = next.column(g).first_of(natom);
            for (int j = natom; j >= 1; --j) {
                if (const int i = image[j - 1]; i >= 1 && i <= natom) {
                    after[j - 1] = lowest[i - 1];
                    lowest[i - 1] = j;
                }
            }
        }
    }
};

}  // namespace

void search_symm_xyz(int /*disp_sign*/, int natom, base::view2<const double> /*x*/, base::view3<const double> matrices,
                     base::view2<const int> jrels, base::view1<const bool> op, double tol, int n6, int& ncalc,
                     base::view1<bool> f_calc, base::view1<int> n_calc_n6, base::view1<int> m_calc,
                     base::view1<int> m_symm) {
    ncalc = 0;
    const auto points = static_cast<std::size_t>(std::max(n6, 0));
    std::fill_n(f_calc.first_of(n6), points, true);
    std::fill_n(n_calc_n6.first_of(n6), points, 0);
    std::iota(m_calc.first_of(n6), m_calc.first_of(n6) + points, 1);
    std::fill_n(m_symm.first_of(n6), points, static_cast<int>(identity));
    std::array<carries, tested_operations + 1> by_operation{};
    for (int g = identity; g <= tested_operations; ++g) {
        by_operation[static_cast<std::size_t>(g)] = find_carries(matrices.matrix(g), tol);
    }
    const atom_chains chains(natom, jrels);

    for (int p = 1; p <= n6; ++p) {
        if (!f_calc(p)) {
            continue;
        }
        n_calc_n6(++ncalc) = p;
        const int i = (p - 1) / displacements + 1;
        const auto from = static_cast<std::size_t>((p - 1) % displacements);
        for (int g = identity + 1; g <= tested_operations; ++g) {
            if (!op(g)) {
                continue;
            }
            const unsigned carried = by_operation[static_cast<std::size_t>(g)][from];
            for (int j = chains.first(i, g); j != 0; j = chains.next(j, g)) {
                if (j < i) {
                    continue;  // the points of lower atoms are settled
                }
                for (unsigned left = carried; left != 0;) {
                    const int to = std::countr_zero(left);
                    left &= left - 1;
                    const int q = displacements * (j - 1) + to + 1;
                    if (!f_calc(q) || q == p) {
                        continue;
                    }
                    f_calc(q) = false;
                    m_calc(q) = p;
                    m_symm(q) = g;
                    left &= ~(3U << (to & ~1));  // one step of a direction is enough: the other one is not tried
                }
            }
        }
    }
}

}  // namespace displacement_generator::symmetry
