#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "base/error.hpp"
#include "base/text.hpp"
#include "carried_point.hpp"
#include "symmetry/operations.hpp"
#include "symmetry/symmetry.hpp"
#include "vibration/vibration.hpp"

namespace displacement_generator::vibration {

namespace {

// The operations of the list change the signs of x, y and z, and nothing else. A set of them is a set of bits: bit k is
// operation k of 1..8. What one of them does is a triple of bits as well: x, y and z change their sign.
constexpr unsigned x_bit = 1;
constexpr unsigned y_bit = 2;
constexpr unsigned z_bit = 4;
constexpr std::array<unsigned, 9> flips = {0,                      // (operations count from 1)
                                           0,                      // E
                                           x_bit | y_bit,          // C2z
                                           x_bit | z_bit,          // C2y
                                           y_bit | z_bit,          // C2x
                                           x_bit | y_bit | z_bit,  // I
                                           z_bit,                  // Sxy
                                           y_bit,                  // Szx
                                           x_bit};                 // Syz

// Each species is that of a product of x, y and z about the group's own axes: which of the three are in it, in the
// order of the labels in the symmetry tables.
constexpr unsigned xy = x_bit | y_bit;
constexpr unsigned xz = x_bit | z_bit;
constexpr unsigned yz = y_bit | z_bit;
constexpr unsigned xyz = x_bit | y_bit | z_bit;
constexpr std::array<std::array<unsigned, 8>, 9> products = {{
    {},                                         // (groups count from 1)
    {0},                                        // C1   A
    {0, z_bit},                                 // CS   A' A"
    {0, x_bit},                                 // C2   A B
    {0, xy, x_bit, y_bit},                      // C2V  A1 A2 B1 B2
    {0, xyz, xy, z_bit, xz, y_bit, yz, x_bit},  // D2H  Ag Au B1g B1u B2g B2u B3g B3u
    {0, x_bit},                                 // CI   Ag Au
    {0, z_bit, xz, x_bit},                      // C2H  Ag Au Bg Bu
    {0, z_bit, y_bit, x_bit},                   // D2   A B1 B2 B3
}};

using operation_set = unsigned;

constexpr bool holds(operation_set set, int number) { return (set >> static_cast<unsigned>(number) & 1U) != 0; }

std::string trimmed(std::string_view label) { return std::string(base::left_adjusted(base::trimmed(label))); }

std::string name_of(int number) { return trimmed(std::string_view(symmetry::op_name(number))); }

/// The number 1..8 of an operation, by its matrix.
int number_of(const operation& listed, std::size_t place) {
    for (int number = 1; number <= symmetry::tested_operations; ++number) {
        Eigen::Vector3d signs;
        for (int j = 0; j < 3; ++j) {
            signs(j) = symmetry::symm_op.matrix(number)(j + 1, j + 1);
        }
        if (listed.matrix == Eigen::Matrix3d(signs.asDiagonal())) {
            return number;
        }
    }
    throw base::run_error("operation " + std::to_string(place + 1) +
                          ": expected a matrix with 1 or -1 on its diagonal and 0 elsewhere");
}

/// Largest change of an element of the Hessian under an operation.
double hessian_variance(const Eigen::MatrixXd& hessian, const operation& by) {
    const Eigen::Index size = hessian.rows();
    double largest = 0.0;
    for (Eigen::Index column = 0; column < size; ++column) {
        const Eigen::Index image_column = Eigen::Index{3} * by.images(column / 3) + column % 3;
        const double column_sign = by.matrix(column % 3, column % 3);
        for (Eigen::Index atom = 0; atom < size / 3; ++atom) {
            const auto image = hessian.col(image_column).segment<3>(3 * static_cast<Eigen::Index>(by.images(atom)));
            const auto own = hessian.col(column).segment<3>(3 * atom);
            const Eigen::Vector3d carried = column_sign * by.matrix.diagonal().cwiseProduct(image);
            largest = std::max(largest, (carried - own).cwiseAbs().maxCoeff());
        }
    }
    return largest;
}

/// Why an operation is none of this molecule's; empty where it is.
std::string reason_against(const operation& by, const Eigen::VectorXd& masses, const Eigen::Matrix3Xd& positions,
                           double variance, double allowed_variance) {
    for (Eigen::Index atom = 0; atom < masses.size(); ++atom) {
        if (std::abs(masses(by.images(atom)) - masses(atom)) > mass_tolerance) {
            return "the masses differ";
        }
    }
    for (Eigen::Index atom = 0; atom < masses.size(); ++atom) {
        if ((by.matrix * positions.col(atom) - positions.col(by.images(atom))).norm() > position_tolerance) {
            return "the positions differ";
        }
    }
    return variance > allowed_variance ? "the Hessian differs" : "";
}

/// The operations 1..8 of the list that hold, and what each changes.
struct candidates {
    std::array<std::optional<operation>, 9> held;
    std::array<double, 9> variance = {};
};

/// Whether the set is a group, and the images of a product are those of its factors, one after the other.
bool is_group(operation_set set, const candidates& from) {
    for (int first = 1; first <= symmetry::tested_operations; ++first) {
        if (!holds(set, first)) {
            continue;
        }
        for (int second = 1; second <= symmetry::tested_operations; ++second) {
            if (!holds(set, second)) {
                continue;
            }
            const unsigned flip =
                flips.at(static_cast<std::size_t>(first)) ^ flips.at(static_cast<std::size_t>(second));
            const auto* const found = std::find(flips.begin() + 1, flips.end(), flip);
            const int product = static_cast<int>(found - flips.begin());
            if (!holds(set, product)) {
                return false;
            }
            const Eigen::VectorXi& one = from.held.at(static_cast<std::size_t>(first))->images;
            const Eigen::VectorXi& other = from.held.at(static_cast<std::size_t>(second))->images;
            const Eigen::VectorXi& both = from.held.at(static_cast<std::size_t>(product))->images;
            for (Eigen::Index atom = 0; atom < both.size(); ++atom) {
                if (both(atom) != one(other(atom))) {
                    return false;
                }
            }
        }
    }
    return true;
}

/// Whether `one` is to be preferred to `other`: it has more operations, or as many and the lowest in which they differ.
bool is_preferred(operation_set one, operation_set other) {
    if (std::popcount(one) != std::popcount(other)) {
        return std::popcount(one) > std::popcount(other);
    }
    const operation_set differing = one ^ other;
    const operation_set lowest = differing & ~(differing - 1);
    return (one & lowest) != 0;
}

/// The best group among the candidates. E alone is always one.
operation_set best_group(const candidates& from) {
    operation_set held = 0;
    for (int number = 1; number <= symmetry::tested_operations; ++number) {
        held |= from.held.at(static_cast<std::size_t>(number)) ? 1U << static_cast<unsigned>(number) : 0U;
    }
    operation_set best = 1U << symmetry::identity;
    for (operation_set set = 0; set <= held; ++set) {
        if ((set & ~held) == 0 && holds(set, symmetry::identity) && is_preferred(set, best) && is_group(set, from)) {
            best = set;
        }
    }
    return best;
}

/// A group of the tables, and which directions of the list are its own x, y and z.
struct named_group {
    int number;
    std::array<unsigned, 3> axes;
};

/// The axes once x or y has changed places with z, if that is the main direction.
std::array<unsigned, 3> axes_about(unsigned main) {
    if (main == x_bit) {
        return {z_bit, y_bit, x_bit};
    }
    return main == y_bit ? std::array<unsigned, 3>{x_bit, z_bit, y_bit} : std::array<unsigned, 3>{x_bit, y_bit, z_bit};
}

/// The direction that a turn or a mirror plane belongs to.
unsigned direction_of(int number) {
    const unsigned flip = flips.at(static_cast<std::size_t>(number));
    return number <= symmetry::c2x ? xyz & ~flip : flip;
}

/// Of the numbers first..last the one that the set holds; 0 where there is none.
int one_of(operation_set set, int first, int last) {
    for (int number = first; number <= last; ++number) {
        if (holds(set, number)) {
            return number;
        }
    }
    return 0;
}

named_group name_group(operation_set set) {
    enum group { c1 = 1, cs, c2, c2v, d2h, ci, c2h, d2 };
    const int turn = one_of(set, symmetry::c2z, symmetry::c2x);
    const int mirror = one_of(set, symmetry::sxy, symmetry::syz);
    const bool inverts = holds(set, symmetry::inversion);
    const std::array<unsigned, 3> as_listed = {x_bit, y_bit, z_bit};
    switch (std::popcount(set)) {
        case 8:
            return {d2h, as_listed};
        case 4:
            if (mirror == 0) {
                return {d2, as_listed};
            }
            return {inverts ? c2h : c2v, axes_about(direction_of(turn))};
        case 2:
            if (inverts) {
                return {ci, as_listed};
            }
            return {turn != 0 ? c2 : cs, axes_about(direction_of(turn != 0 ? turn : mirror))};
        default:
            return {c1, as_listed};
    }
}

/// Whether an operation leaves every atom where it is.
bool moves_nothing(const operation& by) {
    for (Eigen::Index atom = 0; atom < by.images.size(); ++atom) {
        if (by.images(atom) != atom) {
            return false;
        }
    }
    return true;
}

/// Exchanges the own x and y of a C2v molecule that lies in its zx plane, and not in both.
void put_planar_into_yz(std::array<unsigned, 3>& axes, const candidates& from) {
    const auto mirror_across = [&](unsigned direction) -> const operation& {
        const auto* const found = std::find(flips.begin() + 1, flips.end(), direction);
        return *from.held.at(static_cast<std::size_t>(found - flips.begin()));
    };
    if (moves_nothing(mirror_across(axes[1])) && !moves_nothing(mirror_across(axes[0]))) {
        std::swap(axes[0], axes[1]);
    }
}

/// The character of a product of own directions under an operation.
int character(unsigned product, const std::array<unsigned, 3>& axes, int number) {
    int sign = 1;
    for (unsigned own = 0; own < 3; ++own) {
        const bool in_product = (product >> own & 1U) != 0;
        const bool changes = (flips.at(static_cast<std::size_t>(number)) & axes.at(own)) != 0;
        sign = in_product && changes ? -sign : sign;
    }
    return sign;
}

/// The label in the tables; of C1 and Ci what is written elsewhere.
std::string label_of(int slot, const named_group& group) {
    const std::string name = trimmed(std::string_view(symmetry::pg_name(group.number)));
    if (name == "C1") {
        return "A";
    }
    const std::string label = trimmed(std::string_view(symmetry::irrep(slot, group.number)));
    return name == "CI" ? "A" + label : label;
}

void add_species(species_group& result, const named_group& group, const std::vector<int>& numbers) {
    result.name = trimmed(std::string_view(symmetry::pg_name(group.number)));
    const int order = symmetry::nrep(group.number);
    result.characters.resize(order, order);
    for (int slot = 1; slot <= order; ++slot) {
        result.species.push_back(label_of(slot, group));
        const unsigned product =
            products.at(static_cast<std::size_t>(group.number)).at(static_cast<std::size_t>(slot - 1));
        for (int g = 0; g < order; ++g) {
            result.characters(slot - 1, g) = character(product, group.axes, numbers.at(static_cast<std::size_t>(g)));
        }
    }
}

/// What of the list holds; what does not is noted as left out.
candidates test_operations(const Eigen::VectorXd& masses, const Eigen::Matrix3Xd& positions,
                           const Eigen::MatrixXd& hessian, const std::vector<operation>& listed,
                           std::vector<left_out_operation>& left_out) {
    const Eigen::Index natom = masses.size();
    const double allowed = hessian_tolerance * (natom == 0 ? 0.0 : hessian.cwiseAbs().maxCoeff());
    candidates result;
    result.held.at(symmetry::identity) =
        operation{Eigen::Matrix3d::Identity(), Eigen::VectorXi::LinSpaced(natom, 0, static_cast<int>(natom) - 1)};
    for (std::size_t place = 0; place < listed.size(); ++place) {
        const operation& by = listed[place];
        const int number = number_of(by, place);
        const auto k = static_cast<std::size_t>(number);
        if (by.images.size() != natom || !is_permutation(by.images)) {
            left_out.push_back({name_of(number), "it carries two atoms onto one"});
            continue;
        }
        if (number == symmetry::identity) {
            continue;
        }
        result.variance.at(k) = hessian_variance(hessian, by);
        const std::string reason = reason_against(by, masses, positions, result.variance.at(k), allowed);
        if (reason.empty()) {
            result.held.at(k) = by;
        } else {
            left_out.push_back({name_of(number), reason});
        }
    }
    return result;
}

}  // namespace

species_group find_species_group(const Eigen::VectorXd& masses, const Eigen::Matrix3Xd& positions,
                                 const Eigen::MatrixXd& hessian, const std::vector<operation>& listed) {
    const Eigen::Index natom = masses.size();
    if (positions.cols() != natom || hessian.rows() != 3 * natom || hessian.cols() != 3 * natom) {
        size_error("Hessian", 3 * natom, 3 * natom);
    }
    species_group result;
    const candidates from = test_operations(masses, positions, hessian, listed, result.left_out);
    const operation_set chosen = best_group(from);
    std::vector<int> numbers;
    for (int number = 1; number <= symmetry::tested_operations; ++number) {
        const auto k = static_cast<std::size_t>(number);
        if (holds(chosen, number)) {
            numbers.push_back(number);
            result.symmetry.push_back(*from.held.at(k));
            result.largest_variance = std::max(result.largest_variance, from.variance.at(k));
        } else if (from.held.at(k)) {
            result.left_out.push_back({name_of(number), "it makes no group with the others"});
        }
    }
    named_group group = name_group(chosen);
    if (trimmed(std::string_view(symmetry::pg_name(group.number))) == "C2V") {
        put_planar_into_yz(group.axes, from);
    }
    add_species(result, group, numbers);
    return result;
}

}  // namespace displacement_generator::vibration
