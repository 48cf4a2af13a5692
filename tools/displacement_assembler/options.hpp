#pragma once

#include <string>
#include <vector>

namespace displacement_generator::assembler {

constexpr const char* program_name = "displacement_assembler";

/// The mass of one atom in place of that of its element.
struct atom_mass {
    int atom;     ///< from 1
    double mass;  ///< amu
};

/// What the command line asks for.
struct options {
    std::string folder = ".";            ///< one that holds files.out, or PES-0/files.out
    bool average_masses = false;         ///< standard atomic weights in place of the most abundant isotopes
    std::vector<atom_mass> atom_masses;  ///< in the order given, no atom twice
    std::string molden;                  ///< file to write; empty: none
    std::string hessian;                 ///< file to write; empty: none
};

/// Reads the command line.
///   argc, argv  in   those of main
///   asked       out
/// Result: the text that is to be printed in place of a run (help, version); empty where there is to be a run.
/// Stops the run where the command line is wrong.
std::string read_options(int argc, const char* const* argv, options& asked);

}  // namespace displacement_generator::assembler
