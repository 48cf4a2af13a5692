#pragma once

#include <string>
#include <string_view>

namespace CLI {
class App;
}

namespace displacement_generator::companion {

/// Stops the run with "command line: WHAT (PROGRAM --help tells more)".
[[noreturn]] void refuse_command_line(std::string_view program, const std::string& what);

/// Gives a command line what both companions have: --help and --version; an option that is given twice is refused.
/// To be called before other options are added.
///   line  in/out  with the name of its program
void add_common_options(CLI::App& line);

/// Reads a command line.
///   line        in/out  with all its options
///   argc, argv  in      those of main
/// Result: the text that is to be printed in place of a run (help, version); empty where there is to be a run.
/// Stops the run where the command line is wrong.
std::string parse(CLI::App& line, int argc, const char* const* argv);

}  // namespace displacement_generator::companion
