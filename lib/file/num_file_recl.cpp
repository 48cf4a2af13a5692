#include <unistd.h>

#include <cstdint>

#include "file/descriptor.hpp"
#include "file/unit.hpp"

namespace displacement_generator {

int file::num_file_recl(std::string_view fname) {
    const connection input(fname, action::read);  // whether it opened shows in the length
    const auto length = static_cast<int>(static_cast<std::uint32_t>(record_length(input.fid())));
    if (length >= 0) {
        return length;
    }
    constexpr int fallback = 132;
    write_all(STDOUT_FILENO, "num_file_recl returns wrong number :  " + std::to_string(length) +
                                 "\nForce to set num_file_recl = " + std::to_string(fallback) + "\n");
    return fallback;
}

}  // namespace displacement_generator
