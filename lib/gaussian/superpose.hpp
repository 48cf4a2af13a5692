#pragma once

#include <Eigen/Core>

namespace displacement_generator::gaussian {

/// A proper rotation and a shift: a point p goes to rotation * p + shift.
struct rigid_motion {
    Eigen::Matrix3d rotation;
    Eigen::Vector3d shift;
    double largest_distance;  ///< between a moved point and its partner
};

/// The motion that lays one set of points on another with the least sum of squared distances. Where more than one
/// rotation does (points on a line), it is one of them.
///   from, onto  in  as many columns, at least one
rigid_motion superpose(const Eigen::Matrix3Xd& from, const Eigen::Matrix3Xd& onto);

}  // namespace displacement_generator::gaussian
