#include "file/file.hpp"
#include "file/path_name.hpp"

namespace displacement_generator {

std::string_view file::name_base(std::string_view name) {
    const std::string_view path = bare(name);
    return path.substr(path.rfind('/') + 1);  // npos + 1 is 0: all of it
}

}  // namespace displacement_generator
