#include "adapted_coordinates.hpp"

#include <algorithm>
#include <cmath>

namespace displacement_generator::vibration {

namespace {

/// The sum over the operations g of character(g) times g's image of coordinate j of the atom: every atom of its orbit
/// is reached equally often, and with one sign each time, or the terms cancel for all of them.
adapted_coordinate project(const species_group& group, Eigen::Index species, Eigen::Index atom, int j) {
    adapted_coordinate result;
    for (std::size_t g = 0; g < group.symmetry.size(); ++g) {
        const operation& by = group.symmetry[g];
        const double sign = group.characters(species, static_cast<Eigen::Index>(g)) * by.matrix(j, j);
        const Eigen::Index coordinate = 3 * static_cast<Eigen::Index>(by.images(atom)) + j;
        const auto found = std::find(result.coordinates.begin(), result.coordinates.end(), coordinate);
        if (found == result.coordinates.end()) {
            result.coordinates.push_back(coordinate);
            result.signs.push_back(sign);
        } else if (result.signs[static_cast<std::size_t>(found - result.coordinates.begin())] != sign) {
            return {};
        }
    }
    result.weight = 1.0 / std::sqrt(static_cast<double>(result.coordinates.size()));
    return result;
}

bool is_first_of_its_orbit(const species_group& group, Eigen::Index atom) {
    return std::all_of(group.symmetry.begin(), group.symmetry.end(),
                       [&](const operation& by) { return by.images(atom) >= atom; });
}

}  // namespace

std::vector<adapted_coordinate> adapted_coordinates(const species_group& group, Eigen::Index species,
                                                    Eigen::Index natom) {
    std::vector<adapted_coordinate> result;
    for (Eigen::Index atom = 0; atom < natom; ++atom) {
        if (!is_first_of_its_orbit(group, atom)) {
            continue;
        }
        for (int j = 0; j < 3; ++j) {
            adapted_coordinate combination = project(group, species, atom, j);
            if (!combination.coordinates.empty()) {
                result.push_back(std::move(combination));
            }
        }
    }
    return result;
}

Eigen::Matrix3Xd symmetric_positions(const species_group& group, const Eigen::Matrix3Xd& positions) {
    Eigen::Matrix3Xd sum = Eigen::Matrix3Xd::Zero(3, positions.cols());
    for (const operation& by : group.symmetry) {
        for (Eigen::Index atom = 0; atom < positions.cols(); ++atom) {
            sum.col(atom) += by.matrix.transpose() * positions.col(by.images(atom));
        }
    }
    return sum / static_cast<double>(group.symmetry.size());
}

}  // namespace displacement_generator::vibration
