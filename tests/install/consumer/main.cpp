#include <iostream>
#include <string>
#include <utility>

#include <displacement_generator/element/element.hpp>
#include <displacement_generator/file/file.hpp>
#include <displacement_generator/gjf/gjf.hpp>
#include <displacement_generator/symmetry/symmetry.hpp>

using namespace displacement_generator;

template <class type>
concept has_a_folder = requires(type&& name) {
    file::name_dir(std::forward<type>(name));
};
static_assert(has_a_folder<std::string&> && has_a_folder<const char*> && !has_a_folder<std::string>);

int main(int, char** argv) {
    const std::string_view input = argv[1];
    int natom = 0;
    int fid = 0;
    gjf::get_gjf_natom(input, natom);
    file::get_free_fid(fid);
    const base::array1<int> nat("nat", 1, 1);
    const base::array1<base::text<2>> symbol("symbol", 1, 1);
    symbol(1) = std::string("Cl");
    element::get_element_name(1, nat, base::view1<base::text<2>>(symbol), "sym->nat ");
    if (symbol(1) == "Clx" || symbol(1) != std::string("Cl  ") || std::string_view("Cl") != symbol(1) || nat(1) != 17) {
        std::cout << "'" << symbol(1) << "' is not Cl, number 17\n";
        return 1;
    }
    double trace = 0.0;
    for (int i = 1; i <= 3; ++i) {
        trace += symmetry::symm_op(i, i, 5);
    }
    int order = 0;
    for (const base::text<3>& name : symmetry::op_name) {
        order += name == "" ? 0 : 1;
    }
    if (trace != -3.0 || order != 11) {
        std::cout << "trace " << trace << ", " << order << " operations\n";
        return 1;
    }
    std::cout << file::name_base(input) << ": " << file::num_file_lines(input) << " lines, " << natom << " atoms, unit "
              << fid << ", operation " << symmetry::op_name(5).trimmed() << ", group " << symmetry::pg_name(6).trimmed()
              << ", symbol " << element::atom(8).trimmed() << '\n';
}
