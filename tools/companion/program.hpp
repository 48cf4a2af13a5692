#pragma once

#include <functional>
#include <string_view>

namespace displacement_generator::companion {

/// All of main but its arguments: runs a program to its end.
///   program  in  its name
///   run      in  what stops it becomes the message "PROGRAM: error: ..." on standard error
/// Result: the exit status.
int run_program(const char* program, const std::function<void()>& run);

/// Prints on standard output and closes it, as some file systems tell only then that they are full. Stops the run with
/// "standard output: cannot write: REASON".
void print(std::string_view text);

/// Prints on standard error. Stops the run with "standard error: cannot write: REASON".
void print_to_standard_error(std::string_view text);

}  // namespace displacement_generator::companion
