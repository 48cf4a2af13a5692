#pragma once

#include <optional>
#include <string>

namespace displacement_generator::preparer {

constexpr const char* program_name = "displacement_preparer";

/// What the command line asks for.
struct options {
    std::string source;               ///< "-": standard input
    std::string output = "-";         ///< "-": standard output
    double tolerance = 0.01;          ///< angstrom: how far an atom may be moved
    std::string route;                ///< in place of the source's; empty: the source's own
    std::optional<int> charge;        ///< in place of the source's
    std::optional<int> multiplicity;  ///< in place of the source's
    bool keep_frame = false;          ///< neither move nor turn the molecule
};

/// Reads the command line.
///   argc, argv  in   those of main
///   asked       out
/// Result: the text that is to be printed in place of a run (help, version); empty where there is to be a run.
/// Stops the run where the command line is wrong.
std::string read_options(int argc, const char* const* argv, options& asked);

}  // namespace displacement_generator::preparer
