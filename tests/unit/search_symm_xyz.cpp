#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <initializer_list>
#include <limits>
#include <numeric>
#include <random>
#include <string_view>
#include <vector>

#include "symmetry/operations.hpp"
#include "symmetry/symmetry.hpp"

using namespace displacement_generator;

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double not_a_number = std::numeric_limits<double>::quiet_NaN();
constexpr double tol_of_a_run = 0.001F;
constexpr int garbage = -99;

/// What the search is given; images[k - 1] is the column of operation k.
struct question {
    int disp_sign = -1;
    int natom = 0;
    std::array<std::vector<int>, 8> images{};
    std::array<bool, 8> op = {true};
    double tol = tol_of_a_run;
};

struct answer {
    int ncalc = garbage;
    std::vector<bool> f_calc;
    std::vector<int> n_calc_n6;
    std::vector<int> m_calc;
    std::vector<int> m_symm;
    bool operator==(const answer&) const = default;
};

int image(const question& asked, int i, int g) {
    return asked.images.at(static_cast<std::size_t>(g - 1)).at(static_cast<std::size_t>(i - 1));
}

answer searched(const question& asked, base::view3<const double> matrices) {
    const int n6 = 6 * asked.natom;
    const base::array2<double> x("x", 3, asked.natom);
    const base::array2<int> jrels("jrels", asked.natom, 8);
    const base::array1<bool> op("op", 1, 8);
    const base::array1<bool> f_calc("f_calc", 1, n6 + 1);
    const base::array1<int> n_calc_n6("n_calc_n6", 1, n6 + 1);
    const base::array1<int> m_calc("m_calc", 1, n6 + 1);
    const base::array1<int> m_symm("m_symm", 1, n6 + 1);
    for (int g = 1; g <= 8; ++g) {
        op(g) = asked.op.at(static_cast<std::size_t>(g - 1));
        for (int i = 1; i <= asked.natom; ++i) {
            jrels(i, g) = image(asked, i, g);
        }
    }
    for (int i = 1; i <= asked.natom; ++i) {
        x(1, i) = not_a_number;  // they are not looked at
    }
    for (int p = 1; p <= n6 + 1; ++p) {
        f_calc(p) = p % 2 == 0;
        n_calc_n6(p) = m_calc(p) = m_symm(p) = garbage;
    }
    const bool behind = f_calc(n6 + 1);
    answer result;
    symmetry::search_symm_xyz(asked.disp_sign, asked.natom, x, matrices, jrels, op, asked.tol, n6, result.ncalc, f_calc,
                              n_calc_n6, m_calc, m_symm);
    EXPECT_EQ(f_calc(n6 + 1), behind);
    for (const int element : {n_calc_n6(n6 + 1), m_calc(n6 + 1), m_symm(n6 + 1)}) {
        EXPECT_EQ(element, garbage);
    }
    for (int p = 1; p <= n6; ++p) {
        result.f_calc.push_back(f_calc(p));
        result.n_calc_n6.push_back(n_calc_n6(p));
        result.m_calc.push_back(m_calc(p));
        result.m_symm.push_back(m_symm(p));
    }
    return result;
}

/// The rule itself: the points are visited one after the other, and unit vectors turned and compared by distance.
answer by_the_rule(const question& asked, base::view3<const double> matrices) {
    const int natom = asked.natom;
    const auto at = [](auto& values, int p) -> decltype(auto) { return values[static_cast<std::size_t>(p - 1)]; };
    const double sign = asked.disp_sign == 1 ? 1.0 : -1.0;
    answer result;
    const auto n6 = std::size_t{6} * static_cast<std::size_t>(natom);
    result.f_calc.assign(n6, true);
    result.n_calc_n6.assign(n6, 0);
    result.m_symm.assign(n6, 1);
    for (int p = 1; p <= 6 * natom; ++p) {
        result.m_calc.push_back(p);
    }
    result.ncalc = 0;
    for (int i = 1; i <= natom; ++i) {
        for (int k = 1; k <= 3; ++k) {
            for (int s = 1; s <= 2; ++s) {
                const int p = 2 * (3 * (i - 1) + (k - 1)) + s;
                if (!at(result.f_calc, p)) {
                    continue;
                }
                ++result.ncalc;
                at(result.n_calc_n6, result.ncalc) = p;
                std::array<double, 3> vi = {0.0, 0.0, 0.0};
                at(vi, k) = sign * (2 * s - 3);
                for (int g = 2; g <= 8; ++g) {
                    if (!asked.op.at(static_cast<std::size_t>(g - 1))) {
                        continue;
                    }
                    std::array<double, 3> v1 = {0.0, 0.0, 0.0};
                    for (int row = 1; row <= 3; ++row) {
                        for (int column = 1; column <= 3; ++column) {
                            at(v1, row) += matrices.matrix(g)(row, column) * at(vi, column);
                        }
                    }
                    for (int j = i; j <= natom; ++j) {
                        if (image(asked, j, g) != i) {
                            continue;
                        }
                        for (int kk = 1; kk <= 3; ++kk) {
                            for (int ss = 1; ss <= 2; ++ss) {
                                const int q = 2 * (3 * (j - 1) + (kk - 1)) + ss;
                                if (!at(result.f_calc, q) || q == p) {
                                    continue;
                                }
                                std::array<double, 3> vj = {0.0, 0.0, 0.0};
                                at(vj, kk) = sign * (2 * ss - 3);
                                const double d1 = v1[0] - vj[0];
                                const double d2 = v1[1] - vj[1];
                                const double d3 = v1[2] - vj[2];
                                if (asked.tol >= std::sqrt(d1 * d1 + d2 * d2 + d3 * d3)) {
                                    at(result.f_calc, q) = false;
                                    at(result.m_calc, q) = p;
                                    at(result.m_symm, q) = g;
                                    break;
                                }
                            }
                        }
                    }
                }
            }
        }
    }
    return result;
}

