#include "file/file.hpp"
#include "file/shell.hpp"

namespace displacement_generator {

void file::mkdir(std::string_view dir) { run_shell("mkdir -p " + std::string(base::trimmed(dir))); }

}  // namespace displacement_generator
