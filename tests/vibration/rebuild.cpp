#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <utility>

#include "molecules.hpp"
#include "support.hpp"

using namespace displacement_generator;
using namespace displacement_generator::vibration_tests;

namespace {

TEST(rebuild_forces, gives_the_hessian_of_a_random_potential_of_each_group) {
    std::mt19937 random(11);
    for (int group = 1; group <= 8; ++group) {
        for (const bool std_orient : {true, false}) {
            for (const int disp_sign : {1, -1}) {
                SCOPED_TRACE(testing::Message() << "group " << group << " " << std_orient << " " << disp_sign);
                const listing of = list(generate(operations_of(group), random), std_orient, disp_sign);
                ASSERT_EQ(of.group, group);
                const Eigen::MatrixXd hessian = random_hessian(of, random);
                computed_points points = compute(of, hessian, random);
                vibration::rebuild_forces(of.relations, points.forces, points.steps);
                const vibration::hessian_result rebuilt = vibration::central_differences(points.forces, points.steps);
                EXPECT_LT((rebuilt.hessian - hessian).cwiseAbs().maxCoeff(), 1e-13);
                EXPECT_LT(rebuilt.largest_asymmetry, 1e-13);
            }
        }
    }
}

TEST(rebuild_dipoles, gives_the_dipole_derivatives_of_each_group) {
    std::mt19937 random(12);
    for (int group = 1; group <= 8; ++group) {
        SCOPED_TRACE(group);
        const listing of = list(generate(operations_of(group), random));
        const Eigen::Index size = 3 * of.numbers.size();
        // What any operation carries onto itself: the mean over all of what each makes of random derivatives.
        const Eigen::MatrixXd start = Eigen::MatrixXd::Random(3, size);
        Eigen::Matrix3Xd derivatives = Eigen::Matrix3Xd::Zero(3, size);
        for (const vibration::operation& by : of.relations.symmetry) {
            for (Eigen::Index i = 0; i < size / 3; ++i) {
                derivatives.middleCols<3>(3 * by.images(i)) += by.matrix * start.middleCols<3>(3 * i) *
                                                               by.matrix.transpose() /
                                                               static_cast<double>(of.relations.symmetry.size());
            }
        }
        computed_points points = compute(of, Eigen::MatrixXd::Zero(size, size), random);
        Eigen::Vector3d at_rest(0.1, 0.2, 0.3);
        for (const vibration::operation& by : of.relations.symmetry) {
            at_rest = (at_rest + by.matrix * at_rest).eval() / 2.0;
        }
        Eigen::Matrix3Xd dipoles = Eigen::Matrix3Xd::Constant(3, 2 * size, std::numeric_limits<double>::quiet_NaN());
        for (Eigen::Index p = 0; p < 2 * size; ++p) {
            if (of.relations.sources(p) == p) {
                dipoles.col(p) = at_rest + derivatives.col(p / 2) * points.steps(p);
            }
        }
        vibration::rebuild_dipoles(of.relations, dipoles);
        vibration::rebuild_forces(of.relations, points.forces, points.steps);
        EXPECT_LT((vibration::dipole_derivatives(dipoles, points.steps) - derivatives).cwiseAbs().maxCoeff(), 1e-12);
    }
}

TEST(rebuild_forces, carries_the_step_with_its_sign_and_length) {
    // An atom on z and two more that C2z exchanges: atom 2 -dx becomes atom 3 +dx with the source's own length.
    const listing of = list(water());
    std::mt19937 random(13);
    computed_points points = compute(of, Eigen::MatrixXd::Zero(9, 9), random);
    const double lowered = points.steps(8);  // 2-dy
    vibration::rebuild_forces(of.relations, points.forces, points.steps);
    EXPECT_EQ(points.steps(15), -lowered);  // 3+dy
}

TEST(rebuild_forces, follows_from_a_later_point_too) {
    listing of = list(water());
    std::swap(of.relations.operations(0), of.relations.operations(1));
    of.relations.sources(0) = of.relations.sources(1) = 1;  // 1-dx from 1+dx
    std::mt19937 random(17);
    computed_points points = compute(of, Eigen::MatrixXd::Identity(9, 9), random);
    vibration::rebuild_forces(of.relations, points.forces, points.steps);
    EXPECT_EQ(points.steps(0), -points.steps(1));
    EXPECT_EQ(points.forces(0, 0), -points.forces(0, 1));
}

TEST(rebuild_forces, refuses_a_point_that_does_not_follow) {
    listing of = list(water());
    std::mt19937 random(14);
    const computed_points points = compute(of, Eigen::MatrixXd::Identity(9, 9), random);
    const auto run = [&] {
        computed_points copy = points;
        vibration::rebuild_forces(of.relations, copy.forces, copy.steps);
    };
    const vibration::point_relations whole = of.relations;
    of.relations.operations(14) = 2;  // Szx carries 2+dy onto 3-dy as well; Syz does not
    EXPECT_EQ(support::stopped_with(run), "no error");
    of.relations.operations(0) = 99;  // of a computed point
    EXPECT_EQ(support::stopped_with(run), "no error");
    of.relations.operations(14) = 3;
    EXPECT_EQ(support::stopped_with(run),
              "point 15: the operation does not carry its source, point 10, onto it|standard error|2");
    for (const int number : {-1, 4}) {
        of.relations.operations(14) = number;
        EXPECT_EQ(support::stopped_with(run),
                  "point 15: expected an operation in 1..4, found " + std::to_string(number + 1) + "|standard error|2");
    }
    of.relations = whole;
    for (const int source : {-1, 15, 18}) {
        of.relations.sources(14) = source;
        EXPECT_EQ(support::stopped_with(run), "point 15: expected a computed point as its source, found " +
                                                  std::to_string(source + 1) + "|standard error|2");
    }
    of.relations = whole;
    const std::string no_images =
        "operation 2: expected an image for each of 3 atoms, all of them different|standard error|2";
    for (const int image : {-1, 2, 3}) {
        of.relations.symmetry[1].images(2) = image;
        EXPECT_EQ(support::stopped_with(run), no_images);
    }
    of.relations.symmetry[1].images.setLinSpaced(2, 0, 1);
    EXPECT_EQ(support::stopped_with(run), no_images);
    of.relations = whole;
    of.relations.symmetry[1].matrix(1, 0) = 1e-7;
    EXPECT_EQ(support::stopped_with(run),
              "point 2: the operation does not carry its source, point 1, onto it|standard error|2");
    of.relations.symmetry[1].matrix(1, 0) = 1e-9;
    EXPECT_EQ(support::stopped_with(run), "no error");
    of.relations = whole;
    of.relations.operations.conservativeResize(17);
    EXPECT_EQ(support::stopped_with(run), "point table: expected six points an atom, found 18|standard error|2");
    of.relations.sources.conservativeResize(17);
    EXPECT_EQ(support::stopped_with(run), "point table: expected six points an atom, found 17|standard error|2");
}

TEST(rebuild_forces, refuses_numbers_that_are_not_there) {
    constexpr double nothing = std::numeric_limits<double>::quiet_NaN();
    const listing of = list(water());
    std::mt19937 random(15);
    const computed_points points = compute(of, Eigen::MatrixXd::Identity(9, 9), random);
    const auto stopped = [&](const auto& change) {
        computed_points changed = points;
        change(changed);
        return support::stopped_with([&] { vibration::rebuild_forces(of.relations, changed.forces, changed.steps); });
    };
    EXPECT_EQ(stopped([](computed_points& changed) { changed.forces(4, 0) = nothing; }),
              "forces: found a value that is not finite|standard error|2");
    EXPECT_EQ(stopped([](computed_points& changed) { changed.steps(0) = nothing; }),
              "steps: found a value that is not finite|standard error|2");
    const std::string sizes = "forces and steps: expected 9 x 18 values|standard error|2";
    EXPECT_EQ(stopped([](computed_points& changed) { changed.forces.conservativeResize(9, 17); }), sizes);
    EXPECT_EQ(stopped([](computed_points& changed) { changed.forces.conservativeResize(8, 18); }), sizes);
    EXPECT_EQ(stopped([](computed_points& changed) { changed.steps.conservativeResize(17); }), sizes);
}

TEST(rebuild_dipoles, refuses_numbers_that_are_not_there) {
    const listing of = list(water());
    const auto stopped = [&](Eigen::Matrix3Xd dipoles) {
        return support::stopped_with([&] { vibration::rebuild_dipoles(of.relations, dipoles); });
    };
    EXPECT_EQ(stopped(Eigen::Matrix3Xd::Ones(3, 18)), "no error");
    EXPECT_EQ(stopped(Eigen::Matrix3Xd::Ones(3, 17)), "dipole moments: expected 3 x 18 values|standard error|2");
    EXPECT_EQ(stopped(Eigen::Matrix3Xd::Ones(3, 18) / 0.0),
              "dipole moments: found a value that is not finite|standard error|2");
}

TEST(central_differences, are_made_symmetric_and_tell_the_largest_asymmetry) {
    Eigen::MatrixXd forces = Eigen::MatrixXd::Zero(3, 6);
    Eigen::VectorXd steps(6);
    steps << -0.1, 0.3, -0.2, 0.2, -0.2, 0.2;
    forces.col(0) << 0.1, 0.0, 0.0;
    forces.col(1) << -0.3, 0.04, 0.0;  // H(1, 0) = -0.1
    forces.col(2) << 0.0, 0.4, 0.0;
    forces.col(3) << 0.12, -0.4, 0.0;  // H(0, 1) = -0.3, H(1, 1) = 2
    const vibration::hessian_result result = vibration::central_differences(forces, steps);
    Eigen::MatrixXd expected(3, 3);
    expected << 1.0, -0.2, 0.0, -0.2, 2.0, 0.0, 0.0, 0.0, 0.0;
    EXPECT_LT((result.hessian - expected).cwiseAbs().maxCoeff(), 1e-15);
    EXPECT_NEAR(result.largest_asymmetry, 0.2, 1e-15);
    EXPECT_EQ(result.row, 0);
    EXPECT_EQ(result.column, 1);
    const vibration::hessian_result none = vibration::central_differences(Eigen::MatrixXd::Zero(3, 6), steps);
    EXPECT_EQ(none.largest_asymmetry, 0.0);
    EXPECT_EQ(none.row, 0);
    EXPECT_EQ(none.column, 0);
}

TEST(central_differences, need_steps_in_opposite_directions) {
    struct pair_of_steps {
        double first;
        double second;
        const char* shown;
    };
    const Eigen::MatrixXd forces = Eigen::MatrixXd::Zero(3, 6);
    const Eigen::Matrix3Xd dipoles = Eigen::Matrix3Xd::Zero(3, 6);
    Eigen::VectorXd steps(6);
    steps << 0.1, -0.1, -0.2, 0.2, 0.0, 0.0;
    for (const pair_of_steps& one : {pair_of_steps{0.2, 0.2, "0.200000 and 0.200000"},
                                     {-0.2, -0.2, "-0.200000 and -0.200000"},
                                     {0.2, 0.0, "0.200000 and 0.000000"},
                                     {-0.2, 0.0, "-0.200000 and 0.000000"},
                                     {0.0, 0.2, "0.000000 and 0.200000"},
                                     {0.0, -0.2, "0.000000 and -0.200000"}}) {
        steps.tail<2>() << one.first, one.second;
        const std::string expected = "points 5 and 6: expected steps in opposite directions, found " +
                                     std::string(one.shown) + " bohr|standard error|2";
        EXPECT_EQ(support::stopped_with([&] { vibration::central_differences(forces, steps); }), expected);
        EXPECT_EQ(support::stopped_with([&] { vibration::dipole_derivatives(dipoles, steps); }), expected);
    }
    steps.tail<2>() << -1e308, 1e308;  // their distance is no number
    EXPECT_TRUE(support::stopped_with([&] {
                    vibration::central_differences(forces, steps);
                }).starts_with("points 5 and 6: expected steps in opposite directions, found -1000"));
}

TEST(central_differences, refuse_what_does_not_fit) {
    const auto hessian = [](const Eigen::MatrixXd& forces, Eigen::Index steps) {
        return support::stopped_with([&] { vibration::central_differences(forces, Eigen::VectorXd::Zero(steps)); });
    };
    const auto dipole = [](const Eigen::Matrix3Xd& dipoles, Eigen::Index steps) {
        return support::stopped_with([&] { vibration::dipole_derivatives(dipoles, Eigen::VectorXd::Zero(steps)); });
    };
    const Eigen::MatrixXd forces = Eigen::MatrixXd::Ones(3, 6);
    const std::string sizes = "forces and steps: expected 3 x 6 values|standard error|2";
    EXPECT_EQ(hessian(Eigen::MatrixXd::Ones(3, 5), 6), sizes);
    EXPECT_EQ(hessian(forces, 5), sizes);
    EXPECT_EQ(hessian(Eigen::MatrixXd::Ones(4, 8), 8), "forces and steps: expected 4 x 8 values|standard error|2");
    EXPECT_EQ(hessian(forces / 0.0, 6), "forces: found a value that is not finite|standard error|2");
    EXPECT_EQ(dipole(forces, 12), "dipole moments and steps: expected 3 x 12 values|standard error|2");
    EXPECT_EQ(dipole(Eigen::Matrix3Xd::Ones(3, 8), 8),
              "dipole moments and steps: expected 3 x 8 values|standard error|2");
    EXPECT_EQ(dipole(forces / 0.0, 6), "dipole moments: found a value that is not finite|standard error|2");
}

}  // namespace
