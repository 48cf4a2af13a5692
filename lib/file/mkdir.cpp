#include "file/file.hpp"
#include "file/shell.hpp"

void file::mkdir(std::string_view dir) { run_shell("mkdir -p " + std::string(base::trimmed(dir))); }
