#include <gtest/gtest.h>

#include <Eigen/Eigenvalues>
#include <Eigen/Geometry>
#include <cmath>
#include <iomanip>
#include <map>
#include <sstream>

#include "gaussian/checkpoint.hpp"
#include "model.hpp"

using namespace displacement_generator;
using namespace displacement_generator::assembler_tests;

namespace {

const std::map<int, double> isotopes = {{1, 1.00782503},  {6, 12.0},         {8, 15.99491462},
                                        {9, 18.99840316}, {17, 34.96885268}, {35, 78.91833760}};

std::vector<double> isotope_masses(const std::vector<int>& numbers) {
    std::vector<double> masses;
    for (const int number : numbers) {
        masses.push_back(isotopes.at(number));
    }
    return masses;
}

/// "3A1 2B2": how many modes of each species.
std::string counted(const std::vector<table_row>& rows) {
    std::map<std::string, int> count;
    for (const table_row& row : rows) {
        ++count[row.species];
    }
    std::string text;
    for (const auto& [species, modes] : count) {
        text += (text.empty() ? "" : " ") + std::to_string(modes) + species;
    }
    return text;
}

void expect_textbook(const std::vector<table_row>& rows, const textbook& expected) {
    ASSERT_EQ(rows.size(), static_cast<std::size_t>(expected.frequencies.size()));
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const auto k = static_cast<Eigen::Index>(i);
        EXPECT_EQ(rows[i].number, static_cast<int>(i) + 1);
        EXPECT_NEAR(rows[i].frequency, expected.frequencies(k), 0.01);
        EXPECT_NEAR(rows[i].reduced_mass, expected.reduced_masses(k), 0.001);
        EXPECT_NEAR(rows[i].force_constant, expected.force_constants(k), 0.001);
        EXPECT_NEAR(std::stod(rows[i].intensity), expected.intensities(k), 0.01 + 5e-5 * expected.intensities(k));
    }
}

struct group_case {
    const char* example;
    const char* species;  ///< by the characters of its group
};

constexpr double bohr_in_angstrom = 0.529177210903;

/// A value that stands in the line of its name in a formatted checkpoint: name in 40 columns, type in column 44.
double value_of(const std::string& checkpoint, const std::string& name, char type) {
    std::string heading = name;
    heading.resize(43, ' ');
    heading += type;
    const std::size_t at = checkpoint.find("\n" + heading + "     ");
    return at == std::string::npos ? std::nan("") : std::stod(checkpoint.substr(at + 50, 30));
}

/// Holds a section of a formatted checkpoint, read without the library, against its values.
void expect_section(const std::string& checkpoint, const std::string& name, char type, const Eigen::VectorXd& expected,
                    double tolerance) {
    SCOPED_TRACE(name);
    std::string heading = name;
    heading.resize(43, ' ');
    heading += std::string(1, type) + "   N=";
    const std::size_t at = checkpoint.find("\n" + heading);
    ASSERT_NE(at, std::string::npos);
    std::istringstream values(checkpoint.substr(at + 1 + heading.size()));
    Eigen::Index size = 0;
    values >> size;
    ASSERT_EQ(size, expected.size());
    for (Eigen::Index i = 0; i < size; ++i) {
        double value = 0.0;
        ASSERT_TRUE(values >> value) << i;
        EXPECT_NEAR(value, expected(i), tolerance) << i;
    }
    std::string next;
    EXPECT_FALSE(values >> next && next.find_first_not_of("0123456789.E+-") == std::string::npos) << next;
}

std::string next_line(std::istream& lines) {
    std::string line;
    std::getline(lines, line);
    return line;
}

std::vector<std::string> next_words(std::istream& lines) {
    std::istringstream words(next_line(lines));
    std::vector<std::string> found;
    for (std::string word; words >> word;) {
        found.push_back(word);
    }
    return found;
}

Eigen::Vector3d vector_of(const std::vector<std::string>& words, std::size_t first) {
    return {std::stod(words.at(first)), std::stod(words.at(first + 1)), std::stod(words.at(first + 2))};
}

model model_here() { return make_model(read_geometry_file("PES-0/" + names().front() + ".com")); }

}  // namespace

