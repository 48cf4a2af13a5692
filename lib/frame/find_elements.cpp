#include <Eigen/Eigenvalues>
#include <Eigen/Geometry>
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

#include "frame/frame.hpp"
#include "frame/partners.hpp"

namespace displacement_generator::frame {

namespace {

enum class kind_of_element { axis, plane };

/// A point goes to 2 u (u . x) - x about an axis along u, and to x - 2 u (u . x) through a plane across u.
struct reflection {
    Eigen::Vector3d direction;
    double sign;  ///< 1 for an axis, -1 for a plane

    Eigen::Vector3d operator()(const Eigen::Vector3d& x) const {
        return sign * (2.0 * direction.dot(x) * direction - x);
    }
};

/// The operation that carries points nearest to their partners, in the sense of least squares. The sum of squared
/// distances is a constant minus 4 sign u . products u, with the sum over the points of point times partner as
/// `products`: an axis lies along its eigenvector of largest eigenvalue, a plane across that of the smallest.
reflection fitted(const Eigen::Matrix3d& products, kind_of_element kind) {
    const Eigen::Matrix3d symmetric = 0.5 * (products + products.transpose());
    const Eigen::SelfAdjointEigenSolver<Eigen::Matrix3d> solver(symmetric);
    return kind == kind_of_element::axis ? reflection{solver.eigenvectors().col(2), 1.0}
                                         : reflection{solver.eigenvectors().col(0), -1.0};
}

/// The class of an atom: the atoms of its kind at its distance from the centre, within the tolerance. Operations
/// carry it nowhere else.
struct classes {
    std::vector<int> size;  ///< of the class of each atom

    classes(const std::vector<int>& kinds, const Eigen::VectorXd& distance, double tolerance)
        : size(kinds.size()), order_(kinds.size()), kinds_(kinds), distance_(distance), tolerance_(tolerance) {
        for (std::size_t i = 0; i < kinds.size(); ++i) {
            order_[i] = static_cast<int>(i);
        }
        const auto key = [&](int i) { return std::pair(kinds[static_cast<std::size_t>(i)], distance(i)); };
        std::sort(order_.begin(), order_.end(), [&](int i, int j) { return key(i) < key(j); });
        for (std::size_t i = 0; i < kinds.size(); ++i) {
            const auto [first, last] = range_of(static_cast<int>(i));
            size[i] = static_cast<int>(last - first);
        }
    }

    [[nodiscard]] std::vector<int> of(int atom) const {
        const auto [first, last] = range_of(atom);
        return {first, last};
    }

  private:
    using place = std::vector<int>::const_iterator;

    [[nodiscard]] std::pair<place, place> range_of(int atom) const {
        const auto key = [&](int i) { return std::pair(kinds_[static_cast<std::size_t>(i)], distance_(i)); };
        const auto [kind, middle] = key(atom);
        const std::pair least(kind, middle - tolerance_);
        const std::pair most(kind, middle + tolerance_);
        return {std::lower_bound(order_.begin(), order_.end(), least, [&](int i, const auto& k) { return key(i) < k; }),
                std::upper_bound(order_.begin(), order_.end(), most, [&](const auto& k, int i) { return k < key(i); })};
    }

    std::vector<int> order_;
    const std::vector<int>& kinds_;
    const Eigen::VectorXd& distance_;
    double tolerance_;
};

/// Of the atoms at least this part as far out as the farthest, the one of the smallest class is a reference: far enough
/// for a good direction, with few possible partners.
constexpr double far_enough = 0.4;

int reference_atom(const Eigen::VectorXd& lever, const classes& of_atoms) {
    const double least = far_enough * lever.maxCoeff();
    int best = none;
    for (int i = 0; i < lever.size(); ++i) {
        const int size = of_atoms.size[static_cast<std::size_t>(i)];
        if (lever(i) >= least && (best == none || size < of_atoms.size[static_cast<std::size_t>(best)])) {
            best = i;
        }
    }
    return best;
}

/// The search in a molecule that is neither a point nor a line.
///
/// The images of two atoms, the references, fix an operation, as the centre stays. So every pair of atoms that the
/// references can go to gives one axis and one plane to try.
class search {
  public:
    search(const std::vector<int>& kinds, const Eigen::Matrix3Xd& about_centre, double tolerance)
        : x_(about_centre), tolerance_(tolerance), finder_(kinds, about_centre) {
        const Eigen::VectorXd distance = x_.colwise().norm();
        const classes of_atoms(kinds, distance, tolerance);
        first_ = reference_atom(distance, of_atoms);
        const Eigen::Vector3d along = x_.col(first_).normalized();
        const Eigen::VectorXd aside = (x_ - along * (along.transpose() * x_)).colwise().norm();
        second_ = reference_atom(aside, of_atoms);
        images_of_first_ = of_atoms.of(first_);
        images_of_second_ = of_atoms.of(second_);
    }

    std::vector<std::pair<reflection, permutation>> all(kind_of_element kind) {
        std::vector<std::pair<reflection, permutation>> found;
        const double between = (x_.col(first_) - x_.col(second_)).norm();
        for (const int i : images_of_first_) {
            for (const int j : images_of_second_) {
                // An operation keeps the distance of the references, but for the tolerance at both ends.
                if (std::abs((x_.col(i) - x_.col(j)).norm() - between) <= 2.0 * tolerance_) {
                    try_images(kind, i, j, found);
                }
            }
        }
        return found;
    }

