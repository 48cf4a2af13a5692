#include "frame/frame.hpp"
#include "frame/symmetrised.hpp"

namespace displacement_generator::frame {

frame_result keep_frame(const std::vector<int>& kinds, const Eigen::Matrix3Xd& positions, double tolerance) {
    check_source(kinds, positions, tolerance);
    return symmetrised(kinds, positions, tolerance);
}

}  // namespace displacement_generator::frame