TEST(frequencies, every_group_gives_those_of_the_textbook_from_logs) {
    for (const group_case& one : {group_case{"bromochlorofluoromethane", "9A"},
                                  {"hypochlorous-acid", "3A'"},
                                  {"hydrogen-peroxide", "4A 2B"},
                                  {"1-2-dichloro-1-2-difluoroethane", "9Ag 9Au"},
                                  {"formaldehyde", "3A1 1B1 2B2"},
                                  {"trans-1-2-dichloroethylene", "5Ag 2Au 1Bg 4Bu"},
                                  {"twistane", "19A 18B1 18B2 17B3"},
                                  {"ethylene", "3Ag 1Au 2B1g 1B1u 1B2g 2B2u 2B3u"}}) {
        SCOPED_TRACE(one.example);
        const support::scratch_folder folder;
        generate(one.example);
        const model molecule = model_here();
        write_logs(molecule);
        const support::outcome done = assemble();
        EXPECT_EQ(done.status, 0);
        EXPECT_EQ(done.standard_error, "");
        const std::vector<table_row> rows = rows_of(done.standard_output);
        expect_textbook(rows, vibrations_of(molecule, isotope_masses(molecule.reference.numbers)));
        EXPECT_EQ(counted(rows), one.species);
    }
}

TEST(frequencies, the_table_as_a_whole) {
    const support::scratch_folder folder;
    generate("water");
    const model molecule = model_here();
    write_logs(molecule);
    std::istringstream lines(assemble().standard_output);
    EXPECT_EQ(next_line(lines), "# point group C2v, species of C2v");
    EXPECT_EQ(next_line(lines), "# 9 of 18 displacements computed, dx = 0.005000");
    EXPECT_EQ(next_line(lines), "# route of the results: #p b3lyp/6-31g(d) force nosymm");
    std::ostringstream energy;
    energy << std::fixed << std::setprecision(9) << *molecule.at(molecule.reference).energy;
    EXPECT_EQ(next_line(lines), "# energy " + energy.str() + " hartree");
    const textbook expected = vibrations_of(molecule, isotope_masses({8, 1, 1}));
    const std::vector<std::string> zero_point = next_words(lines);
    ASSERT_EQ(zero_point.size(), 5U);
    EXPECT_EQ(zero_point[1] + " " + zero_point[2] + " " + zero_point[4], "zero-point energy hartree");
    EXPECT_NEAR(std::stod(zero_point[3]), expected.frequencies.sum() / 2.0 / 219474.6313, 1e-7);
    EXPECT_EQ(zero_point[3].size(), 11U);
    EXPECT_EQ(next_line(lines), "# largest force at the reference 0.000000000 hartree/bohr");
    const std::vector<std::string> asymmetry = next_words(lines);
    ASSERT_EQ(asymmetry.size(), 8U);
    EXPECT_EQ(asymmetry[1] + " " + asymmetry[2] + " " + asymmetry[5], "largest asymmetry Hessian");
    EXPECT_LT(std::stod(asymmetry[6]), 1e-6);  // forces have nine decimals
    EXPECT_EQ(asymmetry[7], "hartree/bohr^2");
    EXPECT_EQ(next_line(lines), "# nonlinear molecule, masses: most abundant isotopes");
    EXPECT_EQ(next_line(lines), "# atom symbol        mass (amu)");
    EXPECT_EQ(next_line(lines), "#    1      O       15.99491462");
    EXPECT_EQ(next_line(lines), "#    2      H        1.00782503");
    EXPECT_EQ(next_line(lines), "#    3      H        1.00782503");
    EXPECT_EQ(next_line(lines), "# no species frequency   red.mass   frc.const   intensity");
    EXPECT_EQ(next_line(lines), "#               (cm-1)      (amu)   (mdyne/A)    (km/mol)");
    for (int row = 1; row <= 3; ++row) {
        const std::string line = next_line(lines);
        EXPECT_EQ(line.size(), 57U);
        for (const std::size_t point : {17U, 28U, 40U, 52U}) {  // four decimals up to the end of each field
            EXPECT_EQ(line.at(point), '.') << line;
        }
        EXPECT_EQ(line.substr(0, 7), "    " + std::to_string(row) + " " + line.at(6)) << line;
    }
    EXPECT_EQ(lines.peek(), std::char_traits<char>::eof());
}

TEST(frequencies, settings_of_the_generator_change_nothing) {
    for (const char* settings : {"dx = 0.005, std_orient = F", "dx = 0.005, disp_sign = 1", "dx = 0.005, symm = F",
                                 "dx = 0.01", "dx = 0.0123456"}) {
        SCOPED_TRACE(settings);
        const support::scratch_folder folder;
        generate("formaldehyde", settings);
        const model molecule = model_here();
        write_logs(molecule);
        const support::outcome done = assemble({"PES-0"});
        EXPECT_EQ(done.status, 0) << done.standard_error;
        expect_textbook(rows_of(done.standard_output),
                        vibrations_of(molecule, isotope_masses(molecule.reference.numbers)));
    }
}

