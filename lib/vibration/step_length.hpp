#pragma once

#include <Eigen/Core>

namespace displacement_generator::vibration {

/// How far apart the two points of coordinate c lie; negative where the first one is the higher. Stops the run unless
/// their steps are finite and go in opposite directions.
double step_length(const Eigen::VectorXd& steps, Eigen::Index c);

}  // namespace displacement_generator::vibration
