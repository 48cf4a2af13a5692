#include <cstddef>

#include "base/array.hpp"
#include "frame/frame.hpp"
#include "frame/generator_rules.hpp"
#include "symmetry/symmetry.hpp"

namespace displacement_generator::frame {

generator_finding apply_generator_rules(const std::vector<int>& kinds, const Eigen::Matrix3Xd& positions) {
    const auto natom = static_cast<int>(kinds.size());
    const int n6 = 6 * natom;
    const base::array2<double> x("x", 3, natom);
    const base::array1<int> nat("nat", 1, natom);
    const base::array1<double> mass("mass", 1, natom);  // 0: the kind alone tells atoms apart
    for (int i = 1; i <= natom; ++i) {
        nat(i) = kinds[static_cast<std::size_t>(i) - 1];
        for (int c = 1; c <= 3; ++c) {
            x(c, i) = positions(c - 1, i - 1);
        }
    }
    const base::array1<int> n_calc_n6("n_calc_n6", 1, n6);
    const base::array1<int> m_calc("m_calc", 1, n6);
    const base::array1<bool> f_calc("f_calc", 1, n6);
    const base::array1<int> m_symm("m_symm", 1, n6);
    const base::array1<bool> op("op", 1, 8);
    const base::array2<int> jrels("jrels", natom, 8);
    generator_finding found;
    constexpr int disp_sign = -1;       // the default; the count does not depend on it
    constexpr bool std_orient = false;  // quarter turns change which operation is which, not how many points follow
    symmetry::point_group(disp_sign, natom, x, nat, mass, generator_tolerance, std_orient, n6, found.count.computed,
                          n_calc_n6, m_calc, f_calc, m_symm, found.count.group, op, jrels);
    for (unsigned flips = 0; flips < operations; ++flips) {
        if (op(operation_number[flips])) {
            found.present |= 1U << flips;
        }
    }
    return found;
}

displacement_count count_displacements(const std::vector<int>& kinds, const Eigen::Matrix3Xd& positions) {
    return apply_generator_rules(kinds, positions).count;
}

}  // namespace displacement_generator::frame
