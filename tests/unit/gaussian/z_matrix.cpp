#include "gaussian/z_matrix.hpp"

#include <gtest/gtest.h>

#include <Eigen/Geometry>
#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>

#include "support.hpp"

using namespace displacement_generator;

namespace {

using gaussian::third_number;
using gaussian::z_line;
using support::stopped_with;

constexpr double degree = std::numbers::pi / 180.0;

z_line first_line() {
    z_line line;
    line.line = 1;
    return line;
}

z_line line_of(std::array<int, 3> reference, std::array<double, 3> number,
               third_number third = third_number::dihedral) {
    z_line line;
    line.references = static_cast<int>(std::count_if(reference.begin(), reference.end(), [](int i) { return i != 0; }));
    line.line = 10 * line.references;
    line.reference = reference;
    line.number = number;
    line.third = third;
    return line;
}

z_line point(double x, double y, double z) {
    z_line line;
    line.line = 5;
    line.cartesian = true;
    line.number = {x, y, z};
    return line;
}

// Recomputed from coordinates by the cosine rule and by the volume of a tetrahedron: in another way than they are
// built.
double distance(const Eigen::Matrix3Xd& x, int i, int j) { return (x.col(i) - x.col(j)).norm(); }

double angle(const Eigen::Matrix3Xd& x, int i, int j, int k) {
    const double a = distance(x, i, j);
    const double b = distance(x, j, k);
    const double c = distance(x, i, k);
    return std::acos(std::clamp((a * a + b * b - c * c) / (2.0 * a * b), -1.0, 1.0));
}

double dihedral(const Eigen::Matrix3Xd& x, int i, int j, int k, int l) {
    const Eigen::Vector3d b1 = x.col(j) - x.col(i);
    const Eigen::Vector3d b2 = x.col(k) - x.col(j);
    const Eigen::Vector3d b3 = x.col(l) - x.col(k);
    return std::atan2(b2.norm() * b1.dot(b2.cross(b3)), b1.cross(b2).dot(b2.cross(b3)));
}

/// The difference of two angles, from -pi to pi.
double turn(double a, double b) { return std::remainder(a - b, 2.0 * std::numbers::pi); }

TEST(z_matrix, lays_the_first_atoms_along_z_and_into_the_xz_plane) {
    const Eigen::Matrix3Xd x = gaussian::cartesian(
        {first_line(), line_of({1, 0, 0}, {2.0, 0.0, 0.0}), line_of({2, 1, 0}, {1.0, 90.0 * degree, 0.0})}, "z");
    EXPECT_NEAR((x.col(0) - Eigen::Vector3d(0, 0, 0)).norm(), 0.0, 1e-15);
    EXPECT_NEAR((x.col(1) - Eigen::Vector3d(0, 0, 2)).norm(), 0.0, 1e-15);
    EXPECT_NEAR((x.col(2) - Eigen::Vector3d(1, 0, 2)).norm(), 0.0, 1e-15);
}

TEST(z_matrix, lays_a_third_atom_into_the_plane_of_two_points_and_x) {
    for (const z_line& second : {point(1, 2, -2), point(0, 3, 4), point(2, 0, 0)}) {
        const Eigen::Matrix3Xd x =
            gaussian::cartesian({point(0, 0, 0), second, line_of({1, 2, 0}, {1.5, 100.0 * degree, 0.0})}, "z");
        EXPECT_NEAR(distance(x, 0, 2), 1.5, 1e-14);
        EXPECT_NEAR(angle(x, 1, 0, 2), 100.0 * degree, 1e-14);
        const Eigen::Vector3d beside =
            x.col(1).norm() > std::abs(x(0, 1)) ? Eigen::Vector3d::UnitX() : Eigen::Vector3d::UnitZ();
        EXPECT_NEAR(x.col(1).cross(beside).dot(x.col(2)), 0.0, 1e-14);
    }
}

TEST(z_matrix, turns_a_positive_dihedral_clockwise_as_seen_along_the_bond) {
    // k at +x of j, j at the origin, i at +z. Seen from i towards j, that is down the z axis, clockwise from x is -y;
    // the dihedral new-i-j-k is positive where k lies clockwise of new, so new lies counterclockwise of k: at +y.
    const Eigen::Matrix3Xd x = gaussian::cartesian(
        {point(1, 0, 0), point(0, 0, 0), point(0, 0, 1), line_of({3, 2, 1}, {1.0, 90.0 * degree, 90.0 * degree})}, "z");
    EXPECT_NEAR((x.col(3) - Eigen::Vector3d(0, 1, 1)).norm(), 0.0, 1e-15);
    EXPECT_NEAR(dihedral(x, 3, 2, 1, 0), 90.0 * degree, 1e-15);
}

TEST(z_matrix, puts_two_angles_on_the_side_that_the_sign_names) {
    // i at the origin, j on x, k on y: two angles of 90 degrees leave z, and x cross y points there.
    for (const auto& [third, z] :
         {std::pair(third_number::angle_plus, 1.5), std::pair(third_number::angle_minus, -1.5)}) {
        const Eigen::Matrix3Xd x = gaussian::cartesian({point(0, 0, 0), point(2, 0, 0), point(0, 3, 0),
                                                        line_of({1, 2, 3}, {1.5, 90.0 * degree, 90.0 * degree}, third)},
                                                       "z");
        EXPECT_NEAR((x.col(3) - Eigen::Vector3d(0, 0, z)).norm(), 0.0, 1e-15);
    }
}

TEST(z_matrix, random_ones_have_the_distances_angles_and_dihedrals_asked_for) {
    std::mt19937 random(20260110);
    std::uniform_real_distribution<double> length(0.7, 2.5);
    std::uniform_real_distribution<double> bend(20.0 * degree, 160.0 * degree);
    std::uniform_real_distribution<double> twist(-360.0 * degree, 360.0 * degree);
    int lines_checked = 0;
    int two_angles = 0;
    for (int molecule = 0; molecule < 2000; ++molecule) {
        std::vector<z_line> lines = {
            first_line(), line_of({1, 0, 0}, {length(random), 0, 0}),
            line_of({1 + molecule % 2, 2 - molecule % 2, 0}, {length(random), bend(random), 0})};
        for (int own = 3; own < 12; ++own) {
            std::array<int, 3> reference{};
            std::vector<int> all;
            for (int i = 1; i <= own; ++i) {
                all.push_back(i);
            }
            std::shuffle(all.begin(), all.end(), random);
            std::copy_n(all.begin(), 3, reference.begin());
            const Eigen::Matrix3Xd x = gaussian::cartesian(lines, "z");
            const double between = angle(x, reference[0] - 1, reference[1] - 1, reference[2] - 1);
            const double at_i = angle(x, reference[1] - 1, reference[0] - 1, reference[2] - 1);
            z_line next = line_of(reference, {length(random), bend(random), twist(random)});
            if (between < 5.0 * degree || between > 175.0 * degree || at_i < 5.0 * degree || at_i > 175.0 * degree) {
                --own;
                continue;
            }
            // A second angle that the first one allows: between their difference and their sum, and less than 180.
            if (random() % 3 == 0) {
                const double least = std::abs(at_i - next.number[1]);
                const double most = std::min(at_i + next.number[1], 2.0 * std::numbers::pi - at_i - next.number[1]);
                next.number[2] = least + (most - least) * (0.05 + 0.9 * std::generate_canonical<double, 40>(random));
                next.third = random() % 2 == 0 ? third_number::angle_plus : third_number::angle_minus;
            }
            lines.push_back(next);
        }
        const Eigen::Matrix3Xd x = gaussian::cartesian(lines, "z");
        for (int own = 1; own < 12; ++own) {
            const z_line& line = lines[static_cast<std::size_t>(own)];
            const int i = line.reference[0] - 1;
            const int j = line.reference[1] - 1;
            const int k = line.reference[2] - 1;
            ASSERT_NEAR(distance(x, own, i), line.number[0], 1e-12);
            if (line.references >= 2) {
                ASSERT_NEAR(angle(x, own, i, j), line.number[1], 1e-8);
            }
            if (line.references < 3) {
                continue;
            }
            ++lines_checked;
            if (line.third == third_number::dihedral) {
                ASSERT_NEAR(turn(dihedral(x, own, i, j, k), line.number[2]), 0.0, 1e-8);
                continue;
            }
            ++two_angles;
            ASSERT_NEAR(angle(x, own, i, k), line.number[2], 1e-8);
            const Eigen::Vector3d e_j = x.col(j) - x.col(i);
            const Eigen::Vector3d e_k = x.col(k) - x.col(i);
            ASSERT_EQ(e_j.cross(e_k).dot(x.col(own) - x.col(i)) > 0.0, line.third == third_number::angle_plus);
        }
    }
    EXPECT_EQ(lines_checked, 2000 * 9);
    EXPECT_GT(two_angles, 3000);
}

TEST(z_matrix, refuses_what_cannot_be_built_and_names_the_line) {
    const z_line second = line_of({1, 0, 0}, {1.0, 0, 0});
    const z_line straight = line_of({2, 1, 0}, {1.0, 180.0 * degree, 0});
    const z_line bent = line_of({2, 1, 0}, {1.0, 109.0 * degree, 0});
    const struct {
        std::vector<z_line> lines;
        const char* message;
    } rows[] = {
        {{first_line(), line_of({2, 0, 0}, {1, 0, 0})},
         "z:10: expected a reference to an earlier atom, 1..1, found 2|standard error|2"},
        {{first_line(), line_of({3, 0, 0}, {1, 0, 0})},
         "z:10: expected a reference to an earlier atom, 1..1, found 3|standard error|2"},
        {{first_line(), second, line_of({2, 2, 0}, {1, 1, 0})},
         "z:20: expected references to different atoms, found 2 twice|standard error|2"},
        {{first_line(), second, bent, line_of({3, 2, 3}, {1, 1, 0})},
         "z:30: expected references to different atoms, found 3 twice|standard error|2"},
        {{first_line(), line_of({1, 0, 0}, {-1, 0, 0})},
         "z:10: expected a positive distance, found -1.000000|standard error|2"},
        {{first_line(), second, line_of({2, 1, 0}, {1, 190 * degree, 0})},
         "z:20: expected an angle from 0 to 180 degrees, found 190.000000|standard error|2"},
        {{first_line(), second, straight, line_of({3, 2, 1}, {1, 1, 1})},
         "z:30: atoms 3, 2 and 1, which its dihedral angle refers to, lie on a line; refer to another atom or put in a "
         "dummy atom|standard error|2"},
        {{first_line(), second, straight, line_of({3, 2, 1}, {1, 1, 1}, third_number::angle_plus)},
         "z:30: atoms 3, 2 and 1, which its two angles refer to, lie on a line|standard error|2"},
        {{point(0, 0, 0), point(1, 0, 0), point(0, 1, 0),
          line_of({1, 2, 3}, {1, 20 * degree, 20 * degree}, third_number::angle_plus)},
         "z:30: no point has both of its angles; expected two angles that fit together|standard error|2"},
        {{point(0, 0, 0), point(0, 0, 8e-6), line_of({2, 1, 0}, {1, 1, 0})},
         "z:20: atoms 2 and 1, which it refers to, lie on the same point|standard error|2"},
        {{point(0, 0, 0), second, line_of({1, 2, 0}, {1, 90 * degree, 0}), line_of({1, 2, 3}, {1, 1, 1}),
          point(1, 1, 1)},
         "z:5: found Cartesian coordinates after a line with fewer than three references, where nobody can tell their "
         "relative position; give the first three atoms in Cartesian coordinates, or none|standard error|2"},
        {{point(0, 0, 0), second, point(1, 1, 1)},
         "z:5: found Cartesian coordinates after a line with fewer than three references, where nobody can tell their "
         "relative position; give the first three atoms in Cartesian coordinates, or none|standard error|2"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(stopped_with([&] { gaussian::cartesian(row.lines, "z"); }), row.message);
    }
}

}  // namespace
