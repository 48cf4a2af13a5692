#include "file/file.hpp"

using namespace displacement_generator;

std::string_view file::name_main(std::string_view name) {
    const std::string_view base_name = name_base(name);
    return base_name.substr(0, base_name.rfind('.'));
}
