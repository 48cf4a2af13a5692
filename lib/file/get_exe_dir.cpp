#include "base/error.hpp"
#include "file/unit.hpp"

namespace displacement_generator {

void file::get_exe_dir(base::text_ref dir) {
    const base::text<200> map_file{std::string_view("/proc/" + std::to_string(get_pid()) + "/maps")};
    const connection input(map_file, action::read);
    input.require();
    base::text<1000> line;
    if (!read_record(input.fid(), line)) {
        throw base::run_error(name_of(input.fid()) + ": found no line, expected the program's first mapping");
    }
    // Columns of a mapping: 1-73 addresses, permissions, offset, device and inode; from 74 on the path.
    constexpr std::size_t path_column = 74;
    dir.assign(name_dir(std::string_view(line).substr(path_column - 1)));
}

}  // namespace displacement_generator
