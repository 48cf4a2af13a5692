#include "gaussian/log.hpp"

#include <gtest/gtest.h>

#include <Eigen/Geometry>
#include <algorithm>
#include <string>
#include <vector>

#include "gaussian/archive.hpp"
#include "gaussian/line_ends.hpp"
#include "gaussian_twin.hpp"
#include "support.hpp"

using namespace displacement_generator;

namespace {

using support::log_text;
using support::twin_job;
using support::twin_log;
using support::twin_point;

struct outcome {
    gaussian::log_contents log;
    std::vector<gaussian::notice> notices;
};

outcome read(const std::string& text) {
    outcome result;
    gaussian::source from("job.log", text);
    result.log = gaussian::read_log(from, result.notices);
    for (const gaussian::notice& told : result.notices) {
        support::log_message("notice: " + told.text);
    }
    return result;
}

outcome read(const twin_job& job) { return read(log_text({.jobs = {job}})); }

const std::vector<int> water = {8, 1, 1};

/// Off the axes and without symmetry, so that no wrong turn gives the same numbers; ten decimals.
Eigen::Matrix3Xd water_positions(double bend = 0.0) {
    Eigen::Matrix3Xd positions(3, 3);
    positions << 0.1234567891, 0.9034567892, -0.2734567893,  //
        -0.3456789121, -0.4056789122, 0.5343210877 + bend,   //
        0.0567891234, 0.1667891235, -0.0432108764;
    return positions;
}

Eigen::Matrix3Xd water_forces() {
    Eigen::Matrix3Xd forces(3, 3);
    forces << 0.012345678, -0.002345678, -0.010000000,  //
        -0.023456789, 0.003456789, 0.020000000,         //
        0.001234567, 0.000765433, -0.002000000;
    return forces;
}

twin_job water_job() {
    twin_job job = support::one_point(water, water_positions(), water_forces());
    job.points[0].energy = -76.4089012345;
    job.points[0].dipole = Eigen::Vector3d(-0.25, 0.5, -0.125);
    return job;
}

/// A turn that mixes all axes, and a shift.
twin_job::turn some_turn() {
    return {Eigen::AngleAxisd(1.1, Eigen::Vector3d(1.0, -2.0, 0.5).normalized()).toRotationMatrix(), {0.3, -0.7, 1.9}};
}

double difference(const Eigen::Matrix3Xd& a, const Eigen::Matrix3Xd& b) {
    return a.cols() == b.cols() ? (a - b).cwiseAbs().maxCoeff() : 1e300;
}

std::string replaced(std::string text, const std::string& what, const std::string& by) {
    const std::size_t at = text.rfind(what);
    EXPECT_NE(at, std::string::npos) << what;
    return text.replace(at, what.size(), by);
}

int line_of(const std::string& text, const std::string& what) {
    const auto at = static_cast<std::ptrdiff_t>(text.rfind(what));
    return static_cast<int>(std::count(text.begin(), text.begin() + at, '\n')) + 1;
}

TEST(gaussian_log, one_job_in_the_frame_of_the_input) {
    const outcome found = read(water_job());
    EXPECT_EQ(found.log.jobs, 1);
    EXPECT_EQ(found.log.ended_normally, 1);
    EXPECT_TRUE(found.notices.empty());
    const gaussian::log_job& job = found.log.job;
    EXPECT_EQ(job.number, 1);
    EXPECT_EQ(job.route, "#p b3lyp/6-31g(d) force nosymm");
    EXPECT_EQ(job.line, 6);
    EXPECT_TRUE(job.has_charge);
    EXPECT_EQ(job.molecule.charge, 0);
    EXPECT_EQ(job.molecule.multiplicity, 1);
    EXPECT_EQ(job.geometries, 1);
    EXPECT_EQ(job.molecule.numbers, water);
    EXPECT_EQ(job.in, gaussian::frame::input);
    EXPECT_EQ(job.decimals, 10);
    EXPECT_EQ(difference(job.molecule.positions, water_positions()), 0.0);
    EXPECT_EQ(job.energy, -76.4089012345);
    EXPECT_EQ(job.forces_problem, "");
    EXPECT_TRUE(job.forces_of_last);
    EXPECT_EQ(difference(job.forces, water_forces()), 0.0);
    EXPECT_EQ(difference(job.force_positions, water_positions()), 0.0);
    EXPECT_EQ(*job.dipole, Eigen::Vector3d(-0.25, 0.5, -0.125));
    EXPECT_TRUE(job.ended_normally);
}

TEST(line_ends, are_found_wherever_they_stand) {
    unsigned random = 1;
    for (std::size_t size = 0; size < 400; ++size) {
        for (const unsigned rarity : {1U, 2U, 7U, 90U}) {
            std::string text(size, ' ');
            std::string expected;
            for (std::size_t i = 0; i < size; ++i) {
                random = random * 1103515245U + 12345U;
                text[i] = (random >> 16U) % rarity == 0 ? '\n' : static_cast<char>('\v' ^ ((random >> 16U) % 2U));
                expected += text[i] == '\n' ? std::to_string(i) + " " : "";
            }
            std::string found;
            const char* first = text.data() + std::min<std::size_t>(size, random % 16U);
            for (const char* before = text.data(); before != first; ++before) {
                found += *before == '\n' ? std::to_string(before - text.data()) + " " : "";
            }
            gaussian::line_ends feeds(first, text.data() + size);
            while (const char* feed = feeds.next()) {
                found += std::to_string(feed - text.data()) + " ";
            }
            ASSERT_EQ(found, expected) << size << " " << rarity;
            EXPECT_EQ(feeds.next(), nullptr);
        }
    }
}

TEST(gaussian_log, six_decimals_without_an_archive_entry) {
    twin_job twin = water_job();
    twin.archive = false;
    const gaussian::log_job job = read(twin).log.job;
    EXPECT_EQ(job.decimals, 6);
    EXPECT_EQ(job.molecule.positions(0, 0), 0.123457);
    EXPECT_LE(difference(job.molecule.positions, water_positions()), 5.1e-7);
}

TEST(gaussian_log, an_archive_entry_of_another_geometry_is_not_taken) {
    twin_job twin = water_job();
    const std::string text = replaced(log_text({.jobs = {twin}}), "0.1234567891", "0.1234587891");
    EXPECT_EQ(read(text).log.job.decimals, 6);
    EXPECT_EQ(read(text).log.job.molecule.positions(0, 0), 0.123457);
}

TEST(gaussian_log, tells_of_an_archive_entry_of_another_geometry) {
    const std::string begin =
        "the geometry of this table is taken, the last one; that of the archive entry is another one, with an atom up "
        "to ";
    const std::string end =
        " angstrom away if they are laid on each other: make sure that the one taken is the one that you want";
    twin_job twin = support::one_point({2, 2}, Eigen::Matrix3Xd::Zero(3, 2), Eigen::Matrix3Xd::Zero(3, 2));
    twin.points[0].positions(2, 1) = 3.0123456789;
    const std::string text = log_text({.jobs = {twin}});
    EXPECT_TRUE(read(text).notices.empty());
    // Laid on each other with their middles, each of the two atoms is off by half of the difference.
    const outcome found = read(replaced(text, "3.0123456789", "3.0163456789"));
    ASSERT_EQ(found.notices.size(), 1U);
    EXPECT_EQ(found.notices[0].line, line_of(text, "Center     Atomic      Atomic"));
    EXPECT_EQ(found.notices[0].text, begin + "0.002000" + end);
    EXPECT_EQ(found.log.job.molecule.positions(2, 1), 3.012346);
    EXPECT_TRUE(read(replaced(text, "3.0123456789", "3.0123556789")).notices.empty());  // no more than rounding may do

    twin.route = "#p hf/3-21g";
    twin.standard = some_turn();
    twin.input_tables = false;
    const std::string standard = log_text({.jobs = {twin}});
    EXPECT_TRUE(read(standard).notices.empty());
    const outcome turned = read(replaced(standard, "3.0123456789", "3.0163456789"));
    ASSERT_EQ(turned.notices.size(), 2U);
    EXPECT_EQ(turned.notices[0].text, begin + "0.002000" + end);
    EXPECT_EQ(turned.notices[0].line, line_of(standard, "Center     Atomic      Atomic"));
}

TEST(gaussian_log, carriage_returns_and_bars) {
    twin_log twin{.jobs = {water_job()}, .carriage_returns = true, .bars = true};
    const gaussian::log_job job = read(log_text(twin)).log.job;
    EXPECT_EQ(job.decimals, 10);
    EXPECT_EQ(job.route, "#p b3lyp/6-31g(d) force nosymm");
    EXPECT_EQ(difference(job.molecule.positions, water_positions()), 0.0);
    EXPECT_EQ(difference(job.forces, water_forces()), 0.0);
    EXPECT_EQ(*job.dipole, Eigen::Vector3d(-0.25, 0.5, -0.125));
}

TEST(gaussian_log, the_dipole_is_turned_from_the_standard_orientation_into_the_frame_of_the_forces) {
    for (const int charge : {0, -2}) {
        twin_job twin = water_job();
        twin.route = "#p b3lyp/6-31g(d) force";
        twin.charge = charge;
        twin.standard = some_turn();
        const outcome found = read(twin);
        EXPECT_TRUE(found.notices.empty());
        const gaussian::log_job& job = found.log.job;
        EXPECT_EQ(job.in, gaussian::frame::input);
        EXPECT_EQ(difference(job.molecule.positions, water_positions()), 0.0);
        EXPECT_EQ(difference(job.force_positions, water_positions()), 0.0);
        ASSERT_TRUE(job.dipole);
        EXPECT_LE((*job.dipole - Eigen::Vector3d(-0.25, 0.5, -0.125)).cwiseAbs().maxCoeff(), charge == 0 ? 2e-6 : 1e-5);
    }
}

TEST(gaussian_log, a_dipole_in_a_mirrored_frame_is_passed_over) {
    twin_job twin =
        support::one_point({6, 1, 9, 17, 7}, Eigen::Matrix3Xd::Random(3, 5), Eigen::Matrix3Xd::Random(3, 5));
    twin.points[0].dipole = Eigen::Vector3d(1.0, 2.0, 3.0);
    twin.points[0].energy = -1.0;
    twin.standard = some_turn();
    EXPECT_TRUE(read(twin).log.job.dipole);
    twin.standard->rotation.col(0) *= -1.0;
    const outcome found = read(twin);
    EXPECT_FALSE(found.log.job.dipole);
    ASSERT_EQ(found.notices.size(), 1U);
    EXPECT_EQ(found.notices[0].text, "the dipole moment is not in the frame of the forces; it is passed over");
}

TEST(gaussian_log, with_a_standard_orientation_alone_the_archive_entry_has_the_frame_of_the_input) {
    twin_job twin = water_job();
    twin.route = "#p b3lyp/6-31g(d) force";
    twin.standard = some_turn();
    twin.input_tables = false;
    const gaussian::log_job job = read(twin).log.job;
    EXPECT_EQ(job.in, gaussian::frame::input);
    EXPECT_EQ(job.decimals, 10);
    EXPECT_EQ(difference(job.molecule.positions, water_positions()), 0.0);
    EXPECT_EQ(difference(job.force_positions, water_positions()), 0.0);
    EXPECT_LE((*job.dipole - Eigen::Vector3d(-0.25, 0.5, -0.125)).cwiseAbs().maxCoeff(), 2e-6);
}

TEST(gaussian_log, with_a_standard_orientation_alone_and_no_archive_entry_the_forces_are_refused) {
    twin_job twin = water_job();
    twin.route = "#p b3lyp/6-31g(d) force";
    twin.standard = some_turn();
    twin.input_tables = false;
    twin.archive = false;
    const std::string text = log_text({.jobs = {twin}});
    const outcome found = read(text);
    EXPECT_EQ(found.log.job.in, gaussian::frame::standard);
    EXPECT_EQ(found.log.job.forces.cols(), 0);
    EXPECT_FALSE(found.log.job.dipole);
    EXPECT_EQ(found.log.job.forces_problem,
              "job.log:" + std::to_string(line_of(text, "Forces (Hartrees/Bohr)")) +
                  ": expected the geometry of these forces in their frame, found none (give nosymm)");
    ASSERT_EQ(found.notices.size(), 1U);
    EXPECT_EQ(found.notices[0].text, "the last geometry stands in the log in the standard orientation only");
    const Eigen::Matrix3Xd turned = (twin.standard->rotation * water_positions()).colwise() + twin.standard->shift;
    EXPECT_LE(difference(found.log.job.molecule.positions, turned), 5.1e-7);
}

TEST(gaussian_log, forces_without_the_line_of_asterisks_are_in_no_known_frame_where_the_two_differ) {
    twin_job twin = water_job();
    twin.standard = some_turn();
    const std::string text = replaced(log_text({.jobs = {twin}}), " ***** Axes restored to original set *****\n", "");
    EXPECT_EQ(read(text).log.job.forces.cols(), 0);
    EXPECT_NE(read(text).log.job.forces_problem.find("in their frame, found none"), std::string::npos);
    twin.standard = {Eigen::Matrix3d::Identity(), Eigen::Vector3d::Zero()};
    const std::string same = replaced(log_text({.jobs = {twin}}), " ***** Axes restored to original set *****\n", "");
    EXPECT_EQ(difference(read(same).log.job.forces, water_forces()), 0.0);
}

TEST(gaussian_log, the_last_geometry_of_an_optimisation_and_the_forces_printed_for_it) {
    twin_job twin = water_job();
    twin.route = "#p b3lyp/6-31g(d) opt";
    twin.standard = some_turn();
    twin.points.insert(twin.points.begin(), 3, twin.points[0]);
    for (std::size_t i = 0; i < 3; ++i) {
        twin.points[i].positions = water_positions(0.1 * static_cast<double>(3 - i));
        twin.points[i].energy = -70.0 - static_cast<double>(i);
        twin.points[i].forces *= 10.0;
    }
    outcome found = read(twin);
    EXPECT_EQ(found.log.job.geometries, 4);
    EXPECT_EQ(difference(found.log.job.molecule.positions, water_positions()), 0.0);
    EXPECT_EQ(difference(found.log.job.forces, water_forces()), 0.0);
    EXPECT_EQ(found.log.job.energy, -76.4089012345);
    EXPECT_TRUE(found.log.job.forces_of_last);

    // At the end the optimised geometry is printed once more: the same place.
    twin_point again = twin.points.back();
    again.forces.resize(3, 0);
    again.energy.reset();
    again.dipole.reset();
    twin.points.push_back(again);
    twin.archive = false;
    found = read(twin);
    EXPECT_EQ(found.log.job.geometries, 4);
    EXPECT_TRUE(found.log.job.forces_of_last);
    EXPECT_EQ(difference(found.log.job.forces, water_forces()), 0.0);
    EXPECT_EQ(found.log.job.energy, -76.4089012345);

    // Where another geometry follows, the forces are not those of the last one.
    twin.points.back().positions = water_positions(0.5);
    found = read(twin);
    EXPECT_EQ(found.log.job.geometries, 5);
    EXPECT_FALSE(found.log.job.forces_of_last);
    EXPECT_LE(difference(found.log.job.molecule.positions, water_positions(0.5)), 5.1e-7);
    EXPECT_LE(difference(found.log.job.force_positions, water_positions()), 5.1e-7);
    EXPECT_EQ(difference(found.log.job.forces, water_forces()), 0.0);
    EXPECT_LE((*found.log.job.dipole - Eigen::Vector3d(-0.25, 0.5, -0.125)).cwiseAbs().maxCoeff(), 3e-6);
}

TEST(gaussian_log, forces_whose_geometry_has_other_atoms_are_refused) {
    twin_job twin = water_job();
    twin.archive = false;
    twin.points.push_back(twin.points[0]);
    twin.points[1].positions = water_positions(0.5);
    twin.points[1].forces.resize(3, 0);
    const std::string whole = log_text({.jobs = {twin}});
    const std::size_t row = whole.find("      1          8           0");
    const std::string text = std::string(whole).erase(row, whole.find('\n', row) + 1 - row);
    const gaussian::log_job job = read(text).log.job;
    EXPECT_EQ(job.molecule.numbers, water);
    EXPECT_EQ(job.forces.cols(), 0);
    EXPECT_EQ(job.force_positions.cols(), 0);
    EXPECT_EQ(job.forces_problem, "job.log:" + std::to_string(line_of(text.substr(0, row), "Coordinates (Angstroms)")) +
                                      ": expected the 3 atoms of the last geometry, found 2 or other atoms");
}

TEST(gaussian_log, of_several_jobs_the_last_one_with_a_geometry) {
    twin_job first = water_job();
    first.route = "#p b3lyp/6-31g(d) opt freq";
    twin_job second = water_job();
    second.points[0].positions = water_positions(0.25);
    second.route = "#N Geom=AllCheck Guess=TCheck SCRF=Check GenChk RB3LYP/6-31G(d) Freq";
    second.charge = -1;
    second.multiplicity = 2;
    outcome found = read(log_text({.jobs = {first, second}}));
    EXPECT_EQ(found.log.jobs, 2);
    EXPECT_EQ(found.log.ended_normally, 2);
    EXPECT_EQ(found.log.first_route, "#p b3lyp/6-31g(d) opt freq");
    EXPECT_EQ(found.log.job.number, 2);
    EXPECT_EQ(found.log.job.route, second.route);
    EXPECT_EQ(found.log.job.user_route, first.route);
    EXPECT_EQ(found.log.job.molecule.charge, -1);
    EXPECT_EQ(found.log.job.molecule.multiplicity, 2);
    EXPECT_EQ(difference(found.log.job.molecule.positions, water_positions(0.25)), 0.0);

    // A job that ends before its first geometry counts, and gives none.
    const std::string text = log_text({.jobs = {first, second}});
    const std::string cut = text.substr(0, text.find("Link1:  Proceeding to internal job step number  2.") + 52);
    found = read(cut);
    EXPECT_EQ(found.log.jobs, 2);
    EXPECT_EQ(found.log.ended_normally, 1);
    EXPECT_EQ(found.log.job.number, 1);
    EXPECT_EQ(difference(found.log.job.molecule.positions, water_positions()), 0.0);
}

TEST(gaussian_log, two_logs_in_one_file_the_first_broken_off_in_a_table) {
    const std::string whole = log_text({.jobs = {water_job()}});
    const std::string broken = whole.substr(0, whole.find("     2          1 "));
    const outcome found = read(broken + whole);
    EXPECT_EQ(found.log.jobs, 2);
    EXPECT_EQ(found.log.ended_normally, 1);
    EXPECT_EQ(found.log.job.number, 2);
    EXPECT_EQ(difference(found.log.job.molecule.positions, water_positions()), 0.0);
    ASSERT_EQ(found.notices.size(), 1U);
    EXPECT_EQ(found.notices[0].text, "a job begins or ends here, in the middle of what went before");
    const std::string failed = replaced(whole, " Normal termination of", " Error termination via");
    EXPECT_EQ(read(failed).log.jobs, 1);
    EXPECT_EQ(read(failed).log.ended_normally, 0);
}

TEST(gaussian_log, a_route_is_joined_from_its_pieces) {
    twin_job twin = water_job();
    twin.route =
        "#p b3lyp/gen 6d 10f scf=(xqc,tight,maxcycle=200) integral=(grid=ultrafine) nosymm force "
        "scrf=(smd,solvent=water) empiricaldispersion=gd3bj pop=full iop(1/8=1)";
    EXPECT_EQ(read(twin).log.job.route, twin.route);
    // With a blank at the end of the first piece, which is lost.
    twin.route = std::string("#p ") + std::string(66, 'a') + " " + "nosymm";
    EXPECT_EQ(read(twin).log.job.route, twin.route);
    const std::string trimmed =
        replaced(log_text({.jobs = {twin}}), std::string(66, 'a') + " \n", std::string(66, 'a') + "\n");
    EXPECT_EQ(read(trimmed).log.job.route, twin.route);
}

TEST(gaussian_log, a_title_with_a_sharp_is_no_route) {
    twin_job twin = water_job();
    twin.title = "# opt freq of water";
    EXPECT_EQ(read(twin).log.job.route, twin_job().route);
    EXPECT_EQ(read(twin).log.jobs, 1);
}

TEST(gaussian_log, a_terse_log_has_its_geometry_in_the_archive_entry_alone) {
    twin_job twin = water_job();
    twin.input_tables = false;
    gaussian::log_job job = read(twin).log.job;
    EXPECT_EQ(job.geometries, 1);
    EXPECT_EQ(job.geometry_line, 0);
    EXPECT_EQ(job.decimals, 10);
    EXPECT_EQ(difference(job.molecule.positions, water_positions()), 0.0);
    EXPECT_EQ(difference(job.forces, water_forces()), 0.0);
    twin.archive = false;
    job = read(twin).log.job;
    EXPECT_EQ(job.number, 0);
    EXPECT_EQ(read(twin).log.jobs, 1);
}

/// A terse log whose archive entry has this molecule, broken at column 70.
std::string terse(const std::string& molecule) {
    std::string entry = "1\\1\\GINC-X\\FOpt\\RHF\\STO-3G\\H2O1\\U\\01-Jan-2020\\0\\\\#t hf opt\\\\t\\\\" + molecule +
                        "\\\\Version=x\\HF=-75.5\\PG=C02V [C2(O1)]\\\\@";
    std::string text = " Entering Gaussian System, Link 0=g16\n ---------\n #t hf opt\n ---------\n";
    for (std::size_t at = 0; at < entry.size(); at += 70) {
        text += " " + entry.substr(at, 70) + "\n";
    }
    return text + " Normal termination of Gaussian 16 at x.\n";
}

TEST(gaussian_log, a_terse_log_with_a_z_matrix) {
    Eigen::Matrix3Xd bent(3, 3);  // a right angle
    bent << 0, 0, 0.97, 0, 0, 0, 0, 0.97, 0;
    for (const char* molecule : {"0,1\\O\\H,1,r\\H,1,r,2,a\\\\r=0.97\\a=90.", "0,1\\O\\H,1,0.97\\H,1,0.97,2,90.",
                                 "0,1\\O\\H,1,r\\H,1,r,2,a\\\\r=0.97\\\\a=90."}) {
        const gaussian::log_job job = read(terse(molecule)).log.job;
        EXPECT_TRUE(job.has_charge) << molecule;
        EXPECT_EQ(job.molecule.numbers, water) << molecule;
        EXPECT_LE(difference(job.molecule.positions, bent), 1e-12) << molecule;
    }
    const gaussian::log_job radical = read(terse("-1,2\\O,0.,0.,0.\\H,0.,0.,0.97")).log.job;
    EXPECT_EQ(radical.molecule.charge, -1);
    EXPECT_EQ(radical.molecule.multiplicity, 2);
    const gaussian::log_job typed = read(terse("-1,2\\O-OH-0.1,0.,0.,0.\\H(fragment=1),0,0.,0.,0.97")).log.job;
    EXPECT_EQ(typed.molecule.numbers, (std::vector<int>{8, 1}));
    EXPECT_EQ(typed.molecule.positions(2, 1), 0.97);
    EXPECT_EQ(typed.molecule.charge, -1);
    EXPECT_EQ(typed.molecule.multiplicity, 2);
    const gaussian::log_job heavy =
        read(terse("0,1\\O(Iso=18),0.,0.,0.\\H(Iso=2,Spin=2),-1,0.,0.,0.97\\H(Iso=2),0.97,0.,0.")).log.job;
    EXPECT_EQ(heavy.molecule.numbers, water);
    EXPECT_LE(
        difference(heavy.molecule.positions, (Eigen::Matrix3Xd(3, 3) << 0, 0, 0.97, 0, 0, 0, 0, 0.97, 0).finished()),
        1e-12);
    EXPECT_EQ(read(terse("0,1\\8,0.,0.,0.\\H,0.,0.,0.97\\H,0.97,0.,0.")).log.job.molecule.numbers, water);
    for (const char* molecule :
         {"0,1\\O\\H-Bq,1,0.97", "0,1\\O\\H,1,r", "0,1\\O,0.,0.,0.\\Tv,0.,0.,9.", "0\\O,0.,0.,0.", "0,1,2\\O,0.,0.,0.",
          "0,x\\O,0.,0.,0.", "x,1\\O,0.,0.,0.", "0,1\\O(Spin=1)x,0.,0.,0.", "0,1\\O,x,0.,0.,0.", "0,1\\O,*,0.,0.",
          "0,1\\O,0.,*,0.", "0,1\\O,0.,0.,*", "0,1\\O,0.,0.", "0,1\\O,0,0.,0.,0.,0.", "0,1"}) {
        EXPECT_EQ(read(terse(molecule)).log.job.number, 0) << molecule;
    }
}

gaussian::archive_entry entry_of(const std::string& results, const std::string& top = "\\RHF\\STO-3G\\H1") {
    return gaussian::read_archive("1\\1\\GINC-X\\SP" + top + "\\\\# hf\\\\t\\\\0,2\\H,0.,0.,0.\\\\" + results +
                                  "\\\\@");
}

TEST(gaussian_archive, has_the_last_energy_that_is_one) {
    const struct {
        const char* results;
        double energy;
        bool beyond_self_consistent;
    } rows[] = {
        {"HF=-0.5", -0.5, false},
        {"State=2-S\\HF= -0.5 \\S2=0.75\\RMSD=1e-9", -0.5, false},
        {"HF=-0.5\\MP2=-0.6", -0.6, true},
        {"HF=-0.5\\MP2=-0.6\\MP4SDQ=-0.7\\CCSD(T)=-0.8", -0.8, true},
        {"HF=-0.5\\QCISD(T)=-0.6", -0.6, true},
        {"HF=-0.5\\BD=-0.6", -0.6, true},
        {"HF=-0.5\\BD(TQ)=-0.6", -0.6, true},
        {"HF=-0.5\\BDX=-0.6", -0.5, false},
        {"HF=-0.5\\MP2=******", -0.5, false},
        {"HF=-0.5\\MP2", -0.5, false},
    };
    for (const auto& row : rows) {
        const gaussian::archive_entry found = entry_of(std::string("Version=x\\") + row.results);
        EXPECT_EQ(found.energy, row.energy) << row.results;
        EXPECT_EQ(found.beyond_self_consistent, row.beyond_self_consistent) << row.results;
        EXPECT_EQ(found.molecule.numbers, std::vector<int>{1});
        EXPECT_EQ(found.molecule.multiplicity, 2);
    }
    EXPECT_FALSE(entry_of("Version=x\\HF=x").energy);
    EXPECT_EQ(entry_of("Version=x\\PG=C02V [C2(O1)]").point_group, "C02V");
    EXPECT_EQ(entry_of("Version=x\\PG").point_group, "");
}

TEST(gaussian_archive, is_empty_where_its_sections_are_not_in_their_places) {
    EXPECT_EQ(entry_of("Version=x\\HF=-0.5").route, "# hf");
    EXPECT_EQ(entry_of("HF=-0.5").route, "");
    EXPECT_FALSE(entry_of("HF=-0.5").has_charge);
    EXPECT_FALSE(gaussian::read_archive("1\\1\\GINC-X\\\\# hf\\\\t\\\\Version=x\\HF=-0.5\\\\@").energy);
}

TEST(gaussian_archive, has_method_and_basis_in_its_first_section) {
    EXPECT_EQ(entry_of("Version=x").method, "RHF");
    EXPECT_EQ(entry_of("Version=x").basis, "STO-3G");
    EXPECT_EQ(entry_of("Version=x", "\\RHF\\STO-3G").basis, "STO-3G");
    EXPECT_EQ(entry_of("Version=x", "\\RHF").method, "");
    EXPECT_EQ(entry_of("Version=x", "\\RHF").molecule.numbers, std::vector<int>{1});
}

TEST(gaussian_archive, of_separators_alone_is_not_taken_apart_without_end) {
    std::string results = "Version=x";
    for (int field = 2; field < 300000; ++field) {
        results += "\\a";
    }
    EXPECT_EQ(entry_of(results + "\\HF=-0.5").energy, -0.5);
    EXPECT_FALSE(entry_of(results + "\\a\\HF=-0.5").energy);
}

TEST(gaussian_log, an_archive_entry_without_results_ends_at_its_mark) {
    const outcome found =
        read(" Entering Gaussian System\n 1\\1\\X\\\\# hf\\\\t\\\\@\n Normal termination of Gaussian 16 at x.\n");
    EXPECT_EQ(found.log.ended_normally, 1);
    EXPECT_TRUE(found.notices.empty());
}

TEST(gaussian_log, an_archive_entry_ends_where_its_results_do) {
    const outcome found = read(
        " Entering Gaussian System\n 1\\1\\X\\\\# hf\\\\t\\\\0,2\\H,0.,0.,0.\\\\Version=x\\HF=-0.5\\\\0.1,\n"
        " Normal termination of Gaussian 16 at x.\n");
    EXPECT_EQ(found.log.job.energy, -0.5);
    EXPECT_EQ(found.log.ended_normally, 1);
    EXPECT_TRUE(found.notices.empty());
}

TEST(gaussian_log, without_symmetry_the_standard_orientation_is_the_frame_of_the_input) {
    twin_job twin = water_job();
    twin.standard = some_turn();
    twin.input_tables = false;
    twin.archive = false;
    for (const char* route : {"# hf nosymm", "# hf NoSym", "# hf Symmetry=None", "# hf symm=none",
                              "# hf symmetry(none)", "# hf symmetry=(None)"}) {
        twin.route = route;
        const std::string text = log_text({.jobs = {twin}});
        const outcome found = read(replaced(text, " ***** Axes restored to original set *****\n", ""));
        EXPECT_EQ(found.log.job.in, gaussian::frame::input) << route;
        EXPECT_EQ(difference(found.log.job.forces, water_forces()), 0.0) << route;
        EXPECT_TRUE(found.notices.empty()) << route;
        EXPECT_EQ(read(text).log.job.in, gaussian::frame::standard) << route;
    }
    twin.route = "# hf symmetry=loose";
    const std::string text = log_text({.jobs = {twin}});
    EXPECT_EQ(read(replaced(text, " ***** Axes restored to original set *****\n", "")).log.job.in,
              gaussian::frame::standard);
}

TEST(gaussian_log, an_energy_that_did_not_converge_is_told) {
    const std::string text = log_text({.jobs = {water_job()}});
    const int line = line_of(text, " SCF Done:");
    EXPECT_EQ(read(replaced(text, " SCF Done:", " >>>>>>>>>> Convergence criterion not met.\n SCF Done:"))
                  .log.job.unconverged_line,
              line);
    EXPECT_EQ(read(replaced(text, " SCF Done:", " >>>>>>>>>> Something else.\n SCF Done:")).log.job.unconverged_line,
              0);
}

TEST(gaussian_log, an_energy_that_did_not_converge_at_an_earlier_geometry_is_not) {
    twin_job twin = water_job();
    twin.points.push_back(twin.points[0]);
    twin.points[1].positions = water_positions(0.5);
    std::string text = log_text({.jobs = {twin}});
    text.insert(text.find(" SCF Done:"), " >>>>>>>>>> Convergence criterion not met.\n");
    EXPECT_EQ(read(text).log.job.geometries, 2);
    EXPECT_EQ(read(text).log.job.unconverged_line, 0);
}

TEST(gaussian_log, a_job_without_its_beginning_ends_where_the_next_one_begins) {
    twin_job first = water_job();
    first.ends_normally = false;
    const std::string cut = log_text({.jobs = {first}});
    const std::string headless = cut.substr(cut.find(" Charge ="));
    const std::string whole = log_text({.jobs = {water_job()}});
    for (const std::string& text : {headless + whole, headless + whole.substr(whole.find(" -----"))}) {
        const outcome found = read(text);
        EXPECT_EQ(found.log.jobs, 2);
        EXPECT_EQ(found.log.ended_normally, 1);
        EXPECT_EQ(found.log.job.number, 2);
        EXPECT_EQ(found.log.job.geometries, 1);
        EXPECT_EQ(found.log.job.route, twin_job().route);
    }
}

TEST(gaussian_log, a_route_without_an_end_is_cut) {
    const std::string whole = log_text({.jobs = {water_job()}});
    std::string text = " -------\n # hf int=finegr\n";
    for (int line = 0; line < 1000; ++line) {
        text += " " + std::string(70, 'x') + "\n";
    }
    const outcome found = read(text + whole.substr(whole.find(" Charge =")));
    EXPECT_EQ(found.log.job.route,
              "# hf int=finegr " + std::string(std::size_t{70} * 937, 'x'));  // 16 + 936 * 70 is 65536
    EXPECT_EQ(found.log.job.line, 2);
    EXPECT_EQ(difference(found.log.job.molecule.positions, water_positions()), 0.0);
}

TEST(gaussian_log, the_first_charge_is_that_of_the_molecule) {
    const std::string text = log_text({.jobs = {water_job()}});
    const std::string line = " Charge =  0 Multiplicity = 1\n";
    const gaussian::log_job job =
        read(replaced(text, line,
                      " Charge = -1 Multiplicity = 2 in supermolecule\n Charge =  1 Multiplicity = 4 in fragment\n"))
            .log.job;
    EXPECT_EQ(job.molecule.charge, -1);
    EXPECT_EQ(job.molecule.multiplicity, 2);
}

TEST(gaussian_log, an_archive_entry_that_differs_from_a_standard_orientation_is_not_taken) {
    twin_job twin = water_job();
    twin.route = "#p hf/3-21g";
    twin.standard = some_turn();
    twin.input_tables = false;
    const std::string text = log_text({.jobs = {twin}});
    EXPECT_EQ(read(text).log.job.decimals, 10);
    EXPECT_EQ(read(replaced(text, "0.1234567891", "0.1235067891")).log.job.decimals, 6);  // 5e-5 off
}

TEST(gaussian_log, a_route_is_found_in_its_box) {
    const std::string orientation = log_text({.jobs = {water_job()}});
    const std::string rest = orientation.substr(orientation.find(" Charge ="));
    for (const char* box : {" -------\n # hf/3-21g opt\n -------\n", " -------\r\n # hf/3-21g opt\r\n -------\r\n",
                            " -------\n   # hf/3-21g opt\n -------\n", " -------\n # hf/3-21g\nopt\n -------\n"}) {
        const gaussian::log_job job = read(" Entering Gaussian System, Link 0=g09\n" + std::string(box) + rest).log.job;
        EXPECT_EQ(job.route, "# hf/3-21g opt") << box;
        EXPECT_EQ(job.line, 3);
    }
    EXPECT_EQ(read(" -------\n # hf/3-21g opt\n -------\n" + rest).log.job.line, 2);
    EXPECT_EQ(read(" ---\n # hf/3-21g opt\n ---\n" + rest).log.job.line, 2);
    EXPECT_EQ(read(" --\n # hf/3-21g opt\n --\n" + rest).log.job.line, 0);
    EXPECT_EQ(read(" # hf/3-21g opt\n -------\n" + rest).log.job.line, 0);
    // Not in a box: of a batch system, and of the archive entry.
    const gaussian::log_job job = read(" ------\n\n # not a route\n------\n# nor this\n" + rest).log.job;
    EXPECT_EQ(job.route, twin_job().route);
    EXPECT_EQ(job.line, 0);
}

TEST(gaussian_log, an_atom_without_a_nucleus_has_a_type_of_its_own) {
    twin_job twin = water_job();
    twin.archive = false;
    const std::string text = log_text({.jobs = {twin}});
    for (const char* type : {"1000", "1999"}) {
        std::string row = "      3          1           0 ";
        row.replace(row.size() - 5, 4, type);
        const gaussian::log_job job = read(replaced(text, "      3          1           0 ", row)).log.job;
        EXPECT_EQ(job.ghosts, 1) << type;
        EXPECT_EQ(job.typed, 0) << type;
        EXPECT_EQ(job.molecule.numbers, (std::vector<int>{8, 1})) << type;
    }
    const gaussian::log_job job =
        read(replaced(text, "      3          1           0 ", "      3          1        2000 ")).log.job;
    EXPECT_EQ(job.ghosts, 0);
    EXPECT_EQ(job.typed, 1);
}

TEST(gaussian_log, the_energy_is_that_of_the_highest_level) {
    twin_job twin = water_job();
    twin.correlation = 0.25;
    EXPECT_EQ(read(twin).log.job.energy, -76.6589012);  // of the archive entry, with its seven decimals
    twin.archive = false;
    EXPECT_EQ(read(twin).log.job.energy, -76.4089012345);
}

TEST(gaussian_log, centres_that_are_no_atoms_are_counted_and_left_out) {
    Eigen::Matrix3Xd positions(3, 6);
    positions << water_positions(), Eigen::Matrix3Xd::Constant(3, 3, 2.5);
    twin_job twin = support::one_point({8, 1, 1, -1, 0, -2}, positions, Eigen::Matrix3Xd(3, 0));
    twin.z_matrix = true;
    const gaussian::log_job job = read(twin).log.job;
    EXPECT_EQ(job.molecule.numbers, water);
    EXPECT_LE(difference(job.molecule.positions, water_positions()), 5.1e-7);
    EXPECT_EQ(job.dummies, 1);
    EXPECT_EQ(job.ghosts, 1);
    EXPECT_EQ(job.vectors, 1);
    EXPECT_EQ(job.forces_problem, "job.log: expected a table of forces, found none");
    const std::string text = log_text({.jobs = {water_job()}});
    const std::string none =
        replaced(replaced(text, "      1          8           0 ", "      1         -1           0 "),
                 "Input orientation:", "Z-Matrix orientation:");
    std::string bare = none;
    for (const char* row : {"      2          1           0 ", "      3          1           0 "}) {
        bare = replaced(bare, row, std::string(row).replace(16, 2, "-1"));
    }
    EXPECT_EQ(support::stopped_with([&] { read(bare); }),
              "job.log:" + std::to_string(line_of(bare, " Center     Atomic      Atomic")) +
                  ": expected a table with atoms, found none|standard error|2");
    const std::string typed = replaced(text, "      1          8           0 ", "      1          8    10001001 ");
    EXPECT_EQ(read(typed).log.job.typed, 1);
    EXPECT_EQ(read(text).log.job.typed, 0);
}

TEST(gaussian_log, fields_that_touch) {
    twin_job twin = water_job();
    twin.points[0].positions.row(1).setConstant(-1234.5678901234);
    twin.points[0].positions.row(2).setConstant(-4321.0987654321);
    twin.points[0].dipole = Eigen::Vector3d(-1.78262851e-18, -2.5, -1.30457276e-1);
    twin.points[0].forces *= -100000.0;
    const gaussian::log_job job = read(twin).log.job;
    EXPECT_EQ(difference(job.molecule.positions, twin.points[0].positions), 0.0);
    EXPECT_EQ(*job.dipole, *twin.points[0].dipole);
    EXPECT_LE(difference(job.forces, twin.points[0].forces), 5.1e-10);
}

TEST(gaussian_log, asterisks_in_the_last_geometry_stop_the_run_at_their_line) {
    twin_job twin = water_job();
    const std::string text = replaced(log_text({.jobs = {twin}}), "0.903457", "********");
    const std::string row = "2          1           0        ********   -0.405679    0.166789";
    EXPECT_EQ(support::stopped_with([&] { read(text); }), "job.log:" + std::to_string(line_of(text, row)) +
                                                              ": expected an atom's number and position, found '" +
                                                              row + "'|standard error|2");
}

TEST(gaussian_log, a_row_of_another_element_or_out_of_order_stops_the_run) {
    twin_job twin = water_job();
    twin.archive = false;
    const std::string text = log_text({.jobs = {twin}});
    const std::string row = "      2          1           0 ";
    const std::string heaviest = replaced(text, row, "      2        118           0 ");
    EXPECT_EQ(read(heaviest).log.job.molecule.numbers, (std::vector<int>{8, 118, 1}));
    for (const char* last : {" 250000          1           0 ", "99999          1           0 "}) {
        EXPECT_EQ(read(replaced(text, "      3          1           0 ", last)).log.job.molecule.numbers, water);
    }
    for (const char* wrong :
         {"      2        119           0 ", "      1          1           0 ", "      2         -3           0 ",
          " ******          1           0 ", "      2       ****           0 ", "      2.5        1           0 "}) {
        const std::string message = support::stopped_with([&] { read(replaced(text, row, wrong)); });
        EXPECT_NE(message.find("expected an atom's number and position, found '"), std::string::npos) << wrong;
    }
}

TEST(gaussian_log, a_row_without_its_last_number_stops_the_run) {
    twin_job twin = water_job();
    twin.archive = false;
    const std::string text = replaced(log_text({.jobs = {twin}}), "    0.534321   -0.043211\n", "    0.534321\n");
    const std::string row = "3          1           0       -0.273457    0.534321";
    EXPECT_EQ(support::stopped_with([&] { read(text); }), "job.log:" + std::to_string(line_of(text, row)) +
                                                              ": expected an atom's number and position, found '" +
                                                              row + "'|standard error|2");
}

TEST(gaussian_log, rows_of_older_versions_have_no_type) {
    twin_job twin = water_job();
    twin.archive = false;
    std::string text = log_text({.jobs = {twin}});
    for (const char* row : {"      1          8", "      2          1", "      3          1"}) {
        text = replaced(text, std::string(row).append("           0 "), std::string(row).append(" "));
    }
    const gaussian::log_job job = read(text).log.job;
    EXPECT_EQ(job.molecule.numbers, water);
    EXPECT_EQ(job.typed, 0);
    EXPECT_EQ(job.molecule.positions(2, 2), -0.043211);
}

TEST(gaussian_log, asterisks_in_an_earlier_geometry_do_not) {
    twin_job twin = water_job();
    twin.points.push_back(twin.points[0]);
    twin.points[0].positions = water_positions(1.0);
    const std::string text = replaced(log_text({.jobs = {twin}}), "1.534321", "********");
    EXPECT_EQ(difference(read(text).log.job.molecule.positions, water_positions()), 0.0);
}

TEST(gaussian_log, asterisks_in_the_forces_are_told_and_leave_the_geometry) {
    const std::string text = replaced(log_text({.jobs = {water_job()}}), "-0.002345678", "************");
    const gaussian::log_job job = read(text).log.job;
    const std::string row = "2        1       ************    0.003456789    0.000765433";
    EXPECT_EQ(job.forces.cols(), 0);
    EXPECT_EQ(job.forces_problem, "job.log:" + std::to_string(line_of(text, row)) +
                                      ": expected an atom's number and the force on it, found '" + row + "'");
    EXPECT_EQ(job.molecule.numbers, water);
    const std::string cut = replaced(text, "       ************    0.003456789    0.000765433", " ************");
    EXPECT_EQ(read(cut).log.job.forces_problem,
              "job.log:" + std::to_string(line_of(cut, "2        1 ************")) +
                  ": expected an atom's number and the force on it, found '2        1 ************'");
    const std::string alone = replaced(text, "    0.003456789    0.000765433", "");  // shorter than three fields
    EXPECT_EQ(read(alone).log.job.forces_problem,
              "job.log:" + std::to_string(line_of(alone, "2        1       ************")) +
                  ": expected an atom's number and the force on it, found '2        1       ************'");
}

TEST(gaussian_log, a_row_of_forces_without_its_numbers_is_told) {
    const std::string text = log_text({.jobs = {water_job()}});
    for (const char* wrong : {"*******        1   ", "      2 ********   ", "      2            "}) {
        const std::string broken = replaced(text, "      2        1   ", wrong);
        const int line = line_of(text, "      2        1   ");
        EXPECT_EQ(read(broken).log.job.forces.cols(), 0) << wrong;
        EXPECT_TRUE(read(broken).log.job.forces_problem.starts_with(
            "job.log:" + std::to_string(line) + ": expected an atom's number and the force on it, found '"))
            << wrong;
    }
}

TEST(gaussian_log, a_broken_table_of_forces_is_told_even_where_whole_ones_stand_before_it) {
    twin_job twin = water_job();
    twin.points.push_back(twin.points[0]);
    twin.points[0].positions = water_positions(1.0);
    std::string text = log_text({.jobs = {twin}});
    text = replaced(text, "      2        1       -0.002345678", " o1");
    const outcome found = read(text);
    EXPECT_EQ(found.log.job.forces.cols(), 0);
    EXPECT_EQ(found.log.job.forces_problem, "job.log:" + std::to_string(line_of(text, "Forces (Hartrees/Bohr)")) +
                                                ": expected a table of forces, found a part of one");
    ASSERT_EQ(found.notices.size(), 1U);
    EXPECT_EQ(found.notices[0].line, line_of(text, " o1"));
    EXPECT_EQ(found.notices[0].text, "expected a row of the table that begins in line " +
                                         std::to_string(line_of(text, "Forces (Hartrees/Bohr)")) +
                                         "; it is passed over");
}

TEST(gaussian_log, a_table_of_forces_without_its_head_is_told) {
    const std::string text =
        replaced(log_text({.jobs = {water_job()}}), " Number     Number              X", " X             ");
    const outcome found = read(text);
    const int first = line_of(text, "Forces (Hartrees/Bohr)");
    EXPECT_EQ(found.log.job.forces.cols(), 0);
    EXPECT_EQ(found.log.job.forces_problem,
              "job.log:" + std::to_string(first) + ": expected a table of forces, found a part of one");
    ASSERT_EQ(found.notices.size(), 1U);
    EXPECT_EQ(found.notices[0].line, first + 1);
    EXPECT_EQ(found.notices[0].text,
              "expected the rows of the table that begins in line " + std::to_string(first) + "; it is passed over");
}

TEST(gaussian_log, a_broken_archive_entry_is_told) {
    const std::string whole = log_text({.jobs = {water_job()}});
    const std::size_t entry = whole.find(" 1\\1\\");
    const std::size_t second = whole.find('\n', entry) + 1;
    outcome found = read(std::string(whole).insert(second, " \n"));
    EXPECT_EQ(found.log.job.decimals, 6);
    ASSERT_EQ(found.notices.size(), 1U);
    EXPECT_EQ(found.notices[0].line, line_of(whole, " 1\\1\\") + 1);
    EXPECT_EQ(found.notices[0].text, "the archive entry is not complete; it is passed over");

    std::string endless = whole.substr(0, second);
    for (std::size_t size = 0; size <= std::size_t{1} << 24; size += 70) {
        endless += " " + std::string(70, 'x') + "\n";
    }
    found = read(endless);
    EXPECT_EQ(found.log.job.decimals, 6);
    ASSERT_EQ(found.notices.size(), 1U);
    EXPECT_EQ(found.notices[0].text, "the archive entry has no end; it is passed over");
}

TEST(gaussian_log, a_table_without_an_end_is_told) {
    std::string text = log_text({.jobs = {water_job()}});
    const std::size_t end = text.find(" Center     Atomic");
    text = text.substr(0, text.find("------\n", text.find(" Number ", end)) + 7);
    const std::string row = "      1          8           0        0.123457   -0.345679    0.056789\n";
    for (std::size_t size = 0; size <= std::size_t{1} << 25; size += row.size()) {
        text += row;
    }
    const outcome found = read(text);
    EXPECT_EQ(found.log.job.number, 0);
    ASSERT_EQ(found.notices.size(), 1U);
    EXPECT_EQ(found.notices[0].text, "expected the end of the table that begins in line " +
                                         std::to_string(line_of(text, " Center     Atomic")) + "; it is passed over");
}

TEST(gaussian_log, only_the_first_notices_about_what_is_broken_are_told) {
    std::string text = log_text({.jobs = {water_job()}});
    const std::string broken = " Center     Atomic                   Forces (Hartrees/Bohr)\n oops\n";
    for (int table = 0; table < 20; ++table) {
        text += broken;
    }
    EXPECT_EQ(read(text).notices.size(), 20U);
    EXPECT_EQ(read(broken.substr(0, broken.size() - 1)).notices.at(0).line, 2);  // a last line without its end
    text += broken + broken;
    const outcome found = read(text);
    ASSERT_EQ(found.notices.size(), 21U);
    EXPECT_EQ(found.notices[19].line, line_of(text, "Forces (Hartrees/Bohr)") - 3);  // the second line of the 20th
    EXPECT_EQ(found.notices[20].line, 0);
    EXPECT_EQ(found.notices[20].text, "2 more tables and entries are passed over");
}

TEST(gaussian_log, a_charge_that_is_no_number_is_told) {
    const std::string text =
        replaced(log_text({.jobs = {water_job()}}), " Charge =  0 Multiplicity", " Charge = ** Multiplicity");
    const outcome found = read(text);
    ASSERT_EQ(found.notices.size(), 1U);
    EXPECT_EQ(found.notices[0].line, line_of(text, " Charge ="));
    EXPECT_EQ(found.notices[0].text, "charge and multiplicity cannot be read in 'Charge = ** Multiplicity = 1'");
}

TEST(gaussian_log, a_dipole_that_cannot_be_used_is_told) {
    twin_job twin = water_job();
    twin.standard = some_turn();
    const std::string whole = log_text({.jobs = {twin}});
    const std::size_t anchor = whole.find(" Dipole        =");
    outcome found = read(std::string(whole).insert(anchor + 16, "*"));
    EXPECT_FALSE(found.log.job.dipole);
    ASSERT_EQ(found.notices.size(), 1U);
    EXPECT_EQ(found.notices[0].line, line_of(whole, " Dipole        ="));
    EXPECT_EQ(found.notices[0].text, "the dipole moment cannot be read");

    found = read(std::string(whole).replace(anchor + 31, 15, 15, '*'));
    EXPECT_FALSE(found.log.job.dipole);
    ASSERT_EQ(found.notices.size(), 1U);
    EXPECT_EQ(found.notices[0].text, "the dipole moment cannot be read");

    // An atom of the standard orientation is another one.
    const std::size_t row = whole.find("      1          8 ", whole.find("Standard orientation:"));
    found = read(std::string(whole).replace(row, 19, "      1          9 "));
    EXPECT_FALSE(found.log.job.dipole);
    ASSERT_EQ(found.notices.size(), 1U);
    EXPECT_EQ(found.notices[0].text,
              "the frame of the dipole moment: job.log:" + std::to_string(line_of(whole, "Standard orientation:") + 2) +
                  ": expected the 3 atoms of the last geometry, found 3 or other atoms");
}

TEST(gaussian_log, forces_on_other_atoms) {
    const std::string text = replaced(log_text({.jobs = {water_job()}}), "      2        1  ", "      2        9  ");
    EXPECT_EQ(read(text).log.job.forces_problem,
              "job.log:" + std::to_string(line_of(text, "Forces (Hartrees/Bohr)")) +
                  ": expected forces on the 3 atoms of the geometry, found 3 or other atoms");
}

TEST(gaussian_log, cut_anywhere_it_has_no_normal_end_and_never_another_result) {
    twin_job twin = water_job();
    twin.standard = some_turn();
    twin.route = "#p b3lyp/6-31g(d) force";
    twin.between = std::string(70, 'x') + "\n";
    const std::string text = log_text({.jobs = {twin}});
    const std::size_t end = text.find(" Normal termination of Gaussian") + 31;
    int with_geometry = 0;
    for (std::size_t length = 0; length < text.size(); ++length) {
        const outcome found = read(text.substr(0, length));
        ASSERT_EQ(found.log.ended_normally, length < end ? 0 : 1) << length;
        const gaussian::log_job& job = found.log.job;
        if (job.number != 0) {
            ++with_geometry;
            ASSERT_EQ(job.molecule.numbers, water) << length;
            ASSERT_LE(difference(job.molecule.positions, water_positions()), 5.1e-7) << length;
        }
        if (job.forces.cols() != 0) {
            ASSERT_EQ(difference(job.forces, water_forces()), 0.0) << length;
        }
    }
    EXPECT_GT(with_geometry, 500);
}

TEST(gaussian_log, blocks_end_anywhere) {
    // The reader takes blocks of 64 KiB: the tables of this log lie across their ends, shifted by each length once.
    const support::scratch_folder folder;
    twin_job twin = water_job();
    twin.standard = some_turn();
    for (std::size_t shift = 0; shift < 4000; shift += 37) {
        std::string text = log_text({.before = std::string(63000 + shift, 'a') + "\n", .jobs = {twin}});
        support::write_file("job.log", text);
        gaussian::source from("job.log");
        std::vector<gaussian::notice> notices;
        const gaussian::log_contents log = gaussian::read_log(from, notices);
        ASSERT_EQ(log.ended_normally, 1) << shift;
        ASSERT_EQ(log.job.route, twin.route) << shift;
        ASSERT_EQ(difference(log.job.molecule.positions, water_positions()), 0.0) << shift;
        ASSERT_EQ(difference(log.job.forces, water_forces()), 0.0) << shift;
        ASSERT_EQ(log.job.forces_line, line_of(text, "Forces (Hartrees/Bohr)")) << shift;
    }
}

TEST(gaussian_log, a_line_longer_than_a_block_is_passed_over) {
    const support::scratch_folder folder;
    support::write_file("job.log", log_text({.before = std::string(200000, 'a') + "\n", .jobs = {water_job()}}));
    gaussian::source from("job.log");
    std::vector<gaussian::notice> notices;
    const gaussian::log_contents log = gaussian::read_log(from, notices);
    EXPECT_EQ(log.job.line, 7);
    EXPECT_EQ(difference(log.job.forces, water_forces()), 0.0);
}

TEST(gaussian_log, a_line_longer_than_a_block_in_a_table_or_at_the_end) {
    const support::scratch_folder folder;
    const auto read_file = [](const std::string& text) {
        support::write_file("job.log", text);
        outcome result;
        gaussian::source from("job.log");
        result.log = gaussian::read_log(from, result.notices);
        return result;
    };
    const std::string text = log_text({.jobs = {water_job()}});
    const std::string row = "      2          1           0 ";
    outcome found = read_file(replaced(text, row, std::string(200000, 'a') + "\n" + row));
    ASSERT_EQ(found.notices.size(), 1U);
    EXPECT_EQ(found.notices[0].line, line_of(text, row));
    EXPECT_EQ(found.notices[0].text, "expected a row of the table that begins in line " +
                                         std::to_string(line_of(text, "Coordinates (Angstroms)")) +
                                         "; it is passed over");
    EXPECT_EQ(found.log.job.geometry_line, 0);
    EXPECT_EQ(found.log.job.forces_line, line_of(text, "Forces (Hartrees/Bohr)") + 1);
    found = read_file(text + std::string(200000, 'a'));
    EXPECT_TRUE(found.notices.empty());
    EXPECT_EQ(found.log.ended_normally, 1);
    EXPECT_EQ(difference(found.log.job.forces, water_forces()), 0.0);
}

TEST(gaussian_log, nothing_is_left_of_what_was_read) {
    gaussian::source from("job.log", "a last line without its end");
    std::vector<gaussian::notice> notices;
    gaussian::read_log(from, notices);
    EXPECT_EQ(from.rest(100), "");
}

TEST(gaussian_log, a_blank_that_the_end_of_a_line_of_the_archive_entry_lost) {
    const std::string top = "1\\1\\GINC-X\\SP\\RHF\\STO-3G\\H1\\U\\01-Jan-2020\\0\\\\";
    const std::string route = "#p " + std::string(70 - 4 - top.size(), 'x');
    EXPECT_EQ(read(" " + top + route + "\n nosymm\\\\t\\\\0,2\\H,0.,0.,0.\\\\Version=x\\HF=-0.5\\\\@\n").log.job.route,
              route + " nosymm");
}

TEST(gaussian_log, text_without_a_job) {
    EXPECT_EQ(read(" # hf\n -----\n").log.jobs, 0);
    EXPECT_EQ(read(std::string(" C\0 x\n", 7)).log.jobs, 0);
    EXPECT_EQ(read(" Center     Atomic      Atomic             Coordinates (Angstroms)\n").log.jobs, 0);
    EXPECT_EQ(
        read("   Another orientation:\n ----\n Center     Atomic      Atomic             Coordinates (Angstroms)\n "
             "Number     Number       Type             X           Y           Z\n ----\n      1          8           "
             "0   "
             "     0.123457   -0.345679    0.056789\n ----\n")
            .log.jobs,
        0);
    EXPECT_EQ(read("").log.jobs, 0);
    EXPECT_EQ(read("nothing of Gaussian\n").log.jobs, 0);
    EXPECT_EQ(read(" \n \n C\n #\n").log.job.number, 0);
}

}  // namespace