void expect_equal(const answer& found, const answer& expected) {
    EXPECT_EQ(found.ncalc, expected.ncalc);
    EXPECT_EQ(found.f_calc, expected.f_calc);
    EXPECT_EQ(found.n_calc_n6, expected.n_calc_n6);
    EXPECT_EQ(found.m_calc, expected.m_calc);
    EXPECT_EQ(found.m_symm, expected.m_symm);
}

/// A question about `natom` atoms with these operations, the identity apart.
struct column {
    int operation;
    std::vector<int> images;
};

question asking(int natom, std::initializer_list<column> columns, int disp_sign = -1) {
    question asked;
    asked.natom = natom;
    asked.disp_sign = disp_sign;
    asked.images.fill(std::vector<int>(static_cast<std::size_t>(natom), 0));
    for (int i = 1; i <= natom; ++i) {
        asked.images[0].at(static_cast<std::size_t>(i - 1)) = i;
    }
    for (const column& present : columns) {
        asked.images.at(static_cast<std::size_t>(present.operation - 1)) = present.images;
        asked.op.at(static_cast<std::size_t>(present.operation - 1)) = true;
    }
    return asked;
}

TEST(search_symm_xyz, relates_the_points) {
    using symmetry::c2x;
    using symmetry::c2y;
    using symmetry::c2z;
    using symmetry::inversion;
    using symmetry::sxy;
    using symmetry::syz;
    using symmetry::szx;
    struct row {
        std::string_view name;
        question asked;
        std::vector<int> computed;
        std::vector<int> m_calc;
        std::vector<int> m_symm;
    };
    const std::vector<row> rows = {
        {"no atoms", asking(0, {}), {}, {}, {}},
        {"C1", asking(1, {}), {1, 2, 3, 4, 5, 6}, {1, 2, 3, 4, 5, 6}, {1, 1, 1, 1, 1, 1}},
        {"an atom at the centre", asking(1, {{inversion, {1}}}), {1, 3, 5}, {1, 1, 3, 3, 5, 5}, {1, 5, 1, 5, 1, 5}},
        {"one at the centre, two around it",
         asking(3, {{inversion, {1, 3, 2}}}),
         {1, 3, 5, 7, 8, 9, 10, 11, 12},
         {1, 1, 3, 3, 5, 5, 7, 8, 9, 10, 11, 12, 8, 7, 10, 9, 12, 11},
         {1, 5, 1, 5, 1, 5, 1, 1, 1, 1, 1, 1, 5, 5, 5, 5, 5, 5}},
        {"two exchanged by C2z",
         asking(2, {{c2z, {2, 1}}}),
         {1, 2, 3, 4, 5, 6},
         {1, 2, 3, 4, 5, 6, 2, 1, 4, 3, 5, 6},
         {1, 1, 1, 1, 1, 1, 2, 2, 2, 2, 2, 2}},
        {"an atom on the axis of C2z", asking(1, {{c2z, {1}}}), {1, 3, 5, 6}, {1, 1, 3, 3, 5, 6}, {1, 2, 1, 2, 1, 1}},
        {"an atom on the axis of C2y", asking(1, {{c2y, {1}}}), {1, 3, 4, 5}, {1, 1, 3, 4, 5, 5}, {1, 3, 1, 1, 1, 3}},
        {"an atom on the axis of C2x", asking(1, {{c2x, {1}}}), {1, 2, 3, 5}, {1, 2, 3, 3, 5, 5}, {1, 1, 1, 4, 1, 4}},
        {"an atom in the plane of Sxy",
         asking(1, {{sxy, {1}}}),
         {1, 2, 3, 4, 5},
         {1, 2, 3, 4, 5, 5},
         {1, 1, 1, 1, 1, 6}},
        {"an atom in the plane of Szx",
         asking(1, {{szx, {1}}}),
         {1, 2, 3, 5, 6},
         {1, 2, 3, 3, 5, 6},
         {1, 1, 1, 7, 1, 1}},
        {"an atom in the plane of Syz",
         asking(1, {{syz, {1}}}),
         {1, 3, 4, 5, 6},
         {1, 1, 3, 4, 5, 6},
         {1, 8, 1, 1, 1, 1}},
        {"the lowest operation that reaches a point",
         asking(1, {{syz, {1}}, {inversion, {1}}, {c2z, {1}}, {c2y, {1}}, {c2x, {1}}, {sxy, {1}}, {szx, {1}}}),
         {1, 3, 5},
         {1, 1, 3, 3, 5, 5},
         {1, 2, 1, 2, 1, 3}},
        {"two exchanged and each in a plane",
         asking(2, {{c2z, {2, 1}}, {szx, {2, 1}}, {syz, {1, 2}}}),
         {1, 3, 4, 5, 6},
         {1, 1, 3, 4, 5, 6, 1, 1, 4, 3, 5, 6},
         {1, 8, 1, 1, 1, 1, 7, 2, 2, 2, 2, 2}},
        // No correspondence that a search of operations leaves, but nothing here rests on that.
        {"two atoms with one image",
         asking(2, {{c2z, {1, 1}}}),
         {1, 3, 5, 6, 7, 9},
         {1, 1, 3, 3, 5, 6, 7, 1, 9, 3, 5, 6},
         {1, 2, 1, 2, 1, 1, 1, 2, 1, 2, 2, 2}},
        {"an atom with an image and none that has it as its own",
         asking(2, {{c2z, {2, 2}}}),
         {1, 2, 3, 4, 5, 6, 7, 9, 11, 12},
         {1, 2, 3, 4, 5, 6, 7, 7, 9, 9, 11, 12},
         {1, 1, 1, 1, 1, 1, 1, 2, 1, 2, 1, 1}},
        {"images that are no atoms",
         asking(2, {{inversion, {0, 3}}}),
         {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12},
         {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12},
         {1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1}},
    };
    for (const row& tested : rows) {
        SCOPED_TRACE(tested.name);
        const answer found = searched(tested.asked, symmetry::symm_op);
        EXPECT_EQ(found.ncalc, static_cast<int>(tested.computed.size()));
        EXPECT_EQ(found.m_calc, tested.m_calc);
        EXPECT_EQ(found.m_symm, tested.m_symm);
        std::vector<int> listed = tested.computed;
        std::vector<bool> f_calc(tested.m_calc.size(), false);
        for (const int p : listed) {
            f_calc.at(static_cast<std::size_t>(p - 1)) = true;
        }
        EXPECT_EQ(found.f_calc, f_calc);
        listed.resize(f_calc.size(), 0);
        EXPECT_EQ(found.n_calc_n6, listed);
        expect_equal(by_the_rule(tested.asked, symmetry::symm_op), found);
    }
}

