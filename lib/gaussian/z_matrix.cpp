#include "gaussian/z_matrix.hpp"

#include <Eigen/Geometry>
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>
#include <string_view>

#include "base/error.hpp"

namespace displacement_generator::gaussian {

namespace {

/// Two atoms nearer than this are on the same point, in angstrom.
constexpr double same_point = 1e-5;

/// Three atoms lie on a line where the sine of their angle is below this.
constexpr double collinear = 1e-5;

/// By how much rounding may spoil the square of a height that is really zero. Angles are written with a few decimals,
/// so two of them that should put the atom into the plane of its references miss it by that much.
constexpr double flat = 1e-6;

[[noreturn]] void stop(const std::string& name, const z_line& line, const std::string& what) {
    throw base::run_error(name + ":" + std::to_string(line.line) + ": " + what);
}

void check_references(const z_line& line, int own, const std::string& name) {
    for (int n = 0; n < line.references; ++n) {
        const int reference = line.reference[static_cast<std::size_t>(n)];
        if (reference < 1 || reference >= own) {
            stop(name, line,
                 "expected a reference to an earlier atom, 1.." + std::to_string(own - 1) + ", found " +
                     std::to_string(reference));
        }
        if (std::count(line.reference.begin(), line.reference.begin() + n, reference) != 0) {
            stop(name, line, "expected references to different atoms, found " + std::to_string(reference) + " twice");
        }
    }
}

void check_numbers(const z_line& line, const std::string& name) {
    const auto check_angle = [&](double angle) {
        if (!(angle >= 0.0 && angle <= std::numbers::pi)) {
            stop(name, line,
                 "expected an angle from 0 to 180 degrees, found " + std::to_string(angle * 180.0 / std::numbers::pi));
        }
    };
    if (line.references >= 1 && !(line.number[0] > 0.0)) {
        stop(name, line, "expected a positive distance, found " + std::to_string(line.number[0]));
    }
    if (line.references >= 2) {
        check_angle(line.number[1]);
    }
    if (line.references == 3 && line.third != third_number::dihedral) {
        check_angle(line.number[2]);
    }
}

/// The unit vector from one placed atom to another one.
Eigen::Vector3d direction(const Eigen::Matrix3Xd& x, int from, int to, const z_line& line, const std::string& name) {
    const Eigen::Vector3d way = x.col(to - 1) - x.col(from - 1);
    if (way.norm() < same_point) {
        stop(name, line,
             "atoms " + std::to_string(from) + " and " + std::to_string(to) +
                 ", which it refers to, lie on the same point");
    }
    return way.normalized();
}

/// Where the atom of line 3 lies as seen from i: in the plane of `to_j` and x.
Eigen::Vector3d in_xz_plane(const z_line& line, const Eigen::Vector3d& to_j) {
    Eigen::Vector3d across = Eigen::Vector3d::UnitX() - to_j.x() * to_j;
    if (across.norm() < collinear) {
        across = Eigen::Vector3d::UnitZ() - to_j.z() * to_j;
    }
    const double angle = line.number[1];
    return line.number[0] * (std::cos(angle) * to_j + std::sin(angle) * across.normalized());
}

Eigen::Vector3d by_dihedral(const z_line& line, const Eigen::Vector3d& to_j, const Eigen::Vector3d& j_to_k,
                            const std::string& name) {
    const Eigen::Vector3d normal = j_to_k.cross(to_j);
    if (normal.norm() < collinear) {
        stop(name, line,
             "atoms " + std::to_string(line.reference[0]) + ", " + std::to_string(line.reference[1]) + " and " +
                 std::to_string(line.reference[2]) +
                 ", which its dihedral angle refers to, lie on a line; refer to another atom or put in a dummy atom");
    }
    const Eigen::Vector3d up = normal.normalized();
    const Eigen::Vector3d across = up.cross(to_j);  // perpendicular to i-j, on the side away from k
    const double angle = line.number[1];
    const double dihedral = line.number[2];
    return line.number[0] *
           (std::cos(angle) * to_j - std::sin(angle) * (std::cos(dihedral) * across - std::sin(dihedral) * up));
}

Eigen::Vector3d by_two_angles(const z_line& line, const Eigen::Vector3d& to_j, const Eigen::Vector3d& to_k,
                              const std::string& name) {
    const Eigen::Vector3d normal = to_j.cross(to_k);
    const double sine_squared = normal.squaredNorm();
    if (std::sqrt(sine_squared) < collinear) {
        stop(name, line,
             "atoms " + std::to_string(line.reference[0]) + ", " + std::to_string(line.reference[1]) + " and " +
                 std::to_string(line.reference[2]) + ", which its two angles refer to, lie on a line");
    }
    // The direction u = a to_j + b to_k + c normal has u.to_j and u.to_k as its cosines, and the length 1.
    const double cosine = to_j.dot(to_k);
    const double cosine_j = std::cos(line.number[1]);
    const double cosine_k = std::cos(line.number[2]);
    const double a = (cosine_j - cosine * cosine_k) / sine_squared;
    const double b = (cosine_k - cosine * cosine_j) / sine_squared;
    const double height_squared = 1.0 - a * cosine_j - b * cosine_k;
    if (height_squared < -flat) {
        stop(name, line, "no point has both of its angles; expected two angles that fit together");
    }
    const double c = std::sqrt(std::max(height_squared, 0.0) / sine_squared);
    const double side = line.third == third_number::angle_plus ? c : -c;
    return line.number[0] * (a * to_j + b * to_k + side * normal).normalized();
}

Eigen::Vector3d placed(const z_line& line, const Eigen::Matrix3Xd& x, const std::string& name) {
    const auto [i, j, k] = line.reference;
    if (line.references == 0) {
        return Eigen::Vector3d::Zero();
    }
    const Eigen::Vector3d from = x.col(i - 1);
    if (line.references == 1) {
        return from + line.number[0] * Eigen::Vector3d::UnitZ();
    }
    const Eigen::Vector3d to_j = direction(x, i, j, line, name);
    if (line.references == 2) {
        return from + in_xz_plane(line, to_j);
    }
    return from + (line.third == third_number::dihedral
                       ? by_dihedral(line, to_j, direction(x, j, k, line, name), name)
                       : by_two_angles(line, to_j, direction(x, i, k, line, name), name));
}

}  // namespace

Eigen::Matrix3Xd cartesian(const std::vector<z_line>& lines, const std::string& name) {
    Eigen::Matrix3Xd x(3, static_cast<Eigen::Index>(lines.size()));
    int own = 0;
    bool has_cartesian = false;
    bool stands_alone = true;  // every position so far follows from the file alone
    for (const z_line& line : lines) {
        ++own;
        if (line.cartesian) {
            if (!stands_alone) {
                stop(name, line,
                     "found Cartesian coordinates after a line with fewer than three references, where nobody can tell "
                     "their relative position; give the first three atoms in Cartesian coordinates, or none");
            }
            has_cartesian = true;
            x.col(own - 1) = Eigen::Map<const Eigen::Vector3d>(line.number.data());
            continue;
        }
        check_references(line, own, name);
        check_numbers(line, name);
        x.col(own - 1) = placed(line, x, name);
        stands_alone = stands_alone && (line.references == 0 || line.references == 3 || !has_cartesian);
    }
    return x;
}

}  // namespace displacement_generator::gaussian
