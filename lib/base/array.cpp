#include "base/array.hpp"

#include <string>

#include "base/error.hpp"

namespace base {

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

}  // namespace base