// The identity is never used, and neither is a column of images whose operation is absent.
TEST(search_symm_xyz, looks_at_the_operations_that_are_present_and_no_others) {
    question asked = asking(2, {{symmetry::identity, {2, 1}}});
    for (std::size_t g = 2; g <= 8; ++g) {
        asked.images.at(g - 1) = {1, 2};
    }
    const answer found = searched(asked, symmetry::symm_op);
    EXPECT_EQ(found.ncalc, 12);
    asked.op[0] = false;
    expect_equal(searched(asked, symmetry::symm_op), found);
}

using generator = std::mt19937_64;

template <class choice>
choice one_of(generator& random, const std::vector<choice>& choices) {
    return choices[std::uniform_int_distribution<std::size_t>(0, choices.size() - 1)(random)];
}

std::vector<int> any_images(generator& random, int natom) {
    std::vector<int> images(static_cast<std::size_t>(natom));
    std::iota(images.begin(), images.end(), 1);
    const int kind = std::uniform_int_distribution<int>(0, 4)(random);
    if (kind == 0) {  // pairs exchanged, as by an operation that is its own inverse
        std::vector<int> order = images;
        std::shuffle(order.begin(), order.end(), random);
        for (std::size_t i = 0; i + 1 < order.size(); i += one_of<std::size_t>(random, {1, 2, 2, 2})) {
            images[static_cast<std::size_t>(order[i] - 1)] = order[i + 1];
            images[static_cast<std::size_t>(order[i + 1] - 1)] = order[i];
        }
    } else if (kind == 1) {  // a permutation
        std::shuffle(images.begin(), images.end(), random);
    } else if (kind >= 3) {  // anything, for the last kind also what is no atom
        const int out = kind == 4 ? 2 : 0;
        std::uniform_int_distribution<int> any(1 - out, std::max(natom, 1) + out);
        for (int& image_of : images) {
            image_of = any(random);
        }
        if (kind == 4 && natom > 0) {
            images[0] = one_of<int>(random, {std::numeric_limits<int>::min(), -1, std::numeric_limits<int>::max()});
        }
    }
    return images;
}

