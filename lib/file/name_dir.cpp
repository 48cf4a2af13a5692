#include "file/file.hpp"
#include "file/path_name.hpp"

namespace displacement_generator {

std::string_view file::name_dir(std::string_view name) {
    const std::string_view path = bare(name);
    const std::size_t slash = path.rfind('/');
    return slash == std::string_view::npos ? std::string_view{} : path.substr(0, slash);
}

}  // namespace displacement_generator
