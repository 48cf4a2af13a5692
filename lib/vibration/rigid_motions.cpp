#include "rigid_motions.hpp"

#include <Eigen/Eigenvalues>
#include <Eigen/Geometry>
#include <cmath>

#include "base/error.hpp"

namespace displacement_generator::vibration {

fitted_line fit_line(const Eigen::Matrix3Xd& positions) {
    const Eigen::Matrix3Xd centred = positions.colwise() - positions.rowwise().mean().eval();
    if (centred.colwise().norm().maxCoeff() <= linear_tolerance) {
        throw base::run_error("all atoms lie at one place: expected a molecule");
    }
    const Eigen::SelfAdjointEigenSolver<Eigen::Matrix3d> spread(centred * centred.transpose());
    const Eigen::Vector3d direction = spread.eigenvectors().col(2);
    const Eigen::Matrix3Xd away = centred - direction * (direction.transpose() * centred);
    return {direction, away.colwise().norm().maxCoeff()};
}

Eigen::MatrixXd rigid_motions(const Eigen::VectorXd& masses, const Eigen::Matrix3Xd& positions) {
    const Eigen::Vector3d centre = positions * masses / masses.sum();
    Eigen::MatrixXd motions(3 * masses.size(), 6);
    for (Eigen::Index atom = 0; atom < masses.size(); ++atom) {
        const double weight = std::sqrt(masses(atom));
        const Eigen::Vector3d arm = positions.col(atom) - centre;
        for (int axis = 0; axis < 3; ++axis) {
            const Eigen::Vector3d unit = Eigen::Vector3d::Unit(axis);
            motions.col(axis).segment<3>(3 * atom) = weight * unit;
            motions.col(3 + axis).segment<3>(3 * atom) = weight * unit.cross(arm);
        }
    }
    return motions;
}

}  // namespace displacement_generator::vibration
