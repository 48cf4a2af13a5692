#include <Eigen/Eigenvalues>
#include <Eigen/Geometry>
#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <tuple>

#include "frame/frame.hpp"
#include "frame/generator_rules.hpp"

namespace displacement_generator::frame {

namespace {

/// How near a rotation comes to none, to be compared: traces first (1 + 2 cos of the angle of the turn), then elements.
/// Rounded, so that frames that are equally near stay so in spite of the last bits.
std::array<long long, 10> nearness(const Eigen::Matrix3d& rotation) {
    constexpr double steps = 1e7;
    std::array<long long, 10> key{};
    key[0] = std::llround(rotation.trace() * steps);
    for (int i = 0; i < 9; ++i) {
        key.at(static_cast<std::size_t>(i) + 1) = std::llround(rotation(i / 3, i % 3) * steps);
    }
    return key;
}

void keep_nearer(Eigen::Matrix3d& best, const Eigen::Matrix3d& other) {
    if (nearness(other) > nearness(best)) {
        best = other;
    }
}

/// Of the 24 rotations that bring three directions onto axes of either sign, the least.
///   frame  in  the directions in its columns, orthonormal
Eigen::Matrix3d nearest_rotation(const Eigen::Matrix3d& frame) {
    static constexpr int pairs[6][2] = {{0, 1}, {0, 2}, {1, 0}, {1, 2}, {2, 0}, {2, 1}};
    Eigen::Matrix3d best = -Eigen::Matrix3d::Identity();  // farther than any rotation
    for (const auto& [first, second] : pairs) {
        for (unsigned signs = 0; signs < 4; ++signs) {
            Eigen::Matrix3d rotation;
            rotation.row(0) = ((signs & 1U) != 0 ? -1.0 : 1.0) * frame.col(first).transpose();
            rotation.row(1) = ((signs & 2U) != 0 ? -1.0 : 1.0) * frame.col(second).transpose();
            rotation.row(2) = rotation.row(0).cross(rotation.row(1));
            keep_nearer(best, rotation);
        }
    }
    return best;
}

/// The least rotation that brings a direction onto an axis of either sign.
Eigen::Matrix3d nearest_rotation(const Eigen::Vector3d& direction) {
    Eigen::Matrix3d best = -Eigen::Matrix3d::Identity();
    for (int c = 2; c >= 0; --c) {
        const Eigen::Vector3d axis = (direction(c) < 0.0 ? -1.0 : 1.0) * Eigen::Vector3d::Unit(c);
        keep_nearer(best, Eigen::Quaterniond::FromTwoVectors(direction, axis).toRotationMatrix());
    }
    return best;
}

/// The orthonormal frame nearest to three directions that are nearly at right angles: frame (frame^T frame)^(-1/2).
Eigen::Matrix3d orthonormalised(const Eigen::Matrix3d& directions) {
    const Eigen::SelfAdjointEigenSolver<Eigen::Matrix3d> solver(directions.transpose() * directions);
    return directions * solver.operatorInverseSqrt();
}

/// How many atoms stay in their place under each operation about a frame: those it moves by at most the tolerance.
std::array<int, operations> atoms_kept(const Eigen::Matrix3Xd& x, const Eigen::Matrix3d& frame, double tolerance) {
    const Eigen::Matrix3Xd squares = (frame.transpose() * x).cwiseAbs2();
    std::array<int, operations> kept{};
    for (unsigned flips = 0; flips < operations; ++flips) {
        const Eigen::RowVector3d turned((flips & 1U) != 0 ? 1.0 : 0.0, (flips & 2U) != 0 ? 1.0 : 0.0,
                                        (flips & 4U) != 0 ? 1.0 : 0.0);
        const double most = 0.25 * tolerance * tolerance;
        kept.at(flips) = static_cast<int>(((turned * squares).array() <= most).count());
    }
    return kept;
}

unsigned operations_along(const element& direction, unsigned c) {
    return (direction.axis ? 1U << axis_along(c) : 0U) | (direction.plane ? 1U << plane_across(c) : 0U);
}

class frame_list {
  public:
    frame_list(const Eigen::Matrix3Xd& positions, const symmetry_elements& found, double tolerance)
        : x_(positions.colwise() - found.centre), found_(found), tolerance_(tolerance) {}

