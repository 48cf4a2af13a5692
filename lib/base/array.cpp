#include "base/array.hpp"

#include <sys/mman.h>
#include <unistd.h>

#include <string>

#include "base/error.hpp"

namespace displacement_generator::base {

#ifdef MADV_POPULATE_WRITE
void make_pages(void* block, std::size_t size) {
    constexpr std::size_t large = 1 << 17;  // a shorter one often was in use before, and has its pages
    if (size < large) {
        return;
    }
    const auto page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
    const std::size_t before = (page - reinterpret_cast<std::uintptr_t>(block) % page) % page;
    const std::size_t whole = (size - before) / page * page;
    // A system that cannot do it leaves the block as it is.
    static_cast<void>(::madvise(static_cast<char*>(block) + before, whole, MADV_POPULATE_WRITE));
}
#else
void make_pages(void* /*block*/, std::size_t /*size*/) {}
#endif

void index_error(const char* name, int index, int lower, int upper) {
    throw run_error("array '" + std::string(name) + "': index " + std::to_string(index) + " is outside " +
                    std::to_string(lower) + ".." + std::to_string(upper));
}

void dimension_error(const char* name, int dimension, int index, int extent) {
    throw run_error("array '" + std::string(name) + "': index " + std::to_string(index) + " of dimension " +
                    std::to_string(dimension) + " is outside 1.." + std::to_string(extent));
}

void allocation_error(const char* name, std::size_t elements, std::size_t bytes) {
    throw run_error("array '" + std::string(name) + "': " + std::to_string(elements) + " elements of " +
                    std::to_string(bytes) + " bytes each would exceed the memory limit");
}

}  // namespace displacement_generator::base
