#include "base/free_format.hpp"
#include "file/shell.hpp"
#include "file/unit.hpp"

namespace displacement_generator {

int file::nfile_dir(std::string_view dir) {
    constexpr std::string_view listing = ".tmp.nfile_dir";
    run_shell("ls -l | grep " + std::string(base::trimmed(dir)) + " > " + std::string(listing));
    const connection input(listing, action::read);
    input.require();
    int count = 0;
    base::text<200> line;
    while (read_record(input.fid(), line)) {
        std::string_view rest = line;
        base::text<1> permissions;
        if (base::next_text(rest, permissions) == base::field_kind::value && permissions == base::text<1>("-")) {
            ++count;
        }
    }
    input.close(disposition::remove);
    return count;
}

}  // namespace displacement_generator