    /// All frames with two or three elements on their axes. Each is met once for each pair of its elements; of frames
    /// that do not differ the first is tried, which is enough.
    void add_right_angles() {
        const auto& directions = found_.directions;
        for (std::size_t i = 0; i < directions.size(); ++i) {
            for (std::size_t j = i + 1; j < directions.size(); ++j) {
                if (is_right_angle(i, j)) {
                    add_pair(i, j);
                }
            }
        }
    }

    void add_single(const element& direction) {
        const Eigen::Matrix3d rotation = nearest_rotation(direction.direction);
        Eigen::Index c = 0;
        (rotation * direction.direction).cwiseAbs().maxCoeff(&c);
        add(rotation, rotation.transpose(), operations_along(direction, static_cast<unsigned>(c)));
    }

    /// A molecule on a line has all planes that hold it.
    void add_line(const Eigen::Vector3d& line) {
        const Eigen::Matrix3d rotation = nearest_rotation(line);
        Eigen::Index c = 0;
        (rotation * line).cwiseAbs().maxCoeff(&c);
        const auto first = static_cast<unsigned>((c + 1) % 3);
        const auto second = static_cast<unsigned>((c + 2) % 3);
        add(rotation, rotation.transpose(), 1U << plane_across(first) | 1U << plane_across(second));
    }

    void add_source() {
        const Eigen::Matrix3d none = Eigen::Matrix3d::Identity();
        add(none, none, 0U);
    }

    std::vector<candidate_frame> sorted() {
        // The source's frame stays last: whatever else fails, it does not.
        std::sort(frames_.begin(), frames_.end() - 1, [](const keyed& a, const keyed& b) {
            return std::tie(a.frame.computed, b.nearness) < std::tie(b.frame.computed, a.nearness);
        });
        std::vector<candidate_frame> result;
        result.reserve(frames_.size());
        for (const keyed& k : frames_) {
            result.push_back(k.frame);
        }
        return result;
    }

  private:
    struct keyed {
        candidate_frame frame;
        std::array<long long, 10> nearness;
    };

    /// Two directions are at right angles when each may be off by no more than it can be.
    [[nodiscard]] bool is_right_angle(std::size_t i, std::size_t j) const {
        return std::abs(found_.directions[i].direction.dot(found_.directions[j].direction)) <= 2.0 * found_.angle;
    }

    void add_pair(std::size_t i, std::size_t j) {
        const auto& directions = found_.directions;
        const Eigen::Vector3d third = directions[i].direction.cross(directions[j].direction).normalized();
        std::size_t k = directions.size();
        double least = 3.0 * found_.angle;  // three directions are off
        for (std::size_t other = 0; other < directions.size(); ++other) {
            const double sine = directions[other].direction.cross(third).norm();
            if (other != i && other != j && sine <= least) {
                least = sine;
                k = other;
            }
        }
        if (k < j && is_right_angle(i, k)) {
            return;  // met before with i and k
        }
        Eigen::Matrix3d frame;
        frame << directions[i].direction, directions[j].direction, third;
        unsigned set = operations_along(directions[i], 0) | operations_along(directions[j], 1);
        if (k < directions.size()) {
            frame.col(2) = (directions[k].direction.dot(third) < 0.0 ? -1.0 : 1.0) * directions[k].direction;
            set |= operations_along(directions[k], 2);
        }
        frame = orthonormalised(frame);
        add(nearest_rotation(frame), frame, set);
    }

    void add(const Eigen::Matrix3d& rotation, const Eigen::Matrix3d& frame, unsigned set) {
        const unsigned group = group_of(set | (found_.inversion ? 1U << inverted : 0U));
        const int computed = displacements_left(group, atoms_kept(x_, frame, tolerance_));
        frames_.push_back({{rotation, computed}, nearness(rotation)});
    }

    Eigen::Matrix3Xd x_;
    const symmetry_elements& found_;
    double tolerance_;
    std::vector<keyed> frames_;
};

}  // namespace

std::vector<candidate_frame> candidate_frames(const Eigen::Matrix3Xd& positions, const symmetry_elements& found,
                                              double tolerance) {
    frame_list frames(positions, found, tolerance);
    if (found.atoms == extent::line) {
        frames.add_line(found.directions.front().direction);
    } else {
        frames.add_right_angles();
        for (const element& direction : found.directions) {
            frames.add_single(direction);
        }
    }
    frames.add_source();
    return frames.sorted();
}

}  // namespace displacement_generator::frame
