#include "gaussian/read_input.hpp"

#include <gtest/gtest.h>
#include <sys/mman.h>

#include <cctype>
#include <cstdio>

#include "gaussian/lines.hpp"
#include "gaussian/symbols.hpp"
#include "support.hpp"

using namespace displacement_generator;

namespace {

using support::stopped_with;

/// What an input was read as: charge, multiplicity, and each atom with four decimals.
std::string read(std::string_view text, std::vector<gaussian::notice>& notices) {
    std::string shown;
    const std::string error = stopped_with([&] {
        const gaussian::input job = gaussian::read_input(text, "m", notices);
        shown = std::to_string(job.atoms.charge) + " " + std::to_string(job.atoms.multiplicity);
        for (std::size_t i = 0; i < job.atoms.numbers.size(); ++i) {
            char line[80];
            const auto x = job.atoms.positions.col(static_cast<Eigen::Index>(i));
            std::snprintf(line, sizeof line, "%.4f %.4f %.4f", x[0], x[1], x[2]);
            shown.append("; ").append(gaussian::symbol_of(job.atoms.numbers[i])).append(" ").append(line);
        }
    });
    for (const gaussian::notice& told : notices) {
        support::log_message("notice: " + told.text);
    }
    return error == "no error" ? shown : error;
}

std::string read(std::string_view text) {
    std::vector<gaussian::notice> notices;
    return read(text, notices);
}

const std::string head = "# hf\n\ntitle\n\n0 1\n";  // atoms from line 6 on
const std::string water = "0 1; O 0.0000 0.0000 0.1170; H 0.0000 0.7570 -0.4700; H 0.0000 -0.7570 -0.4700";

/// Water in every way to write it down.
TEST(read_input, takes_water_as_people_write_it) {
    const char* const atoms[] = {
        "O 0.0 0.0 0.117\nH 0.0 0.757 -0.470\nH 0.0 -0.757 -0.470\n",
        "O 0.0 0.0 0.117\nH 0.0 0.757 -0.470\nH 0.0 -0.757 -0.470",
        "\tO\t0.0\t0.0\t0.117\n h 0 .757 -.470 \n1 0. -757d-3 -4.7E-1\n",
        "O,0.0,0.0,0.117\nH,0.0,0.757,-0.470\nH,0.0,-0.757,-0.470\n",
        "O, 0.0, 0.0 ,0.117\nH 0.0 , 0.757 -0.470\nH,0,0.0,-0.757,-0.470\n",
        "O,0,0.,0.,0.117\nH,0,0.,0.757,-0.47\nH,0,0.,-0.757,-0.47\n",
        "8 0.0 0.0 0.117\n1 0.0 0.757 -0.470\n1 0.0 -0.757 -0.470\n",
        "O1' 0.0 0.0 0.117\nH* 0.0 0.757 -0.470\nH1.a+ 0.0 -0.757 -0.470\n",
        "O1 0.0 0.0 0.117\nH_a 0.0 0.757 -0.470\nHb 0.0 -0.757 -0.470\n",
        "O 0 0.0 0.0 0.117\nH -1 0.0 0.757 -0.470\nH -2 0.0 -0.757 -0.470\n",
        "O-OW--0.8 0.0 0.0 0.117\nH-HW-0.4 0.0 0.757 -0.470\nH-HW-0.4 0.0 -0.757 -0.470\n",
        "O(Spin=5,QMom=0.1) 0.0 0.0 0.117\nH(GFac=5.58,fragment=1) 0.0 0.757 -0.470\nH(ZEff=1) 0.0 -0.757 -0.470\n",
        "O 0.0 0.0 zo\nH 0.0 y -zh\nH 0.0 -y -zh\n\nzo 0.117\ny=0.757\nzh = 0.470\ny 0.7570\n",
        "O(Fragment=1) 0.0 0.0 0.117\nH(fragment=1) 0.0 0.757 -0.470\nH(Fragment=2) 0.0 -0.757 -0.470\n",
        ("O(PDBName=O,ResName=HOH,ResNum=1_A) 0.0 0.0 0.117\nH(PDBName=H1, ResName=HOH) 0 0.0 0.757 -0.470\n"
         "H-HW(PDBName=H2) 0.0 -0.757 -0.470\n"),
        "! the molecule\nO 0.0 0.0 0.117 ! oxygen\n!H 9 9 9\nH 0.0 0.757 -0.470\n  ! one more\nH 0.0 -0.757 -0.470\n",
        "O 0.0 0.0 zo\nH 0.0 y -zh\nH 0.0 -y -zh\n\nzo 0.117\ny=0.757\nzh = 0.470\n",
        "O 0.0 0.0 ZO\nH 0.0 y -zh\nH 0.0 -Y -ZH\nVariables:\nzo=0.117\nzh 0.470\nConstants:\ny 0.757\n",
        "O 0 0.0 0.0 zo\nH 0 0.0 y zh\nH 0 0.0 -y zh\n\nzo 0.117\ny=0.757\n\nzh=-0.470\n",
        "O/0.0/0.0/0.117\nH/0.0/0.757/-0.470\nH 0.0 -0.757 -0.470\n",
        "O 0.0 0.0 +_z\nH 0.0 0.757 -0.470\nH 0.0 -0.757 -0.470\n\n_z=0.117\n",
        "O 0.0 0.0 -_Z\nH 0.0 0.757 -0.470\nH 0.0 -0.757 -0.470\n\n_z -0.117\n",
        "O(Spin=5,,QMom=0.1) 0.0 0.0 0.117\nH( ) 0.0 0.757 -0.470\nH() 0.0 -0.757 -0.470\n",
        "O 0.0 0.0 0.117\r\nH 0.0 0.757 -0.470\r\nH 0.0 -0.757 -0.470\r\n\r\n",
        "O 0.0 0.0 0.117\nH 0.0 0.757 -0.470\nH 0.0 -0.757 -0.470\n \t \nC 0 0 0\n",
    };
    for (const std::string text : atoms) {
        EXPECT_EQ(read(head + text), water) << text;
    }
}

TEST(read_input, takes_every_kind_of_head) {
    const std::string atoms = "O 0.0 0.0 0.117\nH 0.0 0.757 -0.470\nH 0.0 -0.757 -0.470\n";
    const char* const heads[] = {
        "# hf\n\ntitle\n\n0 1\n",
        "\xef\xbb\xbf# hf\n\ntitle\n\n0 1\n",
        "\n\n  \t\n%chk=a\n\n%mem=1GB\n#p hf\n\ntitle\n\n0,1\n",
        "# hf ! comment\n! comment\n opt\n\ntitle\nin two lines ! comment\n\n  0   1  ! comment\n",
        "# hf\n%nproc=4\n opt\n\ntitle\n\n0 1\n",
        "# hf\n# opt\n\ntitle\n\n0 1\n",
        "# hf\r\n\r\ntitle\r\n\r\n0\t1\r\n",
        "# hf\n\n\ntitle\n\n0 1\n",
        "# hf\n\n\n\n0 1\n",
        "# hf\n\ntitle\n\n\n\n0 1\n",
        "# hf\n\ntitle\n\n0 1 0 1 0 1\n",
        "# hf\n\ntitle\n\n! comment\n0 1\n",
        "# hf\n\ntitle\n\n! comment\n\n0 1\n",
        "$RunGauss\n# hf\n\ntitle\n\n0 1\n",
        "--Link1--\n# hf\n\ntitle\n\n+0 1\n",
        "# hf geom=check\n\nother\n\n0 1\n\n--link1--\n# hf\n\ntitle\n\n0 1\n",
        "# hf geom=(connectivity,AllCheck)\n\n--LINK1--\n# hf\n\ntitle\n\n0 1\n",
    };
    for (const std::string text : heads) {
        EXPECT_EQ(read(text + atoms), water) << text;
    }
}

TEST(read_input, takes_every_kind_of_z_matrix) {
    // Water with the oxygen at the origin, one O-H of 1 on z, and a right angle.
    const std::string bent = "0 1; O 0.0000 0.0000 0.0000; H 0.0000 0.0000 1.0000; H 1.0000 0.0000 0.0000";
    const char* const rows[] = {
        "O\nH 1 1.0\nH 1 1.0 2 90.0\n",
        "O\nH 1 1\nH 1 1 2 90\n",
        "O1\nH2 O1 1.0\nH3 o1 1.0 h2 90.0\n",
        "O\nH,1,r\nH,1,r,2,a\n\nr=1.0\na=90.0\n",
        "O\nH 1 r\nH 1 r 2 a\nVariables:\nr 1.0\na 90.0\n",
        "O\nH 1 R\nH 1 r 2 A\n Variables:\n  r=1.0\n Constants:\n  a=90.0\n",
        "O\nH 1 r\nH 1 r 2 a\n\nr=1.0\n\na=90.0\n",
        "O\nH 1 r\nH 1 r 2 a\n\nvariables:\nr=1.0\n\nConstants:\na=90.0\n",
        "O\nH 1 r\nH 1 r 2 a\n\nr 1.0 5 0.1\na 90.0 F\n",
        "O\nH 1 r\nH 1 r 2 -a\n\nr 1.0\na -90.0\n",
        "O\nH 0. 0. 1.\nH 0 1 0 0\n",
        "O 0. 0. 0.\nH 1 1.0\nH 1 1.0 2 90.0\n",
    };
    for (const std::string text : rows) {
        EXPECT_EQ(read(head + text), bent) << text;
    }
    // The dummy atom lies on z, the first H on x, and the second one, at 90 degrees to both, on y.
    EXPECT_EQ(read(head + "O\nX 1 1.0\nH 1 1.0 2 90.0\nH 1 1.0 2 90.0 3 90.0 0\n"),
              "0 1; O 0.0000 0.0000 0.0000; H 1.0000 0.0000 0.0000; H 0.0000 -1.0000 0.0000");
    // z cross x is y.
    EXPECT_EQ(read(head + "O\nXX 1 1.0\nH 1 1.0 2 90.0\nH 1 1.0 2 90.0 3 90.0 1\n"),
              "0 1; O 0.0000 0.0000 0.0000; H 1.0000 0.0000 0.0000; H 0.0000 1.0000 0.0000");
    EXPECT_EQ(read(head + "O\n-1 1 1.0\nH 1 1.0 2 90.0\nH 1 1.0 2 90.0 3 90.0 -1\n"),
              "0 1; O 0.0000 0.0000 0.0000; H 1.0000 0.0000 0.0000; H 0.0000 -1.0000 0.0000");
    // Lines in Cartesian coordinates among the others, integers for numbers.
    EXPECT_EQ(read(head + "X 0 0 0 1\nO 0 0. 0. 0.\nH 0 1. 0. 0.\nH 2 1.0 1 90.0 3 90.0\n"),
              "0 1; O 0.0000 0.0000 0.0000; H 1.0000 0.0000 0.0000; H 0.0000 -1.0000 0.0000");
}

TEST(read_input, takes_units_from_the_route) {
    EXPECT_EQ(read("# hf units=au\n\nt\n\n0 1\nH 0 0 0\nH 0 0 2\n"),
              "0 1; H 0.0000 0.0000 0.0000; H 0.0000 0.0000 1.0584");
    EXPECT_EQ(read("# hf Units(Bohr)\n\nt\n\n0 1\nH\nH 1 2.0\n"),
              "0 1; H 0.0000 0.0000 0.0000; H 0.0000 0.0000 1.0584");
    EXPECT_EQ(read("# hf units=(au,rad)\n\nt\n\n0 1\nO\nH 1 2.\nH 1 2. 2 1.5707963267948966\n"),
              "0 1; O 0.0000 0.0000 0.0000; H 0.0000 0.0000 1.0584; H 1.0584 0.0000 0.0000");
}

TEST(read_input, takes_the_symbols_of_all_elements_in_any_case) {
    for (int number = 1; number <= 118; ++number) {
        const std::string symbol(gaussian::symbol_of(number));
        std::string upper = symbol;
        for (char& c : upper) {
            c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        }
        std::string expected = "0 1; ";
        expected += symbol + " 1.0000 2.0000 3.0000";
        for (const std::string& label : {symbol, upper, symbol + "1", std::to_string(number), symbol + "_x-Y2"}) {
            EXPECT_EQ(read(head + label + " 1 2 3\n"), expected) << label;
        }
    }
}

TEST(read_input, refuses_with_the_line_and_tells_what_to_do) {
    const struct {
        const char* atoms;
        const char* message;
    } rows[] = {
        {"H 0,0 0,757 0,1\n", "m:6: expected a decimal point, found a comma in '0,0'"},
        {"O 0.0 0.0 0.0\nH 0 0,757 0.1\n", "m:7: expected a decimal point, found a comma in '0,757'"},
        {"O\nH 1 0,96\n", "m:7: expected a decimal point, found a comma in '0,96'"},
        {"O\nH 1 r\n\nr=0,96\n", "m:9: expected a decimal point, found a comma in 'r=0,96'"},
        {"O\nH 1 r\n\nr 0,96\n", "m:9: expected a decimal point, found a comma in '0,96'"},
        {"H,0,0,0,757,0,1\n", "m:6: expected the end of the line after x, y and z, found '0'"},
        {"H 0 0\n",
         "m:6: expected x, y and z of atom 1, or the 0 fields of its line in a Z-matrix, found 2 fields after "
         "the label"},
        {"H 0 0 0\nH 1\n",
         "m:7: expected x, y and z of atom 2, or the 2 fields of its line in a Z-matrix, found 1 fields "
         "after the label"},
        {"H 0 0 0.1x\n", "m:6: expected a number or the name of one, found '0.1x'"},
        {"H 0 0 1e999\n", "m:6: expected a number within the range of double precision, found '1e999'"},
        {"H 0,,0,0\n", "m:6: expected a number, found nothing between two commas"},
        {"H 0. 0. z\n", "m:6: expected a value for 'z' below the atoms, found none"},
        {"H 0. 0. z\n\nz\n", "m:8: expected a value after the name 'z', found none"},
        {"H 0. 0. z\n\nz x\n", "m:8: expected a value for 'z', found 'x'"},
        {"H 0. 0. z\n\nz 1\nz 2\n", "m:9: expected one value for 'z', found a second one"},
        {"H 0. 0. z\n\nA 1 2 F\n", "m:6: expected a value for 'z' below the atoms, found none"},
        {"Q 0 0 0\n", "m:6: expected an element symbol or an atomic number, found 'Q'"},
        {"O;0.0;0.0;0.117\n", "m:6: expected letters and digits after the symbol of an atom, found 'O;0.0;0.0;0.117'"},
        {"O=1 0.0 0.0 0.117\n", "m:6: expected letters and digits after the symbol of an atom, found 'O=1'"},
        {"*1 0 0 0\n", "m:6: expected an element symbol or an atomic number, found '*1'"},
        {"-2 0 0 0\n", "m:6: expected an element symbol or an atomic number, found '-2'"},
        {"Dq 0 0 0\n", "m:6: expected an element symbol or an atomic number, found 'Dq'"},
        {"O) 0 0 0\n", "m:6: expected letters and digits after the symbol of an atom, found 'O)'"},
        {"1.5 0 0 0\n", "m:6: expected an element symbol or an atomic number from 1 to 118, found '1.5'"},
        {"119 0 0 0\n", "m:6: expected an element symbol or an atomic number from 1 to 118, found '119'"},
        {"Carbon 0 0 0\n", "m:6: 'Carbon' may be C or Ca; expected the symbol alone"},
        {"H(Fragment=1)x 0 0 0\n", "m:6: expected nothing after the ')' of an atom, found 'x'"},
        {"H 0. 0. r\n\n5 1.0\nr 2.0\n", "m:6: expected a value for 'r' below the atoms, found none"},
        {"H 0. 0. z\n\na 1\n\nb 1\n\nz 1\n", "m:6: expected a value for 'z' below the atoms, found none"},
        {"H 0. 0. r\nVariables:\n=\nr 2.0\n", "m:8: expected the name of a variable, found '='"},
        {"H 0. 0. r\nVariables:\n5 1.0\nr 2.0\n", "m:8: expected the name of a variable, found '5 1.0'"},
        {"Bq 0 0 0\n", "m:6: 'Bq' is a ghost atom, which is no part of a molecule; take it out"},
        {"H-Bq 0 0 0\n", "m:6: 'H-Bq' is a ghost atom, which is no part of a molecule; take it out"},
        {"H-bq(Fragment=1) 0 0 0\n",
         "m:6: 'H-bq(Fragment=1)' is a ghost atom, which is no part of a molecule; take it out"},
        {"0 0 0 0\n", "m:6: '0' is a ghost atom, which is no part of a molecule; take it out"},
        {"H 0 0 0\nX 0 0 1\n",
         "m:7: found a dummy atom in a molecule of Cartesian coordinates, where it serves nothing; "
         "take it out"},
        {"H 0 0 0\n-1 0 0 1\n",
         "m:7: found a dummy atom in a molecule of Cartesian coordinates, where it serves nothing; "
         "take it out"},
        {"X\nX 1 1.0\n", "m:6: expected an atom, found dummy atoms only"},
        {"C 0 0 0\nTv 0 0 2\n", "m:7: 'Tv' is a translation vector; periodic systems cannot be prepared"},
        {"H(Iso=2) 0 0 0\n",
         "m:6: 'H(Iso=2)' is an isotope, which does not change the forces; expected the element's "
         "symbol alone, and the isotope to be named when the frequencies are computed"},
        {"D 0 0 0\n",
         "m:6: 'D' is an isotope, which does not change the forces; expected the element's symbol alone, and "
         "the isotope to be named when the frequencies are computed"},
        {"T 0 0 0\n",
         "m:6: 'T' is an isotope, which does not change the forces; expected the element's symbol alone, and "
         "the isotope to be named when the frequencies are computed"},
        {"O\nH 1 r 0\n\nr=0.96\n",
         "m:7: expected the 2 fields of this line of a Z-matrix, or x, y and z with a 0 before them, found 3 fields "
         "after the label"},
        {"O\nH 1 1.0\nH 1 1.0 2 90.\nH 1 1 1\n",
         "m:9: expected the 6 fields of this line of a Z-matrix, or x, y and z with a 0 before them, found 3 fields "
         "after the label"},
        {"O\nH 1 1.0\nH 1 1.0 2 90.\nH 1 1.0 2 90. 3 90.\nH 1 1 1\n",
         "m:10: expected the 6 fields of this line of a Z-matrix, or x, y and z with a 0 before them, found 3 fields "
         "after the label"},
        {"H(ZNuc=1.1) 0 0 0\n",
         "m:6: the parameter 'ZNuc=1.1' of 'H(ZNuc=1.1)' cannot be kept, and the forces may depend "
         "on it; take it out"},
        {"H(Spin=1 0 0 0\n", "m:6: expected a ')' in 'H(Spin=1 0 0 0', found none"},
        {"C 0.0 0.0 0.0 H\n",
         "m:6: found the layer 'H' of an ONIOM model, whose forces cannot be prepared for; take the "
         "layers out, and the method of one layer"},
        {"C 0 0 0 M\n",
         "m:6: found the layer 'M' of an ONIOM model, whose forces cannot be prepared for; take the "
         "layers out, and the method of one layer"},
        {"C 1 0.5 0.0 H\n",
         "m:6: found the layer 'H' of an ONIOM model, whose forces cannot be prepared for; take the "
         "layers out, and the method of one layer"},
        {"C -1 0.0 0.0 0.0 L H-HC 2\n",
         "m:6: found the layer 'L' of an ONIOM model, whose forces cannot be prepared for; "
         "take the layers out, and the method of one layer"},
        {"O\nH 2 1.0\n", "m:7: expected a reference to an earlier atom, 1..1, found 2"},
        {"O\nH 1 1.0\nH 1 1.0 2 90.0\nH 1 1.0 2 90.0 3 190.0 1\n",
         "m:9: expected an angle from 0 to 180 degrees, found 190.000000"},
        {"O\nH 0 1.0\n", "m:7: expected a reference to an earlier atom, 1..1, found 0"},
        {"O\nH 99999999999 1.0\n", "m:7: expected the number or the label of an earlier atom, found '99999999999'"},
        {"O\nH 1 1.0\nH 1 1.0 2 -90.0\n", "m:8: expected an angle from 0 to 180 degrees, found -90.000000"},
        {"O\nH H2 1.0\n", "m:7: expected the number or the label of an earlier atom, found 'H2'"},
        {"O\nH 1 1.0\nH 1 1.0 2 100.0\nF H 1.0 1 90.0 2 0.0\n",
         "m:9: expected the number of an earlier atom, found 'H', the label of more than one"},
        {"O\nH 1 1.0\nH 1 1.0 2 180.0\nH 3 1.0 1 90.0 2 0.0\n",
         "m:9: atoms 3, 1 and 2, which its dihedral angle refers to, lie on a line; refer to another atom or put in a "
         "dummy atom"},
        {"O\nH 1 1.0\nH 1 1.0 2 90.0\nH 1 1.0 2 90.0 3 90.0 2\n",
         "m:9: expected 0, 1 or -1 at the end of a line of a Z-matrix, found '2'"},
        {"O\nH 1 1.0\nH 1 1.0 2 90.0\nH 1 1.0 2 90.0 3 90.0 -2\n",
         "m:9: expected 0, 1 or -1 at the end of a line of a Z-matrix, found '-2'"},
        {"O\nH 1 1.0\nH 1 1.0 2 90.0\nH 1 1.0 2 90.0 3 90.0 0.\n",
         "m:9: expected 0, 1 or -1 at the end of a line of a Z-matrix, found '0.'"},
        {"@water.xyz\n", "m:6: found '@water.xyz', which includes a file; put the text of that file in its place"},
        {"", "m:5: expected the first atom, found none"},
        {"\n", "m:6: expected the first atom, found none"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(read(head + row.atoms), std::string(row.message) + "|standard error|2") << row.atoms;
    }
}

TEST(read_input, refuses_a_head_that_is_not_whole) {
    const struct {
        const char* text;
        const char* message;
    } rows[] = {
        {"", "m:1: expected a Gaussian input, found no line of one"},
        {"\n\n", "m:1: expected a Gaussian input, found no line of one"},
        {"3\n\nO 0 0 0\n",
         "m:1: expected a Link 0 line, which begins with '%', or the route, which begins with '#', found "
         "'3'"},
        {"%chk=a\n", "m:1: expected a route, which begins with '#', found the end of the job"},
        {"# hf\n", "m:1: expected a title after the route, found the end of the job"},
        {"# hf\n\n\n", "m:3: expected a title after the route, found the end of the job"},
        {"# hf\n\nt\n", "m:3: expected a line of charge and multiplicity after the title, found the end of the job"},
        {"# hf\n\n0 1\nO 0 0 0\n\n1 2\n", "m:6: expected the first atom, found none"},
        {"# hf\n\nt\n\nO 0 0 0\n",
         "m:5: expected charge and multiplicity, two integers, found 'O 0 0 0'; the title, which "
         "begins on line 3, ends before it"},
        {"# hf\n\nt\n\n0 0\nO 0 0 0\n", "m:5: expected a charge and a positive multiplicity, found '0 0'"},
        {"# hf\n\nt\n\n99999999999 1\nO 0 0 0\n",
         "m:5: expected a charge and a positive multiplicity, found '99999999999 1'"},
        {"# hf\n\nt\n\n0 99999999999\nO 0 0 0\n",
         "m:5: expected a charge and a positive multiplicity, found '0 99999999999'"},
        {"# hf\n\nt\n\n0 1 0\nO 0 0 0\n",
         "m:5: expected charge and multiplicity, two integers, found '0 1 0'; the title, "
         "which begins on line 3, ends before it"},
        {"# hf opt=(ts\n\nt\n\n0 1\nO 0 0 0\n", "m:1: expected as many '(' as ')' in the route, found 'opt=(ts'"},
        {"# opt,qst2 hf\n\nt\n\n0 1\nO 0 0 0\n",
         "m:1: 'opt,qst2' has more than one molecule in the input; prepare the log of the optimisation"},
        {"# opt=qst2 hf\n\nt\n\n0 1\nO 0 0 0\n",
         "m:1: 'opt=qst2' has more than one molecule in the input; prepare the log of the optimisation"},
        {"# Optimize(QST3,CalcFC) hf\n\nt\n\n0 1\nO 0 0 0\n",
         "m:1: 'Optimize(QST3,CalcFC)' has more than one molecule in the input; prepare the log of the optimisation"},
        {"# opt=(path=5) hf\n\nt\n\n0 1\nO 0 0 0\n",
         "m:1: 'opt=(path=5)' has more than one molecule in the input; prepare the log of the optimisation"},
        {"%chk=a\n# opt=restart\n",
         "m:2: the molecule is in a checkpoint file, as the route says; prepare the log of the job that wrote it, or "
         "its "
         "formatted checkpoint"},
        {"# hf geom=check\n\nt\n\n0 1\n",
         "m:1: the molecule is in a checkpoint file, as the route says; prepare the log of "
         "the job that wrote it, or its formatted checkpoint"},
        {"# hf geom=check\n\nt\n\n0 1\n\n--link1--\n# hf geom=check\n\nt\n\n0 1\n",
         "m:1: the molecule is in a checkpoint file, as the route says; prepare the log of "
         "the job that wrote it, or its formatted checkpoint"},
        {"%chk=a\n# hf Geom(AllCheck)\n",
         "m:2: the molecule is in a checkpoint file, as the route says; prepare the log of "
         "the job that wrote it, or its formatted checkpoint"},
        {"# hf extraoverlays\n\n1/2=3\n\nt\n\n0 1\nO 0 0 0\n",
         "m:1: found 'extraoverlays', whose section before the title cannot be kept; take it out"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(read(row.text), std::string(row.message) + "|standard error|2") << row.text;
    }
}

TEST(read_input, tells_what_it_dropped_and_where) {
    std::vector<gaussian::notice> notices;
    read("# hf\n\nt\n\n0 1 0 1\nO1 0 0 0 0\nH2-HW 1 0.0 0.0 1.0\n", notices);
    notices.clear();
    read(
        "# hf\n\nt\n\n0 1 0 1\nO1 -1 0 0 0\nH2-HW(Fragment=1) 0.0 0.0 1.0\nH3 -1 0. 1. 0.\nO4 0 0. 2. 0.\n\n"
        "--link1--\n# x\n",
        notices);
    std::string told;
    for (const gaussian::notice& one : notices) {
        told += std::to_string(one.line) + " " + one.text + "\n";
    }
    EXPECT_EQ(told,
              "1 job 1 of 2 is the first one that holds a molecule; the others are dropped\n"
              "5 the first charge and multiplicity were taken, those of fragments dropped\n"
              "6 label of an atom dropped, here and in 3 more lines\n"
              "7 molecular-mechanics type of an atom dropped\n"
              "7 fragment of an atom dropped\n"
              "6 freeze code of an atom dropped, here and in 1 more line\n");
}

TEST(read_input, counts_the_jobs_that_have_a_line) {
    const auto jobs_of = [](const std::string& text) {
        std::vector<gaussian::notice> notices;
        return gaussian::read_input(text, "m", notices).jobs;
    };
    const std::string job = head + "O 0 0 0\n\n";
    EXPECT_EQ(jobs_of(job), 1);
    EXPECT_EQ(jobs_of("--Link1--\n\n" + job + "--Link1--\n! no job\n\n--Link1--\n"), 1);
    EXPECT_EQ(jobs_of(job + "--Link1--\n" + job + "--Link1--\n" + job), 3);
}

TEST(read_input, tells_of_every_parameter_that_it_dropped) {
    const struct {
        const char* label;
        const char* what;
    } rows[] = {
        {"H(Fragment=1)", "fragment"},        {"H(PDBName=H1)", "residue"},           {"H(ResName=HOH)", "residue"},
        {"H(ResNum=1_A)", "residue"},         {"H(Spin=1)", "nuclear moment"},        {"H(zeff=1)", "nuclear moment"},
        {"H(QMom=1)", "nuclear moment"},      {"H(NMagM=1)", "nuclear moment"},       {"H(GFac=1)", "nuclear moment"},
        {"H-HW", "molecular-mechanics type"}, {"H--0.4", "molecular-mechanics type"}, {"H1", "label"},
    };
    for (const auto& row : rows) {
        std::vector<gaussian::notice> notices;
        read(head + "O 0 0 0\n" + row.label + " 0 0 1\n", notices);
        ASSERT_EQ(notices.size(), 1U) << row.label;
        EXPECT_EQ(notices[0].line, 7);
        EXPECT_EQ(notices[0].text, std::string(row.what) + " of an atom dropped") << row.label;
    }
}

TEST(read_input, tells_of_values_that_are_frozen_or_scanned) {
    const auto told = [](const std::string& values) {
        std::vector<gaussian::notice> notices;
        read("# hf opt\n\nt\n\n0 1\nO\nH 1 r\nH 1 r 2 a\n" + values, notices);
        std::string text;
        for (const gaussian::notice& one : notices) {
            text += std::to_string(one.line) + " " + one.text + "\n";
        }
        return text;
    };
    const std::string fixed = " is frozen or scanned: make sure that the geometry is a stationary point\n";
    EXPECT_EQ(told("\nr 0.96 F\na=104.5\n"), "10 'r 0.96 F'" + fixed);
    EXPECT_EQ(told("\nr 0.96\na=104.5,s,5,0.1\n"), "11 'a=104.5,s,5,0.1'" + fixed);
    EXPECT_EQ(told("\nr 0.96 f\na=104.5 F\n"), "10 'r 0.96 f'" + fixed);
    EXPECT_EQ(told("\nr=0.96\n\na=104.5\n"), "12 'a=104.5'" + fixed);
    EXPECT_EQ(told("Variables:\nr=0.96\n\na=104.5\n"), "12 'a=104.5'" + fixed);
    EXPECT_EQ(told("Variables:\nr=0.96\nCONSTANTS\na=104.5\n"), "12 'a=104.5'" + fixed);
    EXPECT_EQ(told("constants:\na=104.5\nvariables:\nr=0.96\n"), "10 'a=104.5'" + fixed);
    EXPECT_EQ(told("\nConstants:\n! both\nr=0.96\na=104.5\n"), "12 'r=0.96'" + fixed);
    EXPECT_EQ(told("\nr=0.96\na=104.5 D=0.1\n"), "11 what stands after the value of a variable dropped\n");
    EXPECT_EQ(told("\nr=0.96\na=104.5\n"), "");
    EXPECT_EQ(told("Variables:\nr=0.96\n\nVariables:\na=104.5\n"), "");
}

TEST(read_input, joins_the_lines_of_a_route_by_a_blank) {
    std::vector<gaussian::notice> notices;
    const std::string text =
        "#p hf/3-21g  ! the method\n! nothing else\n%mem=1GB\n#\n# opt\n\ntitle\n\n0 1\nHe 0 0 0\n";
    const gaussian::input job = gaussian::read_input(text, "m", notices);
    EXPECT_EQ(job.route_text, "#p hf/3-21g opt");
    EXPECT_EQ(job.route_line, 1);
}

TEST(read_input, refuses_more_lines_than_can_be_numbered) {
    constexpr std::size_t size = std::size_t{1} << 31U;
    void* const bytes = mmap(nullptr, size, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    ASSERT_NE(bytes, MAP_FAILED);
    EXPECT_EQ(read(std::string_view(static_cast<const char*>(bytes), size)),
              "m: found 2147483648 bytes, expected an input of at most 2147483647|standard error|2");
    munmap(bytes, size);
}

TEST(read_input, names_places) {
    EXPECT_EQ(gaussian::place_of("m", 12), "m:12");
    EXPECT_EQ(gaussian::place_of("m", 1), "m:1");
    EXPECT_EQ(gaussian::place_of("m", 0), "m");
}

TEST(read_input, reads_a_large_molecule_in_linear_time) {
    std::string text = head;
    constexpr int atoms = 50000;
    for (int i = 0; i < atoms; ++i) {
        text.append("C").append(std::to_string(i)).append(" 0.0 0.0 ").append(std::to_string(i)).append(".5\n");
    }
    std::vector<gaussian::notice> notices;
    const gaussian::input job = gaussian::read_input(text, "m", notices);
    ASSERT_EQ(job.atoms.positions.cols(), atoms);
    EXPECT_EQ(job.atoms.positions(2, atoms - 1), atoms - 0.5);
    EXPECT_EQ(notices.size(), 1U);
}

}  // namespace
