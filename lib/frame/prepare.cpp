#include <cmath>
#include <utility>

#include "frame/frame.hpp"
#include "frame/symmetrised.hpp"

namespace displacement_generator::frame {

namespace {

/// A centre as near to the origin as this (angstrom) is there already: rounding to 8 decimals moves it by half as much.
constexpr double centred = 1e-8;

/// A turn that moves no atom by as much as this (angstrom) is none: a source of 8 decimals has its elements on its axes
/// no better.
constexpr double unturned = 1e-6;

Eigen::Vector3d centre_of(const symmetry_elements& found) {
    return found.centre.unaryExpr([](double c) { return std::abs(c) < centred ? 0.0 : c; });
}

/// The source in one frame.
frame_result tried(const std::vector<int>& kinds, const Eigen::Matrix3Xd& about_centre, const Eigen::Vector3d& centre,
                   Eigen::Matrix3d rotation, double tolerance) {
    const double farthest = about_centre.cols() == 0 ? 0.0 : about_centre.colwise().norm().maxCoeff();
    if ((rotation - Eigen::Matrix3d::Identity()).norm() * farthest < unturned) {
        rotation = Eigen::Matrix3d::Identity();
    }
    frame_result result = symmetrised(kinds, rotation * about_centre, tolerance);
    result.rotation = rotation;
    result.shift = Eigen::Vector3d::Zero() - rotation * centre;  // 0 for a centre at 0, not -0
    return result;
}

/// The best frame: the first that gives what it promises, or if none does, what comes nearest to it.
frame_result prepared_once(const std::vector<int>& kinds, const Eigen::Matrix3Xd& positions, double tolerance) {
    const double reach = 2.0 * tolerance;
    const symmetry_elements found = find_elements(kinds, positions, reach);
    const Eigen::Vector3d centre = centre_of(found);
    const Eigen::Matrix3Xd about_centre = positions.colwise() - centre;
    frame_result best;
    bool is_first = true;
    for (const candidate_frame& frame : candidate_frames(positions, found, reach)) {
        if (!is_first && best.computed <= frame.computed) {
            break;
        }
        frame_result result = tried(kinds, about_centre, centre, frame.rotation, tolerance);
        if (is_first || result.computed < best.computed) {
            best = std::move(result);
            is_first = false;
        }
    }
    return best;
}

double largest_distance(const Eigen::Matrix3Xd& a, const Eigen::Matrix3Xd& b) {
    return a.cols() == 0 ? 0.0 : (a - b).colwise().norm().maxCoeff();
}

}  // namespace

frame_result prepare(const std::vector<int>& kinds, const Eigen::Matrix3Xd& positions, double tolerance) {
    check_source(kinds, positions, tolerance);
    frame_result result = prepared_once(kinds, positions, tolerance);
    constexpr int most_passes = 8;
    for (int pass = 0; pass < most_passes; ++pass) {
        frame_result next = prepared_once(kinds, result.positions, tolerance);
        if (next.positions == result.positions) {
            break;
        }
        next.shift += next.rotation * result.shift;
        next.rotation *= result.rotation;
        next.largest_move = largest_distance(next.positions, (next.rotation * positions).colwise() + next.shift);
        if (next.largest_move > tolerance || next.computed > result.computed) {
            break;
        }
        result = std::move(next);
    }
    return result;
}

}  // namespace displacement_generator::frame
