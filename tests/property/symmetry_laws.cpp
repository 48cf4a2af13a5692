#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <map>
#include <numeric>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "analysis.hpp"
#include "molecules.hpp"
#include "symmetry/symmetry.hpp"

using namespace displacement_generator;

// Laws that the symmetry analysis obeys for every molecule whose atoms are well apart.

namespace {

using property::analyse;
using property::analysis;
using property::engine;
using property::molecule;
using property::operations_found;

/// Molecules of every group in turn, every second one with its atoms a little out of their places.
template <class law>
void for_molecules(unsigned seed, int count, std::size_t most_atoms, const law& check) {
    engine random(seed);
    for (int n = 0; n < count; ++n) {
        const std::vector<int>& group = property::groups()[static_cast<std::size_t>(n) % property::groups().size()];
        molecule atoms = property::symmetric_molecule(random, group, most_atoms);
        if (n / 16 % 2 == 1) {
            property::shake(random, atoms);
        }
        SCOPED_TRACE(n);
        check(atoms, group);
        if (testing::Test::HasFailure()) {
            return;
        }
    }
}

/// A displaced point by its atom, coordinate and step, all from 0, as the analysis numbers it.
int number_of(std::size_t atom, std::size_t axis, std::size_t step) {
    return static_cast<int>(6 * atom + 2 * axis + step) + 1;
}

/// The point onto which an operation carries another one.
int image_of(int p, int operation, const operations_found& found) {
    const auto zero_based = static_cast<std::size_t>(p - 1);
    const std::size_t axis = zero_based % 6 / 2;
    const std::size_t step = zero_based % 2;
    const auto k = static_cast<std::size_t>(operation);
    const bool turns = property::operation_signs.at(k).at(axis) < 0;
    return number_of(found.images.at(k)[zero_based / 6], axis, turns ? 1 - step : step);
}

/// The number of orbits by Burnside: the mean number of points that an operation leaves in their place.
std::size_t burnside(std::size_t natom, const operations_found& found) {
    std::size_t fixed = 0;
    for (const int operation : found.operations) {
        for (std::size_t atom = 0; atom < natom; ++atom) {
            const auto k = static_cast<std::size_t>(operation);
            for (const int sign : property::operation_signs.at(k)) {
                fixed += found.images.at(k)[atom] == atom && sign > 0 ? 2U : 0U;
            }
        }
    }
    EXPECT_EQ(fixed % found.operations.size(), 0U);
    return fixed / found.operations.size();
}

/// For every point the lowest one of its orbit, by joining every point with each of its images.
std::vector<int> lowest_of_orbits(std::size_t natom, const operations_found& found) {
    std::vector<int> parent(6 * natom + 1);
    std::iota(parent.begin(), parent.end(), 0);
    const auto root = [&](int p) {
        while (parent[static_cast<std::size_t>(p)] != p) {
            p = parent[static_cast<std::size_t>(p)];
        }
        return p;
    };
    for (int p = 1; p < static_cast<int>(parent.size()); ++p) {
        for (const int operation : found.operations) {
            const int a = root(p);
            const int b = root(image_of(p, operation, found));
            parent[static_cast<std::size_t>(std::max(a, b))] = std::min(a, b);
        }
    }
    for (int& p : parent) {
        p = root(p);
    }
    return parent;
}

TEST(symmetry_laws, as_many_points_are_computed_as_there_are_orbits) {
    for_molecules(101, 3200, 24, [](const molecule& atoms, const std::vector<int>& group) {
        const operations_found found = property::find_operations(atoms);
        ASSERT_TRUE(std::includes(found.operations.begin(), found.operations.end(), group.begin(), group.end()));
        const std::size_t orbits = burnside(atoms.size(), found);
        const std::vector<int> lowest = lowest_of_orbits(atoms.size(), found);
        EXPECT_EQ(std::set<int>(lowest.begin() + 1, lowest.end()).size(), orbits);
        for (const bool std_orient : {false, true}) {
            EXPECT_EQ(analyse(atoms, std_orient).ncalc, static_cast<int>(orbits));
        }
    });
}

TEST(symmetry_laws, each_point_follows_from_the_lowest_of_its_orbit_by_the_lowest_operation) {
    for_molecules(102, 3200, 24, [](const molecule& atoms, const std::vector<int>& /*group*/) {
        const operations_found found = property::find_operations(atoms);
        const std::vector<int> lowest = lowest_of_orbits(atoms.size(), found);
        const analysis result = analyse(atoms, false);
        EXPECT_EQ(result.operations, found.operations);
        EXPECT_EQ(result.m_calc, lowest);
        std::vector<int> computed = {0};
        for (int p = 1; p < static_cast<int>(lowest.size()); ++p) {
            const int m = lowest[static_cast<std::size_t>(p)];
            EXPECT_EQ(result.f_calc[static_cast<std::size_t>(p)], m == p);
            if (m == p) {
                computed.push_back(p);
            }
            const auto lowest_operation =
                std::find_if(found.operations.begin(), found.operations.end(),
                             [&](int operation) { return image_of(m, operation, found) == p; });
            ASSERT_NE(lowest_operation, found.operations.end());
            EXPECT_EQ(result.m_symm[static_cast<std::size_t>(p)], *lowest_operation) << "point " << p;
        }
        computed.resize(lowest.size(), 0);
        EXPECT_EQ(result.n_calc_n6, computed);
    });
}

TEST(symmetry_laws, turning_the_input_changes_neither_group_nor_count) {
    for_molecules(103, 480, 16, [](const molecule& atoms, const std::vector<int>& /*group*/) {
        const std::vector<molecule> ways = property::turned_every_way(atoms);
        ASSERT_EQ(ways.size(), 24U);
        const analysis first = analyse(atoms, true);
        for (const molecule& turned : ways) {
            for (const bool std_orient : {false, true}) {
                const analysis result = analyse(turned, std_orient);
                EXPECT_EQ(result.ipg, first.ipg);
                EXPECT_EQ(result.ncalc, first.ncalc);
                EXPECT_EQ(result.operations.size(), first.operations.size());
                if (std_orient) {
                    EXPECT_EQ(result.operations, first.operations);
                }
            }
        }
    });
}

// In standard orientation the operations of a group are always the same ones, and turning once more moves no atom.
TEST(symmetry_laws, standard_orientation_is_the_same_for_every_molecule_of_a_group) {
    const std::map<int, std::vector<int>> standard = {
        {1, {1}},    {2, {1, 6}},       {3, {1, 2}},       {4, {1, 2, 7, 8}}, {5, {1, 2, 3, 4, 5, 6, 7, 8}},
        {6, {1, 5}}, {7, {1, 2, 5, 6}}, {8, {1, 2, 3, 4}},
    };
    std::set<int> seen;
    for_molecules(104, 3200, 16, [&](const molecule& atoms, const std::vector<int>& /*group*/) {
        const analysis first = analyse(atoms, true);
        EXPECT_EQ(first.operations, standard.at(first.ipg));
        EXPECT_EQ(static_cast<int>(first.operations.size()), symmetry::nrep(first.ipg));
        seen.insert(first.ipg);
        molecule turned = atoms;
        for (std::size_t i = 0; i < atoms.size(); ++i) {
            turned[i].at = first.x[i + 1];
        }
        const analysis second = analyse(turned, true);
        EXPECT_EQ(second.ipg, first.ipg);
        EXPECT_EQ(second.x, first.x);
        EXPECT_EQ(second.jrels, first.jrels);
    });
    EXPECT_EQ(seen.size(), 8U);
}

TEST(symmetry_laws, images_are_permutations_and_their_own_inverses) {
    for_molecules(105, 3200, 24, [](const molecule& atoms, const std::vector<int>& /*group*/) {
        for (const bool std_orient : {false, true}) {
            const analysis result = analyse(atoms, std_orient);
            for (int k = 1; k <= 8; ++k) {
                const std::vector<int>& images = result.jrels.at(static_cast<std::size_t>(k));
                if (std::find(result.operations.begin(), result.operations.end(), k) == result.operations.end()) {
                    EXPECT_EQ(images, std::vector<int>(atoms.size() + 1, 0));
                    continue;
                }
                std::vector<bool> reached(images.size(), false);
                for (std::size_t i = 1; i < images.size(); ++i) {
                    const auto j = static_cast<std::size_t>(images[i]);
                    ASSERT_TRUE(j >= 1 && j < images.size());
                    EXPECT_FALSE(reached[j]) << "two atoms with one image";
                    reached[j] = true;
                    EXPECT_EQ(images[j], static_cast<int>(i));
                    if (k == 1) {
                        EXPECT_EQ(i, j);
                    }
                }
            }
        }
    });
}

TEST(symmetry_laws, the_sign_of_the_steps_changes_no_relation) {
    for_molecules(106, 800, 16, [](const molecule& atoms, const std::vector<int>& /*group*/) {
        const analysis first = analyse(atoms, true);
        for (const int disp_sign : {1, 0, 2}) {
            const analysis other = analyse(atoms, true, disp_sign);
            EXPECT_EQ(other.m_calc, first.m_calc);
            EXPECT_EQ(other.m_symm, first.m_symm);
            EXPECT_EQ(other.f_calc, first.f_calc);
            EXPECT_EQ(other.ncalc, first.ncalc);
        }
    });
}

using matrix = std::vector<double>;  ///< by columns, as in the table

matrix of_operation(int k) {
    matrix elements;
    for (int j = 1; j <= 3; ++j) {
        for (int i = 1; i <= 3; ++i) {
            elements.push_back(symmetry::symm_op.matrix(k)(i, j));
        }
    }
    return elements;
}

matrix product(const matrix& a, const matrix& b) {
    matrix result(9, 0.0);
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t j = 0; j < 3; ++j) {
            for (std::size_t k = 0; k < 3; ++k) {
                result[i + 3 * j] += a[i + 3 * k] * b[k + 3 * j];
            }
        }
    }
    return result;
}

