#include "gjf/gjf.hpp"
#include "gjf/sections.hpp"

namespace displacement_generator {

void gjf::get_gjf_charge_linenumber(std::string_view fname, int& icharge) { icharge = find_charge(input_lines(fname)); }

}  // namespace displacement_generator
