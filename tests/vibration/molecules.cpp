#include "molecules.hpp"

#include <Eigen/Eigenvalues>
#include <Eigen/Geometry>
#include <Eigen/QR>
#include <cmath>
#include <limits>

#include "element/atomic_masses.hpp"
#include "symmetry/operations.hpp"
#include "symmetry/symmetry.hpp"

namespace displacement_generator::vibration_tests {

namespace {

constexpr double bohr = 0.529177210903;  // angstrom

Eigen::Matrix3d matrix_of(int number) {
    Eigen::Matrix3d result;
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j) {
            result(i, j) = symmetry::symm_op.matrix(number)(i + 1, j + 1);
        }
    }
    return result;
}

void add(molecule& to, int number, const Eigen::Vector3d& at) {
    to.numbers.conservativeResize(to.numbers.size() + 1);
    to.positions.conservativeResize(3, to.positions.cols() + 1);
    to.numbers.tail<1>()(0) = number;
    to.positions.rightCols<1>() = at;
}

}  // namespace

listing list(const molecule& from, bool std_orient, int disp_sign) {
    const int natom = static_cast<int>(from.numbers.size());
    const base::array2<double> x("x", 3, natom);
    const base::array1<int> nat("nat", 1, natom);
    const base::array1<double> mass("mass", 1, natom);
    for (int i = 1; i <= natom; ++i) {
        nat(i) = from.numbers(i - 1);
        mass(i) = nat(i);
        for (int j = 1; j <= 3; ++j) {
            x(j, i) = from.positions(j - 1, i - 1);
        }
    }
    const int n6 = 6 * natom;
    int ncalc = 0;
    listing result;
    const base::array1<int> n_calc_n6("n_calc_n6", 1, n6);
    const base::array1<int> m_calc("m_calc", 1, n6);
    const base::array1<bool> f_calc("f_calc", 1, n6);
    const base::array1<int> m_symm("m_symm", 1, n6);
    const base::array1<bool> op("op", 1, 8);
    const base::array2<int> jrels("jrels", natom, 8);
    symmetry::point_group(disp_sign, natom, x, nat, mass, 0.001F, std_orient, n6, ncalc, n_calc_n6, m_calc, f_calc,
                          m_symm, result.group, op, jrels);
    result.numbers = from.numbers;
    result.positions.resize(3, natom);
    for (int i = 1; i <= natom; ++i) {
        result.positions.col(i - 1) = Eigen::Vector3d(x(1, i), x(2, i), x(3, i)) / bohr;
    }
    std::vector<int> places(9, 0);
    for (int k = 1; k <= 8; ++k) {
        if (op(k)) {
            places.at(static_cast<std::size_t>(k)) = static_cast<int>(result.relations.symmetry.size());
            Eigen::VectorXi images(natom);
            for (int i = 1; i <= natom; ++i) {
                images(i - 1) = jrels(i, k) - 1;
            }
            result.relations.symmetry.push_back({matrix_of(k), images});
        }
    }
    result.relations.sources.resize(n6);
    result.relations.operations.resize(n6);
    for (int p = 1; p <= n6; ++p) {
        result.relations.sources(p - 1) = m_calc(p) - 1;
        result.relations.operations(p - 1) = places.at(static_cast<std::size_t>(m_symm(p)));
    }
    return result;
}

listing without_symmetry(const listing& from) {
    listing result = from;
    const auto n6 = static_cast<int>(6 * from.numbers.size());
    result.group = 1;
    result.relations.symmetry = {{Eigen::Matrix3d::Identity(), Eigen::VectorXi::LinSpaced(n6 / 6, 0, n6 / 6 - 1)}};
    result.relations.sources = Eigen::VectorXi::LinSpaced(n6, 0, n6 - 1);
    result.relations.operations = Eigen::VectorXi::Zero(n6);
    return result;
}

std::vector<int> operations_of(int group) {
    using namespace symmetry;
    switch (group) {
        case 2:
            return {identity, sxy};
        case 3:
            return {identity, c2z};
        case 4:
            return {identity, c2z, szx, syz};
        case 5:
            return {identity, c2z, c2y, c2x, inversion, sxy, szx, syz};
        case 6:
            return {identity, inversion};
        case 7:
            return {identity, c2z, inversion, sxy};
        case 8:
            return {identity, c2z, c2y, c2x};
        default:
            return {identity};
    }
}

