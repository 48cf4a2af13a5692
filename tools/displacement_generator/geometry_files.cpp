#include "geometry_files.hpp"

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

#include "base/fixed_columns.hpp"
#include "file/output_file.hpp"

namespace displacement_generator::generator {

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

/// The bytes of the reference file. A displaced file differs from them in the columns of one coordinate.
struct image {
    std::string bytes;
    std::size_t atom_block = 0;  ///< where the first atom line begins

    [[nodiscard]] char* atom_line(int i) {
        return bytes.data() + atom_block + static_cast<std::size_t>(i - 1) * atom_line_size;
    }
    [[nodiscard]] char* coordinate(int j, int i) {
        return atom_line(i) + symbol_width + blank_width + static_cast<std::size_t>(j - 1) * coordinate_width;
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
    bytes.append(static_cast<std::size_t>(std::max(natom, 0)) * atom_line_size, ' ');
    for (int i = 1; i <= natom; ++i) {
        base::put_text(reference.atom_line(i), symbol_width, symbol(i));
        for (int j = 1; j <= 3; ++j) {
            base::put_real(reference.coordinate(j, i), coordinate_width, coordinate_decimals, x(j, i));
        }
        reference.atom_line(i)[atom_line_size - 1] = '\n';
    }
    append_lines(bytes, lines, iatom_end + 1, nline);
    bytes += '\n';
    return reference;
}

/// The beginning of an atom's tags: its number, with leading zeros.
void put_atom_number(base::text<200>& tag, int atom, int ndig_natom) {
    base::put_integer(tag.characters, ndig_natom, atom);
    std::replace(tag.characters, tag.characters + ndig_natom, ' ', '0');
}

/// A list line has the name right-justified in 30 columns.
void write_geometry(std::string_view tag, const image& geometry, file_list& list) {
    std::string path(work_dir);
    path += "/coord-";
    path += tag;
    char row[31];
    base::put_text(row, 30, std::string_view(path).substr(work_dir.size() + 1));
    row[30] = '\n';
    list.write({row, sizeof row});
    path += ".com";
    file::output_file output(std::move(path));
    output.write(geometry.bytes);
    output.close();
}

long long lines_size(base::view1<const base::text<500>> lines, int first, int last) {
    long long size = 0;
    for (int i = first; i <= last; ++i) {
        size += static_cast<long long>(lines(i).trimmed().size()) + 1;
    }
    return size;
}

}  // namespace

long long geometry_file_size(base::view1<const base::text<500>> lines, int icharge, int iatom_end, int nline,
                             int natom) {
    constexpr long long empty_line = 1;
    return lines_size(lines, 1, icharge) + static_cast<long long>(natom) * atom_line_size +
           lines_size(lines, iatom_end + 1, nline) + empty_line;
}

void write_geometry_files(base::view1<const base::text<500>> lines, int icharge, int iatom_end, int nline, int natom,
                          int ndig_natom, base::view1<const base::text<2>> symbol, base::view2<const double> x,
                          double dx, int disp_sign, base::view1<const bool> f_calc, file_list& list,
                          base::view1<base::text<200>> fnames) {
    image geometry = reference_image(lines, icharge, iatom_end, nline, natom, symbol, x);
    const auto sign_at = static_cast<std::size_t>(ndig_natom);
    const std::size_t tag_size = sign_at + 3;
    base::text<200> tag;
    put_atom_number(tag, 0, ndig_natom);
    std::copy_n("-00", 3, tag.characters + sign_at);
    fnames(0) = tag;
    write_geometry({tag.characters, tag_size}, geometry, list);

    constexpr std::string_view cxyz = "xyz";
    const std::string_view cstep = disp_sign == 1 ? "+-" : "-+";  // the labels only: step 1 always moves by minus dx
    int n = 0;
    for (int i = 1; i <= natom; ++i) {
        put_atom_number(tag, i, ndig_natom);
        tag.characters[sign_at + 1] = 'd';
        for (int j = 1; j <= 3; ++j) {
            tag.characters[sign_at + 2] = cxyz[static_cast<std::size_t>(j - 1)];
            for (int k = 1; k <= 2; ++k) {
                ++n;
                tag.characters[sign_at] = cstep[static_cast<std::size_t>(k - 1)];
                fnames(n) = tag;
                if (!f_calc(n)) {
                    continue;
                }
                char* columns = geometry.coordinate(j, i);
                char unmoved[coordinate_width];
                std::copy_n(columns, coordinate_width, unmoved);
                base::put_real(columns, coordinate_width, coordinate_decimals, x(j, i) + (2 * k - 3) * dx);
                write_geometry({tag.characters, tag_size}, geometry, list);
                std::copy_n(unmoved, coordinate_width, columns);
            }
        }
    }
}

}  // namespace displacement_generator::generator
