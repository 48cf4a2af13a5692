#pragma once

#include <Eigen/Core>
#include <string>
#include <vector>

#include "gaussian/source.hpp"
#include "vibration/vibration.hpp"

namespace displacement_generator::assembler {

/// A geometry file that the list names.
struct listed_file {
    std::string name;         ///< "coord-1-dx": without its folder and its .com
    Eigen::Index point = -1;  ///< of its displacement, from 0: point p is displacement p + 1; -1 for the reference
};

/// The list that the generator wrote, files.out. Atoms, points and operations count from 0.
struct displacement_list {
    double dx = 0.0;                           ///< step with the six decimals of the list, in the unit of the inputs
    std::string group;                         ///< "C1", "CS", ..., "D2H"
    std::vector<std::string> symbols;          ///< one an atom
    std::vector<int> numbers;                  ///< atomic numbers 1..118 by these symbols, one an atom
    std::vector<std::string> operation_names;  ///< "E", "C2z", ...
    vibration::point_relations relations;      ///< for all 6N points
    std::vector<listed_file> files;            ///< the reference first
};

/// Reads a list, which must be complete and agree with itself: counts, names, the group and its order, operations,
/// correspondence, and for every point where it comes from.
///   from  in/out  to the end
/// Stops the run with "NAME:LINE: ..." at the first line that is not as the generator writes it.
displacement_list read_list(gaussian::source& from);

}  // namespace displacement_generator::assembler
