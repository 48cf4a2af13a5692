#include <gtest/gtest.h>

#include <array>
#include <string>
#include <string_view>

#include "support.hpp"
#include "symmetry/symmetry.hpp"

using namespace displacement_generator;

namespace {

struct group_row {
    int index;
    std::string_view name;
    int order;
    std::array<std::string_view, 8> irreps;
};

constexpr std::string_view none = "   ";

constexpr std::array<group_row, 8> groups = {{
    {1, " C1", 1, {"N  ", "N  ", "N  ", "N  ", "N  ", "N  ", "N  ", "N  "}},
    {2, " CS", 2, {"A' ", "A\" ", none, none, none, none, none, none}},
    {3, " C2", 2, {"A  ", "B  ", none, none, none, none, none, none}},
    {4, "C2V", 4, {"A1 ", "A2 ", "B1 ", "B2 ", none, none, none, none}},
    {5, "D2H", 8, {"Ag ", "Au ", "B1g", "B1u", "B2g", "B2u", "B3g", "B3u"}},
    {6, " CI", 2, {"g  ", "u  ", none, none, none, none, none, none}},
    {7, "C2H", 4, {"Ag ", "Au ", "Bg ", "Bu ", none, none, none, none}},
    {8, " D2", 4, {"A  ", "B1 ", "B2 ", "B3 ", none, none, none, none}},
}};

TEST(symmetry_tables, groups_with_their_labels) {
    for (const group_row& row : groups) {
        SCOPED_TRACE(row.index);
        EXPECT_EQ(std::string_view(symmetry::pg_name(row.index)), row.name);
        EXPECT_EQ(symmetry::nrep(row.index), row.order);
        for (int slot = 1; slot <= 8; ++slot) {
            EXPECT_EQ(std::string_view(symmetry::irrep(slot, row.index)),
                      row.irreps.at(static_cast<std::size_t>(slot - 1)))
                << "slot " << slot;
        }
    }
}

struct operation_row {
    int index;
    std::string_view name;
    std::array<double, 9> by_columns;  ///< as stored
    std::array<double, 3> image;       ///< of (1, 10, 100), which tells every matrix of 0, 1 and -1 apart
};

constexpr std::array<operation_row, 11> operations = {{
    {1, "  E", {1, 0, 0, 0, 1, 0, 0, 0, 1}, {1, 10, 100}},
    {2, "C2z", {-1, 0, 0, 0, -1, 0, 0, 0, 1}, {-1, -10, 100}},
    {3, "C2y", {-1, 0, 0, 0, 1, 0, 0, 0, -1}, {-1, 10, -100}},
    {4, "C2x", {1, 0, 0, 0, -1, 0, 0, 0, -1}, {1, -10, -100}},
    {5, "  I", {-1, 0, 0, 0, -1, 0, 0, 0, -1}, {-1, -10, -100}},
    {6, "Sxy", {1, 0, 0, 0, 1, 0, 0, 0, -1}, {1, 10, -100}},
    {7, "Szx", {1, 0, 0, 0, -1, 0, 0, 0, 1}, {1, -10, 100}},
    {8, "Syz", {-1, 0, 0, 0, 1, 0, 0, 0, 1}, {-1, 10, 100}},
    {9, "C4z", {0, -1, 0, 1, 0, 0, 0, 0, 1}, {10, -1, 100}},
    {10, "C4y", {0, 0, 1, 0, 1, 0, -1, 0, 0}, {-100, 10, 1}},
    {11, "C4x", {1, 0, 0, 0, 0, -1, 0, 1, 0}, {1, 100, -10}},
}};

TEST(symmetry_tables, operations_with_their_matrices) {
    for (const operation_row& row : operations) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(std::string_view(symmetry::op_name(row.index)), row.name);
        const base::view2<const double> matrix = symmetry::symm_op.matrix(row.index);
        const std::array<double, 3> point = {1, 10, 100};
        for (int i = 1; i <= 3; ++i) {
            double image = 0.0;
            for (int j = 1; j <= 3; ++j) {
                EXPECT_EQ(matrix(i, j), row.by_columns.at(static_cast<std::size_t>(3 * (j - 1) + i - 1)))
                    << "row " << i << ", column " << j;
                image += matrix(i, j) * point.at(static_cast<std::size_t>(j - 1));
            }
            EXPECT_EQ(image, row.image.at(static_cast<std::size_t>(i - 1))) << "component " << i;
        }
    }
}

TEST(symmetry_tables, an_index_outside_a_table_stops_the_run) {
    struct row {
        int index;
        std::string_view pg_name;
        std::string_view nrep;
        std::string_view irrep;
    };
    constexpr std::array<row, 2> rows = {{
        {0, "array 'pg_name': index 0 is outside 1..8|standard error|2",
         "array 'nrep': index 0 is outside 1..8|standard error|2",
         "array 'irrep': index 0 of dimension 2 is outside 1..8|standard error|2"},
        {9, "array 'pg_name': index 9 is outside 1..8|standard error|2",
         "array 'nrep': index 9 is outside 1..8|standard error|2",
         "array 'irrep': index 9 of dimension 2 is outside 1..8|standard error|2"},
    }};
    for (const row& expected : rows) {
        SCOPED_TRACE(expected.index);
        const int index = expected.index;
        EXPECT_EQ(support::stopped_with([index] { static_cast<void>(symmetry::pg_name(index)); }), expected.pg_name);
        EXPECT_EQ(support::stopped_with([index] { static_cast<void>(symmetry::nrep(index)); }), expected.nrep);
        EXPECT_EQ(support::stopped_with([index] { static_cast<void>(symmetry::irrep(1, index)); }), expected.irrep);
    }
    EXPECT_EQ(support::stopped_with([] { static_cast<void>(symmetry::op_name(12)); }),
              "array 'op_name': index 12 is outside 1..11|standard error|2");
    EXPECT_EQ(support::stopped_with([] { static_cast<void>(symmetry::symm_op.matrix(0)); }),
              "array 'symm_op': index 0 of dimension 3 is outside 1..11|standard error|2");
    EXPECT_EQ(support::stopped_with([] { static_cast<void>(symmetry::symm_op.matrix(12)); }),
              "array 'symm_op': index 12 of dimension 3 is outside 1..11|standard error|2");
    EXPECT_EQ(support::stopped_with([] { static_cast<void>(symmetry::symm_op.matrix(1)(4, 1)); }),
              "array 'symm_op': index 4 of dimension 1 is outside 1..3|standard error|2");
}

}  // namespace
