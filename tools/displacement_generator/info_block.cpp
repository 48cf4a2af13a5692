#include "info_block.hpp"

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

#include "base/fixed_columns.hpp"
#include "symmetry/symmetry.hpp"

namespace displacement_generator::generator {

namespace {

using base::append_integer;
using base::append_text;

/// A label of 21 characters, then the value: A10 or I10.
void write_labelled(file_list& list, std::string_view label, std::string_view value) {
    list.line() += label;
    append_text(list.line(), 10, value);
    list.end_line();
}

void write_labelled(file_list& list, std::string_view label, int value) {
    list.line() += label;
    append_integer(list.line(), 10, value);
    list.end_line();
}

void write_line(file_list& list, std::string_view line) {
    list.line() += line;
    list.end_line();
}

/// For each operation present:
///   columns 1-9 "Operation"  10-19 its place, I10  20-29 its label, A10
/// and three lines, the rows of its matrix: 3F15.9.
void write_operations(file_list& list, int nop, base::view1<const int> ops, base::view1<const base::text<3>> op_name) {
    write_line(list, "Operation     matrix:");
    for (int n = 1; n <= nop; ++n) {
        list.line() += "Operation";
        append_integer(list.line(), 10, n);
        append_text(list.line(), 10, op_name(ops(n)));
        list.end_line();
        const base::view2<const double> matrix = symmetry::symm_op.matrix(ops(n));
        for (int row = 1; row <= 3; ++row) {
            for (int column = 1; column <= 3; ++column) {
                base::append_real(list.line(), 15, 9, matrix(row, column));
            }
            list.end_line();
        }
    }
}

/// A row an atom, columns of 8: its number, symbol and atomic number, then its image under each operation present.
void write_correspondence(file_list& list, int nop, base::view1<const int> ops,
                          base::view1<const base::text<3>> op_name, int natom, base::view2<const int> jrels,
                          base::view1<const int> nat, base::view1<const base::text<2>> symbol) {
    write_line(list, "Atom correspondance:");
    append_text(list.line(), 8, "n");
    append_text(list.line(), 8, "symbol");
    append_text(list.line(), 8, "nat");
    for (int k = 1; k <= nop; ++k) {
        append_text(list.line(), 8, op_name(ops(k)));
    }
    list.end_line();
    std::string row(static_cast<std::size_t>(8 * (3 + nop)), ' ');
    row += '\n';
    for (int i = 1; i <= natom; ++i) {
        char* field = row.data();
        base::put_integer(field, 8, i);
        base::put_text(field += 8, 8, symbol(i));
        base::put_integer(field += 8, 8, nat(i));
        for (int k = 1; k <= nop; ++k) {
            base::put_integer(field += 8, 8, jrels(i, ops(k)));
        }
        list.write(row);
    }
}

/// A row of the point table, 50 columns:
///   columns  1- 8 n        I8     the point, 0 for the reference geometry
///           11-18 file     A8     the first characters of its tag, left-justified
///           19-26 is_calc  A8     T when it is computed
///           27-34 m        I8     the computed point that it follows from
///           35-42 num(op)  I8     the place of the operation among those present
///           43-50 op       A8     the operation's label
void write_point(file_list& list, int n, const base::text<200>& tag, bool is_calc, int m, int num_op,
                 std::string_view op) {
    char row[51];
    base::put_integer(row, 8, n);
    base::put_text(row + 8, 2, "");
    std::copy_n(tag.characters, 8, row + 10);
    base::put_text(row + 18, 8, {is_calc ? "T" : "F", 1});
    base::put_integer(row + 26, 8, m);
    base::put_integer(row + 34, 8, num_op);
    base::put_text(row + 42, 8, op);
    row[50] = '\n';
    list.write({row, sizeof row});
}

}  // namespace

long long info_block_size(int nop, int natom, int ndisp) {
    constexpr long long fixed_lines = 16 + 22 + 21 + 51 + 14;  // the first and the last line, and three headings
    constexpr long long labelled_lines = 4LL * 32;
    constexpr long long operation = 30 + 3LL * 46;
    constexpr long long point = 51;
    const long long atom = 8LL * (3 + nop) + 1;
    return fixed_lines + labelled_lines + nop * operation + (natom + 1LL) * atom + (ndisp + 1LL) * point;
}

void write_info_block(int ipg, int nop, base::view1<const int> ops, base::view1<const int> opr,
                      base::view1<const base::text<3>> op_name, int natom, base::view2<const int> jrels,
                      base::view1<const int> nat, base::view1<const base::text<2>> symbol, int ndisp, int ncalc,
                      base::view1<const bool> f_calc, base::view1<const int> m_calc, base::view1<const int> m_symm,
                      base::view1<const base::text<200>> fnames, file_list& list) {
    write_line(list, "Begin_vesk_info");
    write_labelled(list, "Point          group:", symmetry::pg_name(ipg));
    write_labelled(list, "Number of operations:", symmetry::nrep(ipg));
    write_operations(list, nop, ops, op_name);
    write_correspondence(list, nop, ops, op_name, natom, jrels, nat, symbol);
    write_labelled(list, "Total         points:", ndisp);
    write_labelled(list, "Calculated    points:", ncalc);
    write_line(list, "       n      file is_calc       m num(op)      op");
    write_point(list, 0, fnames(0), true, 0, 1, "E");
    for (int n = 1; n <= ndisp; ++n) {
        write_point(list, n, fnames(n), f_calc(n), m_calc(n), opr(m_symm(n)), op_name(m_symm(n)));
    }
    list.close("End_vesk_info");
}

}  // namespace displacement_generator::generator
