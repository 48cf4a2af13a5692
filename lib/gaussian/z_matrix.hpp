#pragma once

#include <Eigen/Core>
#include <array>
#include <string>
#include <vector>

namespace displacement_generator::gaussian {

/// What the last number of a line of a Z-matrix is.
enum class third_number {
    dihedral,
    angle_plus,   ///< a second bond angle; the atom lies where (j - i) x (k - i) points to
    angle_minus,  ///< the same, on the other side
};

/// One line of a Z-matrix: an atom, or a point that serves the construction only.
struct z_line {
    int line = 0;            ///< of the file, for messages
    bool cartesian = false;  ///< the numbers are x, y and z
    int references = 0;      ///< how many of i, j and k it has: none on line 1, one on 2, two on 3, three from 4 on
    std::array<int, 3> reference{};  ///< i, j and k: numbers of earlier lines, from 1
    std::array<double, 3> number{};  ///< x, y, z or distance to i, angle to i and j, third number; angstrom, radians
    third_number third = third_number::dihedral;
};

/// Builds a molecule line by line. The first line lies at the origin, the second one in the direction of z, and the
/// third one in the xz plane at positive x, as seen from the atoms that they refer to.
///   lines  in  in the order of the file
///   name   in  of the file, as messages show it
/// Result: angstrom, a column a line.
/// Stops the run, naming the line, where a line refers to itself, to a later line, or twice to the same one; where a
/// distance is not positive or an angle is outside 0..180 degrees; where the three atoms of a dihedral lie on a line,
/// or two of the references on the same point; where two angles cannot be had together; and where a Cartesian line
/// comes after one with fewer than three references that stands on another Cartesian line, since their relative
/// position is not told then.
Eigen::Matrix3Xd cartesian(const std::vector<z_line>& lines, const std::string& name);

}  // namespace displacement_generator::gaussian
