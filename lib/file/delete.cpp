#include "file/unit.hpp"

namespace displacement_generator {

void file::delete_(std::string_view fname) {
    const connection input(fname, action::read);
    input.require();
    input.close(disposition::remove);
}

}  // namespace displacement_generator
