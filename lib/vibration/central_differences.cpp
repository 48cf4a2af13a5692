#include <cmath>

#include "base/error.hpp"
#include "carried_point.hpp"
#include "step_length.hpp"
#include "vibration/vibration.hpp"

namespace displacement_generator::vibration {

hessian_result central_differences(const Eigen::MatrixXd& forces, const Eigen::VectorXd& steps) {
    const Eigen::Index size = forces.rows();
    if (size % 3 != 0 || forces.cols() != 2 * size || steps.size() != 2 * size) {
        size_error("forces and steps", size, 2 * size);
    }
    check_finite(forces, "forces");
    hessian_result result;
    Eigen::MatrixXd& hessian = result.hessian;
    hessian.resize(size, size);
    for (Eigen::Index c = 0; c < size; ++c) {
        hessian.col(c) = (forces.col(2 * c) - forces.col(2 * c + 1)) / step_length(steps, c);
    }
    for (Eigen::Index column = 0; column < size; ++column) {
        for (Eigen::Index row = 0; row < column; ++row) {
            const double asymmetry = std::abs(hessian(row, column) - hessian(column, row));
            if (asymmetry > result.largest_asymmetry) {
                result.largest_asymmetry = asymmetry;
                result.row = static_cast<int>(row);
                result.column = static_cast<int>(column);
            }
            const double mean = (hessian(row, column) + hessian(column, row)) / 2.0;
            hessian(row, column) = mean;
            hessian(column, row) = mean;
        }
    }
    return result;
}

}  // namespace displacement_generator::vibration
