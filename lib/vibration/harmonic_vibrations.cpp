#include <Eigen/Eigenvalues>
#include <Eigen/QR>
#include <algorithm>
#include <cmath>
#include <tuple>
#include <vector>

#include "adapted_coordinates.hpp"
#include "base/error.hpp"
#include "carried_point.hpp"
#include "rigid_motions.hpp"
#include "vibration/constants.hpp"
#include "vibration/vibration.hpp"

namespace displacement_generator::vibration {

namespace {

/// The vibrations of one species.
struct block {
    std::vector<adapted_coordinate> basis;
    Eigen::VectorXd values;   ///< hartree/(bohr^2 amu), ascending
    Eigen::MatrixXd vectors;  ///< of unit length, a column a mode, over the basis
};

/// The mass-weighted Hessian between the combinations of one species.
Eigen::MatrixXd block_hessian(const std::vector<adapted_coordinate>& basis, const Eigen::VectorXd& masses,
                              const Eigen::MatrixXd& hessian) {
    const auto size = static_cast<Eigen::Index>(basis.size());
    Eigen::MatrixXd result(size, size);
    for (Eigen::Index column = 0; column < size; ++column) {
        const adapted_coordinate& right = basis[static_cast<std::size_t>(column)];
        for (Eigen::Index row = 0; row <= column; ++row) {
            const adapted_coordinate& left = basis[static_cast<std::size_t>(row)];
            double sum = 0.0;
            for (std::size_t l = 0; l < right.coordinates.size(); ++l) {
                for (std::size_t k = 0; k < left.coordinates.size(); ++k) {
                    sum += left.signs[k] * right.signs[l] * hessian(left.coordinates[k], right.coordinates[l]);
                }
            }
            const double mass = masses(left.coordinates[0] / 3) * masses(right.coordinates[0] / 3);
            result(row, column) = left.weight * right.weight * sum / std::sqrt(mass);
            result(column, row) = result(row, column);
        }
    }
    return result;
}

/// Whether a product of directions, or a rotation about one, belongs to a species.
bool belongs(const species_group& group, Eigen::Index species, int axis, bool rotation) {
    for (std::size_t g = 0; g < group.symmetry.size(); ++g) {
        const Eigen::Vector3d sign = group.symmetry[g].matrix.diagonal();
        const double own = rotation ? sign.prod() * sign(axis) : sign(axis);
        if (own != group.characters(species, static_cast<Eigen::Index>(g))) {
            return false;
        }
    }
    return true;
}

/// The rigid motions of one species over its basis: how many there are, and columns that span them.
struct rigid_block {
    Eigen::MatrixXd columns;
    Eigen::Index rank;
};

rigid_block rigid_motions_of(const species_group& group, Eigen::Index species,
                             const std::vector<adapted_coordinate>& basis, const Eigen::MatrixXd& motions, bool linear,
                             int line_axis) {
    rigid_block result = {Eigen::MatrixXd::Zero(static_cast<Eigen::Index>(basis.size()), 6), 0};
    for (int motion = 0; motion < 6; ++motion) {
        const bool rotation = motion >= 3;
        if (!belongs(group, species, motion % 3, rotation)) {
            continue;
        }
        for (std::size_t a = 0; a < basis.size(); ++a) {
            double sum = 0.0;
            for (std::size_t k = 0; k < basis[a].coordinates.size(); ++k) {
                sum += basis[a].signs[k] * motions(basis[a].coordinates[k], motion);
            }
            result.columns(static_cast<Eigen::Index>(a), motion) = basis[a].weight * sum;
        }
        // The rotations of a linear molecule about directions that share a species with its line depend on one another.
        result.rank += linear && rotation && motion % 3 == line_axis ? 0 : 1;
    }
    return result;
}

/// Diagonalises a block in the space that is orthogonal to the rigid motions.
void diagonalise(block& of, Eigen::MatrixXd hessian, const rigid_block& rigid) {
    const Eigen::Index size = hessian.rows();
    const Eigen::Index vibrations = size - rigid.rank;
    if (vibrations == 0) {
        return;
    }
    // Reflections that carry the rigid motions onto the first `rank` coordinates, the longest ones first: where the
    // atoms of a linear molecule lie a little off their line, the rotation about it is by far the shortest, and is left
    // over.
    const Eigen::ColPivHouseholderQR<Eigen::MatrixXd> factors(rigid.columns);
    auto turn = factors.householderQ();
    turn.setLength(rigid.rank);
    hessian.applyOnTheLeft(turn.adjoint());
    hessian.applyOnTheRight(turn);
    const Eigen::SelfAdjointEigenSolver<Eigen::MatrixXd> solver(hessian.bottomRightCorner(vibrations, vibrations));
    if (solver.info() != Eigen::Success) {
        throw base::run_error("Hessian: its eigenvalues were not found");
    }
    of.values = solver.eigenvalues();
    of.vectors.setZero(size, vibrations);
    of.vectors.bottomRows(vibrations) = solver.eigenvectors();
    of.vectors.applyOnTheLeft(turn);
}

double frequency_of(double value) {
    return std::copysign(std::sqrt(std::abs(value) / amu_in_electron_masses), value) * hartree_in_wavenumbers;
}

/// A mode of a block.
struct place {
    double frequency;
    int species;
    Eigen::Index mode;
};

/// All modes in their order.
std::vector<place> sorted_modes(const std::vector<block>& blocks) {
    std::vector<place> places;
    for (std::size_t species = 0; species < blocks.size(); ++species) {
        for (Eigen::Index mode = 0; mode < blocks[species].values.size(); ++mode) {
            places.push_back({frequency_of(blocks[species].values(mode)), static_cast<int>(species), mode});
        }
    }
    std::sort(places.begin(), places.end(),
              [](const place& one, const place& other) { return one.frequency < other.frequency; });
    // Rounding must not decide which of two equal ones comes first.
    for (auto first = places.begin(); first != places.end();) {
        auto last = first + 1;
        while (last != places.end() && last->frequency - (last - 1)->frequency < same_frequency) {
            ++last;
        }
        std::sort(first, last, [](const place& one, const place& other) {
            return std::tie(one.species, one.mode) < std::tie(other.species, other.mode);
        });
        first = last;
    }
    return places;
}

/// 1 or -1, so that the largest component, or of several nearly equal ones the first, becomes positive.
double sign_of(const Eigen::Ref<const Eigen::VectorXd>& displacement) {
    constexpr double nearly = 1.0 - 1e-6;
    const double large = nearly * displacement.cwiseAbs().maxCoeff();
    Eigen::Index first = 0;
    while (std::abs(displacement(first)) < large) {
        ++first;
    }
    return std::copysign(1.0, displacement(first));
}

/// Mode `mode` of a block as Cartesian displacements (amu^-1/2).
Eigen::VectorXd cartesian(const block& from, Eigen::Index mode, const Eigen::VectorXd& masses) {
    Eigen::VectorXd result = Eigen::VectorXd::Zero(3 * masses.size());
    for (std::size_t a = 0; a < from.basis.size(); ++a) {
        const adapted_coordinate& combination = from.basis[a];
        const double size = combination.weight * from.vectors(static_cast<Eigen::Index>(a), mode);
        for (std::size_t k = 0; k < combination.coordinates.size(); ++k) {
            const Eigen::Index c = combination.coordinates[k];
            result(c) = combination.signs[k] * size / std::sqrt(masses(c / 3));
        }
    }
    return result;
}

void check_arguments(const Eigen::VectorXd& masses, const Eigen::Matrix3Xd& positions, const Eigen::MatrixXd& hessian,
                     const Eigen::Matrix3Xd& dipoles) {
    const Eigen::Index natom = masses.size();
    if (positions.cols() != natom) {
        size_error("positions", 3, natom);
    }
    if (hessian.rows() != 3 * natom || hessian.cols() != 3 * natom) {
        size_error("Hessian", 3 * natom, 3 * natom);
    }
    if (dipoles.cols() != 0 && dipoles.cols() != 3 * natom) {
        size_error("dipole derivatives", 3, 3 * natom);
    }
    check_finite(masses, "masses");
    check_finite(positions, "positions");
    check_finite(hessian, "Hessian");
    check_finite(dipoles, "dipole derivatives");
    for (Eigen::Index atom = 0; atom < natom; ++atom) {
        if (masses(atom) <= 0.0) {
            throw base::run_error("atom " + std::to_string(atom + 1) + ": expected a mass above 0, found " +
                                  std::to_string(masses(atom)));
        }
    }
}

/// The direction of the list that has the largest share in the line.
int main_axis(const fitted_line& line) {
    Eigen::Index axis = 0;
    line.direction.cwiseAbs().maxCoeff(&axis);
    return static_cast<int>(axis);
}

std::vector<block> solve_blocks(const Eigen::VectorXd& masses, const Eigen::Matrix3Xd& positions,
                                const Eigen::MatrixXd& hessian, const species_group& group, vibrations& result) {
    const Eigen::Matrix3Xd symmetric = symmetric_positions(group, positions);
    const fitted_line line = fit_line(symmetric);
    result.line_deviation = line.largest_distance;
    result.linear = line.largest_distance <= linear_tolerance;
    const Eigen::MatrixXd motions = rigid_motions(masses, symmetric);
    std::vector<block> blocks(group.species.size());
    for (std::size_t species = 0; species < blocks.size(); ++species) {
        block& of = blocks[species];
        const auto index = static_cast<Eigen::Index>(species);
        of.basis = adapted_coordinates(group, index, masses.size());
        if (!of.basis.empty()) {
            diagonalise(of, block_hessian(of.basis, masses, hessian),
                        rigid_motions_of(group, index, of.basis, motions, result.linear, main_axis(line)));
        }
    }
    return blocks;
}

}  // namespace

vibrations harmonic_vibrations(const Eigen::VectorXd& masses, const Eigen::Matrix3Xd& positions,
                               const Eigen::MatrixXd& hessian, const Eigen::Matrix3Xd& dipoles,
                               const species_group& group) {
    check_arguments(masses, positions, hessian, dipoles);
    vibrations result;
    if (masses.size() < 2) {
        return result;
    }
    const std::vector<block> blocks = solve_blocks(masses, positions, hessian, group, result);
    const std::vector<place> places = sorted_modes(blocks);
    const auto modes = static_cast<Eigen::Index>(places.size());
    result.frequencies.resize(modes);
    result.reduced_masses.resize(modes);
    result.force_constants.resize(modes);
    result.intensities.resize(dipoles.cols() == 0 ? 0 : modes);
    result.displacements.resize(3 * masses.size(), modes);
    for (Eigen::Index mode = 0; mode < modes; ++mode) {
        const place& at = places[static_cast<std::size_t>(mode)];
        const block& from = blocks[static_cast<std::size_t>(at.species)];
        const Eigen::VectorXd displacement = cartesian(from, at.mode, masses);
        const double reduced_mass = 1.0 / displacement.squaredNorm();
        result.frequencies(mode) = at.frequency;
        result.reduced_masses(mode) = reduced_mass;
        result.force_constants(mode) =
            std::abs(from.values(at.mode)) * reduced_mass * force_constant_in_mdyne_per_angstrom;
        if (dipoles.cols() != 0) {
            result.intensities(mode) = (dipoles * displacement).squaredNorm() * intensity_in_km_per_mol;
        }
        result.displacements.col(mode) = sign_of(displacement) * std::sqrt(reduced_mass) * displacement;
        result.species.push_back(at.species);
        if (at.frequency < 0.0) {
            ++result.imaginary;
        } else {
            result.zero_point_energy += at.frequency / hartree_in_wavenumbers / 2.0;
        }
    }
    return result;
}

}  // namespace displacement_generator::vibration