TEST(frequencies, logs_in_the_standard_orientation_give_the_same) {
    const support::scratch_folder folder;
    generate("water");
    const model molecule = model_here();
    for (const std::string& name : names()) {
        support::twin_job job = job_of(molecule, name);
        job.standard = {Eigen::AngleAxisd(1.1, Eigen::Vector3d(1, 2, 3).normalized()).toRotationMatrix(),
                        Eigen::Vector3d(0.1, -0.2, 0.3)};
        job.route = "#p b3lyp/6-31g(d) force";
        write_log(name, job);
    }
    const support::outcome done = assemble();
    EXPECT_EQ(done.status, 0);
    EXPECT_EQ(done.standard_error,
              "PES-0/files.out: notice: the route of the results is '#p b3lyp/6-31g(d) force', that of the .com files "
              "'#p b3lyp/6-31g(d) force nosymm'\n");
    expect_textbook(rows_of(done.standard_output), vibrations_of(molecule, isotope_masses(molecule.reference.numbers)));
}

TEST(frequencies, checkpoints_and_plain_forces_give_the_same) {
    const support::scratch_folder folder;
    generate("formaldehyde");
    const model molecule = model_here();
    int n = 0;
    for (const std::string& name : names()) {
        const support::twin_point point = molecule.at(read_geometry_file("PES-0/" + name + ".com"));
        if (++n % 2 == 0) {
            support::twin_checkpoint checkpoint;
            checkpoint.numbers = molecule.reference.numbers;
            checkpoint.point = point;
            support::write_file("PES-0/" + name + ".fchk", support::checkpoint_text(checkpoint));
            continue;
        }
        std::ostringstream text;
        text.precision(12);
        text << "# by hand\nenergy " << *point.energy << "\ndipole " << point.dipole->transpose() << "\n"
             << point.forces.transpose() << "\n";
        support::write_file("PES-0/" + name + ".forces", text.str());
    }
    const support::outcome done = assemble();
    EXPECT_EQ(done.standard_error, "");
    EXPECT_EQ(done.status, 0);
    expect_textbook(rows_of(done.standard_output), vibrations_of(molecule, isotope_masses(molecule.reference.numbers)));
}

TEST(frequencies, the_table_names_the_route_of_the_results) {
    const support::scratch_folder folder;
    generate("water");
    const model molecule = model_here();
    const auto write_checkpoint = [&](const std::string& name, const char* route) {
        support::twin_checkpoint checkpoint;
        checkpoint.route = route;
        checkpoint.numbers = molecule.reference.numbers;
        checkpoint.point = molecule.at(read_geometry_file("PES-0/" + name + ".com"));
        std::filesystem::remove("PES-0/" + name + ".log");
        support::write_file("PES-0/" + name + ".fchk", support::checkpoint_text(checkpoint));
    };
    const auto named = [] {
        const std::string table = assemble().standard_output;
        const std::size_t begin = table.find("dx = 0.005000\n") + 14;
        return table.substr(begin, table.find("# energy") - begin);
    };
    write_logs(molecule);
    EXPECT_EQ(named(), "# route of the results: #p b3lyp/6-31g(d) force nosymm\n");
    write_checkpoint("coord-1-dx", "#p  B3LYP/6-31g(d) force nosymm");
    EXPECT_EQ(named(), "# route of the results: #p b3lyp/6-31g(d) force nosymm\n");
    std::filesystem::remove("PES-0/coord-1-dx.fchk");
    support::write_file("PES-0/coord-1-dx.forces", "0 0 0\n0 0 0\n0 0 0\n");
    EXPECT_EQ(named(), "# route of 9 of 10 results: #p b3lyp/6-31g(d) force nosymm\n");
    for (const std::string& name : names()) {
        write_checkpoint(name, "");
    }
    EXPECT_EQ(named(), "# method of the results: rb3lyp/6-31g(d)\n");
    for (const std::string& name : names()) {
        std::filesystem::remove("PES-0/" + name + ".fchk");
        std::ostringstream text;
        text << molecule.at(read_geometry_file("PES-0/" + name + ".com")).forces.transpose() << "\n";
        support::write_file("PES-0/" + name + ".forces", text.str());
    }
    EXPECT_EQ(named(), "");
}

