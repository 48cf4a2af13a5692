#pragma once

#include <string>

namespace displacement_generator::file {

/// Has the shell run a command line of at most 500 characters, the rest cut off, without its trailing blanks, and waits
/// for it to end. Result: the status that the system gives; nobody needs to look at it.
int run_shell(const std::string& command);

}  // namespace displacement_generator::file
