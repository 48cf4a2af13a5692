#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <string>

#include "base/error.hpp"
#include "frame/partners.hpp"
#include "frame/symmetrised.hpp"

namespace displacement_generator::frame {

namespace {

std::string number(double value) {
    char text[32];
    static_cast<void>(std::snprintf(text, sizeof text, "%.10g", value));  // at most 17 characters
    return text;
}

void check_coordinates(const Eigen::Matrix3Xd& positions) {
    for (int i = 0; i < positions.cols(); ++i) {
        for (int c = 0; c < 3; ++c) {
            if (!(std::abs(positions(c, i)) < largest_coordinate)) {
                throw base::run_error("atom " + std::to_string(i + 1) + ": expected coordinates below " +
                                      number(largest_coordinate) + " angstrom, found " + number(positions(c, i)));
            }
        }
    }
}

void check_distances(const std::vector<int>& kinds, const Eigen::Matrix3Xd& positions) {
    atom_finder(kinds, positions).for_close_pairs(closest_atoms, [&](int i, int j) {
        const double distance = (positions.col(i) - positions.col(j)).norm();
        if (distance < closest_atoms) {
            throw base::run_error("atoms " + std::to_string(std::min(i, j) + 1) + " and " +
                                  std::to_string(std::max(i, j) + 1) + ": expected a distance of at least " +
                                  number(closest_atoms) + " angstrom, found " + number(distance));
        }
    });
}

}  // namespace

void check_source(const std::vector<int>& kinds, const Eigen::Matrix3Xd& positions, double tolerance) {
    if (static_cast<Eigen::Index>(kinds.size()) != positions.cols()) {
        throw base::run_error("expected as many kinds as positions, found " + std::to_string(kinds.size()) + " and " +
                              std::to_string(positions.cols()));
    }
    if (!(tolerance >= least_tolerance && tolerance <= largest_tolerance)) {
        throw base::run_error("tolerance: expected " + number(least_tolerance) + " to " + number(largest_tolerance) +
                              " angstrom, found " + number(tolerance));
    }
    check_coordinates(positions);
    check_distances(kinds, positions);
}

}  // namespace displacement_generator::frame
