#pragma once

#include <string_view>

#include "../base/text.hpp"

namespace displacement_generator::file {

/// A name as its parts are looked for in it: without its leading and trailing blanks.
inline std::string_view bare(std::string_view name) { return base::left_adjusted(base::trimmed(name)); }

}  // namespace displacement_generator::file
