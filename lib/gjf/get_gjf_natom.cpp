#include "gjf/gjf.hpp"
#include "gjf/sections.hpp"

namespace displacement_generator {

void gjf::get_gjf_natom(std::string_view fname, int& natom) { natom = count_atoms(input_lines(fname)); }

}  // namespace displacement_generator
