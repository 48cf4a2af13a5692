#include <gtest/gtest.h>

#include <Eigen/Geometry>
#include <cmath>
#include <limits>
#include <numbers>
#include <random>

#include "molecules.hpp"
#include "support.hpp"
#include "vibration/constants.hpp"

using namespace displacement_generator;
using namespace displacement_generator::vibration_tests;

namespace {

const vibration::species_group no_symmetry(Eigen::Index natom) {
    const Eigen::MatrixXd hessian = Eigen::MatrixXd::Zero(3 * natom, 3 * natom);
    return vibration::find_species_group(Eigen::VectorXd::Ones(natom), Eigen::Matrix3Xd::Zero(3, natom), hessian, {});
}

vibration::vibrations plain(const Eigen::VectorXd& masses, const Eigen::Matrix3Xd& positions,
                            const Eigen::MatrixXd& hessian, const Eigen::Matrix3Xd& dipoles = {}) {
    return vibration::harmonic_vibrations(masses, positions, hessian, dipoles, no_symmetry(masses.size()));
}

/// A spring between two atoms.
void add_spring(Eigen::MatrixXd& hessian, const Eigen::Matrix3Xd& positions, Eigen::Index i, Eigen::Index j,
                double constant) {
    Eigen::VectorXd stretch = Eigen::VectorXd::Zero(hessian.rows());
    stretch.segment<3>(3 * i) = (positions.col(i) - positions.col(j)).normalized();
    stretch.segment<3>(3 * j) = -stretch.segment<3>(3 * i);
    hessian += constant * stretch * stretch.transpose();
}

TEST(constants, are_those_that_codata_gives) {
    EXPECT_NEAR(vibration::bohr_in_angstrom, 0.529177210903, 1e-15);
    EXPECT_NEAR(vibration::amu_in_electron_masses, 1822.888486209, 1e-6);
    EXPECT_NEAR(vibration::hartree_in_wavenumbers, 219474.63136320, 1e-6);
    EXPECT_NEAR(vibration::force_constant_in_mdyne_per_angstrom, 15.56893, 1e-5);
    // 42.2561 km/mol for one (debye/angstrom)^2/amu, 4.80320471 debye for one e angstrom
    EXPECT_NEAR(vibration::intensity_in_km_per_mol, 42.2561 * 4.80320471 * 4.80320471, 0.01);
    EXPECT_NEAR(vibration::linear_tolerance * vibration::bohr_in_angstrom, 0.001, 1e-15);
}

TEST(harmonic_vibrations, of_a_diatomic_molecule_by_hand) {
    // In any direction. omega^2 = k / mu; in SI units, with nothing of the library's constants.
    Eigen::VectorXd masses(2);
    masses << 1.00782503, 34.96885269;
    const Eigen::Vector3d direction = Eigen::Vector3d(1.0, -2.0, 0.5).normalized();
    Eigen::Matrix3Xd positions(3, 2);
    positions.col(0) = Eigen::Vector3d(0.3, 0.1, 5.0);
    positions.col(1) = positions.col(0) + 2.41 * direction;
    Eigen::MatrixXd hessian = Eigen::MatrixXd::Zero(6, 6);
    add_spring(hessian, positions, 0, 1, 0.33);
    // A moment q r along the bond: the derivatives are q d d^T and its negative.
    Eigen::Matrix3Xd dipoles(3, 6);
    dipoles << -0.2 * direction * direction.transpose(), 0.2 * direction * direction.transpose();
    const vibration::vibrations modes = plain(masses, positions, hessian, dipoles);
    ASSERT_EQ(modes.frequencies.size(), 1);
    EXPECT_TRUE(modes.linear);
    const double reduced = masses.prod() / masses.sum();
    const double newton_per_metre = 0.33 * 4.3597447222071e-18 / std::pow(5.29177210903e-11, 2);
    const double omega = std::sqrt(newton_per_metre / (reduced * 1.66053906660e-27));
    EXPECT_NEAR(modes.frequencies(0), omega / (2.0 * std::numbers::pi * 299792458.0) / 100.0, 1e-6);
    // Normalised displacements are in proportion m2 : -m1.
    const double length = std::hypot(masses(0), masses(1));
    EXPECT_NEAR(modes.displacements.col(0).head<3>().norm(), masses(1) / length, 1e-14);
    EXPECT_NEAR(modes.displacements.col(0).tail<3>().norm(), masses(0) / length, 1e-14);
    const double cartesian = masses(0) * std::pow(masses(1) / length, 2) + masses(1) * std::pow(masses(0) / length, 2);
    EXPECT_NEAR(modes.reduced_masses(0), cartesian, 1e-12);
    EXPECT_NEAR(modes.force_constants(0), newton_per_metre / 100.0 * cartesian / reduced, 1e-10);
    EXPECT_NEAR(modes.intensities(0), 974.880 * 0.2 * 0.2 / reduced, 1e-3);
    EXPECT_NEAR(modes.zero_point_energy, 0.5 * omega * 6.62607015e-34 / (2.0 * std::numbers::pi) / 4.3597447222071e-18,
                1e-12);
    EXPECT_EQ(modes.imaginary, 0);
}

TEST(harmonic_vibrations, of_equal_atoms_have_the_mass_of_one) {
    // Gaussian's reduced mass of a homonuclear molecule is m, since displacements are normalised in Cartesian ones.
    Eigen::Matrix3Xd positions = Eigen::Matrix3Xd::Zero(3, 2);
    positions(2, 1) = 2.0;
    Eigen::MatrixXd hessian = Eigen::MatrixXd::Zero(6, 6);
    add_spring(hessian, positions, 0, 1, 1.0);
    const vibration::vibrations modes = plain(Eigen::VectorXd::Constant(2, 14.0), positions, hessian);
    EXPECT_NEAR(modes.reduced_masses(0), 14.0, 1e-12);
    EXPECT_EQ(modes.intensities.size(), 0);
    EXPECT_NEAR(modes.displacements(2, 0), std::sqrt(0.5), 1e-14);  // the first of two equal ones is positive
    // Displacements are in proportion m2 : -m1.
    for (const double heavier : {1e-7, 1e-5}) {
        const vibration::vibrations other = plain(Eigen::Vector2d(14.0 * (1.0 + heavier), 14.0), positions, hessian);
        EXPECT_NEAR(other.displacements(2, 0), std::copysign(std::sqrt(0.5), 1e-6 - heavier), 1e-5) << heavier;
    }
}

TEST(harmonic_vibrations, of_a_linear_triatomic_molecule_by_hand) {
    // XY2: nu1^2 = k/mY, nu3^2 = k (1/mY + 2/mX), and the bend 2 (1/mY + 2/mX) f with f per bond length squared.
    const double k = 0.9;
    const double f = 0.08;
    const double length = 2.2;
    Eigen::VectorXd masses(3);
    masses << 12.0, 16.0, 16.0;
    for (const Eigen::Vector3d& direction :
         {Eigen::Vector3d(0.0, 0.0, 1.0), Eigen::Vector3d(1.0, 1.0, 0.0), Eigen::Vector3d(0.3, -1.0, 0.7)}) {
        SCOPED_TRACE(testing::Message() << direction.transpose());
        const Eigen::Vector3d along = direction.normalized();
        Eigen::Matrix3Xd positions(3, 3);
        positions << Eigen::Vector3d::Zero(), length * along, -length * along;
        Eigen::MatrixXd hessian = Eigen::MatrixXd::Zero(9, 9);
        add_spring(hessian, positions, 0, 1, k);
        add_spring(hessian, positions, 0, 2, k);
        // Bends: both ends' displacements across the line, less twice the centre's.
        const Eigen::Vector3d across = along.unitOrthogonal();
        for (const Eigen::Vector3d& side : {across, Eigen::Vector3d(along.cross(across))}) {
            Eigen::VectorXd bend(9);
            bend << -2.0 * side, side, side;
            hessian += f * bend * bend.transpose();
        }
        molecule atoms = {Eigen::Vector3i(6, 8, 8), positions * vibration::bohr_in_angstrom};
        const listing of = list(atoms, false);
        const vibration::vibrations modes = vibrate(of, masses, hessian);
        ASSERT_EQ(modes.frequencies.size(), 4);
        EXPECT_TRUE(modes.linear);
        const auto wavenumber = [](double per_amu) { return 5140.487153 * std::sqrt(per_amu); };
        EXPECT_NEAR(modes.frequencies(0), wavenumber(2.0 * f * (1.0 / 16.0 + 2.0 / 12.0)), 1e-4);
        EXPECT_NEAR(modes.frequencies(1), modes.frequencies(0), 1e-8);
        EXPECT_NEAR(modes.frequencies(2), wavenumber(k / 16.0), 1e-4);
        EXPECT_NEAR(modes.frequencies(3), wavenumber(k * (1.0 / 16.0 + 2.0 / 12.0)), 1e-4);
    }
}

TEST(harmonic_vibrations, are_those_of_a_plain_diagonalisation) {
    std::mt19937 random(31);
    for (int group = 1; group <= 8; ++group) {
        for (int repeat = 0; repeat < 3; ++repeat) {
            SCOPED_TRACE(group);
            const listing of = list(generate(operations_of(group), random));
            const Eigen::VectorXd masses = masses_of(of.numbers);
            for (const Eigen::MatrixXd& hessian :
                 {random_hessian(of, random), spring_hessian(of.numbers, of.positions)}) {
                const vibration::vibrations modes = vibrate(of, masses, hessian);
                const Eigen::VectorXd expected = plain_frequencies(masses, of.positions, hessian);
                ASSERT_EQ(modes.frequencies.size(), expected.size());
                EXPECT_EQ(expected.size(), 3 * of.numbers.size() - 6);
                // Springs leave motions free where atoms have too few of them; a root of rounding is no frequency.
                for (Eigen::Index mode = 0; mode < expected.size(); ++mode) {
                    if (std::abs(expected(mode)) > 5.0) {
                        EXPECT_NEAR(modes.frequencies(mode), expected(mode), 1e-6);
                    }
                }
                EXPECT_EQ(modes.imaginary, (modes.frequencies.array() < 0.0).count());
            }
        }
    }
}

TEST(harmonic_vibrations, do_not_change_with_the_frame) {
    std::mt19937 random(32);
    const listing upright = list(generate(operations_of(7), random));
    const Eigen::VectorXd masses = masses_of(upright.numbers);
    const vibration::vibrations modes = vibrate(upright, masses, spring_hessian(upright.numbers, upright.positions));
    const Eigen::Quaterniond turn = Eigen::Quaterniond(0.3, -0.5, 0.7, 0.2).normalized();
    listing askew = without_symmetry(upright);
    askew.positions = turn.toRotationMatrix() * upright.positions;
    askew.positions.colwise() += Eigen::Vector3d(1.0, -4.0, 2.0);
    const vibration::vibrations same = vibrate(askew, masses, spring_hessian(askew.numbers, askew.positions));
    EXPECT_LT((modes.frequencies - same.frequencies).cwiseAbs().maxCoeff(), 1e-6);
    EXPECT_LT((modes.reduced_masses - same.reduced_masses).cwiseAbs().maxCoeff(), 1e-6);
    EXPECT_LT((modes.force_constants - same.force_constants).cwiseAbs().maxCoeff(), 1e-8);
    EXPECT_LT((modes.intensities - same.intensities).cwiseAbs().maxCoeff(), 1e-6);
}

TEST(harmonic_vibrations, have_no_share_in_rigid_motions) {
    std::mt19937 random(33);
    const listing of = list(generate(operations_of(4), random));
    const Eigen::VectorXd masses = masses_of(of.numbers);
    const vibration::vibrations modes = vibrate(of, masses, random_hessian(of, random));
    const Eigen::Vector3d centre = of.positions * masses / masses.sum();
    for (Eigen::Index mode = 0; mode < modes.displacements.cols(); ++mode) {
        EXPECT_NEAR(modes.displacements.col(mode).norm(), 1.0, 1e-13);
        Eigen::Vector3d momentum = Eigen::Vector3d::Zero();
        Eigen::Vector3d spin = Eigen::Vector3d::Zero();
        for (Eigen::Index i = 0; i < masses.size(); ++i) {
            const Eigen::Vector3d moved = modes.displacements.col(mode).segment<3>(3 * i);
            momentum += masses(i) * moved;
            spin += masses(i) * Eigen::Vector3d(of.positions.col(i) - centre).cross(moved);
        }
        EXPECT_LT(momentum.norm(), 1e-11);
        EXPECT_LT(spin.norm(), 1e-11);
    }
    // Mass-weighted, they are orthogonal to one another.
    for (Eigen::Index one = 0; one < modes.displacements.cols(); ++one) {
        for (Eigen::Index other = 0; other < one; ++other) {
            double sum = 0.0;
            for (Eigen::Index c = 0; c < modes.displacements.rows(); ++c) {
                sum += masses(c / 3) * modes.displacements(c, one) * modes.displacements(c, other);
            }
            EXPECT_LT(std::abs(sum), 1e-11);
        }
    }
}

TEST(harmonic_vibrations, keep_the_sum_of_the_intensities) {
    // Over all modes and rigid motions, the sum of |d mu / dQ|^2 is that over coordinates of |d mu / dx|^2 / m. Fixed
    // charges that add up to zero do not feel a translation; rotations take |mu x axis|^2 / I, here of a linear
    // molecule.
    Eigen::Matrix3Xd positions = Eigen::Matrix3Xd::Zero(3, 3);
    positions(2, 1) = 2.2;
    positions(2, 2) = -2.2;
    Eigen::VectorXd masses(3);
    masses << 12.0, 16.0, 16.0;
    const std::vector<double> charges = {0.8, -0.4, -0.4};
    Eigen::Matrix3Xd dipoles(3, 9);
    double sum = 0.0;
    for (Eigen::Index i = 0; i < 3; ++i) {
        const double charge = charges[static_cast<std::size_t>(i)];
        dipoles.middleCols<3>(3 * i) = charge * Eigen::Matrix3d::Identity();
        sum += 3.0 * charge * charge / masses(i);
    }
    Eigen::MatrixXd hessian = Eigen::MatrixXd::Identity(9, 9);
    const vibration::vibrations modes = plain(masses, positions, hessian, dipoles);
    EXPECT_NEAR(modes.intensities.sum(), sum * vibration::intensity_in_km_per_mol, 1e-9);
    EXPECT_GT(modes.intensities.sum(), 1.0);
}

TEST(harmonic_vibrations, obey_the_product_rule_of_isotopes) {
    // Teller and Redlich, for all modes together: the product of w'/w is that of
    // sqrt((m/m')^3 per atom) sqrt((M'/M)^3) sqrt(det I' / det I).
    std::mt19937 random(34);
    const listing of = list(generate(operations_of(1), random));
    ASSERT_EQ(of.numbers.size(), 4);
    const Eigen::MatrixXd hessian = spring_hessian(of.numbers, of.positions);
    const Eigen::VectorXd light = masses_of(of.numbers);
    Eigen::VectorXd heavy = light;
    heavy(1) *= 1.9;
    heavy(3) += 2.0;
    const auto inertia = [&](const Eigen::VectorXd& masses) {
        const Eigen::Vector3d centre = of.positions * masses / masses.sum();
        Eigen::Matrix3d sum = Eigen::Matrix3d::Zero();
        for (Eigen::Index i = 0; i < masses.size(); ++i) {
            const Eigen::Vector3d arm = of.positions.col(i) - centre;
            sum += masses(i) * (arm.squaredNorm() * Eigen::Matrix3d::Identity() - arm * arm.transpose());
        }
        return sum.determinant();
    };
    const double expected = std::pow((light.array() / heavy.array()).prod(), 1.5) *
                            std::pow(heavy.sum() / light.sum(), 1.5) * std::sqrt(inertia(heavy) / inertia(light));
    const Eigen::VectorXd before = vibrate(of, light, hessian).frequencies;
    const Eigen::VectorXd after = vibrate(of, heavy, hessian).frequencies;
    EXPECT_NEAR((after.array() / before.array()).prod(), expected, 1e-8 * expected);
    EXPECT_LT(expected, 0.9);
}

TEST(harmonic_vibrations, put_imaginary_ones_first) {
    std::mt19937 random(35);
    const listing of = list(generate(operations_of(1), random));
    const Eigen::VectorXd masses = masses_of(of.numbers);
    const vibration::vibrations up = vibrate(of, masses, spring_hessian(of.numbers, of.positions));
    const vibration::vibrations down = vibrate(of, masses, -spring_hessian(of.numbers, of.positions));
    EXPECT_LT((up.frequencies + down.frequencies.reverse()).cwiseAbs().maxCoeff(), 1e-6);
    EXPECT_LT((up.force_constants - down.force_constants.reverse()).cwiseAbs().maxCoeff(), 1e-9);
    EXPECT_EQ(down.imaginary, 6);
    EXPECT_EQ(down.zero_point_energy, 0.0);
    EXPECT_NEAR(up.zero_point_energy, up.frequencies.sum() / 2.0 / 219474.63136320, 1e-9);
}

TEST(harmonic_vibrations, of_one_atom_there_are_none) {
    const vibration::vibrations modes =
        plain(Eigen::VectorXd::Ones(1), Eigen::Matrix3Xd::Zero(3, 1), Eigen::MatrixXd::Identity(3, 3));
    EXPECT_EQ(modes.frequencies.size(), 0);
    EXPECT_EQ(modes.zero_point_energy, 0.0);
    EXPECT_TRUE(modes.species.empty());
}

TEST(harmonic_vibrations, tell_linear_from_bent_by_a_thousandth_of_an_angstrom) {
    for (const double off : {0.0012, 0.0018}) {
        Eigen::Matrix3Xd positions = Eigen::Matrix3Xd::Zero(3, 3);
        positions(2, 1) = 2.0;
        positions(2, 2) = -2.0;
        positions(0, 0) = off / vibration::bohr_in_angstrom;  // two thirds of it from the line that fits best
        const vibration::vibrations modes = plain(Eigen::VectorXd::Ones(3), positions, Eigen::MatrixXd::Identity(9, 9));
        EXPECT_NEAR(modes.line_deviation, off * 2.0 / 3.0 / vibration::bohr_in_angstrom, 1e-6);
        EXPECT_EQ(modes.linear, off < 0.0015);
        EXPECT_EQ(modes.frequencies.size(), off < 0.0015 ? 4 : 3);
    }
}

TEST(harmonic_vibrations, of_a_line_do_not_change_where_its_atoms_lie_a_little_off_it) {
    // As those of a molecule that was optimised do. The rotation about the line has a direction then, but is none that
    // is left out.
    std::mt19937 random(36);
    std::uniform_real_distribution<double> noise(-1e-4, 1e-4);
    for (int repeat = 0; repeat < 30; ++repeat) {
        SCOPED_TRACE(repeat);
        Eigen::Matrix3Xd positions = Eigen::Matrix3Xd::Zero(3, 3);
        positions.row(repeat % 3) << 0.0, 2.2, -2.2;
        positions += positions.unaryExpr([&](double) { return noise(random); });
        Eigen::MatrixXd hessian = Eigen::MatrixXd::Zero(9, 9);
        for (int axis = 0; axis < 3; ++axis) {
            Eigen::VectorXd motion = Eigen::VectorXd::Zero(9);
            motion(axis) = -2.0;
            motion(3 + axis) = 1.0;
            motion(6 + axis) = 1.0;
            hessian += (axis == repeat % 3 ? 0.45 : 0.08) * motion * motion.transpose();
        }
        add_spring(hessian, positions, 1, 2, 0.45);
        const vibration::vibrations modes = plain(Eigen::Vector3d(12.0, 16.0, 16.0), positions, hessian);
        ASSERT_EQ(modes.frequencies.size(), 4);
        const double per_amu = 1.0 / 16.0 + 2.0 / 12.0;
        const double bend = 5140.487153 * std::sqrt(2.0 * 0.08 * per_amu);
        EXPECT_NEAR(modes.frequencies(0), bend, 0.01);
        EXPECT_NEAR(modes.frequencies(1), bend, 0.01);
    }
}

TEST(harmonic_vibrations, refuse_what_does_not_fit) {
    const Eigen::Matrix3Xd positions = Eigen::Matrix3Xd::Identity(3, 2);
    const Eigen::MatrixXd hessian = Eigen::MatrixXd::Identity(6, 6);
    Eigen::VectorXd masses = Eigen::VectorXd::Ones(2);
    const auto message = [&](const Eigen::Matrix3Xd& at, const Eigen::MatrixXd& of, const Eigen::Matrix3Xd& dipoles) {
        return support::stopped_with([&] { plain(masses, at, of, dipoles); });
    };
    const Eigen::Matrix3Xd none(3, 0);
    EXPECT_EQ(message(positions, hessian, none), "no error");
    EXPECT_EQ(message(Eigen::Matrix3Xd::Identity(3, 3), hessian, none),
              "positions: expected 3 x 2 values|standard error|2");
    for (const int rows : {5, 6}) {
        EXPECT_EQ(message(positions, Eigen::MatrixXd::Identity(rows, 11 - rows), none),
                  "Hessian: expected 6 x 6 values|standard error|2");
    }
    EXPECT_EQ(message(positions, hessian, Eigen::Matrix3Xd::Zero(3, 5)),
              "dipole derivatives: expected 3 x 6 values|standard error|2");
    EXPECT_EQ(message(positions, hessian / 0.0, none), "Hessian: found a value that is not finite|standard error|2");
    EXPECT_EQ(message(positions / 0.0, hessian, none), "positions: found a value that is not finite|standard error|2");
    EXPECT_EQ(message(positions, hessian, Eigen::Matrix3Xd::Ones(3, 6) / 0.0),
              "dipole derivatives: found a value that is not finite|standard error|2");
    EXPECT_EQ(message(Eigen::Matrix3Xd::Zero(3, 2), hessian, none),
              "all atoms lie at one place: expected a molecule|standard error|2");
    masses(1) = 0.0;
    EXPECT_EQ(message(positions, hessian, none), "atom 2: expected a mass above 0, found 0.000000|standard error|2");
    masses(1) = std::numeric_limits<double>::infinity();
    EXPECT_EQ(message(positions, hessian, none), "masses: found a value that is not finite|standard error|2");
}

TEST(harmonic_vibrations, refuse_a_hessian_whose_sums_are_too_large) {
    EXPECT_EQ(support::stopped_with([] {
                  plain(Eigen::VectorXd::Ones(3), Eigen::Matrix3Xd::Identity(3, 3),
                        Eigen::MatrixXd::Constant(9, 9, 1.7e308));
              }),
              "Hessian: its eigenvalues were not found|standard error|2");
}

}  // namespace