question any_question(generator& random, int natom) {
    question asked;
    asked.natom = natom;
    asked.disp_sign = one_of<int>(random, {-1, 1, 0, 2, -2});
    asked.tol =
        one_of<double>(random, {tol_of_a_run, tol_of_a_run, tol_of_a_run, 0.0, -0.0, -1.0, not_a_number, infinity,
                                -infinity, 5e-324, 1e-200, 1e200, 1.0, 1.41, std::sqrt(2.0), 1.5, 2.0, 3.0});
    const int likely = std::uniform_int_distribution<int>(0, 4)(random);
    for (std::size_t g = 0; g < 8; ++g) {
        asked.images.at(g) = any_images(random, natom);
        asked.op.at(g) = std::uniform_int_distribution<int>(0, 3)(random) < likely;
    }
    return asked;
}

TEST(search_symm_xyz, is_the_rule_for_any_correspondence) {
    generator random(20240311);
    for (const int natom : {0, 1, 2, 3, 5, 8, 20, 63, 64, 65}) {
        for (int round = 0; round < 4000 / (natom + 1); ++round) {
            const question asked = any_question(random, natom);
            SCOPED_TRACE(round);
            expect_equal(searched(asked, symmetry::symm_op), by_the_rule(asked, symmetry::symm_op));
            if (testing::Test::HasFailure()) {
                return;
            }
        }
    }
}

// With matrices that do not carry unit vectors into unit vectors the distances take every value.
TEST(search_symm_xyz, is_the_rule_for_any_matrices) {
    generator random(20240312);
    std::vector<double> elements(99);
    const base::view3<const double> matrices("matrices", elements.data(), 3, 3, 11);
    const std::vector<double> values = {0.0, 0.0, 0.0, 1.0, -1.0, 0.9995, -0.999, 0.001, tol_of_a_run, 1e-200, 1e200};
    int derived = 0;
    for (int round = 0; round < 6000; ++round) {
        for (double& element : elements) {
            element = one_of(random, values);
        }
        if (round % 2 == 0) {  // one axis after the other goes to itself or to another, not quite
            for (std::size_t g = 0; g < 11; ++g) {
                for (std::size_t e = 0; e < 9; ++e) {
                    elements[9 * g + e] = (e + g) % 4 == 0 ? one_of<double>(random, {1.0, -1.0, 0.9995, 1.0009}) : 0.0;
                }
            }
        }
        const question asked = any_question(random, std::uniform_int_distribution<int>(1, 4)(random));
        const answer expected = by_the_rule(asked, matrices);
        derived += expected.ncalc < 6 * asked.natom ? 1 : 0;
        expect_equal(searched(asked, matrices), expected);
        if (testing::Test::HasFailure()) {
            return;
        }
    }
    EXPECT_GT(derived, 500);
}

// Turning every unit vector round changes no distance between two of them.
TEST(search_symm_xyz, the_sign_changes_nothing) {
    generator random(20240313);
    for (int round = 0; round < 500; ++round) {
        question asked = any_question(random, 1 + round % 9);
        asked.disp_sign = -1;
        const answer found = searched(asked, symmetry::symm_op);
        for (const int disp_sign : {1, 0, 2, -2, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
            asked.disp_sign = disp_sign;
            ASSERT_EQ(searched(asked, symmetry::symm_op), found) << "sign " << disp_sign << ", round " << round;
        }
    }
}

}  // namespace
