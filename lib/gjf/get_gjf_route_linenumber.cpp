#include "gjf/gjf.hpp"
#include "gjf/sections.hpp"

namespace displacement_generator {

void gjf::get_gjf_route_linenumber(std::string_view fname, int& iroute) { iroute = find_route(input_lines(fname)); }

}  // namespace displacement_generator
