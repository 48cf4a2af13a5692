#include "frame/partners.hpp"

#include <algorithm>
#include <cstddef>
#include <numeric>

namespace displacement_generator::frame {

namespace {

/// The direction along which atoms are sorted: a unit vector (0.6235, 0.4706, 0.6243) whose components have no simple
/// ratio, so that the planes of a lattice hardly ever are at right angles to it.
Eigen::Vector3d sorting_direction() {
    return Eigen::Vector3d(0.7548776662466927, 0.5698402909980532, 0.7559).normalized();
}

/// Sorting changes sums by less than this (angstrom) for any coordinate below largest_coordinate.
constexpr double rounding = 1e-10;

}  // namespace

atom_finder::atom_finder(const std::vector<int>& kinds, const Eigen::Matrix3Xd& positions)
    : positions_(positions), place_(kinds.size()), atom_(kinds.size()), range_(kinds.size()), along_(kinds.size()) {
    const Eigen::Vector3d direction = sorting_direction();
    for (std::size_t i = 0; i < kinds.size(); ++i) {
        along_[i] = {direction.dot(positions.col(static_cast<int>(i))), static_cast<int>(i)};
    }
    const auto kind_of = [&](int i) { return kinds[static_cast<std::size_t>(i)]; };
    std::vector<std::pair<double, int>> sorted = along_;
    std::sort(sorted.begin(), sorted.end(), [&](const auto& a, const auto& b) {
        return kind_of(a.second) != kind_of(b.second) ? kind_of(a.second) < kind_of(b.second) : a < b;
    });
    std::sort(along_.begin(), along_.end());
    for (std::size_t first = 0; first < sorted.size();) {
        std::size_t last = first;
        while (last < sorted.size() && kind_of(sorted[last].second) == kind_of(sorted[first].second)) {
            place_[last] = sorted[last].first;
            atom_[last] = sorted[last].second;
            ++last;
        }
        for (std::size_t at = first; at < last; ++at) {
            range_[static_cast<std::size_t>(atom_[at])] = {static_cast<int>(first), static_cast<int>(last)};
        }
        first = last;
    }
}

int atom_finder::nearest(int i, const Eigen::Vector3d& place, double reach) const {
    static const Eigen::Vector3d direction = sorting_direction();
    const auto [first, last] = range_[static_cast<std::size_t>(i)];
    const double at = direction.dot(place);
    const auto lowest = std::lower_bound(place_.begin() + first, place_.begin() + last, at - reach - rounding);
    int found = none;
    double least = reach * reach;
    for (auto k = static_cast<std::size_t>(lowest - place_.begin());
         k < static_cast<std::size_t>(last) && place_[k] <= at + reach + rounding; ++k) {
        const double distance = (positions_.col(atom_[k]) - place).squaredNorm();
        if (distance <= least) {
            least = distance;
            found = atom_[k];
        }
    }
    return found;
}

bool is_involution(const permutation& partner) {
    for (std::size_t i = 0; i < partner.size(); ++i) {
        if (partner[static_cast<std::size_t>(partner[i])] != static_cast<int>(i)) {
            return false;
        }
    }
    return true;
}

}  // namespace displacement_generator::frame
