#include "gaussian/checkpoint.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "gaussian/checkpoint_route.hpp"
#include "gaussian_twin.hpp"
#include "support.hpp"

using namespace displacement_generator;

namespace {

gaussian::checkpoint read(const std::string& text) {
    gaussian::source from("mol.fchk", text);
    return gaussian::read_checkpoint(from);
}

std::string refused(const std::string& text) {
    const std::string message = support::stopped_with([&] { read(text); });
    const std::size_t bar = message.find('|');
    EXPECT_EQ(message.substr(bar), "|standard error|2") << message;
    return message.substr(0, bar);
}

std::string replaced(std::string text, const std::string& what, const std::string& by) {
    const std::size_t at = text.find(what);
    EXPECT_NE(at, std::string::npos) << what;
    return text.replace(at, what.size(), by);
}

support::twin_checkpoint twin() {
    support::twin_checkpoint result;
    result.route = "#p b3lyp/6-31g(d) force nosymm scf=(xqc,tight) integral=(grid=ultrafine)";
    result.charge = -1;
    result.multiplicity = 2;
    result.numbers = {8, 1};
    result.point.positions = Eigen::Matrix3Xd(3, 2);
    result.point.positions << 0.1, -0.2, 0.3, 0.4, -0.5, 0.6;
    result.point.forces = Eigen::Matrix3Xd(3, 2);
    result.point.forces << 0.01, -0.01, 0.02, -0.02, -1.5, 1.5;
    result.point.energy = -76.40890123456789;
    result.point.dipole = Eigen::Vector3d(0.25, -0.5, 1e-12);
    result.force_constants = Eigen::MatrixXd(6, 6);
    for (int i = 0; i < 6; ++i) {
        for (int j = 0; j < 6; ++j) {
            result.force_constants(i, j) = (i + 1) * (j + 1) + 0.125 * (i + j);
        }
    }
    result.dipole_derivatives = Eigen::Matrix3Xd::Random(3, 6);
    result.weights = {15.9949146, 1.00782504};
    return result;
}

TEST(gaussian_checkpoint, all_that_it_holds) {
    const support::twin_checkpoint written = twin();
    const gaussian::checkpoint found = read(support::checkpoint_text(written));
    EXPECT_EQ(found.title, "twin");
    EXPECT_EQ(found.job, "Freq");
    EXPECT_EQ(found.method, "RB3LYP");
    EXPECT_EQ(found.basis, "6-31G(d)");
    EXPECT_EQ(found.route, written.route);
    EXPECT_EQ(found.charge, -1);
    EXPECT_EQ(found.multiplicity, 2);
    EXPECT_EQ(found.numbers, written.numbers);
    EXPECT_TRUE(found.ghosts.empty());
    EXPECT_EQ(found.energy, -76.40890123456789);
    EXPECT_EQ(found.gradient, -written.point.forces);
    EXPECT_EQ(*found.dipole, *written.point.dipole);
    EXPECT_EQ(found.weights, Eigen::Vector2d(15.9949146, 1.00782504));
    ASSERT_EQ(found.force_constants.size(), 21);
    EXPECT_EQ(found.force_constants(0), 1.0);     // row 1
    EXPECT_EQ(found.force_constants(1), 2.125);   // row 2, column 1
    EXPECT_EQ(found.force_constants(4), 6.375);   // row 3, column 2
    EXPECT_EQ(found.force_constants(20), 37.25);  // row 6, column 6
    ASSERT_EQ(found.dipole_derivatives.cols(), 6);
    EXPECT_LE((found.dipole_derivatives - written.dipole_derivatives).cwiseAbs().maxCoeff(), 5.1e-9);
    const gaussian::molecule molecule = gaussian::molecule_of(found);
    EXPECT_EQ(molecule.charge, -1);
    EXPECT_EQ(molecule.multiplicity, 2);
    EXPECT_LE((molecule.positions - written.point.positions).cwiseAbs().maxCoeff(), 3e-9);
}

TEST(gaussian_checkpoint, the_bohr_radius_in_the_field) {
    // 1 bohr, as written by hand.
    const std::string text = replaced(support::checkpoint_text(twin()), "  1.88972612E-01", "  1.00000000E+00");
    EXPECT_EQ(gaussian::molecule_of(read(text)).positions(0, 0), 0.52917721092);
}

TEST(gaussian_checkpoint, carriage_returns) {
    std::string text;
    for (const char c : support::checkpoint_text(twin())) {
        text += c == '\n' ? "\r\n" : std::string(1, c);
    }
    const gaussian::checkpoint found = read(text);
    EXPECT_EQ(found.route, twin().route);
    EXPECT_EQ(found.gradient, -twin().point.forces);
}

TEST(gaussian_checkpoint, vectors_of_a_periodic_system_are_counted) {
    const std::string text = support::checkpoint_text(twin());
    const std::string heading = "Translation vectors                        R   N=           ";
    EXPECT_EQ(read(text).vectors, 0);
    EXPECT_EQ(read(text + heading + "6\n 0.0 0.0 4.5 0.0 0.0 0.0\n").vectors, 1);
    EXPECT_EQ(read(text + heading + "9\n 0.0 0.0 4.5 0.0 3.0\n 0.0 1.0 0.0 0.0\n").vectors, 3);
    EXPECT_EQ(refused(text + "Translation vectors                        R      4.500000000000000E+00\n"),
              "mol.fchk:40: expected up to three vectors in the section 'Translation vectors', found other values");
    for (const char* size : {"4\n", "12\n"}) {
        EXPECT_TRUE(refused(text + heading + size)
                        .ends_with("expected up to three vectors in the section 'Translation vectors', found other "
                                   "values"));
    }
}

/// The heading of an array.
std::string heading(std::string name, char type, int size) {
    name.resize(40, ' ');
    const std::string digits = std::to_string(size);
    return name + "   " + type + "   N=" + std::string(12 - digits.size(), ' ') + digits + "\n";
}

TEST(gaussian_checkpoint, sections_that_nobody_wants_are_passed_over_whatever_their_lines_look_like) {
    const std::string like = "Charge                                     I               99\n";
    std::string reals;
    std::string integers;
    for (int i = 0; i < 5; ++i) {
        reals += "  1.00000000E+00";
        integers += "           1";
    }
    integers += "           1";
    for (const std::string& section :
         {heading("Energies", 'R', 6) + reals + "\n  1.00000000E+00\n",
          heading("Shells", 'I', 7) + integers + "\n           1\n", heading("Names", 'C', 5) + like,
          heading("Names", 'C', 6) + like + like, heading("Marks", 'H', 9) + like,
          heading("Marks", 'H', 10) + like + like, heading("Flags", 'L', 72) + like,
          heading("Flags", 'L', 73) + like + like,
          std::string("Name                                       C     text\n"),
          std::string("Route                                      C     # hf\n"), heading("Route", 'I', 1) + " 1\n",
          heading("Shells", 'I', 73) + " 1\n", heading("Energies", 'R', 73) + " 1.0\n", heading("Shells", 'I', 0)}) {
        const gaussian::checkpoint found = read(support::checkpoint_text(twin()) + section +
                                                "Multiplicity                               I                7\n");
        EXPECT_EQ(found.charge, -1) << section;
        EXPECT_EQ(found.multiplicity, 7) << section;
        EXPECT_EQ(found.route, twin().route) << section;
    }
}

TEST(gaussian_checkpoint, has_one_number_of_atoms) {
    const std::string text = support::checkpoint_text(twin());
    const std::string atoms = "Number of atoms                            I                ";
    EXPECT_EQ(read(text + atoms + "2\n").numbers.size(), 2U);
    EXPECT_EQ(refused(text + atoms + "3\n"), "mol.fchk:40: expected one number of atoms from 1 to 1000000, found 3");
    const std::string head = "title\nFreq\n" + atoms.substr(0, atoms.size() - 6);
    EXPECT_EQ(refused(head + "1000000\n"), "mol.fchk: expected a section 'Charge', found none");
    EXPECT_EQ(refused(head + "1000001\n"), "mol.fchk:3: expected one number of atoms from 1 to 1000000, found 1000001");
    EXPECT_EQ(refused("title\nFreq\n"), "mol.fchk: expected a section 'Number of atoms', found none");
}

TEST(gaussian_checkpoint, a_route_that_is_cut_or_too_long_is_refused) {
    const std::string head = "title\nFOpt      RHF\nRoute                                      C   N=";
    EXPECT_EQ(refused(head + "          10\n# hf\n"),
              "mol.fchk:4: expected 2 lines of the section 'Route', found fewer");
    std::string lines;
    for (int line = 0; line < 1093; ++line) {  // of 60 characters
        lines += "# hf\n";
    }
    EXPECT_EQ(refused(head + "        5465\n" + lines),
              "mol.fchk:1096: expected a route of at most 65536 characters, found more");
    std::string full = std::string(76, 'x') + "\n";  // 76 + 1091 * 60 is 65536
    for (int line = 0; line < 1091; ++line) {
        full += std::string(60, 'x') + "\n";
    }
    EXPECT_EQ(refused(head + "        5460\n" + full), "mol.fchk: expected a section 'Number of atoms', found none");
    EXPECT_EQ(refused(head + "        5460\nx" + full),
              "mol.fchk:1095: expected a route of at most 65536 characters, found more");
}

std::string route_of(const std::string& method, const std::string& basis) {
    gaussian::checkpoint from;
    from.method = method;
    from.basis = basis;
    std::vector<gaussian::notice> notices;
    std::string route;
    const std::string error = support::stopped_with([&] { route = gaussian::checkpoint_route(from, "m", notices); });
    return error == "no error" ? route : error.substr(0, error.find(';'));
}

TEST(gaussian_checkpoint, a_route_of_method_and_basis) {
    const struct {
        const char* method;
        const char* basis;
        const char* route;
    } rows[] = {
        {"RB3LYP", "6-31G(d)", "#p RB3LYP/6-31G(d)"},
        {"UB-LYP", "6-31G(d')", "#p UBLYP/6-31G(d')"},
        {"RPBE-PBE", "Def2SVP", "#p RPBEPBE/Def2SVP"},
        {"RCAM-B3LYP", "6-311++G(2d,2p)", "#p RCAM-B3LYP/6-311++G(2d,2p)"},
        {"RLC-BLYP", "Aug-CC-pVTZ", "#p RLC-BLYP/Aug-CC-pVTZ"},
        {"RLC-PBE", "SDD", "#p RLC-PBE/SDD"},
        {"RBP86", "TZVP/TZVPFit", "#p RBP86/TZVP/TZVPFit"},
        {"RMP2-FC", "CC-pVDZ", "#p RMP2(fc)/CC-pVDZ"},
        {"UCCSD(T)-FU", "6-31G*", "#p UCCSD(T,full)/6-31G*"},
        {"RCCSD(T)-FC", "6-31G*", "#p RCCSD(T,fc)/6-31G*"},
        {"RCISD-FC", "6-31G", "#p RCISD(fc)/6-31G"},
        {"RMP4(SDQ)", "3-21G", "#p RMP4(SDQ)/3-21G"},
        {"RPM6", "ZDO", "#p RPM6"},
        {"UFF", "MM", "#p UFF"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(route_of(row.method, row.basis), row.route);
    }
    gaussian::checkpoint from;
    from.method = "RHF";
    from.basis = "3-21G";
    std::vector<gaussian::notice> notices;
    gaussian::checkpoint_route(from, "m", notices);
    ASSERT_EQ(notices.size(), 1U);
    EXPECT_EQ(notices[0].line, 2);
    const struct {
        const char* method;
        const char* basis;
    } refused_rows[] = {
        {"RB3LYP", "Gen"},       {"RB3LYP", "GenECP"},   {"RB3LYP", ""},       {"", "6-31G"},
        {"RB3LYP", "ChkBas"},    {"Mixed", "Mixed"},     {"RCIS-FC", "3-21G"}, {"RTD-B3LYP-FC", "3-21G"},
        {"RB3LYP TD-FC", "SDD"}, {"RCASSCF", "3-21G"},   {"CASSCF", "3-21G"},  {"ONIOM(HF:UFF)", "3-21G"},
        {"RB+HF-LYP", "3-21G"},  {"UEOM-CCSD", "3-21G"}, {"ZINDO", "ZDO"},     {"RB3LYP", "-31G"},
        {"RB3LYP", "*"},         {"-HF", "3-21G"},       {"ONIOM", "3-21G"},   {"RGVB", "3-21G"},
        {"UTD-B3LYP", "3-21G"},  {"ROSAC-CI", "3-21G"},  {"Mixed", "3-21G"},   {"RMP4(SDQ)-FC", "3-21G"}};
    for (const auto& row : refused_rows) {
        EXPECT_EQ(route_of(row.method, row.basis),
                  std::string("m:2: expected a method and a basis that a route can hold, found '") + row.method +
                      "' and '" + row.basis + "'");
    }
}

TEST(gaussian_checkpoint, a_route_that_needs_another_checkpoint) {
    for (const char* text : {"#N Geom=AllCheck GenChk RB3LYP/3-21G Freq", "#p restart", "# opt=restart"}) {
        EXPECT_TRUE(gaussian::is_incomplete(text, "m")) << text;
    }
    for (const char* text : {"# opt=restart hf/3-21g", "# hf geom=allcheck freq"}) {
        EXPECT_FALSE(gaussian::is_incomplete(text, "m")) << text;
    }
}

TEST(gaussian_checkpoint, what_it_does_not_hold_has_no_value) {
    support::twin_checkpoint bare;
    bare.numbers = {1};
    bare.point.positions = Eigen::Matrix3Xd::Zero(3, 1);
    bare.other_sections = false;
    const gaussian::checkpoint found = read(support::checkpoint_text(bare));
    EXPECT_FALSE(found.energy);
    EXPECT_FALSE(found.dipole);
    EXPECT_EQ(found.gradient.cols(), 0);
    EXPECT_EQ(found.force_constants.size(), 0);
    EXPECT_EQ(found.dipole_derivatives.cols(), 0);
    EXPECT_EQ(found.weights.size(), 0);
    EXPECT_EQ(found.route, "");
}

TEST(gaussian_checkpoint, an_atom_without_nuclear_charge_is_a_ghost) {
    const std::string text = replaced(support::checkpoint_text(twin()), "  8.00000000E+00  1.00000000E+00",
                                      "  8.00000000E+00  0.00000000E+00");
    EXPECT_EQ(read(text).ghosts, std::vector<int>{2});
}

TEST(gaussian_checkpoint, what_is_written_is_read_back_to_all_digits) {
    gaussian::checkpoint written = read(support::checkpoint_text(twin()));
    written.dipole_derivatives(0, 0) = 1.2345678e-105;
    written.dipole_derivatives(1, 0) = -9.8765432e+299;
    const std::string text = gaussian::checkpoint_text(written);
    const gaussian::checkpoint found = read(text);
    EXPECT_EQ(found.title, written.title);
    EXPECT_EQ(found.job, written.job);
    EXPECT_EQ(found.method, written.method);
    EXPECT_EQ(found.basis, written.basis);
    EXPECT_EQ(found.route, written.route);
    EXPECT_EQ(found.charge, written.charge);
    EXPECT_EQ(found.multiplicity, written.multiplicity);
    EXPECT_EQ(found.numbers, written.numbers);
    EXPECT_EQ(found.coordinates, written.coordinates);
    EXPECT_EQ(found.weights, written.weights);
    EXPECT_EQ(found.energy, written.energy);
    EXPECT_EQ(found.gradient, written.gradient);
    EXPECT_EQ(*found.dipole, *written.dipole);
    EXPECT_EQ(found.force_constants, written.force_constants);
    EXPECT_EQ(found.dipole_derivatives, written.dipole_derivatives);
    EXPECT_NE(text.find("  1.23456780-105 -9.87654320+299"), std::string::npos);
}

TEST(gaussian_checkpoint, the_columns_of_what_is_written) {
    gaussian::checkpoint what;
    what.title = "title\nwith a line end~\x7f";
    what.job = "Freq";
    what.method = "RHF";
    what.basis = "STO-3G";
    what.numbers = {1, 1};
    what.coordinates = Eigen::Matrix3Xd::Constant(3, 2, -0.5);
    what.energy = -1.5;
    what.dipole = Eigen::Vector3d(1.0, 0.0, -2.0);
    EXPECT_EQ(gaussian::checkpoint_text(what),
              "title with a line end~" + std::string(50, ' ') + "\n" +
                  "Freq      RHF                           STO-3G                        \n"
                  "Number of atoms                            I                2\n"
                  "Charge                                     I                0\n"
                  "Multiplicity                               I                1\n"
                  "Atomic numbers                             I   N=           2\n"
                  "           1           1\n"
                  "Current cartesian coordinates              R   N=           6\n"
                  " -5.00000000E-01 -5.00000000E-01 -5.00000000E-01 -5.00000000E-01 -5.00000000E-01\n"
                  " -5.00000000E-01\n"
                  "Total Energy                               R     -1.500000000000000E+00\n"
                  "Dipole Moment                              R   N=           3\n"
                  "  1.00000000E+00  0.00000000E+00 -2.00000000E+00\n");
    what.route = std::string(72, 'x');  // six texts of twelve characters, five a line
    EXPECT_NE(gaussian::checkpoint_text(what).find("Route                                      C   N=           6\n" +
                                                   std::string(60, 'x') + "\n" + std::string(12, 'x') + "\n"),
              std::string::npos);
    what.route = std::string(49, 'x');
    EXPECT_NE(gaussian::checkpoint_text(what).find("Route                                      C   N=           5\n" +
                                                   what.route + std::string(11, ' ') + "\n"),
              std::string::npos);
}

TEST(gaussian_checkpoint, what_cannot_be_written) {
    gaussian::checkpoint what;
    EXPECT_EQ(
        support::stopped_with([&] { gaussian::checkpoint_text(what); }),
        "checkpoint_text: expected atoms and their coordinates, found 0 numbers and 0 positions|standard error|2");
    what.numbers = {1};
    EXPECT_EQ(
        support::stopped_with([&] { gaussian::checkpoint_text(what); }),
        "checkpoint_text: expected atoms and their coordinates, found 1 numbers and 0 positions|standard error|2");
    what.coordinates = Eigen::Matrix3Xd::Constant(3, 1, std::nan(""));
    EXPECT_EQ(support::stopped_with([&] { gaussian::checkpoint_text(what); }),
              "checkpoint_text: expected a finite number, found one that is not|standard error|2");
    what.coordinates.setZero();
    what.gradient = Eigen::Matrix3Xd::Zero(3, 2);
    EXPECT_EQ(support::stopped_with([&] { gaussian::checkpoint_text(what); }),
              "checkpoint_text: expected 3 values of 'Cartesian Gradient', found 6|standard error|2");
}

TEST(gaussian_checkpoint, refusals) {
    support::twin_checkpoint plain = twin();
    plain.other_sections = false;
    plain.route.clear();
    const std::string text = support::checkpoint_text(plain);
    const struct {
        const char* what;
        const char* by;
        const char* message;
    } rows[] = {
        {"Number of atoms                            I                2",
         "Number of atoms                            I                0",
         "mol.fchk:3: expected one number of atoms from 1 to 1000000, found 0"},
        {"Number of atoms                            I                2",
         "Number of atoms                            I                x",
         "mol.fchk:3: expected an integer in the section 'Number of atoms', found 'x'"},
        {"Number of atoms                            I                2",
         "Number of atoms                            R                2",
         "mol.fchk:3: expected an integer in the section 'Number of atoms', found '2'"},
        {"Number of atoms                            I                2", "",
         "mol.fchk:6: expected the section 'Number of atoms' before 'Atomic numbers', found none"},
        {"Charge  ", "Change  ", "mol.fchk: expected a section 'Charge', found none"},
        {"Multiplicity  ", "Manyplicity   ", "mol.fchk: expected a section 'Multiplicity', found none"},
        {"Atomic numbers  ", "Atomic nombers  ", "mol.fchk: expected a section 'Atomic numbers', found none"},
        {"Current cartesian", "Another cartesian",
         "mol.fchk: expected a section 'Current cartesian coordinates', found none"},
        {"Charge                                     I               -1",
         "Charge                                     I   N=           1",
         "mol.fchk:4: expected an integer in the section 'Charge', found ''"},
        {"Charge                                     I               -1",
         "Charge                                     X               -1",
         "mol.fchk:4: expected the heading of a section, found 'Charge                                     X           "
         " "
         "   -... (1 more characters)'"},
        {"Charge                                     I               -1",
         "Charge                                     I.              -1",
         "mol.fchk:4: expected the heading of a section, found 'Charge                                     I.          "
         " "
         "   -... (1 more characters)'"},
        {"Charge                                     I               -1",
         "Charge                                   . I               -1",
         "mol.fchk:4: expected the heading of a section, found 'Charge                                   . I           "
         " "
         "   -... (1 more characters)'"},
        {"Atomic numbers                             I   N=           2",
         "Atomic numbers                             I                2",
         "mol.fchk:6: expected the section 'Atomic numbers' with 2 values of type I, found one value of type I"},
        {"Atomic numbers                             I   N=           2",
         "Atomic numbers                             R   N=           2",
         "mol.fchk:6: expected the section 'Atomic numbers' with 2 values of type I, found 2 of type R"},
        {"           8           1", "           0           1",
         "mol.fchk: expected atomic numbers from 1 to 118, found 0 for atom 1"},
        {"Total Energy                               R     -7.640890123456789E+01",
         "Total Energy                               R   N=           1",
         "mol.fchk:13: expected a number in the section 'Total Energy', found ''"},
        {"Total Energy                               R  ", "Total Energy                               I  ",
         "mol.fchk:13: expected a number in the section 'Total Energy', found '-7.640890123456789E+01'"},
        {"-7.640890123456789E+01", "**********************",
         "mol.fchk:13: expected a number in the section 'Total Energy', found '**********************'"},
        {"Atomic numbers                             I   N=           2",
         "Atomic numbers                             I   N=           3",
         "mol.fchk:6: expected the section 'Atomic numbers' with 2 values of type I, found 3 of type I"},
        {"Atomic numbers                             I   N=           2",
         "Atomic numbers                             I   N=          -2",
         "mol.fchk:6: expected the size of the section 'Atomic numbers', found '-2'"},
        {"           8           1", "           8",
         "mol.fchk:8: expected 2 values in the section 'Atomic numbers', found fewer"},
        {"           8           1", "           8         1.5",
         "mol.fchk:7: expected an integer in the section 'Atomic numbers', found '1.5'"},
        {"           8           1", "           8         119",
         "mol.fchk: expected atomic numbers from 1 to 118, found 119 for atom 2"},
        {"Current cartesian coordinates              R   N=           6",
         "Current cartesian coordinates              R   N=  2000000000",
         "mol.fchk:8: expected the section 'Current cartesian coordinates' with 6 values of type R, found 2000000000 "
         "of "
         "type R"},
        {"  1.88972612E-01", " ***************",
         "mol.fchk:9: expected a number in the section 'Current cartesian coordinates', found '***************'"},
        {"Cartesian Force Constants                  R   N=          21",
         "Cartesian Force Constants                  R   N=          20",
         "mol.fchk:17: expected the section 'Cartesian Force Constants' with 21 values of type R, found 20 of type R"},
        {"Total Energy                               R  ", "Total Energy                               R   N=",
         "mol.fchk:13: expected the size of the section 'Total Energy', found '-7.640890123456789E+01'"},
        {"Charge                                     I ", "Charge and something else of no such layout\n",
         "mol.fchk:4: expected the heading of a section, found 'Charge and something else of no such layout'"},
        {"Charge                                     I              ", "Charge                                     I.",
         "mol.fchk:4: expected the heading of a section, found 'Charge                                     I. -1'"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(refused(replaced(text, row.what, row.by)), row.message) << row.what;
    }
    EXPECT_EQ(refused(""), "mol.fchk: expected the title of a formatted checkpoint, found no text");
    EXPECT_EQ(refused("title\n"),
              "mol.fchk:1: expected job type, method and basis in a second line, found no more text");
}

TEST(gaussian_checkpoint, cut_anywhere_it_never_has_other_numbers) {
    support::twin_checkpoint written = twin();
    const std::string text = support::checkpoint_text(written);
    const gaussian::checkpoint whole = read(text);
    int complete = 0;
    for (std::size_t length = 0; length < text.size(); ++length) {
        try {
            const gaussian::checkpoint found = read(text.substr(0, length));
            ++complete;
            ASSERT_EQ(found.numbers, whole.numbers) << length;
            ASSERT_TRUE(found.gradient.cols() == 0 || text[length] != '\n' || found.gradient == whole.gradient)
                << length;
        } catch (const base::run_error&) {
        }
    }
    EXPECT_GT(complete, 10);
}

}  // namespace
