#include <unistd.h>

#include "file/file.hpp"

int file::get_pid() { return ::getpid(); }
