#pragma once
#include <Eigen/Core>
#include <vector>
namespace displacement_generator::gaussian {
/// A molecule as Gaussian knows it.
struct molecule {
    int charge = 0;
    int multiplicity = 1;
    std::vector<int> numbers;    ///< atomic numbers, 1..118, one an atom
    Eigen::Matrix3Xd positions;  ///< angstrom, a column an atom
};
}  // namespace displacement_generator::gaussian
