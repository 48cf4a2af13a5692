#include "file/unit.hpp"

void file::delete_(std::string_view fname) {
    const connection input(fname, action::read);
    input.require();
    input.close(disposition::remove);
}
