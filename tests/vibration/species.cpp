#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>

#include "molecules.hpp"
#include "support.hpp"

using namespace displacement_generator;
using namespace displacement_generator::vibration_tests;

namespace {

struct group_row {
    std::string name;
    std::vector<std::string> species;
    std::vector<std::vector<int>> characters;  // a row a species, a column an operation in the order of the list
};

// The character tables, written out.
const std::vector<group_row> tables = {
    {"C1", {"A"}, {{1}}},
    {"CS", {"A'", "A\""}, {{1, 1}, {1, -1}}},
    {"C2", {"A", "B"}, {{1, 1}, {1, -1}}},
    // E C2z Szx Syz
    {"C2V", {"A1", "A2", "B1", "B2"}, {{1, 1, 1, 1}, {1, 1, -1, -1}, {1, -1, 1, -1}, {1, -1, -1, 1}}},
    // E C2z C2y C2x I Sxy Szx Syz
    {"D2H",
     {"Ag", "Au", "B1g", "B1u", "B2g", "B2u", "B3g", "B3u"},
     {{1, 1, 1, 1, 1, 1, 1, 1},
      {1, 1, 1, 1, -1, -1, -1, -1},
      {1, 1, -1, -1, 1, 1, -1, -1},
      {1, 1, -1, -1, -1, -1, 1, 1},
      {1, -1, 1, -1, 1, -1, 1, -1},
      {1, -1, 1, -1, -1, 1, -1, 1},
      {1, -1, -1, 1, 1, -1, -1, 1},
      {1, -1, -1, 1, -1, 1, 1, -1}}},
    {"CI", {"Ag", "Au"}, {{1, 1}, {1, -1}}},
    // E C2z I Sxy
    {"C2H", {"Ag", "Au", "Bg", "Bu"}, {{1, 1, 1, 1}, {1, 1, -1, -1}, {1, -1, 1, -1}, {1, -1, -1, 1}}},
    // E C2z C2y C2x
    {"D2", {"A", "B1", "B2", "B3"}, {{1, 1, 1, 1}, {1, 1, -1, -1}, {1, -1, 1, -1}, {1, -1, -1, 1}}},
};

std::map<std::string, int> counted(const std::vector<std::string>& of) {
    std::map<std::string, int> result;
    for (const std::string& label : of) {
        ++result[label];
    }
    return result;
}

/// How many vibrations each species has, from characters: those of all displacements (atoms that stay, times the trace)
/// less those of translations and rotations. For molecules that are not linear.
std::map<std::string, int> expected_count(const group_row& row, const listing& of) {
    std::map<std::string, int> result;
    for (std::size_t s = 0; s < row.species.size(); ++s) {
        double sum = 0.0;
        for (std::size_t g = 0; g < row.species.size(); ++g) {
            const vibration::operation& by = of.relations.symmetry[g];
            int staying = 0;
            for (Eigen::Index i = 0; i < by.images.size(); ++i) {
                staying += by.images(i) == i ? 1 : 0;
            }
            const double trace = by.matrix.trace();
            sum += row.characters[s][g] * (staying * trace - trace - trace * by.matrix.diagonal().prod());
        }
        const int count = static_cast<int>(std::lround(sum / static_cast<double>(row.species.size())));
        if (count != 0) {
            result[row.species[s]] = count;
        }
    }
    return result;
}

TEST(species, characters_are_those_of_the_tables) {
    std::mt19937 random(21);
    for (int number = 1; number <= 8; ++number) {
        const group_row& row = tables[static_cast<std::size_t>(number - 1)];
        SCOPED_TRACE(row.name);
        const listing of = list(generate(operations_of(number), random));
        const vibration::species_group group =
            group_of(of, masses_of(of.numbers), spring_hessian(of.numbers, of.positions));
        EXPECT_EQ(group.name, row.name);
        EXPECT_EQ(group.species, row.species);
        EXPECT_TRUE(group.left_out.empty());
        EXPECT_LT(group.largest_variance, 1e-12);
        ASSERT_EQ(group.symmetry.size(), row.species.size());
        for (std::size_t s = 0; s < row.species.size(); ++s) {
            for (std::size_t g = 0; g < row.species.size(); ++g) {
                EXPECT_EQ(group.characters(static_cast<Eigen::Index>(s), static_cast<Eigen::Index>(g)),
                          row.characters[s][g])
                    << row.species[s] << " under operation " << g + 1;
            }
        }
    }
}

TEST(species, as_many_modes_of_each_as_the_characters_say) {
    std::mt19937 random(22);
    for (int number = 1; number <= 8; ++number) {
        for (int repeat = 0; repeat < 5; ++repeat) {
            const group_row& row = tables[static_cast<std::size_t>(number - 1)];
            SCOPED_TRACE(row.name);
            const listing of = list(generate(operations_of(number), random));
            const Eigen::VectorXd masses = masses_of(of.numbers);
            const Eigen::MatrixXd hessian = random_hessian(of, random);
            EXPECT_EQ(counted(labels(vibrate(of, masses, hessian), group_of(of, masses, hessian))),
                      expected_count(row, of));
        }
    }
}

TEST(species, each_mode_goes_over_into_itself_or_its_opposite) {
    std::mt19937 random(23);
    for (int number = 1; number <= 8; ++number) {
        const group_row& row = tables[static_cast<std::size_t>(number - 1)];
        SCOPED_TRACE(row.name);
        const listing of = list(generate(operations_of(number), random));
        const Eigen::VectorXd masses = masses_of(of.numbers);
        const vibration::vibrations modes = vibrate(of, masses, spring_hessian(of.numbers, of.positions));
        for (Eigen::Index mode = 0; mode < modes.displacements.cols(); ++mode) {
            for (std::size_t g = 0; g < of.relations.symmetry.size(); ++g) {
                const vibration::operation& by = of.relations.symmetry[g];
                const int sign =
                    row.characters[static_cast<std::size_t>(modes.species[static_cast<std::size_t>(mode)])][g];
                for (Eigen::Index i = 0; i < of.numbers.size(); ++i) {
                    const Eigen::Vector3d carried = by.matrix * modes.displacements.col(mode).segment<3>(3 * i);
                    const Eigen::Vector3d found = modes.displacements.col(mode).segment<3>(3 * by.images(i));
                    ASSERT_LT((carried - sign * found).norm(), 1e-14);
                }
            }
        }
    }
}

TEST(species, of_water_are_the_same_however_it_stands) {
    // Quarter turns bring water into each of the six places; unturned, its axis and plane are the list's.
    const molecule upright = water();
    const std::vector<std::vector<int>> orders = {{0, 1, 2}, {0, 2, 1}, {1, 0, 2}, {1, 2, 0}, {2, 0, 1}, {2, 1, 0}};
    for (const std::vector<int>& order : orders) {
        for (const bool std_orient : {true, false}) {
            SCOPED_TRACE(testing::Message() << order[0] << order[1] << order[2] << std_orient);
            molecule placed = upright;
            for (int j = 0; j < 3; ++j) {
                placed.positions.row(order[static_cast<std::size_t>(j)]) = upright.positions.row(j);
            }
            const listing of = list(placed, std_orient);
            const Eigen::VectorXd masses = masses_of(of.numbers);
            const Eigen::MatrixXd hessian = spring_hessian(of.numbers, of.positions);
            const vibration::species_group group = group_of(of, masses, hessian);
            EXPECT_EQ(group.name, "C2V");
            EXPECT_EQ(counted(labels(vibrate(of, masses, hessian), group)),
                      (std::map<std::string, int>{{"A1", 2}, {"B2", 1}}));
        }
    }
}

TEST(species, of_other_axes_are_those_of_the_standard_orientation) {
    std::mt19937 random(24);
    for (const int number : {2, 3, 4, 7}) {
        for (const std::vector<int>& order : std::vector<std::vector<int>>{{1, 2, 0}, {2, 0, 1}}) {
            SCOPED_TRACE(testing::Message() << "group " << number << " z becomes " << order[2]);
            const molecule upright = generate(operations_of(number), random);
            molecule placed = upright;
            for (int j = 0; j < 3; ++j) {
                placed.positions.row(order[static_cast<std::size_t>(j)]) = upright.positions.row(j);
            }
            const listing turned = list(placed, true);
            const listing as_given = list(placed, false);
            const Eigen::VectorXd masses = masses_of(turned.numbers);
            const Eigen::MatrixXd one = spring_hessian(turned.numbers, turned.positions);
            const Eigen::MatrixXd other = spring_hessian(as_given.numbers, as_given.positions);
            const vibration::vibrations first = vibrate(turned, masses, one);
            const vibration::vibrations second = vibrate(as_given, masses, other);
            EXPECT_EQ(labels(first, group_of(turned, masses, one)), labels(second, group_of(as_given, masses, other)));
            EXPECT_LT((first.frequencies - second.frequencies).cwiseAbs().maxCoeff(), 1e-6);
        }
    }
}

TEST(species, of_ethylene) {
    // In the yz plane with the double bond on z, without restoring forces out of the plane; only in-plane modes are
    // told.
    const listing of = list(ethylene());
    const Eigen::VectorXd masses = masses_of(of.numbers);
    const Eigen::MatrixXd hessian = spring_hessian(of.numbers, of.positions);
    const std::map<std::string, int> found =
        counted(labels(vibrate(of, masses, hessian), group_of(of, masses, hessian)));
    EXPECT_EQ(found, (std::map<std::string, int>{
                         {"Ag", 3}, {"Au", 1}, {"B1u", 2}, {"B2g", 1}, {"B2u", 2}, {"B3g", 2}, {"B3u", 1}}));
}

TEST(species, of_a_label_that_lowers_the_symmetry) {
    const listing of = list(water());
    Eigen::VectorXd masses = masses_of(of.numbers);
    const Eigen::MatrixXd hessian = spring_hessian(of.numbers, of.positions);
    masses(2) += 0.9e-8;
    EXPECT_EQ(group_of(of, masses, hessian).name, "C2V");
    masses(2) += 0.2e-8;
    EXPECT_EQ(group_of(of, masses, hessian).name, "CS");
    masses(2) = 2.014;
    const vibration::species_group group = group_of(of, masses, hessian);
    EXPECT_EQ(group.name, "CS");
    ASSERT_EQ(group.left_out.size(), 2U);
    EXPECT_EQ(group.left_out[0].name, "C2z");
    EXPECT_EQ(group.left_out[0].reason, "the masses differ");
    EXPECT_EQ(group.left_out[1].name, "Szx");
    const vibration::vibrations modes = vibrate(of, masses, hessian);
    EXPECT_EQ(labels(modes, group), (std::vector<std::string>{"A'", "A'", "A'"}));
    EXPECT_LT((modes.frequencies - plain_frequencies(masses, of.positions, hessian)).cwiseAbs().maxCoeff(), 1e-6);
}

TEST(species, leave_out_what_the_hessian_does_not_have) {
    const listing of = list(water());
    Eigen::MatrixXd hessian = spring_hessian(of.numbers, of.positions);
    const double large = hessian.cwiseAbs().maxCoeff();
    hessian(4, 4) += 0.9e-3 * large;  // y of atom 2 alone
    EXPECT_EQ(group_of(of, masses_of(of.numbers), hessian).name, "C2V");
    EXPECT_NEAR(group_of(of, masses_of(of.numbers), hessian).largest_variance, 0.9e-3 * large, 1e-12);
    hessian(4, 4) += 0.2e-3 * large;
    const vibration::species_group group = group_of(of, masses_of(of.numbers), hessian);
    EXPECT_EQ(group.name, "CS");
    ASSERT_EQ(group.left_out.size(), 2U);
    EXPECT_EQ(group.left_out[0].reason, "the Hessian differs");
}

TEST(species, leave_out_what_the_positions_do_not_have_and_what_is_no_operation) {
    listing of = list(water());
    const Eigen::MatrixXd hessian = spring_hessian(of.numbers, of.positions);
    of.relations.symmetry[1].images << 0, 1, 1;
    vibration::species_group group = group_of(of, masses_of(of.numbers), hessian);
    EXPECT_EQ(group.name, "CS");
    ASSERT_EQ(group.left_out.size(), 2U);
    EXPECT_EQ(group.left_out[0].name, "C2z");
    EXPECT_EQ(group.left_out[0].reason, "it carries two atoms onto one");
    EXPECT_EQ(group.left_out[1].name, "Syz");
    EXPECT_EQ(group.left_out[1].reason, "it makes no group with the others");
    of.relations.symmetry[1].images.setLinSpaced(2, 0, 1);
    group = group_of(of, masses_of(of.numbers), hessian);
    EXPECT_EQ(group.name, "CS");
    EXPECT_EQ(group.left_out.at(0).reason, "it carries two atoms onto one");
    of = list(water());
    of.positions(1, 2) += 0.0019;
    EXPECT_EQ(group_of(of, masses_of(of.numbers), hessian).name, "C2V");
    of.positions(1, 2) += 0.0002;
    group = group_of(of, masses_of(of.numbers), hessian);
    EXPECT_EQ(group.name, "CS");
    EXPECT_EQ(group.left_out.at(0).reason, "the positions differ");
}

TEST(species, of_a_molecule_that_changes_as_much_as_is_allowed) {
    // C2z exchanges two atoms.
    listing of;
    of.relations.symmetry = {{Eigen::Vector3d(-1, -1, 1).asDiagonal(), Eigen::Vector2i(1, 0)}};
    const auto name = [&](double mass, double position, double element) {
        of.positions = Eigen::Matrix3Xd::Zero(3, 2);
        of.positions(0, 1) = position;
        Eigen::MatrixXd hessian = Eigen::MatrixXd::Zero(6, 6);
        hessian.diagonal() << 1.0, element, 0.0, 1.0, 0.0, 0.0;
        return group_of(of, Eigen::Vector2d(0.0, mass), hessian).name;
    };
    EXPECT_EQ(name(vibration::mass_tolerance, vibration::position_tolerance, vibration::hessian_tolerance), "C2");
    EXPECT_EQ(name(1.001e-8, 0.0, 0.0), "C1");
    EXPECT_EQ(name(0.0, 0.002001, 0.0), "C1");
    EXPECT_EQ(name(0.0, 0.0, 0.001001), "C1");
}

TEST(species, of_two_groups_as_large_go_by_the_one_with_the_lowest_operation) {
    // Without C2x and Sxy there are {E, C2z, Szx, Syz} and {E, C2y, I, Szx}.
    listing of;
    of.positions = Eigen::Vector3d::Zero();
    for (const Eigen::Vector3d& signs :
         {Eigen::Vector3d(-1, -1, 1), Eigen::Vector3d(-1, 1, -1), Eigen::Vector3d(-1, -1, -1),
          Eigen::Vector3d(1, -1, 1), Eigen::Vector3d(-1, 1, 1)}) {
        of.relations.symmetry.push_back({signs.asDiagonal(), Eigen::VectorXi::Zero(1)});
    }
    const vibration::species_group group = group_of(of, Eigen::VectorXd::Ones(1), Eigen::MatrixXd::Zero(3, 3));
    EXPECT_EQ(group.name, "C2V");
    ASSERT_EQ(group.left_out.size(), 2U);
    EXPECT_EQ(group.left_out[0].name, "C2y");
    EXPECT_EQ(group.left_out[1].name, "I");
}

TEST(species, of_operations_whose_products_carry_atoms_elsewhere) {
    // Of two atoms that nearly lie on one another either may be the other's image.
    listing of;
    of.numbers = Eigen::Vector2i(1, 1);
    of.positions = Eigen::Matrix3Xd::Zero(3, 2);
    const Eigen::Vector2i stay(0, 1);
    of.relations.symmetry = {{Eigen::Vector3d(-1, -1, 1).asDiagonal(), stay},
                             {Eigen::Vector3d(1, -1, 1).asDiagonal(), Eigen::Vector2i(1, 0)},
                             {Eigen::Vector3d(-1, 1, 1).asDiagonal(), stay}};
    const Eigen::MatrixXd hessian = Eigen::MatrixXd::Zero(6, 6);
    vibration::species_group group = group_of(of, Eigen::VectorXd::Ones(2), hessian);
    EXPECT_EQ(group.name, "C2");  // of three groups of two, that of the lowest operation
    ASSERT_EQ(group.left_out.size(), 2U);
    for (const int k : {0, 1}) {
        EXPECT_EQ(group.left_out.at(static_cast<std::size_t>(k)).name, k == 0 ? "Szx" : "Syz");
        EXPECT_EQ(group.left_out.at(static_cast<std::size_t>(k)).reason, "it makes no group with the others");
    }
    of.relations.symmetry[1].images = stay;
    EXPECT_EQ(group_of(of, Eigen::VectorXd::Ones(2), hessian).name, "C2V");
}

TEST(species, of_a_line_go_by_the_axes_of_the_list) {
    // Both mirror planes hold all atoms. B1 is the bend along x, and comes first unless the one along y is lower by a
    // thousandth of a wavenumber.
    molecule on_z = {Eigen::Vector3i(6, 8, 16), Eigen::Matrix3Xd::Zero(3, 3)};
    on_z.positions.row(2) << 0.0, 1.2, -1.2;
    const listing of = list(on_z);
    ASSERT_EQ(of.group, 4);
    const Eigen::VectorXd masses = Eigen::Vector3d(12.0, 16.0, 32.0);
    const double per_amu = 4.0 / 12.0 + 1.0 / 16.0 + 1.0 / 32.0;
    for (const double lower : {0.0009, 0.0011}) {
        const double along_x = 600.0;
        Eigen::MatrixXd hessian = Eigen::MatrixXd::Zero(9, 9);
        for (const int axis : {0, 1, 2}) {
            Eigen::VectorXd motion = Eigen::VectorXd::Zero(9);
            motion(axis) = -2.0;
            motion(3 + axis) = 1.0;
            motion(6 + axis) = 1.0;
            const double frequency = axis == 2 ? 900.0 : axis == 1 ? along_x - lower : along_x;
            hessian += std::pow(frequency / 5140.487153, 2) / per_amu * motion * motion.transpose();
        }
        const vibration::vibrations modes = vibrate(of, masses, hessian);
        const std::vector<std::string> found = labels(modes, group_of(of, masses, hessian));
        const Eigen::Index first = 1;  // nothing resists the other stretch
        ASSERT_EQ(found.size(), 4U);
        const bool is_lower = lower > 0.001;
        EXPECT_EQ(found[first], is_lower ? "B2" : "B1");
        EXPECT_EQ(found[first + 1], is_lower ? "B1" : "B2");
        EXPECT_NEAR(modes.frequencies(is_lower ? first + 1 : first), along_x, 1e-5);
        EXPECT_GT(std::abs(modes.displacements(is_lower ? 1 : 0, first)), 0.5);
    }
}

TEST(species, of_lists_without_the_identity_and_without_atoms) {
    listing of = list(water());
    const Eigen::VectorXd masses = masses_of(of.numbers);
    const Eigen::MatrixXd hessian = spring_hessian(of.numbers, of.positions);
    of.relations.symmetry.erase(of.relations.symmetry.begin());
    const vibration::species_group group = group_of(of, masses, hessian);
    EXPECT_EQ(group.name, "C2V");
    EXPECT_TRUE(group.left_out.empty());
    EXPECT_EQ(group.symmetry.at(0).matrix, Eigen::Matrix3d::Identity());
    const vibration::species_group none =
        vibration::find_species_group(Eigen::VectorXd(0), Eigen::Matrix3Xd(3, 0), Eigen::MatrixXd(0, 0), {});
    EXPECT_EQ(none.name, "C1");
    EXPECT_EQ(none.species, std::vector<std::string>{"A"});
}

TEST(species, refuse_what_does_not_fit) {
    const auto stopped = [](Eigen::Index natom, Eigen::Index rows, Eigen::Index columns) {
        return support::stopped_with([&] {
            vibration::find_species_group(Eigen::VectorXd::Ones(2), Eigen::Matrix3Xd::Zero(3, natom),
                                          Eigen::MatrixXd::Zero(rows, columns), {});
        });
    };
    const std::string sizes = "Hessian: expected 6 x 6 values|standard error|2";
    EXPECT_EQ(stopped(2, 6, 6), "no error");
    EXPECT_EQ(stopped(3, 6, 6), sizes);
    EXPECT_EQ(stopped(2, 5, 6), sizes);
    EXPECT_EQ(stopped(2, 6, 5), sizes);
}

TEST(species, refuse_a_matrix_that_is_not_one_of_the_eight) {
    listing of = list(water());
    of.relations.symmetry[1].matrix(0, 1) = 0.1;
    EXPECT_EQ(support::stopped_with([&] { group_of(of, masses_of(of.numbers), Eigen::MatrixXd::Identity(9, 9)); }),
              "operation 2: expected a matrix with 1 or -1 on its diagonal and 0 elsewhere|standard error|2");
}

TEST(species, of_a_tetrahedron_in_its_subgroups) {
    // A1 + E + 2 T2: in D2, E is A + A and T2 is B1 + B2 + B3; in C2v, E is A1 + A2 and T2 is A1 + B1 + B2. With a
    // threefold degenerate set three frequencies are equal, each of a species of its own.
    const listing in_d2 = list(methane(false));
    const listing in_c2v = list(methane(true));
    ASSERT_EQ(in_d2.group, 8);
    ASSERT_EQ(in_c2v.group, 4);
    const Eigen::VectorXd masses = masses_of(in_d2.numbers);
    std::vector<vibration::vibrations> found;
    for (const listing* of : {&in_d2, &in_c2v}) {
        found.push_back(vibrate(*of, masses, spring_hessian(of->numbers, of->positions)));
    }
    const auto labels_in = [&](const listing& of, const vibration::vibrations& modes) {
        return labels(modes, group_of(of, masses, spring_hessian(of.numbers, of.positions)));
    };
    EXPECT_LT((found[0].frequencies - found[1].frequencies).cwiseAbs().maxCoeff(), 1e-6);
    EXPECT_EQ(counted(labels_in(in_d2, found[0])),
              (std::map<std::string, int>{{"A", 3}, {"B1", 2}, {"B2", 2}, {"B3", 2}}));
    EXPECT_EQ(counted(labels_in(in_c2v, found[1])),
              (std::map<std::string, int>{{"A1", 4}, {"A2", 1}, {"B1", 2}, {"B2", 2}}));
    // The sets, by equal frequencies, and the labels within each.
    std::multiset<std::set<std::string>> sets;
    const std::vector<std::string> names = labels_in(in_c2v, found[1]);
    for (std::size_t first = 0; first < names.size();) {
        std::size_t last = first + 1;
        while (last < names.size() && found[1].frequencies(static_cast<Eigen::Index>(last)) -
                                              found[1].frequencies(static_cast<Eigen::Index>(first)) <
                                          1e-6) {
            ++last;
        }
        EXPECT_TRUE(std::is_sorted(names.begin() + static_cast<long>(first), names.begin() + static_cast<long>(last)));
        sets.insert(
            std::set<std::string>(names.begin() + static_cast<long>(first), names.begin() + static_cast<long>(last)));
        first = last;
    }
    EXPECT_EQ(sets,
              (std::multiset<std::set<std::string>>{{"A1"}, {"A1", "A2"}, {"A1", "B1", "B2"}, {"A1", "B1", "B2"}}));
}

}  // namespace
