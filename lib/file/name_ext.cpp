#include "file/file.hpp"
#include "file/path_name.hpp"

namespace displacement_generator {

std::string_view file::name_ext(std::string_view name) {
    const std::string_view path = bare(name);
    const std::size_t point =
        path.rfind('.');  // a "/" after it does not count: of run.d/input the extension is d/input
    return point == std::string_view::npos ? std::string_view{} : path.substr(point + 1);
}

}  // namespace displacement_generator
