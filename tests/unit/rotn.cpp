#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <string_view>
#include <vector>

#include "support.hpp"
#include "symmetry/symmetry.hpp"

using namespace displacement_generator;

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

using vector3 = std::array<double, 3>;
using matrix3 = std::array<vector3, 3>;  ///< by rows

/// The vectors after rotn.
std::vector<vector3> turned(int n, const matrix3& by_rows, const std::vector<vector3>& vectors) {
    const base::array2<double> r("r", 3, 3);
    const base::array2<double> v("v", 3, static_cast<int>(vectors.size()));
    for (int i = 1; i <= 3; ++i) {
        for (int j = 1; j <= 3; ++j) {
            r(i, j) = by_rows.at(static_cast<std::size_t>(i - 1)).at(static_cast<std::size_t>(j - 1));
        }
    }
    std::vector<vector3> result = vectors;
    for (int c = 1; c <= v.columns(); ++c) {
        for (int i = 1; i <= 3; ++i) {
            v(i, c) = result.at(static_cast<std::size_t>(c - 1)).at(static_cast<std::size_t>(i - 1));
        }
    }
    symmetry::rotn(n, r, v);
    for (int c = 1; c <= v.columns(); ++c) {
        for (int i = 1; i <= 3; ++i) {
            result.at(static_cast<std::size_t>(c - 1)).at(static_cast<std::size_t>(i - 1)) = v(i, c);
        }
    }
    return result;
}

constexpr matrix3 identity = {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};

TEST(rotn, multiplies_rows_by_vectors) {
    struct row {
        std::string_view name;
        int n;
        matrix3 r;
        std::vector<vector3> vectors;
        std::vector<vector3> expected;
    };
    const std::vector<row> rows = {
        {"no vectors", 0, identity, {}, {}},
        {"none of two", 0, {{{2, 0, 0}, {0, 2, 0}, {0, 0, 2}}}, {{1, 2, 3}, {4, 5, 6}}, {{1, 2, 3}, {4, 5, 6}}},
        {"first of two", 1, {{{2, 0, 0}, {0, 2, 0}, {0, 0, 2}}}, {{1, 2, 3}, {4, 5, 6}}, {{2, 4, 6}, {4, 5, 6}}},
        {"both", 2, {{{2, 0, 0}, {0, 2, 0}, {0, 0, 2}}}, {{1, 2, 3}, {4, 5, 6}}, {{2, 4, 6}, {8, 10, 12}}},
        {"not symmetric", 1, {{{1, 2, 3}, {4, 5, 6}, {7, 8, 9}}}, {{1, 10, 100}}, {{321, 654, 987}}},
        {"a negative count", -1, {{{2, 0, 0}, {0, 2, 0}, {0, 0, 2}}}, {{1, 2, 3}}, {{1, 2, 3}}},
        // 1 is lost when it is added to 1e16, so each component tells in which order its products were added.
        {"in the order of j", 1, {{{1e16, 1, -1e16}, {1, 1e16, -1e16}, {1e16, -1e16, 1}}}, {{1, 1, 1}}, {{0, 0, 1}}},
    };
    for (const row& tested : rows) {
        SCOPED_TRACE(tested.name);
        EXPECT_EQ(turned(tested.n, tested.r, tested.vectors), tested.expected);
    }
}

// Products are added to a zero that is positive, so that no turn leaves a negative zero, which would show in print.
TEST(rotn, leaves_no_negative_zero) {
    for (int k = 1; k <= 11; ++k) {
        SCOPED_TRACE(k);
        const base::array2<double> v("v", 3, 2);
        for (int i = 1; i <= 3; ++i) {
            v(i, 1) = 0.0;
            v(i, 2) = -0.0;
        }
        symmetry::rotn(2, symmetry::symm_op.matrix(k), v);
        for (int i = 1; i <= 3; ++i) {
            EXPECT_EQ(v(i, 1), 0.0);
            EXPECT_FALSE(std::signbit(v(i, 1)));
            EXPECT_FALSE(std::signbit(v(i, 2)));
        }
    }
}

TEST(rotn, what_is_not_finite_spoils_every_component_of_its_vector_only) {
    for (const double spoilt : {infinity, -infinity, std::numeric_limits<double>::quiet_NaN()}) {
        const std::vector<vector3> result =
            turned(2, {{{0, 1, 0}, {-1, 0, 0}, {0, 0, 1}}}, {{1, spoilt, 3}, {4, 5, 6}});
        EXPECT_TRUE(std::isnan(result[0][0]) || std::isinf(result[0][0]));
        EXPECT_TRUE(std::isnan(result[0][1]));
        EXPECT_TRUE(std::isnan(result[0][2]));
        EXPECT_EQ(result[1], (vector3{5, -4, 6}));
    }
}

TEST(rotn, more_vectors_than_there_are_stop_the_run) {
    EXPECT_EQ(support::stopped_with([] {
                  turned(2, identity, {{1, 2, 3}});
              }),
              "array 'v': index 2 of dimension 2 is outside 1..1|standard error|2");
}

}  // namespace
