#include "gaussian/superpose.hpp"

#include <Eigen/Eigenvalues>
#include <Eigen/Geometry>

namespace displacement_generator::gaussian {

rigid_motion superpose(const Eigen::Matrix3Xd& from, const Eigen::Matrix3Xd& onto) {
    const Eigen::Vector3d middle_from = from.rowwise().mean();
    const Eigen::Vector3d middle_onto = onto.rowwise().mean();
    const Eigen::Matrix3d s = (from.colwise() - middle_from) * (onto.colwise() - middle_onto).transpose();
    // The unit quaternion of the best proper rotation is the eigenvector of the largest eigenvalue of this matrix, of
    // which the solver reads the lower triangle.
    Eigen::Matrix4d k;
    k << s.trace(), 0, 0, 0,                                                   //
        s(1, 2) - s(2, 1), s(0, 0) - s(1, 1) - s(2, 2), 0, 0,                  //
        s(2, 0) - s(0, 2), s(0, 1) + s(1, 0), s(1, 1) - s(0, 0) - s(2, 2), 0,  //
        s(0, 1) - s(1, 0), s(0, 2) + s(2, 0), s(1, 2) + s(2, 1), s(2, 2) - s(0, 0) - s(1, 1);
    const Eigen::SelfAdjointEigenSolver<Eigen::Matrix4d> solver(k);
    const Eigen::Vector4d q = solver.eigenvectors().col(3);
    rigid_motion motion;
    motion.rotation = Eigen::Quaterniond(q(0), q(1), q(2), q(3)).normalized().toRotationMatrix();
    motion.shift = middle_onto - motion.rotation * middle_from;
    motion.largest_distance = (((motion.rotation * from).colwise() + motion.shift) - onto).colwise().norm().maxCoeff();
    return motion;
}

}  // namespace displacement_generator::gaussian
