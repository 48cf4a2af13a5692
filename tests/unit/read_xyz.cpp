#include "gaussian/xyz.hpp"

#include <gtest/gtest.h>

#include <string>

#include "support.hpp"

using namespace displacement_generator;

namespace {

gaussian::xyz_contents read(const std::string& text) {
    gaussian::source from("mol.xyz", text);
    return gaussian::read_xyz(from);
}

TEST(read_xyz, the_last_frame) {
    const gaussian::xyz_contents found =
        read("1\nfirst\nHe 0 0 0\n\n  2 \r\n\r\nog -1.5\t2d1 +3 0.5 more\r\n6 4.25 5 6e-1\r\n\n\n");
    EXPECT_EQ(found.frames, 2);
    EXPECT_EQ(found.line, 5);
    EXPECT_EQ(found.molecule.numbers, (std::vector<int>{118, 6}));
    Eigen::Matrix3Xd expected(3, 2);
    expected << -1.5, 4.25, 20.0, 5.0, 3.0, 0.6;
    EXPECT_EQ(found.molecule.positions, expected);
    EXPECT_EQ(found.molecule.charge, 0);
    EXPECT_EQ(found.molecule.multiplicity, 1);
}

TEST(read_xyz, refusals) {
    const struct {
        const char* text;
        const char* message;
    } rows[] = {
        {"", "mol.xyz: expected a frame of atoms, found no text"},
        {"H 0 0 0\n", "mol.xyz:1: expected the number of atoms of a frame, found 'H 0 0 0'"},
        {"1 x\n\nH 0 0 0\n", "mol.xyz:1: expected the number of atoms of a frame, found '1 x'"},
        {"0\n\n", "mol.xyz:1: expected the number of atoms of a frame, found '0'"},
        {"2000000000\n\nH 0 0 0\n", "mol.xyz:3: expected 2000000000 atoms of the frame that begins in line 1, found 1"},
        {"1\n", "mol.xyz:1: expected 1 atoms of the frame that begins in line 1, found 0"},
        {"1\n\nH 0 0\n", "mol.xyz:3: expected a symbol or an atomic number and x, y and z, found 'H 0 0'"},
        {"1\n\nH 0,1 0,2 0,3\n", "mol.xyz:3: expected a decimal point, found a comma in '0,1'"},
        {"2\n\n1 0 0 0\n1\t0.0 0 -0,74\r\n", "mol.xyz:4: expected a decimal point, found a comma in '-0,74'"},
        {"1\n\nH,0,1,2\n", "mol.xyz:3: expected a symbol or an atomic number and x, y and z, found 'H,0,1,2'"},
        {"1\n\nQq 0 0 0\n", "mol.xyz:3: expected a symbol or an atomic number and x, y and z, found 'Qq 0 0 0'"},
        {"2\n\nO 0 0 0\nD 0 0 1\n",
         "mol.xyz:4: 'D' is an isotope, which does not change the forces; expected the element's symbol alone, and the "
         "isotope to be named when the frequencies are computed"},
        {"1\n\nt 0 0 1\n",
         "mol.xyz:3: 't' is an isotope, which does not change the forces; expected the element's symbol alone, and the "
         "isotope to be named when the frequencies are computed"},
        {"1\n\n119 0 0 0\n", "mol.xyz:3: expected a symbol or an atomic number and x, y and z, found '119 0 0 0'"},
        {"1\n\n0 0 0 0\n", "mol.xyz:3: expected a symbol or an atomic number and x, y and z, found '0 0 0 0'"},
        {"1\n\nH 0 0 nan\n", "mol.xyz:3: expected a symbol or an atomic number and x, y and z, found 'H 0 0 nan'"},
        {"1\n\nH 0 0 0\nH 0 0 1\n", "mol.xyz:4: expected the number of atoms of a frame, found 'H 0 0 1'"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(support::stopped_with([&] { read(row.text); }), std::string(row.message) + "|standard error|2");
    }
}

}  // namespace