molecule generate(const std::vector<int>& operations, std::mt19937& random) {
    std::uniform_real_distribution<double> along(0.6, 2.4);
    molecule result;
    // Kinds 6 to 9: one orbit in a general position, one on x, one in yz, and one more in a general position. What an
    // operation leaves in place is added once.
    for (int kind = 6; kind <= 9; ++kind) {
        Eigen::Vector3d at(along(random), along(random), along(random));
        if (kind == 7) {
            at(1) = at(2) = 0.0;
        } else if (kind == 8) {
            at(0) = 0.0;
        }
        for (const int number : operations) {
            const Eigen::Vector3d image = matrix_of(number) * at;
            bool is_new = true;
            for (Eigen::Index i = 0; i < result.positions.cols(); ++i) {
                is_new = is_new && (result.positions.col(i) - image).norm() > 1e-9;
            }
            if (is_new) {
                add(result, kind, image);
            }
        }
    }
    return result;
}

molecule water() {
    molecule result;
    add(result, 8, {0.0, 0.0, 0.11380895});
    add(result, 1, {0.0, 0.77218912, -0.45523579});
    add(result, 1, {0.0, -0.77218912, -0.45523579});
    return result;
}

molecule ethylene() {
    molecule result;
    for (const double side : {1.0, -1.0}) {
        add(result, 6, {0.0, 0.0, 0.665 * side});
        add(result, 1, {0.0, 0.92, 1.24 * side});
        add(result, 1, {0.0, -0.92, 1.24 * side});
    }
    return result;
}

molecule methane(bool turned) {
    molecule result;
    add(result, 6, {0.0, 0.0, 0.0});
    const double a = 0.63;
    const double b = a * std::sqrt(2.0);
    if (turned) {
        add(result, 1, {b, 0.0, a});
        add(result, 1, {-b, 0.0, a});
        add(result, 1, {0.0, b, -a});
        add(result, 1, {0.0, -b, -a});
    } else {
        add(result, 1, {a, a, a});
        add(result, 1, {-a, -a, a});
        add(result, 1, {a, -a, -a});
        add(result, 1, {-a, a, -a});
    }
    return result;
}

Eigen::VectorXd masses_of(const Eigen::VectorXi& numbers) {
    Eigen::VectorXd result(numbers.size());
    for (Eigen::Index i = 0; i < numbers.size(); ++i) {
        result(i) = element::main_isotope(numbers(i)).mass;
    }
    return result;
}

Eigen::MatrixXd random_hessian(const listing& of, std::mt19937& random) {
    const Eigen::Index size = 3 * of.numbers.size();
    std::uniform_real_distribution<double> element(-1.0, 1.0);
    Eigen::MatrixXd start(size, size);
    for (Eigen::Index i = 0; i < size; ++i) {
        for (Eigen::Index j = 0; j <= i; ++j) {
            start(i, j) = start(j, i) = element(random);
        }
    }
    Eigen::MatrixXd result = Eigen::MatrixXd::Zero(size, size);
    for (const vibration::operation& by : of.relations.symmetry) {
        Eigen::MatrixXd carry = Eigen::MatrixXd::Zero(size, size);
        for (Eigen::Index i = 0; i < size / 3; ++i) {
            carry.block<3, 3>(3 * by.images(i), 3 * i) = by.matrix;
        }
        result += carry * start * carry.transpose();
    }
    return result / static_cast<double>(of.relations.symmetry.size());
}

Eigen::MatrixXd spring_hessian(const Eigen::VectorXi& numbers, const Eigen::Matrix3Xd& positions) {
    const Eigen::Index natom = numbers.size();
    Eigen::MatrixXd result = Eigen::MatrixXd::Zero(3 * natom, 3 * natom);
    for (Eigen::Index i = 0; i < natom; ++i) {
        for (Eigen::Index j = 0; j < i; ++j) {
            const Eigen::Vector3d apart = positions.col(i) - positions.col(j);
            const double constant = (0.7 + 0.05 * numbers(i) * numbers(j)) * std::exp(-0.5 * apart.norm());
            const Eigen::Matrix3d spring = constant * apart.normalized() * apart.normalized().transpose();
            result.block<3, 3>(3 * i, 3 * i) += spring;
            result.block<3, 3>(3 * j, 3 * j) += spring;
            result.block<3, 3>(3 * i, 3 * j) -= spring;
            result.block<3, 3>(3 * j, 3 * i) -= spring;
        }
    }
    return result;
}

