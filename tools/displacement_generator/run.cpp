#include "run.hpp"

#include <unistd.h>

#include <climits>
#include <limits>
#include <string>
#include <string_view>

#include "base/array.hpp"
#include "base/error.hpp"
#include "element/element.hpp"
#include "file/file.hpp"
#include "file/output_file.hpp"
#include "file_list.hpp"
#include "geometry_files.hpp"
#include "gjf/gjf.hpp"
#include "info_block.hpp"
#include "symmetry/symmetry.hpp"

namespace displacement_generator::generator {

namespace {

/// Positions within this distance count as the same, in the units of the input: the single-precision 0.001, widened.
constexpr double tol = 0.001F;

constexpr int nop_max = 8;

/// The message about an input that does not open: where its name is set, where it was looked for, and the reason.
std::string explained(const control& settings, const std::string& reason) {
    const std::string_view name = settings.fxyz.trimmed();
    const std::string key = settings.fxyz_place + ": key 'fxyz': ";
    if (name.empty()) {
        return key + "expected the path of the Gaussian input, found none";
    }
    char folder[PATH_MAX];
    const bool relative = name.front() != '/' && ::getcwd(folder, sizeof folder) != nullptr;
    return key + "cannot open '" + base::shown(name, 200) + "'" +
           (relative ? " in the folder '" + base::shown(folder, 200) + "'" : "") + ": " + reason;
}

/// A number for each displacement must fit an integer.
int displacement_count(int natom) {
    constexpr int per_atom = 6;
    constexpr int most = std::numeric_limits<int>::max() / per_atom;
    if (natom > most) {
        throw base::run_error("found " + std::to_string(natom) + " atoms, expected at most " + std::to_string(most));
    }
    return per_atom * natom;
}

/// What `nat` and `mass` hold where the tables know nothing: 0, and a mass that no element has and that differs from
/// symbol to symbol, so that atoms of two unknown symbols are never taken for each other.
void preset_elements(int natom, base::view1<const base::text<2>> symbol, base::view1<int> nat,
                     base::view1<double> mass) {
    for (int i = 1; i <= natom; ++i) {
        const auto first = static_cast<unsigned char>(symbol(i).characters[0]);
        const auto second = static_cast<unsigned char>(symbol(i).characters[1]);
        nat(i) = 0;
        mass(i) = -1.0 - (256.0 * first + second);
    }
}

/// The operations of the group in ascending order, and the place of each in that list.
void list_operations(base::view1<const bool> op, int& nop, base::view1<int> ops, base::view1<int> opr) {
    nop = 0;
    for (int k = 1; k <= nop_max; ++k) {
        opr(k) = 0;
        if (op(k)) {
            ++nop;
            ops(nop) = k;
            opr(k) = nop;
        }
    }
}

/// The result of the symmetry analysis where none is wanted: every displacement is computed, and every operation is the
/// identity, left-justified in its three characters.
void set_no_symmetry(int natom, int ndisp, int& ncalc, base::view1<int> m_calc, base::view2<int> jrels,
                     base::view1<bool> f_calc, base::view1<int> opr, base::view1<base::text<3>> op_name, int& ipg,
                     int& nop, base::view1<int> ops, base::view1<int> m_symm) {
    ncalc = ndisp;
    ipg = 1;
    nop = 1;
    for (int k = 1; k <= nop_max; ++k) {
        ops(k) = 1;
        opr(k) = 1;
        for (int i = 1; i <= natom; ++i) {
            jrels(i, k) = i;
        }
    }
    for (int k = 1; k <= op_name.upper(); ++k) {
        op_name(k) = "E  ";
    }
    for (int i = 1; i <= ndisp; ++i) {
        m_calc(i) = i;
        f_calc(i) = true;
        m_symm(i) = 1;
    }
}

void run_stages(const control& settings) {
    const base::text<200>& fxyz = settings.fxyz;

    const int nline = file::num_file_lines(fxyz);
    const base::array1<base::text<500>> lines("lines", 1, nline, base::unset());
    file::read_lines(fxyz, nline, lines);

    int icharge = 0;
    int iatom = 0;
    int natom = 0;
    gjf::get_gjf_charge_linenumber(fxyz, icharge);
    gjf::get_gjf_atom_linenumber(fxyz, iatom);
    gjf::get_gjf_natom(fxyz, natom);
    const int iatom_end = iatom + natom - 1;

    const base::array2<double> x("x", 3, natom);
    const base::array1<int> nat("nat", 1, natom);
    const base::array1<double> mass("mass", 1, natom);
    const base::array1<base::text<2>> symbol("symbol", 1, natom);
    const base::array2<int> jrels("jrels", natom, nop_max);
    gjf::get_gjf_coord(fxyz, natom, x, symbol);
    const int ndig_natom = static_cast<int>(std::to_string(natom).size());

    preset_elements(natom, symbol, nat, mass);
    element::get_element_name(natom, nat, symbol, "sym->nat");
    element::nat_to_mass(natom, nat, mass);

    const int ndisp = displacement_count(natom);
    const base::array1<int> m_symm("m_symm", 1, ndisp);
    const base::array1<int> n_calc_n6("n_calc_n6", 1, ndisp);
    const base::array1<int> m_calc("m_calc", 1, ndisp);
    const base::array1<bool> f_calc("f_calc", 1, ndisp);
    const base::array1<base::text<200>> fnames("fnames", 0, ndisp, base::unset());

    int ncalc = 0;
    int ipg = 1;
    int nop = 0;
    const base::array1<bool> op("op", 1, nop_max);
    const base::array1<int> ops("ops", 1, nop_max);
    const base::array1<int> opr("opr", 1, nop_max);
    const base::array1<base::text<3>> op_name("op_name", 1, symmetry::op_name.upper());
    if (settings.symm) {
        symmetry::point_group(settings.disp_sign, natom, x, nat, mass, tol, settings.std_orient, ndisp, ncalc,
                              n_calc_n6, m_calc, f_calc, m_symm, ipg, op, jrels);
        list_operations(op, nop, ops, opr);
        for (int k = 1; k <= op_name.upper(); ++k) {
            op_name(k) = symmetry::op_name(k);
        }
    } else {
        set_no_symmetry(natom, ndisp, ncalc, m_calc, jrels, f_calc, opr, op_name, ipg, nop, ops, m_symm);
    }

    try {
        file_list list(natom, ncalc, settings.dx);
        write_geometry_files(lines, icharge, iatom_end, nline, natom, ndig_natom, symbol, x, settings.dx,
                             settings.disp_sign, f_calc, list, fnames);
        write_info_block(ipg, nop, ops, opr, op_name, natom, jrels, nat, symbol, ndisp, ncalc, f_calc, m_calc, m_symm,
                         fnames, list);
    } catch (const file::no_room& full) {
        const long long files = ncalc + 1LL;
        const long long bytes =
            file_list::head_size + info_block_size(nop, natom, ndisp) +
            files * (file_list::name_size + geometry_file_size(lines, icharge, iatom_end, nline, natom));
        throw base::run_error(std::string(full.what()) + "; the whole run needs " + std::to_string(bytes) +
                              " bytes in " + std::to_string(files + 1) + " files");
    }
}

}  // namespace

void run(const control& settings) {
    try {
        run_stages(settings);
    } catch (const base::run_error& error) {
        if (error.stream != base::message_stream::standard_output) {
            throw;
        }
        throw base::run_error(error.what(), error.stream, error.exit_status, explained(settings, error.detail));
    }
}

}  // namespace displacement_generator::generator
