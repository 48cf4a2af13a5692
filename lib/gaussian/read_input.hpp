#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "molecule.hpp"
#include "notice.hpp"
#include "route.hpp"

namespace displacement_generator::gaussian {

/// Lines that follow one another in an input, without the blanks at their ends.
struct section {
    int line = 0;  ///< of the first one, in the file
    std::vector<std::string> lines;
};

/// A job of a Gaussian input, read.
struct input {
    std::string name;                ///< of the file, as messages show it
    int jobs = 0;                    ///< in the file
    int job = 0;                     ///< the one that was taken, from 1
    std::vector<std::string> link0;  ///< lines before the route and within it, comments included; all but `route_text`
    int route_line = 0;
    std::string route_text;  ///< its lines joined by a blank each, without comments
    route keywords;          ///< the same, taken apart
    section title;           ///< may be empty
    molecule atoms;
    std::vector<section> sections;  ///< behind the molecule, as a blank line ends each; an empty one may stand between
    std::vector<int> dummies;     ///< lines of dummy atoms, which are no part of `atoms`; lines of the molecule, from 1
    int first_type_line = 0;      ///< of the first atom with a molecular-mechanics type, in the file; 0: none
    int first_fragment_line = 0;  ///< the same, of a fragment or a second pair of charge and multiplicity
};

/// Reads a Gaussian input in its whole dialect: comments, any letter case, a byte order mark, CR LF, tabs; Cartesian
/// coordinates and Z-matrices, in angstrom or bohr, degrees or radians, with variables and constants; several jobs, of
/// which the first one that holds a molecule is taken.
///   text     in      the whole file
///   name     in      of the file, as messages show it
///   notices  in/out  what was dropped or decided is appended
/// Stops the run with "NAME:LINE: ..." where something is wrong, and where something cannot be carried over rightly:
/// ghost atoms, dummy atoms in a Cartesian molecule, isotopes, translation vectors, layers, included files, a molecule
/// that is in a checkpoint file.
input read_input(std::string_view text, const std::string& name, std::vector<notice>& notices);

}  // namespace displacement_generator::gaussian
