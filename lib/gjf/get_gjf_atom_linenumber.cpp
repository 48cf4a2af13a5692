#include "gjf/gjf.hpp"
#include "gjf/sections.hpp"

namespace displacement_generator {

void gjf::get_gjf_atom_linenumber(std::string_view fname, int& iatom) { iatom = find_atom(input_lines(fname)); }

}  // namespace displacement_generator