TEST(frequencies, a_log_counts_before_a_checkpoint_and_that_before_plain_forces) {
    const support::scratch_folder folder;
    generate("water");
    const model molecule = model_here();
    write_logs(molecule);
    support::write_file("PES-0/coord-1-dx.out", "nothing\n");
    support::write_file("PES-0/coord-1-dx.fchk", "nothing\n");
    support::write_file("PES-0/coord-1-dx.forces", "nothing\n");
    EXPECT_EQ(assemble().status, 0);
    std::filesystem::remove("PES-0/coord-1-dx.log");
    EXPECT_EQ(assemble().status, 1);
}

TEST(frequencies, masses_can_be_given) {
    const support::scratch_folder folder;
    generate("water");
    const model molecule = model_here();
    write_logs(molecule);
    const support::outcome heavy = assemble({"--mass", "2=2.014", "--mass=3=2.014", "."});
    expect_textbook(rows_of(heavy.standard_output), vibrations_of(molecule, {15.99491462, 2.014, 2.014}));
    EXPECT_EQ(counted(rows_of(heavy.standard_output)), "2A1 1B2");
    const support::outcome average = assemble({"--masses", "average"});
    expect_textbook(rows_of(average.standard_output), vibrations_of(molecule, {15.999, 1.008, 1.008}));
}

TEST(frequencies, a_mass_that_lowers_the_symmetry_leaves_the_species_that_apply) {
    const support::scratch_folder folder;
    generate("water");
    const model molecule = model_here();
    write_logs(molecule);
    const support::outcome done = assemble({"--mass", "2=2.014"});
    EXPECT_EQ(done.status, 0);
    expect_textbook(rows_of(done.standard_output), vibrations_of(molecule, {15.99491462, 2.014, 1.00782503}));
    EXPECT_EQ(counted(rows_of(done.standard_output)), "3A'");
    EXPECT_EQ(done.standard_error,
              "PES-0/files.out: notice: species are assigned without C2z: the masses differ\n"
              "PES-0/files.out: notice: species are assigned without Szx: the masses differ\n");
}

TEST(frequencies, without_dipole_moments_there_are_no_intensities) {
    const support::scratch_folder folder;
    generate("water");
    const model molecule = model_here();
    write_logs(molecule);
    support::twin_job job = job_of(molecule, "coord-2+dy");
    job.points[0].dipole.reset();
    write_log("coord-2+dy", job);
    const support::outcome done = assemble();
    EXPECT_EQ(done.status, 0);
    EXPECT_EQ(done.standard_error,
              "PES-0/files.out: notice: no intensities: PES-0/coord-2+dy.log has no dipole moment\n");
    for (const table_row& row : rows_of(done.standard_output)) {
        EXPECT_EQ(row.intensity, "-");
    }
}

TEST(frequencies, a_large_force_at_the_reference_is_told) {
    const support::scratch_folder folder;
    generate("water");
    const model molecule = model_here();
    write_logs(molecule);
    support::twin_job job = job_of(molecule, "coord-0-00");
    job.points[0].forces(2, 0) = -0.00046;
    write_log("coord-0-00", job);
    const support::outcome done = assemble({"--hessian", "h"});
    EXPECT_EQ(done.status, 0);
    EXPECT_NE(done.standard_output.find("# largest force at the reference 0.000460000 hartree/bohr: too large, not a "
                                        "stationary point\n"),
              std::string::npos);
    EXPECT_EQ(done.standard_error,
              "PES-0/files.out: notice: the largest force at the reference is more than 0.00045 hartree/bohr: this is "
              "not a stationary point, and harmonic frequencies mean little there\n");
    gaussian::source from("h");
    EXPECT_EQ(gaussian::read_checkpoint(from).gradient(2, 0), 0.00046);
    job.points[0].forces(2, 0) = -0.00045;
    write_log("coord-0-00", job);
    EXPECT_EQ(assemble().standard_error, "");
    EXPECT_NE(assemble().standard_output.find("reference 0.000450000 hartree/bohr\n"), std::string::npos);
}

