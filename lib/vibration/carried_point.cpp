#include "carried_point.hpp"

#include <cmath>
#include <string>
#include <vector>

#include "base/error.hpp"

namespace displacement_generator::vibration {

namespace {

// Matrices are printed with nine decimals.
constexpr double matrix_rounding = 1e-8;

/// "point P", as the list counts.
std::string point_name(Eigen::Index p) { return "point " + std::to_string(p + 1); }

void check_operation(const operation& by, Eigen::Index number, Eigen::Index natom) {
    if (by.images.size() != natom || !is_permutation(by.images)) {
        throw base::run_error("operation " + std::to_string(number + 1) + ": expected an image for each of " +
                              std::to_string(natom) + " atoms, all of them different");
    }
}

}  // namespace

void size_error(std::string_view name, Eigen::Index rows, Eigen::Index columns) {
    throw base::run_error(std::string(name) + ": expected " + std::to_string(rows) + " x " + std::to_string(columns) +
                          " values");
}

void check_finite(const Eigen::Ref<const Eigen::MatrixXd>& values, std::string_view name) {
    if (!values.allFinite()) {
        throw base::run_error(std::string(name) + ": found a value that is not finite");
    }
}

bool is_permutation(const Eigen::VectorXi& images) {
    std::vector<bool> taken(static_cast<std::size_t>(images.size()), false);
    for (const int image : images) {
        if (image < 0 || image >= images.size() || taken[static_cast<std::size_t>(image)]) {
            return false;
        }
        taken[static_cast<std::size_t>(image)] = true;
    }
    return true;
}

Eigen::Index check_relations(const point_relations& relations) {
    const Eigen::Index points = relations.sources.size();
    if (points % 6 != 0 || relations.operations.size() != points) {
        throw base::run_error("point table: expected six points an atom, found " + std::to_string(points));
    }
    std::vector<bool> checked(relations.symmetry.size(), false);
    for (Eigen::Index p = 0; p < points; ++p) {
        const Eigen::Index source = relations.sources(p);
        if (source < 0 || source >= points || relations.sources(source) != source) {
            throw base::run_error(point_name(p) + ": expected a computed point as its source, found " +
                                  std::to_string(source + 1));
        }
        if (source == p) {
            continue;
        }
        const Eigen::Index number = relations.operations(p);
        const auto place = static_cast<std::size_t>(number);
        if (number < 0 || place >= relations.symmetry.size()) {
            throw base::run_error(point_name(p) + ": expected an operation in 1.." +
                                  std::to_string(relations.symmetry.size()) + ", found " + std::to_string(number + 1));
        }
        if (!checked[place]) {
            check_operation(relations.symmetry[place], number, points / 6);
            checked[place] = true;
        }
    }
    return points;
}

const operation& operation_of(const point_relations& relations, Eigen::Index p) {
    return relations.symmetry[static_cast<std::size_t>(relations.operations(p))];
}

double carried_direction(const operation& by, Eigen::Index source, Eigen::Index p) {
    const Eigen::Index from = source / 2;
    const Eigen::Index to = p / 2;
    const Eigen::Vector3d unit = by.matrix.col(from % 3);
    const double along = std::copysign(1.0, unit(to % 3));
    if (by.images(from / 3) != to / 3 || !unit.isApprox(along * Eigen::Vector3d::Unit(to % 3), matrix_rounding)) {
        throw base::run_error(point_name(p) + ": the operation does not carry its source, " + point_name(source) +
                              ", onto it");
    }
    return along;
}

}  // namespace displacement_generator::vibration
