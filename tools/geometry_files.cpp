#include "geometry_files.hpp"

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

#include "base/fixed_columns.hpp"
#include "file/output_file.hpp"

namespace tools {

namespace {

// An atom line:
//   columns  1- 5 symbol      A5
//           6-16 blank        11X
//          17-58 x, y and z   3F14.8
constexpr int symbol_width = 5;
constexpr int blank_width = 11;
constexpr int coordinate_width = 14;
constexpr int coordinate_decimals = 8;
constexpr int atom_line_size = symbol_width + blank_width + 3 * coordinate_width + 1;

constexpr std::string_view name_head = "coord-";

/// The bytes of the reference file. A displaced file differs from them in the columns of one coordinate.
struct image {
    std::string bytes;
    std::size_t atom_block = 0;  ///< where the first atom line begins

    [[nodiscard]] char* coordinate(int j, int i) {
        return bytes.data() + atom_block + static_cast<std::size_t>(i - 1) * atom_line_size + symbol_width +
               blank_width + static_cast<std::size_t>(j - 1) * coordinate_width;
    }
};

void append_lines(std::string& bytes, base::view1<const base::text<500>> lines, int first, int last) {
    for (int i = first; i <= last; ++i) {
        bytes += lines(i).trimmed();
        bytes += '\n';
    }
}

image reference_image(base::view1<const base::text<500>> lines, int icharge, int iatom_end, int nline, int natom,
                      base::view1<const base::text<2>> symbol, base::view2<const double> x) {
    image reference;
    std::string& bytes = reference.bytes;
    append_lines(bytes, lines, 1, icharge);
    reference.atom_block = bytes.size();
    for (int i = 1; i <= natom; ++i) {
        base::append_text(bytes, symbol_width, symbol(i));
        bytes.append(blank_width, ' ');
        for (int j = 1; j <= 3; ++j) {
            base::append_real(bytes, coordinate_width, coordinate_decimals, x(j, i));
        }
        bytes += '\n';
    }
    append_lines(bytes, lines, iatom_end + 1, nline);
    bytes += '\n';
    return reference;
}

/// The part of a geometry's name that all displacements of an atom share: the atom number with leading zeros.
std::string atom_name(int atom, int ndig_natom) {
    const std::string number = std::to_string(atom);
    std::string name(name_head);
    name.append(static_cast<std::size_t>(ndig_natom) - number.size(), '0');
    name += number;
    return name;
}

/// A list line has the name right-justified in 30 columns.
void write_geometry(const std::string& name, const image& geometry, file_list& list) {
    base::append_text(list.line(), 30, name);
    list.end_line();
    std::string path(work_dir);
    path += '/';
    path += name;
    path += ".com";
    file::output_file output(std::move(path));
    output.write(geometry.bytes);
    output.close();
}

}  // namespace

void write_geometry_files(base::view1<const base::text<500>> lines, int icharge, int iatom_end, int nline, int natom,
                          int ndig_natom, base::view1<const base::text<2>> symbol, base::view2<const double> x,
                          double dx, int disp_sign, base::view1<const bool> f_calc, file_list& list,
                          base::view1<base::text<200>> fnames) {
    image geometry = reference_image(lines, icharge, iatom_end, nline, natom, symbol, x);
    const std::string reference = atom_name(0, ndig_natom) + "-00";
    fnames(0) = std::string_view(reference).substr(name_head.size());
    write_geometry(reference, geometry, list);

    constexpr std::string_view cxyz = "xyz";
    const std::string_view cstep = disp_sign == 1 ? "+-" : "-+";  // the labels only: step 1 always moves by minus dx
    int n = 0;
    for (int i = 1; i <= natom; ++i) {
        std::string name = atom_name(i, ndig_natom) + "-dx";
        char* label = name.data() + name.size() - 3;
        for (int j = 1; j <= 3; ++j) {
            label[2] = cxyz[static_cast<std::size_t>(j - 1)];
            for (int k = 1; k <= 2; ++k) {
                ++n;
                label[0] = cstep[static_cast<std::size_t>(k - 1)];
                base::text_ref(fnames(n)).assign(std::string_view(name).substr(name_head.size()));
                if (!f_calc(n)) {
                    continue;
                }
                char* columns = geometry.coordinate(j, i);
                char unmoved[coordinate_width];
                std::copy_n(columns, coordinate_width, unmoved);
                base::put_real(columns, coordinate_width, coordinate_decimals, x(j, i) + (2 * k - 3) * dx);
                write_geometry(name, geometry, list);
                std::copy_n(unmoved, coordinate_width, columns);
            }
        }
    }
}

}  // namespace tools
