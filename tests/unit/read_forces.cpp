#include "gaussian/forces_file.hpp"

#include <gtest/gtest.h>

#include <string>

#include "support.hpp"

using namespace displacement_generator;

namespace {

gaussian::forces_file read(const std::string& text, int atoms) {
    gaussian::source from("a.forces", text);
    return gaussian::read_forces(from, atoms);
}

TEST(read_forces, forces_energy_and_dipole) {
    const gaussian::forces_file found =
        read("# xtb\n\nenergy -5.25 # hartree\r\n 0.5 -1.5D-1\t2\n\ndipole 1 2 -3e0\n+4. .5 -6 # last\n", 2);
    Eigen::Matrix3Xd expected(3, 2);
    expected << 0.5, 4.0, -0.15, 0.5, 2.0, -6.0;
    EXPECT_EQ(found.forces, expected);
    EXPECT_EQ(found.energy, -5.25);
    EXPECT_EQ(*found.dipole, Eigen::Vector3d(1.0, 2.0, -3.0));
    EXPECT_FALSE(read("1 2 3", 1).energy);
    EXPECT_FALSE(read("1 2 3", 1).dipole);
}

TEST(read_forces, a_last_number_that_was_cut) {
    const std::string message =
        ": expected a last number with as many digits as the others, or a line end after it, found '";
    const struct {
        const char* text;
        const char* cut;  ///< null: nothing was
    } rows[] = {
        {"0.10 0.20 0.30\n0.40 -0.50 0.6", "a.forces:2: 0.40 -0.50 0.6"},
        {"0.10 0.20 0.30\n0.40 -0.50 -0.", "a.forces:2: 0.40 -0.50 -0."},
        {"0.10 0.20 0.30\n0.40 -0.50 -0", "a.forces:2: 0.40 -0.50 -0"},
        {"1.0e-05 2.0e-05 3.0e-05\n4.0e-05 5.0e-05 6.0e-0", "a.forces:2: 4.0e-05 5.0e-05 6.0e-0"},
        {"0.10 0.20 0.30\n0.40 -0.50 0.6\n", nullptr},
        {"0.10 0.20 0.30\n0.40 -0.50 0.60", nullptr},
        {"0.10 0.20 0.3\n0.40 -0.50 0.6", nullptr},
        {"0.1 0.20 0.30\n0.40 -0.50 0.6", nullptr},
        {"0.10 0.20 0.30\n0.4 -0.50 0.6", nullptr},
        {"0.10 0.20 0.30\n0.40 0.5 0.6", nullptr},
        {"1 2 3\n4 5 6", nullptr},
    };
    for (const auto& row : rows) {
        if (row.cut == nullptr) {
            EXPECT_EQ(read(row.text, 2).forces.cols(), 2) << row.text;
            continue;
        }
        const std::string cut = row.cut;
        const std::size_t split = cut.find(": ");
        EXPECT_EQ(support::stopped_with([&] { read(row.text, 2); }),
                  cut.substr(0, split) + message + cut.substr(split + 2) + "'|standard error|2");
    }
    EXPECT_EQ(read("0.1 0.2 0.3", 1).forces.cols(), 1);
    EXPECT_EQ(read("0.10 0.20 0.3 # not cut", 1).forces.cols(), 1);
}

TEST(read_forces, refusals) {
    const struct {
        const char* text;
        const char* message;
    } rows[] = {
        {"", "a.forces: expected forces on 1 atoms, found 0"},
        {"1 2 3\n4 5 6\n", "a.forces:2: expected forces on 1 atoms and no more, found '4 5 6'"},
        {"1 2\n", "a.forces:1: expected three numbers, 'energy' or 'dipole', found '1 2'"},
        {"1 2 3 4\n", "a.forces:1: expected three numbers, 'energy' or 'dipole', found '1 2 3 4'"},
        {"1,2,3\n", "a.forces:1: expected three numbers, 'energy' or 'dipole', found '1,2,3'"},
        {"1 2 inf\n", "a.forces:1: expected three numbers, 'energy' or 'dipole', found '1 2 inf'"},
        {"1 2 1e999\n", "a.forces:1: expected three numbers, 'energy' or 'dipole', found '1 2 1e999'"},
        {"1 2 ****\n", "a.forces:1: expected three numbers, 'energy' or 'dipole', found '1 2 ****'"},
        {"#\nEnergy 1\n", "a.forces:2: expected three numbers, 'energy' or 'dipole', found 'Energy 1'"},
        {"energy\n", "a.forces:1: expected a number after 'energy', found 'energy'"},
        {"energy 1 2\n", "a.forces:1: expected a number after 'energy', found 'energy 1 2'"},
        {"energy 1\nenergy 1\n", "a.forces:2: expected one energy, found 'energy 1'"},
        {"dipole 1 2\n", "a.forces:1: expected three numbers after 'dipole', found 'dipole 1 2'"},
        {"dipole 1 2 3 4\n", "a.forces:1: expected three numbers after 'dipole', found 'dipole 1 2 3 4'"},
        {"dipole 1 2 3\ndipole 1 2 3\n", "a.forces:2: expected one dipole, found 'dipole 1 2 3'"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(support::stopped_with([&] { read(row.text, 1); }), std::string(row.message) + "|standard error|2");
    }
}

}  // namespace
