#pragma once

#include <Eigen/Core>
#include <string>
#include <vector>

#include "displacement_list.hpp"
#include "gaussian/source.hpp"

namespace displacement_generator::assembler {

/// What a geometry file that the generator wrote says of its molecule.
struct geometry {
    std::string route;  ///< its lines joined by blanks
    int route_line = 0;
    int charge = 0;
    int multiplicity = 1;
    int first_atom_line = 0;
    Eigen::Matrix3Xd positions;  ///< a column an atom, in the unit of the file
};

/// Reads a geometry file by the rules by which the generator read its input: the last line that begins with '#' is the
/// route, and the atoms come after the line of charge and multiplicity.
///   from     in/out
///   symbols  in      of the list, one an atom
/// Stops the run with "NAME:LINE: ..." where these atoms are not there.
geometry read_geometry(gaussian::source& from, const std::vector<std::string>& symbols);

/// A coordinate, counted from 0, as messages show it: "y of atom 2".
std::string coordinate_name(Eigen::Index c);

/// The geometries of all files of a list, as one and the steps from it.
struct geometry_set {
    geometry reference;
    double unit_in_angstrom = 1.0;  ///< of the positions: 1, or the Bohr radius where the route says units=au
    Eigen::VectorXd steps;          ///< (6N) of the computed points, in the unit of the files and with their signs
    std::vector<bool> are_good;     ///< of each file of the list: whether nothing is wrong with it or the reference
};

/// Reads all geometry files.
///   folder    in      what stands before the names of files: empty, or ending in a slash
///   list      in
///   refusals  in/out  a message is appended for each file that is missing or not as it should be: one coordinate,
///                     that of its point, moved by dx from the reference, and all else as there; and the reference
///                     with every operation of the list
/// Result: of files about which nothing was appended.
geometry_set read_geometries(const std::string& folder, const displacement_list& list,
                             std::vector<std::string>& refusals);

}  // namespace displacement_generator::assembler
