#include "check_prepared.hpp"

#include <string_view>

#include "base/array.hpp"
#include "base/error.hpp"
#include "base/text.hpp"
#include "element/element.hpp"
#include "file/file.hpp"
#include "gaussian/symbols.hpp"
#include "gjf/gjf.hpp"
#include "symmetry/symmetry.hpp"

namespace displacement_generator::preparer {

namespace {

[[noreturn]] void differs(const std::string& what) {
    throw base::run_error("the prepared input is not what was meant, which is a fault of this program: " + what);
}

void check_equal(int found, int expected, const std::string& what) {
    if (found != expected) {
        differs("expected " + std::to_string(expected) + " " + what + ", found " + std::to_string(found));
    }
}

void check_charge(const std::string& path, const gaussian::molecule& meant) {
    int icharge = 0;
    gjf::get_gjf_charge_linenumber(path, icharge);
    const int nline = file::num_file_lines(path);
    const base::array1<base::text<200>> lines("lines", 1, nline, base::unset());
    file::read_lines(path, nline, lines);
    const std::string expected = std::to_string(meant.charge) + " " + std::to_string(meant.multiplicity);
    if (lines(icharge).trimmed() != expected) {
        differs("expected charge and multiplicity '" + expected + "', found '" + base::shown(lines(icharge).trimmed()) +
                "'");
    }
}

/// What the generator presets where its table knows no symbol: a mass that no other symbol has.
double mass_of_unknown(const base::text<2>& symbol) {
    const auto first = static_cast<unsigned char>(symbol.characters[0]);
    const auto second = static_cast<unsigned char>(symbol.characters[1]);
    return -1.0 - (256.0 * first + second);
}

void check_atom(int i, const gaussian::molecule& meant, base::view1<const double> x, std::string_view symbol) {
    const std::string_view expected = gaussian::symbol_of(meant.numbers[static_cast<std::size_t>(i) - 1]);
    if (base::trimmed(symbol) != expected) {
        differs("expected symbol '" + std::string(expected) + "' of atom " + std::to_string(i) + ", found '" +
                base::shown(symbol) + "'");
    }
    for (int c = 1; c <= 3; ++c) {
        if (x(c) != meant.positions(c - 1, i - 1)) {
            differs("expected coordinate " + std::to_string(meant.positions(c - 1, i - 1)) + " of atom " +
                    std::to_string(i) + ", found " + std::to_string(x(c)));
        }
    }
}

}  // namespace

void check_prepared(const std::string& path, const gaussian::molecule& meant,
                    const frame::displacement_count& promised) {
    check_charge(path, meant);
    int natom = 0;
    gjf::get_gjf_natom(path, natom);
    check_equal(natom, static_cast<int>(meant.numbers.size()), "atoms");
    const base::array2<double> x("x", 3, natom);
    const base::array1<base::text<2>> symbol("symbol", 1, natom);
    gjf::get_gjf_coord(path, natom, x, symbol);
    const base::array1<int> nat("nat", 1, natom);
    const base::array1<double> mass("mass", 1, natom);
    for (int i = 1; i <= natom; ++i) {
        check_atom(i, meant, x.column(i), symbol(i));
        nat(i) = 0;
        mass(i) = mass_of_unknown(symbol(i));
    }
    element::get_element_name(natom, nat, symbol, "sym->nat");
    element::nat_to_mass(natom, nat, mass);

    const int ndisp = 6 * natom;
    const base::array1<int> n_calc_n6("n_calc_n6", 1, ndisp);
    const base::array1<int> m_calc("m_calc", 1, ndisp);
    const base::array1<bool> f_calc("f_calc", 1, ndisp);
    const base::array1<int> m_symm("m_symm", 1, ndisp);
    const base::array1<bool> op("op", 1, 8);
    const base::array2<int> jrels("jrels", natom, 8);
    constexpr int disp_sign = -1;
    int ncalc = 0;
    int ipg = 0;
    symmetry::point_group(disp_sign, natom, x, nat, mass, frame::generator_tolerance, true, ndisp, ncalc, n_calc_n6,
                          m_calc, f_calc, m_symm, ipg, op, jrels);
    check_equal(ipg, promised.group, "as number of the point group");
    check_equal(ncalc, promised.computed, "displacements to compute");
}

}  // namespace displacement_generator::preparer
