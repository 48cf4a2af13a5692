#include "carried_point.hpp"
#include "vibration/vibration.hpp"

namespace displacement_generator::vibration {

void rebuild_dipoles(const point_relations& relations, Eigen::Matrix3Xd& dipoles) {
    const Eigen::Index points = check_relations(relations);
    if (dipoles.cols() != points) {
        size_error("dipole moments", 3, points);
    }
    for (Eigen::Index p = 0; p < points; ++p) {
        const Eigen::Index source = relations.sources(p);
        if (source != p) {
            dipoles.col(p) = operation_of(relations, p).matrix * dipoles.col(source);
        }
    }
    check_finite(dipoles, "dipole moments");
}

}  // namespace displacement_generator::vibration
