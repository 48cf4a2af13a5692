#include <unistd.h>

#include "file/file.hpp"

namespace displacement_generator {

int file::get_pid() { return ::getpid(); }

}  // namespace displacement_generator
