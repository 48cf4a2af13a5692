#pragma once

#include <Eigen/Core>
#include <utility>
#include <vector>

// Not public: which atom an operation carries onto which.

namespace displacement_generator::frame {

/// partner[i]: the atom that the image of atom i falls on, or `none`.
using permutation = std::vector<int>;
constexpr int none = -1;

/// The atoms in the order of their kind, and in that of where they lie along a direction that suits no symmetry.
class atom_finder {
  public:
    atom_finder(const std::vector<int>& kinds, const Eigen::Matrix3Xd& positions);

    /// The nearest atom of the kind of atom i within `reach` of a place, or `none`.
    [[nodiscard]] int nearest(int i, const Eigen::Vector3d& place, double reach) const;

    /// Finds the partners of all atoms under `image`, a point -> its image. False as soon as one has none within reach.
    template <class operation>
    bool find_partners(const operation& image, double reach, permutation& partner) const {
        partner.resize(static_cast<std::size_t>(positions_.cols()));
        for (int i = 0; i < positions_.cols(); ++i) {
            const int j = nearest(i, image(positions_.col(i)), reach);
            if (j == none) {
                return false;
            }
            partner[static_cast<std::size_t>(i)] = j;
        }
        return true;
    }

    /// Calls visit(i, j) once for every pair of atoms of any kind that may be closer than `distance`.
    template <class visitor>
    void for_close_pairs(double distance, const visitor& visit) const {
        for (std::size_t first = 0; first < along_.size(); ++first) {
            for (std::size_t second = first + 1; second < along_.size(); ++second) {
                if (along_[second].first - along_[first].first > distance) {
                    break;
                }
                visit(along_[first].second, along_[second].second);
            }
        }
    }

  private:
    Eigen::Matrix3Xd positions_;
    std::vector<double> place_;                  ///< along the direction; sorted within a kind
    std::vector<int> atom_;                      ///< of that place
    std::vector<std::pair<int, int>> range_;     ///< of an atom's kind: from first to before second
    std::vector<std::pair<double, int>> along_;  ///< the same places of all kinds together, sorted, with their atoms
};

/// Whether no atom's partner has another one: then no two atoms have the same.
bool is_involution(const permutation& partner);

}  // namespace displacement_generator::frame
