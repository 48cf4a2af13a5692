#include "gjf/gjf.hpp"
#include "gjf/sections.hpp"

namespace displacement_generator {

void gjf::get_gjf_title_linenumber(std::string_view fname, int& ititle) { ititle = find_title(input_lines(fname)); }

}  // namespace displacement_generator
