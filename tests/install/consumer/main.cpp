#include <iostream>

#include "element/element.hpp"
#include "file/file.hpp"
#include "gjf/gjf.hpp"
#include "symmetry/symmetry.hpp"

int main(int, char** argv) {
    const std::string_view input = argv[1];
    int natom = 0;
    int fid = 0;
    gjf::get_gjf_natom(input, natom);
    file::get_free_fid(fid);
    std::cout << file::name_base(input) << ": " << file::num_file_lines(input) << " lines, " << natom << " atoms, unit "
              << fid << ", operation " << symmetry::op_name(5).trimmed() << ", group " << symmetry::pg_name(6).trimmed()
              << ", symbol " << element::atom(8).trimmed() << '\n';
}
