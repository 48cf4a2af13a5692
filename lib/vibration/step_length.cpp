#include "step_length.hpp"

#include <cmath>
#include <string>

#include "base/error.hpp"

namespace displacement_generator::vibration {

double step_length(const Eigen::VectorXd& steps, Eigen::Index c) {
    const double first = steps(2 * c);
    const double second = steps(2 * c + 1);
    const bool opposite = (first < 0.0 && second > 0.0) || (first > 0.0 && second < 0.0);
    if (!opposite || !std::isfinite(second - first)) {
        throw base::run_error("points " + std::to_string(2 * c + 1) + " and " + std::to_string(2 * c + 2) +
                              ": expected steps in opposite directions, found " + std::to_string(first) + " and " +
                              std::to_string(second) + " bohr");
    }
    return second - first;
}

}  // namespace displacement_generator::vibration