TEST(frequencies, of_two_atoms_by_hand) {
    const support::scratch_folder folder;
    generate_from("#p hf/3-21g force nosymm\n\nhydrogen fluoride\n\n0 1\nF 0 0 0\nH 0 0 0.92\n\n",
                  "dx = 0.001, symm = F");
    constexpr double stiffness = 0.6;  // hartree/bohr^2
    for (const std::string& name : names()) {
        const Eigen::Matrix3Xd at = read_geometry_file("PES-0/" + name + ".com").positions;
        const Eigen::Vector3d bond = at.col(1) - at.col(0);
        const Eigen::Vector3d pull = stiffness * (bond.norm() - 0.92) / bohr_in_angstrom * bond.normalized();
        std::ostringstream text;
        text.precision(12);
        text << pull.transpose() << "\n" << -pull.transpose() << "\n";
        support::write_file("PES-0/" + name + ".forces", text.str());
    }
    const support::outcome done = assemble();
    EXPECT_NE(done.standard_output.find("# linear molecule, masses: most abundant isotopes\n"), std::string::npos);
    const std::vector<table_row> rows = rows_of(done.standard_output);
    ASSERT_EQ(rows.size(), 1U);
    const double reduced = 18.99840316 * 1.00782503 / (18.99840316 + 1.00782503);
    EXPECT_NEAR(rows[0].frequency, 5140.487153 * std::sqrt(stiffness / reduced), 0.01);
}

TEST(frequencies, forces_of_no_potential_are_told_of) {
    const support::scratch_folder folder;
    generate("water");
    const model molecule = make_model(read_geometry_file("PES-0/coord-0-00.com"));
    write_logs(molecule);
    EXPECT_EQ(assemble({}).standard_error, "");
    support::twin_job job = job_of(molecule, "coord-2+dy");
    job.points[0].forces(2, 0) += 0.0001;  // over two steps of 0.005 angstrom an asymmetry of 0.0053
    write_log("coord-2+dy", job);
    const support::outcome done = assemble({});
    EXPECT_EQ(done.status, 0);
    EXPECT_TRUE(
        done.standard_error.starts_with("PES-0/files.out: notice: the Hessian has an asymmetry of 0.0053 "
                                        "hartree/bohr^2 between z of atom 1 and y of atom "))
        << done.standard_error;
    EXPECT_TRUE(
        done.standard_error.ends_with(": forces of these points, or of those from which they follow, do not belong to "
                                      "one potential, or the step is too "
                                      "large, or too small for the noise of the forces\n"));
    // A tenth of what is refused: 0.00115.
    for (const double noise : {0.000021, 0.0000225}) {
        job = job_of(molecule, "coord-2+dy");
        job.points[0].forces(2, 0) += noise;
        write_log("coord-2+dy", job);
        EXPECT_EQ(assemble({}).standard_error.empty(), noise < 0.000022);
    }
    // 0.0106 + 0.0009 hartree/bohr^2 are allowed.
    for (const double noise : {0.00021, 0.000222}) {
        job = job_of(molecule, "coord-2+dy");
        job.points[0].forces(2, 0) += noise;
        write_log("coord-2+dy", job);
        const support::outcome larger = assemble({"--hessian", "h"});
        EXPECT_EQ(larger.status, noise < 0.00022 ? 0 : 1) << larger.standard_error;
        EXPECT_EQ(std::filesystem::exists("h"), noise < 0.00022);
        std::filesystem::remove("h");
        if (larger.status == 1) {
            EXPECT_EQ(larger.standard_output, "");
            EXPECT_TRUE(larger.standard_error.starts_with(
                "displacement_assembler: error: PES-0/files.out: expected the forces of one potential, found a Hessian "
                "with an asymmetry of 0.01"))
                << larger.standard_error;
            EXPECT_TRUE(larger.standard_error.ends_with(
                "; results of these points, or of those from which they follow, are of another geometry, frame or "
                "unit, or no exact gradients\n"));
        }
    }
}

TEST(frequencies, forces_of_no_potential_are_refused_for_negative_steps_too) {
    const support::scratch_folder folder;
    generate("water", "dx = -0.005");
    const model molecule = make_model(read_geometry_file("PES-0/coord-0-00.com"));
    write_logs(molecule);
    EXPECT_EQ(assemble({}).standard_error, "");
    support::twin_job job = job_of(molecule, "coord-2+dy");
    job.points[0].forces(2, 0) += 0.001;
    write_log("coord-2+dy", job);
    const support::outcome done = assemble({});
    EXPECT_EQ(done.status, 1);
    EXPECT_TRUE(done.standard_error.starts_with(
        "displacement_assembler: error: PES-0/files.out: expected the forces of one potential, found a Hessian with an "
        "asymmetry of 0.05"))
        << done.standard_error;
}

