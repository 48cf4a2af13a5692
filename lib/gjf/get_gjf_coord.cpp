#include <algorithm>
#include <string>

#include "base/error.hpp"
#include "base/free_format.hpp"
#include "gjf/gjf.hpp"
#include "gjf/sections.hpp"

namespace displacement_generator::gjf {

namespace {

/// What the next field of an atom line is instead of the number that was expected.
std::string found_instead(base::field_kind kind, std::string_view field, base::number_status status) {
    if (kind == base::field_kind::value) {
        return (status == base::number_status::out_of_range ? "a number that is too large, '" : "'") +
               base::shown(field) + "'";
    }
    return kind == base::field_kind::null ? "nothing between two commas" : "no more fields";
}

/// Whether an atom line is one of a Z-matrix: after the symbol, pairs of the number of an earlier atom and a length or
/// an angle, one pair for each earlier atom up to three.
///   j       in  number of the atom
///   symbol  in
///   after   in  the line after its symbol
bool is_zmatrix_line(int j, const base::text<2>& symbol, std::string_view after) {
    const char first = symbol.characters[0];
    if (after.find('/') != std::string_view::npos ||
        !((first >= 'A' && first <= 'Z') || (first >= 'a' && first <= 'z'))) {
        return false;
    }
    int fields = 0;
    for (;;) {
        std::string_view field;
        const base::field_kind kind = base::next_field(after, field);
        if (kind == base::field_kind::end) {
            return fields == 2 * std::min(j - 1, 3);
        }
        ++fields;
        int earlier = 0;
        if (fields % 2 == 1 &&
            (base::read_integer(field, earlier) != base::number_status::ok || earlier < 1 || earlier >= j)) {
            return false;
        }
    }
}

void read_atom(const input_lines& input, int iatom, int j, base::view1<double> xyz, base::text<2>& symbol) {
    const int line_number = iatom + j - 1;
    const auto stop = [&](const std::string& what) {
        const int last_title = iatom - 3;  // before a blank line and the charge
        throw base::run_error(input.name + ":" + std::to_string(line_number) + ": " + what +
                              long_title_hint(find_title(input), last_title));
    };
    const std::string_view line = input.lines(line_number).trimmed();
    std::string_view rest = line;
    if (base::next_text(rest, symbol) != base::field_kind::value) {
        stop("expected an element symbol and three numbers, found '" + base::shown(base::left_adjusted(line)) + "'");
    }
    const std::string_view after_symbol = rest;
    for (int i = 1; i <= 3; ++i) {
        std::string_view field;
        const base::field_kind kind = base::next_field(rest, field);
        const base::number_status status = base::read_real(field, xyz(i));
        if (kind != base::field_kind::value || status != base::number_status::ok) {
            stop("expected three numbers after the symbol '" + base::shown(symbol.trimmed()) + "', found " +
                 std::to_string(i - 1) + " and then " + found_instead(kind, field, status) +
                 (is_zmatrix_line(j, symbol, after_symbol) ? "; this looks like a Z-matrix, Cartesian coordinates are "
                                                             "needed: displacement_preparer makes them"
                                                           : ""));
        }
    }
}

}  // namespace

void get_gjf_coord(std::string_view fname, int natom, base::view2<double> xyz, base::view1<base::text<2>> symbol) {
    const input_lines input(fname);
    const int iatom = find_atom(input);
    for (int j = 1; j <= natom; ++j) {
        read_atom(input, iatom, j, xyz.column(j), symbol(j));
    }
}

}  // namespace displacement_generator::gjf
