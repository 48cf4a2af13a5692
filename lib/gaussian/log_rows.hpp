#pragma once

#include <Eigen/Core>
#include <string>
#include <vector>

#include "scan_log.hpp"

// What stands in the rows of a log's tables.

namespace displacement_generator::gaussian {

/// The centres of a table of positions, or the atoms of a table of forces.
struct log_rows {
    std::vector<int> numbers;  ///< atomic numbers, 1..118
    Eigen::Matrix3Xd values;   ///< angstrom, or hartree/bohr
    int dummies = 0;           ///< centres that are no atoms, and left out: atomic number -1,
    int ghosts = 0;            ///< 0, or an atomic type of a ghost,
    int vectors = 0;           ///< -2
    int typed = 0;             ///< atoms with an atomic type other than 0
};

/// Reads a table of positions (center, number, type where there is one, x, y, z) or of forces (center, number, x, y,
/// z).
///   name   in  of the log, for messages
///   table  in  its rows, complete
/// Stops the run with "NAME:LINE: ..." at the first row that is none.
log_rows read_positions(const std::string& name, const log_table& table);
log_rows read_force_rows(const std::string& name, const log_table& table);

}  // namespace displacement_generator::gaussian
