#include "file/file.hpp"

namespace displacement_generator {

void file::get_free_fid(int& fid) {
    constexpr int first = 100;
    fid = first;
    while (is_connected(fid)) {
        ++fid;
    }
}

}  // namespace displacement_generator
