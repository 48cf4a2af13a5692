#pragma once

#include <string>
#include <string_view>

namespace displacement_generator::gaussian {

/// What stands first on the line of an atom: SYMBOL[NAME][-TYPE[-CHARGE]][(PARAMETERS)], or an atomic number in place
/// of the symbol.
struct atom_label {
    int number = 0;  ///< atomic number; 0: a dummy atom
    bool has_name = false;
    bool has_type = false;
    bool has_fragment = false;
    bool has_residue = false;  ///< names of a protein data bank
    bool has_moment = false;   ///< what a nucleus is said to have beside charge and mass; forces do not depend on it
};

/// What a message says of the symbol of an isotope: what is wrong and what to do.
std::string isotope_refused(std::string_view text);

/// Reads a label.
///   text   in  the whole field
///   place  in  what a message begins with, "mol.gjf:7" for example
/// Stops the run where the text is no label, and with a message that tells what to do where it holds what a ready input
/// cannot: ghost atoms, translation vectors, isotopes, and parameters that change what is computed.
atom_label read_label(std::string_view text, const std::string& place);

}  // namespace displacement_generator::gaussian