TEST(frequencies, the_dipole_moment_of_the_reference_is_not_needed) {
    const support::scratch_folder folder;
    generate("water");
    const model molecule = model_here();
    write_logs(molecule);
    support::twin_job job = job_of(molecule, "coord-0-00");
    job.points[0].dipole.reset();
    write_log("coord-0-00", job);
    const support::outcome done = assemble();
    EXPECT_EQ(done.standard_error, "");
    expect_textbook(rows_of(done.standard_output), vibrations_of(molecule, isotope_masses(molecule.reference.numbers)));
}

TEST(frequencies, imaginary_modes_are_counted_and_left_out_of_the_zero_point_energy) {
    const support::scratch_folder folder;
    generate("water");
    model molecule = model_here();
    for (const char* end : {"without 1 imaginary mode\n", "without 3 imaginary modes\n"}) {
        const Eigen::SelfAdjointEigenSolver<Eigen::MatrixXd> solved(molecule.hessian);
        const Eigen::Index size = molecule.hessian.rows();
        for (Eigen::Index k = size - 3; k < size - (std::string(end).find('1') != std::string::npos ? 2 : 0); ++k) {
            const Eigen::VectorXd mode = solved.eigenvectors().col(k);
            molecule.hessian -= 2.0 * std::max(solved.eigenvalues()(k), 0.0) * mode * mode.transpose();
        }
        write_logs(molecule);
        const support::outcome done = assemble();
        EXPECT_NE(done.standard_output.find(end), std::string::npos) << done.standard_output;
        const std::vector<table_row> rows = rows_of(done.standard_output);
        ASSERT_EQ(rows.size(), 3U);
        double sum = 0.0;
        for (const table_row& row : rows) {
            sum += std::max(row.frequency, 0.0) / 2.0 / 219474.6313;
        }
        const std::size_t at = done.standard_output.find("energy ", done.standard_output.find("zero-point"));
        EXPECT_NEAR(std::stod(done.standard_output.substr(at + 7)), sum, 2e-9);
    }
}

TEST(frequencies, lengths_are_taken_in_the_unit_of_the_route) {
    struct unit_case {
        const char* words;
        double in_angstrom;
    };
    for (const unit_case& unit : {unit_case{"units=au", bohr_in_angstrom},
                                  {"Unit(Rad,Bohr)", bohr_in_angstrom},
                                  {"units=(ang,deg)", 1.0},
                                  {"au", 1.0}}) {
        SCOPED_TRACE(unit.words);
        const double bohr = unit.in_angstrom;
        const support::scratch_folder folder;
        generate("water");
        geometry_file water = read_geometry_file("PES-0/coord-0-00.com");
        std::ostringstream text;
        text << std::fixed << "#p hf/3-21g force nosymm " << unit.words << "\n\nwater\n\n0 1\n";
        text.precision(8);
        // As Gaussian takes them: atomic numbers, and names after a symbol.
        const char* const symbols[] = {"8", "H1", "h"};
        for (Eigen::Index i = 0; i < 3; ++i) {
            text << symbols[i] << ' ' << water.positions.col(i).transpose() / bohr << '\n';
        }
        support::write_file("mol.gjf", text.str());
        std::filesystem::remove_all("PES-0");
        ASSERT_EQ(support::run_program(support::displacement_generator(), {"control"}).status, 0);
        water = read_geometry_file("PES-0/coord-0-00.com");
        water.positions *= bohr;
        const model molecule = make_model(water);
        for (const std::string& name : names()) {
            geometry_file moved = read_geometry_file("PES-0/" + name + ".com");
            moved.positions *= bohr;
            support::twin_job job = job_of(molecule, name);
            job.points[0] = molecule.at(moved);
            write_log(name, job);
        }
        const support::outcome done = assemble({"--hessian", "h"});
        EXPECT_EQ(done.standard_error, "");
        expect_textbook(rows_of(done.standard_output), vibrations_of(molecule, isotope_masses(water.numbers)));
        gaussian::source from("h");
        EXPECT_LT(
            (gaussian::read_checkpoint(from).coordinates * bohr_in_angstrom - water.positions).cwiseAbs().maxCoeff(),
            1e-7);
    }
}

