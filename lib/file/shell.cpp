#include "file/shell.hpp"

#include <cstdlib>

#include "base/text.hpp"

namespace displacement_generator {

int file::run_shell(const std::string& command) {
    const base::text<500> buffer{std::string_view(command)};
    return std::system(std::string(buffer.trimmed()).c_str());
}

}  // namespace displacement_generator