TEST(symmetry_laws, operations_are_their_own_inverses_and_quarter_turns_of_order_four) {
    const matrix one = {1, 0, 0, 0, 1, 0, 0, 0, 1};
    for (int k = 1; k <= 8; ++k) {
        EXPECT_EQ(product(of_operation(k), of_operation(k)), one) << k;
    }
    const std::vector<int> half_turns = {0, 0, 0, 0, 0, 0, 0, 0, 0, 2, 3, 4};
    for (int k = 9; k <= 11; ++k) {
        const matrix twice = product(of_operation(k), of_operation(k));
        EXPECT_EQ(twice, of_operation(half_turns.at(static_cast<std::size_t>(k)))) << k;
        EXPECT_EQ(product(twice, twice), one) << k;
    }
}

TEST(symmetry_laws, the_groups_are_closed) {
    const std::vector<std::vector<int>> groups = {
        {1}, {1, 6}, {1, 2}, {1, 2, 7, 8}, {1, 2, 3, 4, 5, 6, 7, 8}, {1, 5}, {1, 2, 5, 6}, {1, 2, 3, 4}};
    for (std::size_t g = 0; g < groups.size(); ++g) {
        SCOPED_TRACE(std::string(std::string_view(symmetry::pg_name(static_cast<int>(g) + 1))));
        EXPECT_EQ(static_cast<int>(groups[g].size()), symmetry::nrep(static_cast<int>(g) + 1));
        std::set<matrix> elements;
        for (const int k : groups[g]) {
            elements.insert(of_operation(k));
        }
        EXPECT_EQ(elements.size(), groups[g].size());
        for (const matrix& a : elements) {
            for (const matrix& b : elements) {
                EXPECT_TRUE(elements.contains(product(a, b)));
            }
        }
    }
    EXPECT_EQ(property::groups().size(), 16U);
}

}  // namespace
