#pragma once

#include <Eigen/Core>
#include <vector>

#include "frame.hpp"

// Not public.

namespace displacement_generator::frame {

/// keep_frame without its checks of the source.
frame_result symmetrised(const std::vector<int>& kinds, const Eigen::Matrix3Xd& positions, double tolerance);

/// Stops the run for every reason that keep_frame and prepare name.
void check_source(const std::vector<int>& kinds, const Eigen::Matrix3Xd& positions, double tolerance);

}  // namespace displacement_generator::frame
