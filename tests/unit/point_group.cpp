#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "symmetry/operations.hpp"
#include "symmetry/symmetry.hpp"

using namespace displacement_generator;

namespace {

using symmetry::c2x;
using symmetry::c2y;
using symmetry::c2z;
using symmetry::identity;
using symmetry::inversion;
using symmetry::sxy;
using symmetry::syz;
using symmetry::szx;

constexpr double tol_of_a_run = 0.001F;
constexpr int garbage = -99;

using point = std::array<double, 3>;

struct atom {
    point at;
    int nat = 6;
    double mass = 12.0;
};

using molecule = std::vector<atom>;

struct analysis {
    int ipg = garbage;
    std::vector<int> operations;  ///< those present
    std::vector<point> x;
    std::array<std::vector<int>, 8> jrels;
    int ncalc = garbage;
    std::vector<bool> f_calc;
    std::vector<int> n_calc_n6;
    std::vector<int> m_calc;
    std::vector<int> m_symm;
    bool operator==(const analysis&) const = default;
};

analysis analysed(const molecule& atoms, bool turning, int disp_sign = -1, double tol = tol_of_a_run) {
    const int natom = static_cast<int>(atoms.size());
    const int n6 = 6 * natom;
    const base::array2<double> x("x", 3, natom);
    const base::array1<int> nat("nat", 1, natom);
    const base::array1<double> mass("mass", 1, natom);
    const base::array1<int> n_calc_n6("n_calc_n6", 1, n6);
    const base::array1<int> m_calc("m_calc", 1, n6);
    const base::array1<bool> f_calc("f_calc", 1, n6);
    const base::array1<int> m_symm("m_symm", 1, n6);
    const base::array1<bool> op("op", 1, 8);
    const base::array2<int> jrels("jrels", natom, 8);
    for (int i = 1; i <= natom; ++i) {
        const atom& from = atoms[static_cast<std::size_t>(i - 1)];
        for (int c = 1; c <= 3; ++c) {
            x(c, i) = from.at[static_cast<std::size_t>(c - 1)];
        }
        nat(i) = from.nat;
        mass(i) = from.mass;
        for (int k = 1; k <= 8; ++k) {
            jrels(i, k) = garbage;
        }
    }
    for (int k = 1; k <= 8; ++k) {
        op(k) = true;
    }
    analysis result;
    symmetry::point_group(disp_sign, natom, x, nat, mass, tol, turning, n6, result.ncalc, n_calc_n6, m_calc, f_calc,
                          m_symm, result.ipg, op, jrels);
    for (int k = 1; k <= 8; ++k) {
        if (op(k)) {
            result.operations.push_back(k);
        }
        for (int i = 1; i <= natom; ++i) {
            result.jrels.at(static_cast<std::size_t>(k - 1)).push_back(jrels(i, k));
        }
    }
    for (int i = 1; i <= natom; ++i) {
        result.x.push_back({x(1, i), x(2, i), x(3, i)});
    }
    for (int p = 1; p <= n6; ++p) {
        result.f_calc.push_back(f_calc(p));
        result.n_calc_n6.push_back(n_calc_n6(p));
        result.m_calc.push_back(m_calc(p));
        result.m_symm.push_back(m_symm(p));
    }
    return result;
}

std::vector<point> positions(const molecule& atoms) {
    std::vector<point> result;
    for (const atom& each : atoms) {
        result.push_back(each.at);
    }
    return result;
}

enum class turn { none, c4z, c4y, c4x };

std::vector<point> turned(std::vector<point> x, turn by) {
    for (auto& [a, b, c] : x) {
        switch (by) {
            case turn::none:
                break;
            case turn::c4z:
                a = std::exchange(b, -a);
                break;
            case turn::c4y:
                c = std::exchange(a, -c);
                break;
            case turn::c4x:
                b = std::exchange(c, -b);
                break;
        }
    }
    return x;
}

/// Two atoms in no special place, and their images under the operations: a molecule that has these and no others.
molecule general_molecule(const std::vector<int>& operations) {
    constexpr std::array<point, 8> signs = {
        {{1, 1, 1}, {-1, -1, 1}, {-1, 1, -1}, {1, -1, -1}, {-1, -1, -1}, {1, 1, -1}, {1, -1, 1}, {-1, 1, 1}}};
    molecule atoms;
    for (const atom& first : {atom{{0.5, 1.25, 2.5}, 8, 16.0}, atom{{1.75, -0.75, -3.0}, 1, 1.0}}) {
        for (const int k : operations) {
            const point& sign = signs.at(static_cast<std::size_t>(k - 1));
            atoms.push_back(first);
            for (std::size_t c = 0; c < 3; ++c) {
                atoms.back().at.at(c) *= sign.at(c);
            }
        }
    }
    return atoms;
}

struct group_row {
    std::vector<int> operations;
    int ipg;
    turn by;
    std::vector<int> operations_turned;
};

// The sixteen sets of operations that are groups, that is every group in every setting of its axes.
const std::vector<group_row>& groups() {
    static const std::vector<group_row> all = {
        {{identity}, 1, turn::none, {identity}},
        {{identity, syz}, 2, turn::c4y, {identity, sxy}},
        {{identity, szx}, 2, turn::c4x, {identity, sxy}},
        {{identity, sxy}, 2, turn::none, {identity, sxy}},
        {{identity, inversion}, 6, turn::none, {identity, inversion}},
        {{identity, c2x}, 3, turn::c4y, {identity, c2z}},
        {{identity, c2y}, 3, turn::c4x, {identity, c2z}},
        {{identity, c2z}, 3, turn::none, {identity, c2z}},
        {{identity, c2x, inversion, syz}, 7, turn::c4y, {identity, c2z, inversion, sxy}},
        {{identity, c2y, inversion, szx}, 7, turn::c4x, {identity, c2z, inversion, sxy}},
        {{identity, c2z, inversion, sxy}, 7, turn::none, {identity, c2z, inversion, sxy}},
        {{identity, c2x, sxy, szx}, 4, turn::c4y, {identity, c2z, szx, syz}},
        {{identity, c2y, sxy, syz}, 4, turn::c4x, {identity, c2z, szx, syz}},
        {{identity, c2z, szx, syz}, 4, turn::none, {identity, c2z, szx, syz}},
        {{identity, c2z, c2y, c2x}, 8, turn::none, {identity, c2z, c2y, c2x}},
        {{identity, c2z, c2y, c2x, inversion, sxy, szx, syz},
         5,
         turn::none,
         {identity, c2z, c2y, c2x, inversion, sxy, szx, syz}},
    };
    return all;
}

TEST(point_group, every_group_in_every_setting) {
    for (const group_row& row : groups()) {
        std::string operations;
        for (const int k : row.operations) {
            operations += std::string(symmetry::op_name(k)) + ' ';
        }
        SCOPED_TRACE(operations);
        const molecule atoms = general_molecule(row.operations);
        const std::vector<point> as_given = positions(atoms);

        const analysis unturned = analysed(atoms, false);
        EXPECT_EQ(unturned.ipg, row.ipg);
        EXPECT_EQ(unturned.operations, row.operations);
        EXPECT_EQ(unturned.x, as_given);
        EXPECT_EQ(unturned.ncalc, 12);  // two atoms stand for all others

        const analysis standard = analysed(atoms, true);
        EXPECT_EQ(standard.ipg, row.ipg);
        EXPECT_EQ(standard.operations, row.operations_turned);
        EXPECT_EQ(standard.x, turned(as_given, row.by));
        EXPECT_EQ(standard.ncalc, 12);

        for (const analysis& result : {unturned, standard}) {
            for (int k = 1; k <= 8; ++k) {
                const std::vector<int>& images = result.jrels.at(static_cast<std::size_t>(k - 1));
                const bool present =
                    std::find(result.operations.begin(), result.operations.end(), k) != result.operations.end();
                for (std::size_t i = 0; i < images.size(); ++i) {
                    if (k == identity) {
                        EXPECT_EQ(images[i], static_cast<int>(i + 1));
                    }
                    EXPECT_EQ(images[i] != 0, present) << "operation " << k;
                }
            }
        }
    }
}

// One molecule with its axis on x, in full: a hydrogen peroxide.
TEST(point_group, turned_with_all_that_rests_on_the_orientation) {
    const molecule atoms = {
        {{0.25, 0.75, 0}, 8, 16.0}, {{0.25, -0.75, 0}, 8, 16.0}, {{0.5, 1, 0.75}, 1, 1.0}, {{0.5, -1, -0.75}, 1, 1.0}};
    analysis expected;
    expected.ipg = 3;
    expected.operations = {identity, c2x};
    expected.x = positions(atoms);
    expected.jrels.fill({0, 0, 0, 0});
    expected.jrels[identity - 1] = {1, 2, 3, 4};
    expected.jrels[c2x - 1] = {2, 1, 4, 3};
    expected.ncalc = 12;
    expected.f_calc = {true, true, true, true, true, true, false, false, false, false, false, false,
                       true, true, true, true, true, true, false, false, false, false, false, false};
    expected.n_calc_n6 = {1, 2, 3, 4, 5, 6, 13, 14, 15, 16, 17, 18, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
    expected.m_calc = {1, 2, 3, 4, 5, 6, 1, 2, 4, 3, 6, 5, 13, 14, 15, 16, 17, 18, 13, 14, 16, 15, 18, 17};
    expected.m_symm = {1, 1, 1, 1, 1, 1, 4, 4, 4, 4, 4, 4, 1, 1, 1, 1, 1, 1, 4, 4, 4, 4, 4, 4};
    EXPECT_EQ(analysed(atoms, false), expected);

    expected.operations = {identity, c2z};
    expected.x = {{0, 0.75, 0.25}, {0, -0.75, 0.25}, {-0.75, 1, 0.5}, {0.75, -1, 0.5}};
    expected.jrels[c2x - 1] = {0, 0, 0, 0};
    expected.jrels[c2z - 1] = {2, 1, 4, 3};
    expected.m_calc = {1, 2, 3, 4, 5, 6, 2, 1, 4, 3, 5, 6, 13, 14, 15, 16, 17, 18, 14, 13, 16, 15, 17, 18};
    expected.m_symm = {1, 1, 1, 1, 1, 1, 2, 2, 2, 2, 2, 2, 1, 1, 1, 1, 1, 1, 2, 2, 2, 2, 2, 2};
    EXPECT_EQ(analysed(atoms, true), expected);
}

TEST(point_group, single_molecules) {
    struct row {
        std::string_view name;
        molecule atoms;
        int ipg;
        std::vector<int> operations;  ///< in standard orientation
        std::vector<point> x;         ///< in standard orientation
        int ncalc;
    };
    const std::vector<int> all = {1, 2, 3, 4, 5, 6, 7, 8};
    const std::vector<row> rows = {
        {"no atoms", {}, 5, all, {}, 0},
        {"an atom at the origin", {{{0, 0, 0}}}, 5, all, {{0, 0, 0}}, 3},
        {"an atom on z", {{{0, 0, 1}}}, 4, {identity, c2z, szx, syz}, {{0, 0, 1}}, 4},
        {"an atom on y", {{{0, 1, 0}}}, 4, {identity, c2z, szx, syz}, {{0, 0, -1}}, 4},
        {"an atom on x", {{{1, 0, 0}}}, 4, {identity, c2z, szx, syz}, {{0, 0, 1}}, 4},
        {"an atom in xy", {{{1, 2, 0}}}, 2, {identity, sxy}, {{1, 2, 0}}, 5},
        {"an atom in zx", {{{1, 0, 2}}}, 2, {identity, sxy}, {{1, 2, 0}}, 5},
        {"an atom in yz", {{{0, 1, 2}}}, 2, {identity, sxy}, {{-2, 1, 0}}, 5},
        {"an atom anywhere", {{{1, 2, 3}}}, 1, {identity}, {{1, 2, 3}}, 6},
        {"an axis that is no axis of coordinates",
         {{{1, 2, 1}}, {{-1, 3, -1}}, {{1, 3, 1}}},
         1,
         {identity},
         {{1, 2, 1}, {-1, 3, -1}, {1, 3, 1}},
         18},
        {"an axis that does not pass through the origin",
         {{{1, 2, 1}}, {{-3, -2, 1}}, {{-1, 0, 3}, 8}},
         1,
         {identity},
         {{1, 2, 1}, {-3, -2, 1}, {-1, 0, 3}},
         18},
        {"water in the zx plane",
         {{{0, 0, 0.5}, 8}, {{1, 0, -0.5}, 1}, {{-1, 0, -0.5}, 1}},
         4,
         {identity, c2z, szx, syz},
         {{0, 0, 0.5}, {0, -1, -0.5}, {0, 1, -0.5}},
         9},
    };
    for (const row& tested : rows) {
        SCOPED_TRACE(tested.name);
        const analysis found = analysed(tested.atoms, true);
        EXPECT_EQ(found.ipg, tested.ipg);
        EXPECT_EQ(found.operations, tested.operations);
        EXPECT_EQ(found.x, tested.x);
        EXPECT_EQ(found.ncalc, tested.ncalc);
        EXPECT_EQ(analysed(tested.atoms, false).ncalc, tested.ncalc);
    }
}

// Operations that make no group come from atoms that lie near their images but not on them. Nothing rejects them.
TEST(point_group, operations_that_make_no_group) {
    // Off each of two planes by so much that either mirror image is near and the one behind both is not.
    const double off = 0.45 * tol_of_a_run;
    const analysis three = analysed({{{off, off, 1}}}, true);
    EXPECT_EQ(three.ipg, 4);
    EXPECT_EQ(three.operations, (std::vector<int>{identity, szx, syz}));
    EXPECT_EQ(three.ncalc, 4);

    // The count is that of the orientation given, the operations are those of the one that results.
    const analysis off_axis = analysed({{{1, off, off}}}, true);
    EXPECT_EQ(off_axis.ipg, 4);
    EXPECT_EQ(off_axis.operations, (std::vector<int>{identity, sxy, szx}));
}

TEST(point_group, a_count_of_two_without_a_second_operation_leaves_the_group) {
    // Two near twins of which the identity takes each for the other, and nothing else: still one operation.
    const analysis twins = analysed({{{1, 2, 3}}, {{1, 2, 3.0005}}}, true);
    EXPECT_EQ(twins.ipg, 1);
    EXPECT_EQ(twins.operations, (std::vector<int>{identity}));
    EXPECT_EQ(twins.jrels[0], (std::vector<int>{2, 1}));
    // Without any operation at all the rules for four apply.
    const analysis spoilt = analysed({{{std::numeric_limits<double>::quiet_NaN(), 0, 0}}}, true);
    EXPECT_EQ(spoilt.ipg, 8);
    EXPECT_TRUE(spoilt.operations.empty());
    EXPECT_EQ(spoilt.ncalc, 6);
}

TEST(point_group, passes_its_arguments_on) {
    const molecule atoms = general_molecule({identity, c2z, szx, syz});
    const analysis expected = analysed(atoms, true, -1);
    EXPECT_EQ(analysed(atoms, true, 1), expected);
    EXPECT_EQ(analysed(atoms, true, 0), expected);
    EXPECT_EQ(analysed(atoms, true, -1, -1.0).ncalc, 6 * static_cast<int>(atoms.size()));

    const molecule near_mirror = {{{1, 2, 0.125}}};
    EXPECT_EQ(analysed(near_mirror, true, -1, 0.25).operations, (std::vector<int>{identity, sxy}));
    EXPECT_EQ(analysed(near_mirror, true, -1, 0.24).operations, (std::vector<int>{identity}));
}

}  // namespace
