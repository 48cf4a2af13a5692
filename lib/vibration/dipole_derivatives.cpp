#include "carried_point.hpp"
#include "step_length.hpp"
#include "vibration/vibration.hpp"

namespace displacement_generator::vibration {

Eigen::Matrix3Xd dipole_derivatives(const Eigen::Matrix3Xd& dipoles, const Eigen::VectorXd& steps) {
    const Eigen::Index size = dipoles.cols() / 2;
    if (dipoles.cols() % 6 != 0 || steps.size() != dipoles.cols()) {
        size_error("dipole moments and steps", 3, steps.size());
    }
    check_finite(dipoles, "dipole moments");
    Eigen::Matrix3Xd derivatives(3, size);
    for (Eigen::Index c = 0; c < size; ++c) {
        derivatives.col(c) = (dipoles.col(2 * c + 1) - dipoles.col(2 * c)) / step_length(steps, c);
    }
    return derivatives;
}

}  // namespace displacement_generator::vibration