TEST(frequencies, the_folder_may_be_named_or_hold_the_one_that_is_meant) {
    struct folder_case {
        const char* given;
        const char* shown;
    };
    const support::scratch_folder folder;
    generate("water");
    const model molecule = model_here();
    write_logs(molecule);
    const std::string expected = assemble().standard_output;
    for (const folder_case& one :
         {folder_case{".", "PES-0/"}, {"./", "./PES-0/"}, {"PES-0", "PES-0/"}, {"PES-0/", "PES-0/"}}) {
        SCOPED_TRACE(one.given);
        write_logs(molecule);
        EXPECT_EQ(assemble({one.given}).standard_output, expected);
        std::filesystem::remove("PES-0/coord-1-dx.log");
        EXPECT_EQ(assemble({one.given}).standard_error,
                  one.shown +
                      std::string("coord-1-dx: expected a .log, .out, .fchk or .forces, found none\n"
                                  "displacement_assembler: error: ") +
                      one.shown + "files.out: 9 of 10 are there\n");
    }
}

TEST(frequencies, one_atom_has_no_modes) {
    const support::scratch_folder folder;
    compute_neon();
    const support::outcome done = assemble({"--molden", "m", "--hessian", "h"});
    EXPECT_EQ(done.status, 0) << done.standard_error;
    EXPECT_EQ(rows_of(done.standard_output).size(), 0U);
    EXPECT_NE(done.standard_output.find("# one-atom molecule, masses: most abundant isotopes\n"), std::string::npos);
    EXPECT_EQ(support::read_file("h").find("Route"), std::string::npos);  // nobody knows what computed these forces
}

TEST(frequencies, the_hessian_names_the_route_of_the_results) {
    const support::scratch_folder folder;
    generate("water");
    const model molecule = model_here();
    for (const std::string& name : names()) {
        support::twin_job job = job_of(molecule, name);
        job.route = "#p mp2/cc-pvdz force nosymm";
        write_log(name, job);
    }
    ASSERT_EQ(assemble({"--hessian", "h"}).status, 0);
    gaussian::source from("h");
    EXPECT_EQ(gaussian::read_checkpoint(from).route, "#p mp2/cc-pvdz force nosymm");
}

TEST(frequencies, the_hessian_is_written_as_other_programs_read_it) {
    const support::scratch_folder folder;
    generate("formaldehyde");
    // The same molecule as a cation, with forces and a dipole moment at the reference that tell all directions apart.
    std::string input = support::read_file("mol.gjf");
    input.replace(input.find("\n0 1\n"), 5, "\n1 2\n");
    support::write_file("mol.gjf", input);
    ASSERT_EQ(support::run_program(support::displacement_generator(), {"control"}).status, 0);
    const model molecule = model_here();
    Eigen::Matrix3Xd forces(3, 4);
    forces << 1, -2, 3, -4, 5, 6, -7, 8, 9, 10, 11, -12;
    forces *= 1e-6;
    const Eigen::Vector3d dipole(0.25, -0.5, 0.75);
    for (const std::string& name : names()) {
        support::twin_job job = job_of(molecule, name);
        job.charge = 1;
        job.multiplicity = 2;
        if (name == "coord-0-00") {
            job.points[0].forces = forces;
            job.points[0].dipole = dipole;
        }
        write_log(name, job);
    }
    const support::outcome done = assemble({"--hessian", "h.fchk", "--mass", "4=2.014"});
    ASSERT_EQ(done.status, 0) << done.standard_error;
    const std::string text = support::read_file("h.fchk");

    EXPECT_EQ(value_of(text, "Number of atoms", 'I'), 4);
    EXPECT_EQ(value_of(text, "Charge", 'I'), 1);
    EXPECT_EQ(value_of(text, "Multiplicity", 'I'), 2);
    EXPECT_NEAR(value_of(text, "Total Energy", 'R'), -76.0, 1e-9);
    expect_section(text, "Atomic numbers", 'I', Eigen::Vector4d(6, 8, 1, 1), 0.0);
    expect_section(text, "Current cartesian coordinates", 'R',
                   molecule.reference.positions.reshaped() / bohr_in_angstrom, 1e-8);
    expect_section(text, "Real atomic weights", 'R', Eigen::Vector4d(12.0, 15.99491462, 1.00782503, 2.014), 1e-7);
    expect_section(text, "Cartesian Gradient", 'R', -forces.reshaped(), 1e-12);
    expect_section(text, "Dipole Moment", 'R', dipole, 1e-5);  // a log has it in debye, to four decimals
    // Of each coordinate the three components.
    expect_section(text, "Dipole Derivatives", 'R', molecule.dipoles.reshaped(), 1e-6);
    Eigen::VectorXd triangle(12 * 13 / 2);
    Eigen::Index at = 0;
    for (Eigen::Index row = 0; row < 12; ++row) {
        for (Eigen::Index column = 0; column <= row; ++column) {
            triangle(at++) = molecule.hessian(row, column);
        }
    }
    expect_section(text, "Cartesian Force Constants", 'R', triangle, 1e-6);

    gaussian::source from("h.fchk");
    const gaussian::checkpoint read = gaussian::read_checkpoint(from);
    EXPECT_EQ(read.numbers, molecule.reference.numbers);
    EXPECT_LT((read.force_constants - triangle).cwiseAbs().maxCoeff(), 1e-6);
    EXPECT_LT((read.dipole_derivatives - molecule.dipoles).cwiseAbs().maxCoeff(), 1e-6);
}

