#include "file/file.hpp"
#include "file/shell.hpp"

namespace displacement_generator {

void file::mv(std::string_view src, std::string_view dst) {
    run_shell("mv " + std::string(base::trimmed(src)) + ' ' + std::string(base::trimmed(dst)));
}

}  // namespace displacement_generator
