#include "carried_point.hpp"
#include "vibration/vibration.hpp"

namespace displacement_generator::vibration {

void rebuild_forces(const point_relations& relations, Eigen::MatrixXd& forces, Eigen::VectorXd& steps) {
    const Eigen::Index points = check_relations(relations);
    if (forces.rows() != points / 2 || forces.cols() != points || steps.size() != points) {
        size_error("forces and steps", points / 2, points);
    }
    for (Eigen::Index p = 0; p < points; ++p) {
        const Eigen::Index source = relations.sources(p);
        if (source == p) {
            continue;
        }
        const operation& by = operation_of(relations, p);
        steps(p) = carried_direction(by, source, p) * steps(source);
        for (Eigen::Index atom = 0; atom < by.images.size(); ++atom) {
            forces.col(p).segment<3>(Eigen::Index{3} * by.images(atom)) =
                by.matrix * forces.col(source).segment<3>(3 * atom);
        }
    }
    check_finite(forces, "forces");
    check_finite(steps, "steps");
}

}  // namespace displacement_generator::vibration
