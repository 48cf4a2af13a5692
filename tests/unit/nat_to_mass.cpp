#include <gtest/gtest.h>

#include <climits>

#include "element/element.hpp"
#include "support.hpp"

using namespace displacement_generator;

namespace {

constexpr double untouched = -77.0;

TEST(nat_to_mass, gives_the_mass_of_a_number_of_the_table) {
    struct row {
        int nat;
        double expected;
    };
    const row rows[] = {
        {1, 1.007825037},
        {6, 12.0},
        {8, 15.99491464},
        {17, 34.968852729},
        {34, 78.96},
        {55, 133.9051},
        {61, 0.0},
        {83, 208.9804},
        {94, 242.0587},
        {101, 255.0906},
        {102, 0.0},
        {110, 0.0},
        {118, 0.0},
        {119, untouched},
        {0, untouched},
        {-1, untouched},
        {INT_MAX, untouched},
        {INT_MIN, untouched},
    };
    constexpr int natom = static_cast<int>(std::size(rows));
    const base::array1<int> nat("nat", 1, natom);
    const base::array1<double> atmas("atmas", 1, natom);
    for (int i = 1; i <= natom; ++i) {
        nat(i) = rows[i - 1].nat;
        atmas(i) = untouched;
    }
    element::nat_to_mass(natom, nat, atmas);
    for (int i = 1; i <= natom; ++i) {
        EXPECT_EQ(atmas(i), rows[i - 1].expected) << nat(i);
    }
}

TEST(nat_to_mass, gives_as_many_masses_as_there_are_atoms) {
    const base::array1<int> nat("nat", 1, 2);
    const base::array1<double> atmas("atmas", 1, 2);
    nat(1) = nat(2) = 6;
    element::nat_to_mass(0, nat, atmas);
    EXPECT_EQ(atmas(1), 0.0);
    element::nat_to_mass(1, nat, atmas);
    EXPECT_EQ(atmas(1), 12.0);
    EXPECT_EQ(atmas(2), 0.0);
    EXPECT_EQ(support::stopped_with([&] { element::nat_to_mass(3, nat, atmas); }),
              "array 'nat': index 3 is outside 1..2|standard error|2");
}

}  // namespace
