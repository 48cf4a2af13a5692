#include "analysis.hpp"
#include "base/error.hpp"
#include "printed.hpp"

namespace displacement_generator::assembler {

namespace {

/// Noise of forces (hartree/bohr) that leaves no frequency worth its name: ten times that of coarse grids.
constexpr double noise_of_forces = 1e-4;
/// What higher derivatives add (hartree/bohr^4), with much to spare: fourth ones are about 20 along the strongest
/// bonds, and a sixth of them counts.
constexpr double higher_derivatives = 10.0;
/// Far above the stiffest coordinate of any molecule, which has about 3 hartree/bohr^2.
constexpr double stiffest = 15.0;
/// The sum of the diagonal (hartree/bohr^2) grows with the electrons at the nuclei, and is positive but for noise.
constexpr double least_sum = -0.01;

[[noreturn]] void refuse(const std::string& place, const std::string& what) {
    throw base::run_error(place + ": " + what, base::message_stream::standard_error, 1);
}

}  // namespace

double largest_asymmetry(double step) { return noise_of_forces / step + higher_derivatives * step * step; }

void check_hessian(const std::string& place, const analysis& made, bool is_plain) {
    const vibration::hessian_result& found = made.hessian;
    if (found.largest_asymmetry > largest_asymmetry(made.longest_step)) {
        refuse(place, "expected the forces of one potential, found a Hessian with an asymmetry of " +
                          printed("%.3g", found.largest_asymmetry) + " hartree/bohr^2 between " +
                          coordinate_name(found.row) + " and " + coordinate_name(found.column) +
                          "; results of these points, or of those from which they follow, are of another geometry, "
                          "frame or unit, or no exact gradients");
    }
    if (!is_plain) {
        return;
    }
    Eigen::Index c = 0;
    if (const double largest = found.hessian.diagonal().maxCoeff(&c); largest > stiffest) {
        refuse(place, "expected forces in hartree/bohr, found a Hessian with " + printed("%.3g", largest) +
                          " hartree/bohr^2 for " + coordinate_name(c) + "; the .forces files are of another unit");
    }
    if (const double sum = found.hessian.trace(); sum < least_sum) {
        refuse(place, "expected forces, found a Hessian whose diagonal has the sum " + printed("%.3g", sum) +
                          " hartree/bohr^2; the .forces files hold gradients, which have the other sign");
    }
}

}  // namespace displacement_generator::assembler
