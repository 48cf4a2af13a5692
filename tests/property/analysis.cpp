#include "analysis.hpp"

#include <string_view>

#include "element/element.hpp"
#include "symmetry/symmetry.hpp"

namespace displacement_generator::property {

analysis analyse(const molecule& atoms, bool std_orient, int disp_sign) {
    const int natom = static_cast<int>(atoms.size());
    const int n6 = 6 * natom;
    const base::array2<double> x("x", 3, natom);
    const base::array1<base::text<2>> symbol("symbol", 1, natom);
    const base::array1<int> nat("nat", 1, natom);
    const base::array1<double> mass("mass", 1, natom);
    for (int i = 1; i <= natom; ++i) {
        const atom& from = atoms[static_cast<std::size_t>(i - 1)];
        symbol(i) = std::string_view(from.symbol);
        for (int c = 1; c <= 3; ++c) {
            x(c, i) = from.at.at(static_cast<std::size_t>(c - 1));
        }
    }
    element::get_element_name(natom, nat, symbol, "sym->nat");
    element::nat_to_mass(natom, nat, mass);

    const base::array1<int> n_calc_n6("n_calc_n6", 1, n6);
    const base::array1<int> m_calc("m_calc", 1, n6);
    const base::array1<bool> f_calc("f_calc", 1, n6);
    const base::array1<int> m_symm("m_symm", 1, n6);
    const base::array1<bool> op("op", 1, 8);
    const base::array2<int> jrels("jrels", natom, 8);
    analysis result;
    symmetry::point_group(disp_sign, natom, x, nat, mass, 0.001F, std_orient, n6, result.ncalc, n_calc_n6, m_calc,
                          f_calc, m_symm, result.ipg, op, jrels);
    for (int k = 1; k <= 8; ++k) {
        if (op(k)) {
            result.operations.push_back(k);
        }
        std::vector<int>& images = result.jrels.at(static_cast<std::size_t>(k));
        images.push_back(0);
        for (int i = 1; i <= natom; ++i) {
            images.push_back(jrels(i, k));
        }
    }
    result.x.emplace_back();
    for (int i = 1; i <= natom; ++i) {
        result.x.push_back({x(1, i), x(2, i), x(3, i)});
    }
    result.f_calc.push_back(false);
    for (std::vector<int>* list : {&result.n_calc_n6, &result.m_calc, &result.m_symm}) {
        list->push_back(0);
    }
    for (int p = 1; p <= n6; ++p) {
        result.f_calc.push_back(f_calc(p));
        result.n_calc_n6.push_back(n_calc_n6(p));
        result.m_calc.push_back(m_calc(p));
        result.m_symm.push_back(m_symm(p));
    }
    return result;
}

}  // namespace displacement_generator::property
