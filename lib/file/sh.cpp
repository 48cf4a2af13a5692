#include "file/file.hpp"
#include "file/shell.hpp"

void file::sh(std::string_view cmd) { run_shell("sh " + std::string(base::trimmed(cmd))); }
