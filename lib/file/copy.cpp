#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <string>

#include "base/array.hpp"
#include "file/descriptor.hpp"
#include "file/file.hpp"

namespace displacement_generator {

namespace {

/// Has the kernel copy, without the bytes passing through this process; not every pair of files allows it.
/// Result: whether the copy is complete.
bool copy_in_kernel(int from, int to) {
    constexpr std::size_t chunk = std::size_t{1} << 30;
    bool copied = false;
    for (;;) {
        const long count = ::copy_file_range(from, nullptr, to, nullptr, chunk, 0);
        if (count > 0) {
            copied = true;
        } else if (count == 0) {
            return copied;  // nothing at all may be a file of a size that the kernel does not know, as below /proc
        } else if (errno != EINTR) {
            return false;
        }
    }
}

void copy_in_blocks(int from, int to) {
    constexpr std::size_t block_size = std::size_t{1} << 18;
    const auto block = base::allocate_for_overwrite<char>("block", block_size);
    long count = 0;
    while ((count = file::read_some(from, block.get(), block_size)) > 0 &&
           file::write_all(to, {block.get(), static_cast<std::size_t>(count)}) == 0) {
    }
}

}  // namespace

void file::copy(std::string_view src, std::string_view dst) {
    std::string unused;
    const int from = open_to_read(src, false, unused);
    if (from >= 0 && is_same_file(from, dst)) {
        close_descriptor(from);
        return;
    }
    const int to = open_to_write(dst, unused);
    if (from >= 0 && to >= 0 && !copy_in_kernel(from, to)) {
        copy_in_blocks(from, to);  // continues where the kernel stopped
    }
    for (const int descriptor : {from, to}) {
        if (descriptor >= 0) {
            close_descriptor(descriptor);
        }
    }
}

void file::cp(std::string_view src, std::string_view dst) { copy(src, dst); }

}  // namespace displacement_generator
