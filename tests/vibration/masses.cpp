#include <gtest/gtest.h>

#include <cmath>

#include "element/atomic_masses.hpp"
#include "support.hpp"

using namespace displacement_generator;

namespace {

TEST(main_isotope, has_about_the_mass_of_its_nucleons) {
    for (int number = 1; number <= 118; ++number) {
        SCOPED_TRACE(number);
        const element::isotope isotope = element::main_isotope(number);
        // A nucleon bound weighs 0.1 % less than an atomic mass unit at the most, and 0.8 % more in hydrogen.
        EXPECT_LT(std::abs(isotope.mass / isotope.mass_number - 1.0), number == 1 ? 0.008 : 0.0025);
        EXPECT_GE(isotope.mass_number, number == 1 ? 1 : 2 * number);
        EXPECT_LE(isotope.mass_number, 2.62 * number);
    }
}

TEST(main_isotope, follows_from_the_binding_energy_of_its_nucleons) {
    // The binding energy a nucleon (MeV), from the masses of hydrogen and the neutron, is a smooth function: 8.79 at
    // iron-58 and nickel-62, and above 7.4 from carbon to the end. A wrong digit in the third decimal would show.
    for (int number = 6; number <= 118; ++number) {
        SCOPED_TRACE(number);
        const element::isotope isotope = element::main_isotope(number);
        const double parts = number * 1.00782503 + (isotope.mass_number - number) * 1.00866492;
        const double binding = (parts - isotope.mass) * 931.494102 / isotope.mass_number;
        EXPECT_GT(binding, number < 8 ? 7.4 : number < 84 ? 7.7 : 7.0);
        EXPECT_LT(binding, 8.795);
    }
}

TEST(main_isotope, of_known_elements) {
    struct row {
        int number;
        int mass_number;
        double mass;
    };
    for (const row& known :
         {row{1, 1, 1.00782503}, row{6, 12, 12.0}, row{8, 16, 15.99491462}, row{17, 35, 34.96885269},
          row{34, 80, 79.9165}, row{35, 79, 78.91834}, row{53, 127, 126.90447}, row{61, 145, 144.9128},
          row{78, 195, 194.96479}, row{92, 238, 238.05079}, row{118, 294, 294.214}}) {
        EXPECT_EQ(element::main_isotope(known.number).mass_number, known.mass_number);
        EXPECT_NEAR(element::main_isotope(known.number).mass, known.mass, 5e-5);
    }
}

TEST(atomic_weight, lies_near_the_main_isotope) {
    // The heaviest of natural isotopes differs from the most abundant one by eight units at the most (tin, tellurium).
    for (int number = 1; number <= 118; ++number) {
        const double mass = element::main_isotope(number).mass;
        EXPECT_LT(std::abs(element::atomic_weight(number) - mass), 2.5) << number;
    }
    EXPECT_EQ(element::atomic_weight(1), 1.008);
    EXPECT_EQ(element::atomic_weight(17), 35.45);
    EXPECT_EQ(element::atomic_weight(92), 238.03);
}

TEST(atomic_weight, is_the_isotopes_mass_where_there_is_one_isotope_or_no_weight) {
    for (const int number : {9, 11, 13, 15, 25, 27, 33, 39, 41, 45, 53, 55, 59, 65, 67, 69, 79, 83}) {
        EXPECT_NEAR(element::atomic_weight(number), element::main_isotope(number).mass, 0.006) << number;
    }
    for (const int number : {43, 61, 84, 88, 89, 93, 103, 118}) {
        EXPECT_EQ(element::atomic_weight(number), element::main_isotope(number).mass) << number;
    }
}

TEST(masses, are_those_of_elements_only) {
    const std::string message = "expected an atomic number in 1..118, found ";
    EXPECT_EQ(support::stopped_with([] { element::main_isotope(0); }), message + "0|standard error|2");
    EXPECT_EQ(support::stopped_with([] { element::atomic_weight(119); }), message + "119|standard error|2");
    EXPECT_EQ(support::stopped_with([] { element::atomic_weight(-1); }), message + "-1|standard error|2");
}

}  // namespace
