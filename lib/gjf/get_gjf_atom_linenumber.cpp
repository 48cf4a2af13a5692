#include "gjf/gjf.hpp"
#include "gjf/sections.hpp"

void gjf::get_gjf_atom_linenumber(std::string_view fname, int& iatom) { iatom = find_atom(input_lines(fname)); }
