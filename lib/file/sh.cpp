#include "file/file.hpp"
#include "file/shell.hpp"

namespace displacement_generator {

void file::sh(std::string_view cmd) { run_shell("sh " + std::string(base::trimmed(cmd))); }

}  // namespace displacement_generator