Eigen::Matrix3Xd charge_derivatives(const Eigen::VectorXi& numbers) {
    Eigen::Matrix3Xd result(3, 3 * numbers.size());
    for (Eigen::Index i = 0; i < numbers.size(); ++i) {
        result.middleCols<3>(3 * i) = Eigen::Matrix3d::Identity() * (0.3 - 0.07 * numbers(i));
    }
    return result;
}

computed_points compute(const listing& of, const Eigen::MatrixXd& hessian, std::mt19937& random) {
    const Eigen::Index points = of.relations.sources.size();
    std::uniform_real_distribution<double> step(0.008, 0.012);
    computed_points result;
    const double none = std::numeric_limits<double>::quiet_NaN();
    result.forces = Eigen::MatrixXd::Constant(points / 2, points, none);
    result.steps = Eigen::VectorXd::Constant(points, none);
    for (Eigen::Index p = 0; p < points; ++p) {
        if (of.relations.sources(p) == p) {
            result.steps(p) = p % 2 == 0 ? -step(random) : step(random);
            result.forces.col(p) = -hessian.col(p / 2) * result.steps(p);
        }
    }
    return result;
}

Eigen::VectorXd plain_frequencies(const Eigen::VectorXd& masses, const Eigen::Matrix3Xd& positions,
                                  const Eigen::MatrixXd& hessian) {
    const Eigen::Index size = hessian.rows();
    Eigen::VectorXd roots(size);
    for (Eigen::Index c = 0; c < size; ++c) {
        roots(c) = std::sqrt(masses(c / 3) * 1822.888486209);
    }
    const Eigen::Vector3d centre = positions * masses / masses.sum();
    Eigen::MatrixXd rigid(size, 6);
    for (Eigen::Index c = 0; c < size; ++c) {
        const Eigen::Vector3d arm = positions.col(c / 3) - centre;
        for (int axis = 0; axis < 3; ++axis) {
            rigid(c, axis) = c % 3 == axis ? roots(c) : 0.0;
            rigid(c, axis + 3) = roots(c) * Eigen::Vector3d::Unit(axis).cross(arm)(c % 3);
        }
    }
    // The rigid motions' own Gram matrix makes them orthonormal; a near-zero one of a linear molecule falls away.
    const Eigen::SelfAdjointEigenSolver<Eigen::MatrixXd> gram(rigid.transpose() * rigid);
    Eigen::MatrixXd projector = Eigen::MatrixXd::Zero(size, size);
    Eigen::Index motions = 0;
    for (Eigen::Index k = 0; k < 6; ++k) {
        if (gram.eigenvalues()(k) > 1e-7 * gram.eigenvalues()(5)) {
            const Eigen::VectorXd unit = (rigid * gram.eigenvectors().col(k)).normalized();
            projector += unit * unit.transpose();
            ++motions;
        }
    }
    const Eigen::MatrixXd keep = Eigen::MatrixXd::Identity(size, size) - projector;
    const Eigen::MatrixXd weighted = roots.cwiseInverse().asDiagonal() * hessian * roots.cwiseInverse().asDiagonal();
    constexpr double far_above = 1.0;
    const Eigen::SelfAdjointEigenSolver<Eigen::MatrixXd> all(keep * weighted * keep + far_above * projector,
                                                             Eigen::EigenvaluesOnly);
    Eigen::VectorXd result(size - motions);
    for (Eigen::Index k = 0; k < result.size(); ++k) {
        const double value = all.eigenvalues()(k);
        result(k) = (value < 0.0 ? -1.0 : 1.0) * std::sqrt(std::abs(value)) * 219474.63136320;
    }
    return result;
}

vibration::species_group group_of(const listing& of, const Eigen::VectorXd& masses, const Eigen::MatrixXd& hessian) {
    return vibration::find_species_group(masses, of.positions, hessian, of.relations.symmetry);
}

vibration::vibrations vibrate(const listing& of, const Eigen::VectorXd& masses, const Eigen::MatrixXd& hessian) {
    return vibration::harmonic_vibrations(masses, of.positions, hessian, charge_derivatives(of.numbers),
                                          group_of(of, masses, hessian));
}

std::vector<std::string> labels(const vibration::vibrations& modes, const vibration::species_group& group) {
    std::vector<std::string> result;
    for (const int species : modes.species) {
        result.push_back(group.species.at(static_cast<std::size_t>(species)));
    }
    return result;
}

}  // namespace displacement_generator::vibration_tests
