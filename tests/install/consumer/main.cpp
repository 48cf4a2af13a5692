#include <iostream>

#include <displacement_generator/element/element.hpp>
#include <displacement_generator/file/file.hpp>
#include <displacement_generator/gjf/gjf.hpp>
#include <displacement_generator/symmetry/symmetry.hpp>

using namespace displacement_generator;

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
