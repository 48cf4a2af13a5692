#include "frame/frame.hpp"

#include <gtest/gtest.h>

#include <Eigen/Eigenvalues>
#include <Eigen/Geometry>
#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "base/error.hpp"

using namespace displacement_generator;

namespace {

constexpr double tolerance = 0.01;
constexpr int c1 = 1;
constexpr int cs = 2;
constexpr int c2v = 4;
constexpr int d2h = 5;
constexpr int d2 = 8;

struct molecule {
    std::vector<int> kinds;
    Eigen::Matrix3Xd positions;
};

molecule make(const std::vector<std::pair<int, Eigen::Vector3d>>& atoms) {
    molecule result;
    result.positions.resize(3, static_cast<Eigen::Index>(atoms.size()));
    for (const auto& [kind, place] : atoms) {
        result.positions.col(static_cast<Eigen::Index>(result.kinds.size())) = place;
        result.kinds.push_back(kind);
    }
    return result;
}

/// A turn and shift that leave nothing on an axis.
molecule moved(molecule atoms) {
    const Eigen::Matrix3d turn =
        Eigen::AngleAxisd(0.7, Eigen::Vector3d(0.36, -0.48, 0.8).normalized()).toRotationMatrix();
    atoms.positions = (turn * atoms.positions).colwise() + Eigen::Vector3d(1.5, -0.25, 3.0);
    return atoms;
}

molecule methane() {
    return make({{6, {0, 0, 0}},
                 {1, {0.63, 0.63, 0.63}},
                 {1, {0.63, -0.63, -0.63}},
                 {1, {-0.63, 0.63, -0.63}},
                 {1, {-0.63, -0.63, 0.63}}});
}

molecule ring(int atoms_in_ring, double inner, double outer) {
    std::vector<std::pair<int, Eigen::Vector3d>> atoms;
    for (int i = 0; i < atoms_in_ring; ++i) {
        const double angle = 2.0 * std::numbers::pi * i / atoms_in_ring;
        const Eigen::Vector3d direction(std::cos(angle), std::sin(angle), 0.0);
        atoms.emplace_back(6, inner * direction);
        if (outer > 0.0) {
            atoms.emplace_back(1, outer * direction);
        }
    }
    return make(atoms);
}

/// The 60 corners of a truncated icosahedron: all signs and even permutations of (0, 1, 3p), (1, 2+p, 2p), (p, 2, 2p+1)
/// with the golden ratio p.
molecule fullerene() {
    constexpr double p = std::numbers::phi;
    std::vector<std::pair<int, Eigen::Vector3d>> atoms;
    for (const Eigen::Vector3d& corner :
         {Eigen::Vector3d(0, 1, 3 * p), Eigen::Vector3d(1, 2 + p, 2 * p), Eigen::Vector3d(p, 2, 2 * p + 1)}) {
        for (int turn = 0; turn < 3; ++turn) {
            for (int signs = 0; signs < 8; ++signs) {
                Eigen::Vector3d place;
                bool is_new = true;
                for (int c = 0; c < 3; ++c) {
                    const bool is_minus = (signs >> c & 1) != 0;
                    place((c + turn) % 3) = is_minus ? -corner(c) : corner(c);
                    is_new = is_new && !(is_minus && corner(c) == 0.0);
                }
                if (is_new) {
                    atoms.emplace_back(6, 0.71 * place);
                }
            }
        }
    }
    return make(atoms);
}

// Worked out by hand: the classes of the 6N points are the mean over the operations of how many each keeps.
//
// methane, D2: 30 kept by E, 2 by each axis (the carbon): 36 / 4 = 9. C2v: 30, axis 2, two planes of 3 atoms 4 each:
// 56 / 4 = 14.
// benzene, D2h: 72; C2 across the ring 0, one axis through 4 atoms 8, one through none 0; I 0; the ring's plane 48;
// plane through 4 atoms 16, through none 0: 144 / 8 = 18.
// C60, D2h: 360; no axis meets an atom; each of three planes meets 4: 16 each: 408 / 8 = 51.
// sulphur hexafluoride, D2h with two axes between the fluorines: 42; axes 3 * 2, 2, 2; planes 5 * 4, 3 * 4, 3 * 4:
// 96 / 8 = 12. (All three axes through fluorines: 42 + 3 * 6 + 3 * 20 = 120 / 8 = 15.)
// water, C2v: 18; axis 1 atom 2; its plane 12; the other plane 4: 36 / 4 = 9.
// ammonia, Cs: 24; a plane of 2 atoms 8: 32 / 2 = 16.
// carbon dioxide, D2h: 18; axes 6, 2, 2; planes: 12, 12, 4: 56 / 8 = 7. Carbon monoxide, C2v: 12 + 4 + 8 + 8 = 32 / 4.
// a single atom, D2h: 6 + 3 * 2 + 3 * 4 = 24 / 8 = 3.
TEST(frame, known_molecules_have_the_number_worked_out_by_hand) {
    struct row {
        const char* name;
        molecule atoms;
        int group;
        int computed;
    };
    const std::vector<row> rows = {
        {"methane", methane(), d2, 9},
        {"benzene", ring(6, 1.39, 2.48), d2h, 18},
        {"fullerene", fullerene(), d2h, 51},
        {"sulphur hexafluoride",
         make({{16, {0, 0, 0}},
               {9, {1.56, 0, 0}},
               {9, {-1.56, 0, 0}},
               {9, {0, 1.56, 0}},
               {9, {0, -1.56, 0}},
               {9, {0, 0, 1.56}},
               {9, {0, 0, -1.56}}}),
         d2h, 12},
        {"water", make({{8, {0, 0, 0}}, {1, {0.76, 0.59, 0}}, {1, {-0.76, 0.59, 0}}}), c2v, 9},
        {"ammonia", make({{7, {0, 0, 0.38}}, {1, {0.94, 0, 0}}, {1, {-0.47, 0.814064, 0}}, {1, {-0.47, -0.814064, 0}}}),
         cs, 16},
        {"carbon dioxide", make({{6, {0, 0, 0}}, {8, {0, 0, 1.16}}, {8, {0, 0, -1.16}}}), d2h, 7},
        {"carbon monoxide", make({{6, {0, 0, 0}}, {8, {0, 0, 1.13}}}), c2v, 8},
        {"one atom", make({{2, {0, 0, 0}}}), d2h, 3},
        {"no symmetry", make({{6, {0, 0, 0}}, {1, {1.1, 0, 0}}, {9, {-0.4, 1.3, 0}}, {17, {-0.6, -0.8, 1.5}}}), c1, 24},
    };
    for (const row& r : rows) {
        SCOPED_TRACE(r.name);
        const molecule source = moved(r.atoms);
        const frame::frame_result result = frame::prepare(source.kinds, source.positions, tolerance);
        EXPECT_EQ(result.computed, r.computed);
        EXPECT_EQ(result.group, r.group);
        EXPECT_LT(result.largest_move, 1e-5);
        EXPECT_TRUE(result.exact);
        Eigen::Matrix3Xd positions = source.positions;
        for (const char* nearest_axis : {"as it is", "the next axis", "the last axis"}) {
            SCOPED_TRACE(nearest_axis);
            const frame::symmetry_elements found = frame::find_elements(source.kinds, positions, tolerance);
            EXPECT_EQ(frame::candidate_frames(positions, found, tolerance).front().computed, r.computed);
            positions = Eigen::Matrix3Xd(positions({2, 0, 1}, Eigen::all));
        }
    }
}

TEST(frame, fullerene_has_15_directions_with_axis_and_plane_and_methane_planes_and_axes_apart) {
    const molecule ball = moved(fullerene());
    const frame::symmetry_elements of_ball = frame::find_elements(ball.kinds, ball.positions, tolerance);
    EXPECT_EQ(of_ball.directions.size(), 15U);
    EXPECT_TRUE(of_ball.inversion);
    for (const frame::element& e : of_ball.directions) {
        EXPECT_TRUE(e.axis && e.plane);
        EXPECT_NEAR(e.direction.norm(), 1.0, 1e-12);
    }
    const molecule small = moved(methane());
    const frame::symmetry_elements of_methane = frame::find_elements(small.kinds, small.positions, tolerance);
    int axes = 0;
    int planes = 0;
    for (const frame::element& e : of_methane.directions) {
        axes += e.axis ? 1 : 0;
        planes += e.plane ? 1 : 0;
    }
    EXPECT_EQ(axes, 3);
    EXPECT_EQ(planes, 6);
    EXPECT_EQ(of_methane.directions.size(), 9U);
    EXPECT_FALSE(of_methane.inversion);
}

TEST(frame, a_molecule_without_elements_is_centred_and_not_turned) {
    const molecule source = make({{6, {1, 0, 0}}, {1, {2.1, 0, 0}}, {9, {0.6, 1.3, 0}}, {17, {0.4, -0.8, 1.5}}});
    const frame::frame_result result = frame::prepare(source.kinds, source.positions, tolerance);
    EXPECT_EQ(result.rotation, Eigen::Matrix3d::Identity());
    EXPECT_NEAR((result.shift - Eigen::Vector3d(-1.025, -0.125, -0.375)).norm(), 0.0, 1e-15);
    EXPECT_EQ(result.positions.col(0), Eigen::Vector3d(-0.025, -0.125, -0.375));
    EXPECT_EQ(result.computed, 24);
}

TEST(frame, an_element_with_a_free_turn_goes_to_the_nearest_axis_by_the_shortest_way) {
    // Planar, no more: the plane's normal stands 0.2 from y in the plane of x and y; the least turn is one about z.
    molecule source = make({{6, {0, 0, 0}}, {1, {1.1, 0, 0}}, {9, {-0.4, 0, 1.3}}, {17, {-0.9, 0, -1.5}}});
    const Eigen::Matrix3d turn = Eigen::AngleAxisd(0.2, Eigen::Vector3d::UnitZ()).toRotationMatrix();
    source.positions = turn * source.positions;
    const frame::frame_result result = frame::prepare(source.kinds, source.positions, tolerance);
    EXPECT_EQ(result.group, cs);
    EXPECT_LT((result.rotation - turn.transpose()).norm(), 1e-12);
    EXPECT_EQ(result.positions.row(1), Eigen::RowVectorXd::Zero(4));
    for (const double y : result.positions.row(1)) {
        EXPECT_FALSE(std::signbit(y));
    }
}

TEST(frame, kinds_tell_atoms_apart) {
    molecule source = moved(methane());
    source.kinds[1] = 2;  // one hydrogen another isotope: C3v, of which the generator knows Cs: (30 + 3 * 4) / 2 = 21
    const frame::frame_result result = frame::prepare(source.kinds, source.positions, tolerance);
    EXPECT_EQ(result.group, cs);
    EXPECT_EQ(result.computed, 21);
}

// The plane x = 0 moves each hydrogen by half of the excess.
TEST(frame, an_operation_holds_up_to_moves_of_the_tolerance) {
    for (const auto& [excess, computed] : {std::pair(0.0199, 11), std::pair(0.0201, 18)}) {
        const molecule source = make({{8, {0, 0.3, 0.5}}, {1, {0.76 + excess, 0.59, 0.5}}, {1, {-0.76, 0.59, 0.5}}});
        const frame::frame_result result = frame::keep_frame(source.kinds, source.positions, tolerance);
        EXPECT_EQ(result.computed, computed) << excess;
        EXPECT_NEAR(result.largest_move, computed == 11 ? 0.5 * excess : 0.0, 1e-12);
    }
}

// One C-H bond of methane longer by `excess`: C3v for certain. The four hydrogens lie about a centroid that has gone
// along by a fifth, so that to make T of it the odd one moves by less than the excess, and some atom by more than an
// eighth.
TEST(frame, a_molecule_is_made_as_symmetric_as_the_tolerance_allows) {
    for (const auto& [excess, computed] : {std::pair(0.008, 9), std::pair(0.1, 21)}) {
        molecule source = methane();
        source.positions.col(1) *= 1.0 + excess / source.positions.col(1).norm();
        source = moved(source);
        const frame::frame_result result = frame::prepare(source.kinds, source.positions, tolerance);
        EXPECT_EQ(result.computed, computed) << excess;
        EXPECT_LE(result.largest_move, tolerance);
    }
}

TEST(frame, atoms_are_on_a_line_within_half_the_tolerance) {
    for (const auto& [aside, extent] :
         {std::pair(0.0049, frame::extent::line), std::pair(0.0052, frame::extent::space)}) {
        // Aside to either side at either end, so that neither centroid nor line is moved.
        const molecule source =
            make({{8, {aside, 0, 1}}, {8, {-aside, 0, 1}}, {8, {-aside, 0, -1}}, {8, {aside, 0, -1}}});
        EXPECT_EQ(frame::find_elements(source.kinds, source.positions, tolerance).atoms, extent) << aside;
    }
    const molecule point = make({{8, {0, 0, 0.0049}}, {8, {0, 0, -0.0049}}});
    EXPECT_EQ(frame::find_elements(point.kinds, point.positions, tolerance).atoms, frame::extent::point);
    EXPECT_EQ(frame::find_elements(point.kinds, 1.1 * point.positions, tolerance).atoms, frame::extent::line);
    const frame::symmetry_elements of_nothing = frame::find_elements({}, Eigen::Matrix3Xd(3, 0), tolerance);
    EXPECT_EQ(of_nothing.atoms, frame::extent::point);
    EXPECT_FALSE(of_nothing.inversion);
    EXPECT_TRUE(of_nothing.directions.empty());
}

// In a plane an axis and a mirror plane exchange the same atoms; each is fitted for itself.
TEST(frame, directions_are_those_of_least_squares) {
    const std::vector<int> partner = {0, 2, 1, 4, 3};
    std::mt19937 random(7);
    std::uniform_real_distribution<double> off(-0.002, 0.002);
    for (int trial = 0; trial < 20; ++trial) {
        SCOPED_TRACE(trial);
        molecule source =
            make({{8, {0, 0.1, 0}}, {1, {0.8, 0.7, 0}}, {1, {-0.8, 0.7, 0}}, {9, {1.5, -1, 0}}, {9, {-1.5, -1, 0}}});
        for (double& component : source.positions.reshaped()) {
            component += off(random);
        }
        const Eigen::Matrix3Xd about = source.positions.colwise() - source.positions.rowwise().mean();
        const Eigen::Matrix3d products = about * about(Eigen::all, partner).transpose();
        const Eigen::SelfAdjointEigenSolver<Eigen::Matrix3d> solver(0.5 * (products + products.transpose()));
        const frame::symmetry_elements found = frame::find_elements(source.kinds, source.positions, tolerance);
        ASSERT_EQ(found.directions.size(), 3U);
        for (const auto& [nearest, column] :
             {std::pair(Eigen::Vector3d::UnitX(), 0), std::pair(Eigen::Vector3d::UnitY(), 2)}) {
            const auto element =
                std::find_if(found.directions.begin(), found.directions.end(),
                             [&, n = nearest](const auto& e) { return std::abs(e.direction.dot(n)) > 0.9; });
            ASSERT_NE(element, found.directions.end());
            EXPECT_NEAR(element->direction.cross(solver.eigenvectors().col(column)).norm(), 0.0, 1e-12);
        }
    }
}

// Each atom is off its partner's image by `off`, the two references among them, in a way that neither turns nor moves
// the plane.
TEST(frame, references_may_both_be_off_by_the_tolerance) {
    for (const auto& [off, holds] : {std::pair(0.0099, true), std::pair(0.0101, false)}) {
        const molecule source = make({{8, {2, 1, 1}},
                                      {8, {-2 - off, 1, 1}},
                                      {9, {2, 1, -1}},
                                      {9, {-2 + off, 1, -1}},  //
                                      {7, {2, -1, 1}},
                                      {7, {-2 + off, -1, 1}},
                                      {6, {2, -1, -1}},
                                      {6, {-2 - off, -1, -1}}});
        const frame::symmetry_elements found = frame::find_elements(source.kinds, source.positions, tolerance);
        const bool has_plane =
            std::any_of(found.directions.begin(), found.directions.end(),
                        [](const frame::element& e) { return e.plane && std::abs(e.direction.x()) > 0.99; });
        EXPECT_EQ(has_plane, holds) << off;
    }
}

TEST(frame, keep_frame_neither_shifts_nor_turns) {
    const molecule source = make({{8, {0, 0.3, 0.5}}, {1, {0.7601, 0.59, 0.5}}, {1, {-0.76, 0.59, 0.5}}});
    const frame::frame_result result = frame::keep_frame(source.kinds, source.positions, tolerance);
    EXPECT_EQ(result.rotation, Eigen::Matrix3d::Identity());
    EXPECT_EQ(result.shift, Eigen::Vector3d::Zero());
    EXPECT_EQ(result.group, cs);     // x = 0; the plane z = 0.5 does not hold the origin
    EXPECT_EQ(result.computed, 11);  // (18 + 4) / 2
    EXPECT_EQ(result.positions.col(1), Eigen::Vector3d(0.76005, 0.59, 0.5));
    EXPECT_EQ(result.positions.col(2), Eigen::Vector3d(-0.76005, 0.59, 0.5));
    EXPECT_NEAR(result.largest_move, 5e-5, 1e-15);
}

TEST(frame, as_written_is_counted_without_a_change) {
    const molecule source = make({{8, {0, 0, 0}}, {1, {0.76, 0.59, 0}}, {1, {-0.76, 0.59, 0}}});
    EXPECT_EQ(frame::count_displacements(source.kinds, source.positions).computed, 9);
    const molecule away = moved(source);
    EXPECT_EQ(frame::count_displacements(away.kinds, away.positions).computed, 18);
    EXPECT_EQ(frame::count_displacements(away.kinds, away.positions).group, c1);
}

TEST(frame, what_the_generator_finds_beyond_a_small_tolerance_is_told) {
    // Mirrors to 0.0008, which the generator takes and a tolerance of 0.0001 does not allow to be made exact.
    const molecule source = make({{8, {0, 0.1, 0.2}}, {1, {0.7604, 0.59, 0.1}}, {1, {-0.7596, 0.59, 0.1}}});
    const frame::frame_result result = frame::keep_frame(source.kinds, source.positions, 0.0001);
    EXPECT_FALSE(result.exact);
    EXPECT_EQ(result.computed, 11);
    EXPECT_LT(result.largest_move, 1e-8);
    EXPECT_TRUE(frame::keep_frame(source.kinds, source.positions, 0.0005).exact);
}

// Two pairs of atoms nearer to each other than an operation may be off: operations hold each by itself, but one after
// the other they exchange other atoms than their product, and no coordinates have them all.
TEST(frame, operations_that_do_not_suit_each_other_are_not_joined) {
    const molecule source = make({{6, {0.958, -0.040, -0.048}},
                                  {6, {-0.913, 0.021, -0.063}},
                                  {6, {0.988, 0.042, 0.023}},
                                  {6, {-0.970, -0.005, 0.027}}});
    const frame::frame_result result = frame::keep_frame(source.kinds, source.positions, frame::largest_tolerance);
    EXPECT_TRUE(result.exact);
    EXPECT_EQ(result.group, cs);
    EXPECT_EQ(result.computed, 12);  // (24 + 0) / 2: no atom is on the plane
}

// Short levers and a large tolerance: elements are far from a right angle as they are found. C2v, all atoms on one
// plane and two on the axis: (36 + 2 * 2 + 6 * 4 + 2 * 4) / 4.
TEST(frame, directions_are_at_right_angles_as_far_as_they_can_be_off) {
    const molecule source = make({{1, {0.267, 0.173, -0.452}},
                                  {1, {0.416, 0.245, 0.171}},
                                  {1, {-0.401, -0.063, -0.105}},
                                  {1, {-0.465, 0.048, 0.219}},
                                  {6, {-0.760, -0.028, 0.125}},
                                  {6, {0.672, 0.148, -0.079}}});
    const frame::frame_result result = frame::prepare(source.kinds, source.positions, frame::largest_tolerance);
    EXPECT_EQ(result.computed, 18);
    EXPECT_LE(result.largest_move, frame::largest_tolerance);
}

// The first fit to all atoms changes which atom is whose image. D2h with four atoms on one plane and two where two
// planes meet: (36 + 4 + 4 * 4 + 2 * 4 + 2 * 4) / 8.
TEST(frame, an_operation_is_fitted_until_its_partners_stay) {
    const molecule source = make({{1, {-0.208, 0.239, 0.605}},
                                  {1, {0.118, 0.617, 0.416}},
                                  {1, {-0.124, -0.488, -0.396}},
                                  {1, {0.190, -0.183, -0.544}},
                                  {6, {-0.322, 0.322, -0.212}},
                                  {6, {0.391, -0.314, 0.221}}});
    EXPECT_EQ(frame::prepare(source.kinds, source.positions, frame::largest_tolerance).computed, 9);
}

// C2h when it is made exact once, D2h when twice. Each atom is on an axis and so on two planes: (24 + 4 * 2 + 8 * 4)
// / 8.
TEST(frame, what_is_made_exact_is_looked_at_again) {
    const molecule source = make({{1, {-0.182, 0.320, -0.390}},
                                  {1, {0.307, -0.360, 0.410}},
                                  {6, {-0.345, 0.424, -0.366}},
                                  {6, {0.279, -0.392, 0.349}}});
    const frame::frame_result result = frame::prepare(source.kinds, source.positions, frame::largest_tolerance);
    EXPECT_EQ(result.group, d2h);
    EXPECT_EQ(result.computed, 8);
    EXPECT_LE(result.largest_move, frame::largest_tolerance);
}

TEST(frame, no_atoms_are_merged) {
    // On either side of a plane, of two kinds, nearer than the tolerance: the plane would bring them together.
    const molecule source = make({{6, {0.004, 1, 0}}, {1, {-0.004, 1, 0}}, {8, {0, 0, 0}}, {9, {0, -1, 1}}});
    const frame::frame_result result = frame::keep_frame(source.kinds, source.positions, tolerance);
    EXPECT_EQ(result.group, c1);
    EXPECT_EQ(result.positions, source.positions);
}

TEST(frame, no_atoms_come_to_less_than_half_their_distance) {
    // The plane x = 0 takes what differs in x from the two atoms of other kinds.
    for (const auto& [apart, group] : {std::pair(0.004, c1), std::pair(0.006, cs)}) {
        const molecule source = make(
            {{6, {0.0045, 1, 0}}, {1, {-0.0045, 1 + apart, 0}}, {8, {0, 0, 0}}, {9, {0, -1, 1}}, {17, {0, -1, 3}}});
        EXPECT_EQ(frame::keep_frame(source.kinds, source.positions, tolerance).group, group) << apart;
    }
}

TEST(frame, a_molecule_within_the_last_digits_of_its_frame_is_not_turned) {
    const molecule source = make({{8, {0, 0, 0.11}}, {1, {0, 0.757, -0.44}}, {1, {0, -0.7570002, -0.4400001}}});
    const frame::frame_result result = frame::prepare(source.kinds, source.positions, tolerance);
    EXPECT_EQ(result.rotation, Eigen::Matrix3d::Identity());
    EXPECT_EQ(result.computed, 9);
}

TEST(frame, of_two_equal_turns_the_same_is_taken_whatever_the_order) {
    // A rectangle halfway between two axes: both turns by 45 degrees are equally near. Taken is the one whose first
    // element off the diagonal is positive.
    const double s = std::numbers::sqrt2 / 2.0;
    for (int axis = 0; axis < 3; ++axis) {
        const int first = axis == 0 ? 1 : 0;
        const int second = axis == 2 ? 1 : 2;
        Eigen::Matrix3d expected = Eigen::Matrix3d::Identity();
        expected(first, first) = expected(second, second) = s;
        expected(first, second) = s;
        expected(second, first) = -s;
        for (const double side : {0.6, 1.7}) {
            for (const bool is_reversed : {false, true}) {
                Eigen::Vector3d along = side * Eigen::Vector3d::Unit(first) + side * Eigen::Vector3d::Unit(second);
                Eigen::Vector3d across = Eigen::Vector3d::Unit(first) - Eigen::Vector3d::Unit(second);
                if (is_reversed) {
                    std::swap(along, across);
                }
                const molecule source =
                    make({{6, along + across}, {6, along - across}, {6, across - along}, {6, -along - across}});
                const frame::frame_result result = frame::prepare(source.kinds, source.positions, tolerance);
                EXPECT_LT((result.rotation - expected).norm(), 1e-6) << result.rotation;
                EXPECT_EQ(result.group, d2h);
            }
        }
    }
}

std::string message_of(const std::vector<int>& kinds, const Eigen::Matrix3Xd& positions, double within) {
    try {
        frame::prepare(kinds, positions, within);
    } catch (const base::run_error& error) {
        return error.what();
    }
    return "no error";
}

TEST(frame, a_source_that_is_not_fit_stops_the_run) {
    const molecule water = make({{8, {0, 0, 0}}, {1, {0.76, 0.59, 0}}, {1, {-0.76, 0.59, 0}}});
    EXPECT_EQ(message_of({8, 1}, water.positions, tolerance), "expected as many kinds as positions, found 2 and 3");
    EXPECT_EQ(message_of(water.kinds, water.positions, 0.2), "tolerance: expected 1e-06 to 0.1 angstrom, found 0.2");
    EXPECT_EQ(message_of(water.kinds, water.positions, std::numeric_limits<double>::quiet_NaN()),
              "tolerance: expected 1e-06 to 0.1 angstrom, found nan");
    molecule far = water;
    far.positions(2, 1) = -10000.0;
    EXPECT_EQ(message_of(far.kinds, far.positions, tolerance),
              "atom 2: expected coordinates below 10000 angstrom, found -10000");
    far.positions(2, 1) = std::numeric_limits<double>::infinity();
    EXPECT_EQ(message_of(far.kinds, far.positions, tolerance),
              "atom 2: expected coordinates below 10000 angstrom, found inf");
    molecule close = water;
    close.positions.col(2) = close.positions.col(0) + Eigen::Vector3d(0.0, 0.003, 0.0);
    EXPECT_EQ(message_of(close.kinds, close.positions, tolerance),
              "atoms 1 and 3: expected a distance of at least 0.004 angstrom, found 0.003");
}

TEST(frame, no_atoms_are_no_error) { EXPECT_EQ(frame::prepare({}, Eigen::Matrix3Xd(3, 0), tolerance).computed, 0); }

/// A cube of 8 x 8 x 8 atoms with axes and planes between the atoms, so that none meets one: 3072 / 8. (With the planes
/// of the diagonals, of 64 atoms each, there are more.)
TEST(frame, a_block_of_a_lattice_is_prepared) {
    std::vector<std::pair<int, Eigen::Vector3d>> atoms;
    for (int i = 0; i < 512; ++i) {
        atoms.emplace_back(29, 2.5 * Eigen::Vector3d(i % 8, i / 8 % 8, i / 64));
    }
    const molecule source = moved(make(atoms));
    EXPECT_EQ(frame::prepare(source.kinds, source.positions, tolerance).computed, 384);
}

/// A ring of 200 atoms, D200h, with axes and planes between the atoms, so that none meets one: 1200, and the plane of
/// the ring 800: 2000 / 8. (Axes and planes through atoms: 2024 / 8 = 253.)
TEST(frame, a_large_ring_is_prepared) {
    const molecule source = moved(ring(200, 45.0, 0.0));
    EXPECT_EQ(frame::prepare(source.kinds, source.positions, tolerance).computed, 250);
}

/// 500 atoms of one kind on a sphere, as evenly as may be, without symmetry.
TEST(frame, a_shell_of_like_atoms_has_no_symmetry) {
    std::mt19937_64 random(3);
    std::normal_distribution<double> normal;
    molecule source;
    while (source.kinds.size() < 500) {
        const Eigen::Vector3d place =
            14.0 * Eigen::Vector3d(normal(random), normal(random), normal(random)).normalized();
        const auto n = static_cast<Eigen::Index>(source.kinds.size());
        if (n > 0 && (source.positions.colwise() - place).colwise().norm().minCoeff() < 0.8) {
            continue;
        }
        source.positions.conservativeResize(Eigen::NoChange, n + 1);
        source.positions.col(n) = place;
        source.kinds.push_back(18);
    }
    const frame::frame_result result = frame::prepare(source.kinds, source.positions, tolerance);
    EXPECT_EQ(result.computed, 3000);
    EXPECT_EQ(result.group, c1);
}

}  // namespace
