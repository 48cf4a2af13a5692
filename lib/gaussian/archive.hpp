#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "molecule.hpp"

// The archive entry at the end of a job's log: one text, its sections between doubled separators, broken at column 70.

namespace displacement_generator::gaussian {

/// What an archive entry tells. The positions are in the input's frame, as Gaussian read the molecule, with up to ten
/// decimals.
struct archive_entry {
    std::string route;
    std::string method;       ///< "RB3LYP"
    std::string basis;        ///< "6-31G(d)"
    bool has_charge = false;  ///< whether charge and multiplicity were found
    /// Without dummy atoms; without any atom where the entry holds what is none, such as a ghost.
    gaussian::molecule molecule;
    std::optional<double> energy;         ///< hartree, of the highest level: the last energy that the entry names
    bool beyond_self_consistent = false;  ///< whether that energy is of a level above the self-consistent field
    std::string point_group;              ///< as printed, for instance "C02V"; empty where there is none
};

/// Reads an archive entry.
///   text  in  the lines of the entry joined, without the blank before each; separators are backslashes or bars
archive_entry read_archive(std::string_view text);

}  // namespace displacement_generator::gaussian