TEST(frequencies, viewers_get_geometry_and_modes) {
    const support::scratch_folder folder;
    generate("formaldehyde");
    const model molecule = model_here();
    write_logs(molecule);
    ASSERT_EQ(assemble({"--molden", "m.molden"}).status, 0);
    const textbook expected = vibrations_of(molecule, isotope_masses(molecule.reference.numbers));
    std::istringstream lines(support::read_file("m.molden"));
    EXPECT_EQ(next_line(lines), "[Molden Format]");
    EXPECT_EQ(next_line(lines), "[Atoms] AU");
    const char* const symbols[] = {"C", "O", "H", "H"};
    const Eigen::Matrix3Xd positions = molecule.reference.positions / bohr_in_angstrom;
    for (Eigen::Index i = 0; i < 4; ++i) {
        const std::vector<std::string> words = next_words(lines);
        ASSERT_EQ(words.size(), 6U);
        EXPECT_EQ(words[0], symbols[i]);
        EXPECT_EQ(words[1], std::to_string(i + 1));
        EXPECT_EQ(words[2], std::to_string(molecule.reference.numbers[static_cast<std::size_t>(i)]));
        EXPECT_LT((vector_of(words, 3) - positions.col(i)).cwiseAbs().maxCoeff(), 1e-8);
    }
    EXPECT_EQ(next_line(lines), "[FREQ]");
    for (const double frequency : expected.frequencies) {
        EXPECT_NEAR(std::stod(next_line(lines)), frequency, 0.01);
    }
    EXPECT_EQ(next_line(lines), "[INT]");
    for (const double intensity : expected.intensities) {
        EXPECT_NEAR(std::stod(next_line(lines)), intensity, 0.01 + 5e-5 * intensity);
    }
    EXPECT_EQ(next_line(lines), "[FR-COORD]");
    for (Eigen::Index i = 0; i < 4; ++i) {
        const std::vector<std::string> words = next_words(lines);
        ASSERT_EQ(words.size(), 4U);
        EXPECT_EQ(words[0], symbols[i]);
        EXPECT_LT((vector_of(words, 1) - positions.col(i)).cwiseAbs().maxCoeff(), 1e-8);
    }
    EXPECT_EQ(next_line(lines), "[FR-NORM-COORD]");
    for (Eigen::Index mode = 0; mode < 6; ++mode) {
        EXPECT_EQ(next_line(lines), "vibration " + std::to_string(mode + 1));
        Eigen::VectorXd found(12);
        for (Eigen::Index i = 0; i < 4; ++i) {
            const std::vector<std::string> words = next_words(lines);
            ASSERT_EQ(words.size(), 3U);
            found.segment<3>(3 * i) = vector_of(words, 0);
        }
        EXPECT_NEAR(found.norm(), 1.0, 1e-8);
        const double sign = found.dot(expected.displacements.col(mode)) < 0.0 ? -1.0 : 1.0;
        EXPECT_LT((sign * found - expected.displacements.col(mode)).cwiseAbs().maxCoeff(), 1e-5) << mode + 1;
    }
    EXPECT_EQ(lines.peek(), std::istringstream::traits_type::eof());

    support::twin_job job = job_of(molecule, "coord-1-dx");
    job.points[0].dipole.reset();
    write_log("coord-1-dx", job);
    ASSERT_EQ(assemble({"--molden", "m.molden"}).status, 0);
    EXPECT_EQ(support::read_file("m.molden").find("[INT]"), std::string::npos);
}