  private:
    void try_images(kind_of_element kind, int i, int j, std::vector<std::pair<reflection, permutation>>& found) {
        const Eigen::Matrix3d products =
            x_.col(first_) * x_.col(i).transpose() + x_.col(second_) * x_.col(j).transpose();
        reflection operation = fitted(products, kind);
        // No fit to the two is worse than the operation looked for, which leaves at most the tolerance with each.
        const double left = (operation(x_.col(first_)) - x_.col(i)).squaredNorm() +
                            (operation(x_.col(second_)) - x_.col(j)).squaredNorm();
        if (left > rounded_up * 2.0 * tolerance_ * tolerance_) {
            return;
        }
        if (!refine(kind, operation) || !finder_.find_partners(operation, tolerance_, partner_) ||
            !is_involution(partner_)) {
            return;
        }
        for (const auto& [known, partner] : found) {
            if (partner == partner_) {
                return;
            }
        }
        found.emplace_back(operation, partner_);
    }

    /// Fits the operation to all atoms. Two references alone leave an error that grows with the distance from them: one
    /// that carries each reference to within sqrt(2) tolerances of its image differs from the true one there by less
    /// than 2.5 tolerances, and elsewhere by that times the ratio of the levers, along and aside, together at most
    /// 2 / far_enough.
    bool refine(kind_of_element kind, reflection& operation) {
        const double reach = tolerance_ * (1.0 + 2.5 * 2.0 / far_enough);
        constexpr int most_passes = 5;
        for (int pass = 0; pass < most_passes; ++pass) {
            if (!finder_.find_partners(operation, reach, trial_)) {
                return false;
            }
            if (pass > 0 && trial_ == partner_) {
                return true;
            }
            partner_ = trial_;
            Eigen::Matrix3d products = Eigen::Matrix3d::Zero();
            for (int i = 0; i < x_.cols(); ++i) {
                products += x_.col(i) * x_.col(partner_[static_cast<std::size_t>(i)]).transpose();
            }
            operation = fitted(products, kind);
        }
        return true;
    }

    static constexpr double rounded_up = 1.0 + 1e-9;

    const Eigen::Matrix3Xd& x_;
    double tolerance_;
    atom_finder finder_;
    int first_ = 0;
    int second_ = 0;
    std::vector<int> images_of_first_;
    std::vector<int> images_of_second_;
    permutation partner_;
    permutation trial_;
};

/// How far a direction can be off, as an angle: by about the tolerance at the end of the shortest lever.
double largest_angle(const Eigen::Matrix3Xd& x, const Eigen::Vector3d& line, double tolerance) {
    const double lever = (x - line * (line.transpose() * x)).colwise().norm().maxCoeff();
    constexpr double never_more = 0.2;
    return std::min(3.0 * tolerance / lever, never_more);
}

/// Joins an axis and a plane that stand along one direction: that of the first, as the fits differ by no more than the
/// square of what the atoms are off by. What turns the direction is reversed by the axis as by the plane, so that both
/// fits answer to it alike.
void add(std::vector<element>& directions, const reflection& found, double angle) {
    const bool is_axis = found.sign > 0.0;
    element* nearest = nullptr;
    double least = angle;
    for (element& known : directions) {
        const double between = known.direction.cross(found.direction).norm();
        if (between <= least && !(is_axis ? known.axis : known.plane)) {
            least = between;
            nearest = &known;
        }
    }
    if (nearest == nullptr) {
        directions.push_back({found.direction, is_axis, !is_axis});
        return;
    }
    (is_axis ? nearest->axis : nearest->plane) = true;
}

/// The line through the centre from which the atoms are least away.
Eigen::Vector3d principal_line(const Eigen::Matrix3Xd& x) {
    return Eigen::SelfAdjointEigenSolver<Eigen::Matrix3d>(x * x.transpose()).eigenvectors().col(2);
}

bool has_inversion(const std::vector<int>& kinds, const Eigen::Matrix3Xd& x, double tolerance) {
    permutation partner;
    return atom_finder(kinds, x).find_partners([](const Eigen::Vector3d& p) -> Eigen::Vector3d { return -p; },
                                               tolerance, partner) &&
           is_involution(partner);
}

}  // namespace

symmetry_elements find_elements(const std::vector<int>& kinds, const Eigen::Matrix3Xd& positions, double tolerance) {
    symmetry_elements found;
    found.centre = Eigen::Vector3d::Zero();
    if (positions.cols() == 0) {
        found.atoms = extent::point;
        return found;
    }
    found.centre = positions.rowwise().mean();
    const Eigen::Matrix3Xd x = positions.colwise() - found.centre;
    found.inversion = has_inversion(kinds, x, tolerance);
    const double near = 0.5 * tolerance;
    if (x.colwise().norm().maxCoeff() <= near) {
        found.atoms = extent::point;
        return found;
    }
    const Eigen::Vector3d line = principal_line(x);
    if ((x - line * (line.transpose() * x)).colwise().norm().maxCoeff() <= near) {
        found.atoms = extent::line;
        found.directions.push_back({line, true, found.inversion});
        return found;
    }
    search all(kinds, x, tolerance);
    found.angle = largest_angle(x, line, tolerance);
    for (const kind_of_element kind : {kind_of_element::axis, kind_of_element::plane}) {
        for (const auto& [operation, partner] : all.all(kind)) {
            add(found.directions, operation, found.angle);
        }
    }
    return found;
}

}  // namespace displacement_generator::frame
