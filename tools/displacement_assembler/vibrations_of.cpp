#include "analysis.hpp"
#include "vibration/constants.hpp"

namespace displacement_generator::assembler {

analysis vibrations_of(const Eigen::VectorXd& masses, const displacement_list& list, const geometry_set& geometries,
                       results& found) {
    const double unit_in_bohr = geometries.unit_in_angstrom / vibration::bohr_in_angstrom;
    analysis made;
    made.masses = masses;
    made.positions = geometries.reference.positions * unit_in_bohr;
    made.largest_force = found.reference.forces.cwiseAbs().maxCoeff();
    Eigen::VectorXd steps = geometries.steps * unit_in_bohr;
    made.longest_step = steps.cwiseAbs().maxCoeff();
    if (found.dipoles.cols() != 0) {
        vibration::rebuild_dipoles(list.relations, found.dipoles);
    }
    vibration::rebuild_forces(list.relations, found.forces, steps);
    if (found.dipoles.cols() != 0) {
        made.dipole_derivatives = vibration::dipole_derivatives(found.dipoles, steps);
    }
    made.hessian = vibration::central_differences(found.forces, steps);
    found.forces.resize(0, 0);  // twice as large as the Hessian
    made.group = vibration::find_species_group(masses, made.positions, made.hessian.hessian, list.relations.symmetry);
    made.modes = vibration::harmonic_vibrations(masses, made.positions, made.hessian.hessian, made.dipole_derivatives,
                                                made.group);
    return made;
}

}  // namespace displacement_generator::assembler
