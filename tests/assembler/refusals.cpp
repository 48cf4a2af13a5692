#include <gtest/gtest.h>
#include <pthread.h>

#include <Eigen/Geometry>
#include <algorithm>
#include <atomic>
#include <sstream>
#include <thread>

#include "displacement_assembler/analysis.hpp"
#include "displacement_assembler/in_parallel.hpp"
#include "model.hpp"

using namespace displacement_generator;
using namespace displacement_generator::assembler_tests;

namespace {

/// Water with logs that are all good.
class good_folder {
  public:
    good_folder() {
        generate("water");
        molecule = make_model(read_geometry_file("PES-0/coord-0-00.com"));
        write_logs(molecule);
    }

    support::scratch_folder folder;
    model molecule;
};

/// Standard error of a run that is refused with nothing on standard output; the lines before the last, which must be
/// the usual one, with all files there.
std::string refusals_of_run(int status = 1) {
    const support::outcome done = assemble({"--molden", "m", "--hessian", "h"});
    EXPECT_EQ(done.status, status);
    EXPECT_EQ(done.standard_output, "");
    EXPECT_FALSE(std::filesystem::exists("m"));
    EXPECT_FALSE(std::filesystem::exists("h"));
    const std::string last =
        "displacement_assembler: error: PES-0/files.out: 10 of 10 are there, not all of them can be used\n";
    if (!done.standard_error.ends_with(last)) {
        return done.standard_error;
    }
    return done.standard_error.substr(0, done.standard_error.size() - last.size());
}

void replace_in(const std::string& path, const std::string& from, const std::string& to) {
    std::string text = support::read_file(path);
    const std::size_t at = text.find(from);
    ASSERT_NE(at, std::string::npos) << from;
    support::write_file(path, text.replace(at, from.size(), to));
}

}  // namespace

TEST(refusals, missing_logs_are_listed_and_counted) {
    const good_folder good;
    std::filesystem::remove("PES-0/coord-1-dx.log");
    std::filesystem::remove("PES-0/coord-2+dz.log");
    EXPECT_EQ(refusals_of_run(),
              "PES-0/coord-1-dx: expected a .log, .out, .fchk or .forces, found none\n"
              "PES-0/coord-2+dz: expected a .log, .out, .fchk or .forces, found none\n"
              "displacement_assembler: error: PES-0/files.out: 8 of 10 are there\n");
}

TEST(refusals, all_that_is_wrong_is_listed) {
    const good_folder good;
    support::twin_job job = job_of(good.molecule, "coord-1-dx");
    job.ends_normally = false;
    write_log("coord-1-dx", job);
    job = job_of(good.molecule, "coord-1-dy");
    job.points[0].forces.resize(3, 0);
    write_log("coord-1-dy", job);
    job = job_of(good.molecule, "coord-1-dz");
    job.route = "#p hf/6-31g(d) force nosymm";
    write_log("coord-1-dz", job);
    EXPECT_EQ(refusals_of_run(),
              "PES-0/coord-1-dx.log: expected the log of a finished job, found one that did not end normally\n"
              "PES-0/coord-1-dy.log: expected a table of forces, found none\n"
              "PES-0/coord-1-dz.log:6: expected the route '#p b3lyp/6-31g(d) force nosymm' as in most files, found '#p "
              "hf/6-31g(d) force nosymm'\n");
}

TEST(refusals, other_atoms) {
    const good_folder good;
    support::twin_job job = job_of(good.molecule, "coord-1-dx");
    job.numbers[1] = 9;
    write_log("coord-1-dx", job);
    EXPECT_EQ(refusals_of_run(), "PES-0/coord-1-dx.log:16: expected H as atom 2, found F\n");
    job = support::one_point({1, 1}, Eigen::Matrix3Xd::Identity(3, 2), Eigen::Matrix3Xd::Zero(3, 2));
    write_log("coord-1-dx", job);
    EXPECT_EQ(refusals_of_run(), "PES-0/coord-1-dx.log:16: expected 3 atoms, found 2\n");
}

TEST(refusals, another_charge) {
    const good_folder good;
    support::twin_job job = job_of(good.molecule, "coord-1-dx");
    job.charge = 1;
    job.multiplicity = 2;
    write_log("coord-1-dx", job);
    EXPECT_EQ(refusals_of_run(), "PES-0/coord-1-dx.log:6: expected charge 0 and multiplicity 1, found 1 and 2\n");
    job.charge = 0;
    job.multiplicity = 3;
    write_log("coord-1-dx", job);
    EXPECT_EQ(refusals_of_run(), "PES-0/coord-1-dx.log:6: expected charge 0 and multiplicity 1, found 0 and 3\n");
    job.archive = false;
    write_log("coord-1-dx", job);
    std::string text = support::read_file("PES-0/coord-1-dx.log");
    text.erase(text.find(" Charge ="), std::string(" Charge =  0 Multiplicity = 3").size());
    support::write_file("PES-0/coord-1-dx.log", text);  // a log that tells neither
    EXPECT_EQ(assemble().standard_error, "");
}

TEST(refusals, terse_logs_of_another_geometry) {
    // Without a table the geometry is that of the archive entry.
    const good_folder good;
    support::twin_job job = job_of(good.molecule, "coord-1-dx");
    job.input_tables = false;
    write_log("coord-1-dx", job);
    EXPECT_EQ(assemble().standard_error, "");
    write_log("coord-1-dy", job);
    job.numbers[0] = 16;
    write_log("coord-1-dx", job);
    EXPECT_EQ(refusals_of_run(),
              "PES-0/coord-1-dx.log:6: expected O as atom 1, found S\n"
              "PES-0/coord-1-dy.log:17: expected the geometry of the .com with atom 1 at (0.000000, -0.005000, "
              "0.113809), found it at (-0.005000, 0.000000, 0.113809)\n");
}

TEST(refusals, an_atom_elsewhere_stands_in_no_other_frame) {
    const support::scratch_folder folder;
    compute_neon();
    write_log("coord-0-00", support::one_point({10}, Eigen::Vector3d(0.1, 0.0, 0.0), Eigen::Vector3d::Zero()));
    EXPECT_EQ(refusals_of_run(),
              "PES-0/coord-0-00.log:16: expected the geometry of the .com with atom 1 at (0.000000, 0.000000, "
              "0.000000), found it at (0.100000, 0.000000, 0.000000)\n"
              "displacement_assembler: error: PES-0/files.out: 4 of 4 are there, not all of them can be used\n");
}

TEST(refusals, the_log_of_another_point) {
    const good_folder good;
    std::filesystem::copy_file("PES-0/coord-1-dy.log", "PES-0/coord-1-dx.log",
                               std::filesystem::copy_options::overwrite_existing);
    EXPECT_EQ(
        refusals_of_run(),
        "PES-0/coord-1-dx.log:16: expected the geometry of the .com with atom 1 at (-0.005000, 0.000000, 0.113809), "
        "found it at (0.000000, -0.005000, 0.113809)\n");
}

TEST(refusals, a_geometry_that_is_off_by_more_than_the_digits) {
    const good_folder good;
    for (const double off : {0.9e-6, 2e-6}) {
        support::twin_job job = job_of(good.molecule, "coord-1-dx");
        job.archive = false;
        job.points[0].positions(1, 1) += off;
        write_log("coord-1-dx", job);
        const std::string refused = refusals_of_run();
        EXPECT_EQ(refused,
                  "PES-0/coord-1-dx.log:16: expected the geometry of the .com with atom 2 at (0.000000, 0.772189, "
                  "-0.455236), found it at (0.000000, 0.77219" +
                      std::string(off < 1e-6 ? "0" : "1") + ", -0.455236)\n");
    }
    support::twin_job job = job_of(good.molecule, "coord-1-dx");  // 0.77218912, which a log shows as 0.772189
    job.archive = false;
    write_log("coord-1-dx", job);
    EXPECT_EQ(assemble().status, 0);
}

TEST(refusals, a_turned_checkpoint) {
    const good_folder good;
    support::twin_checkpoint checkpoint;
    checkpoint.numbers = good.molecule.reference.numbers;
    checkpoint.point = good.molecule.at(read_geometry_file("PES-0/coord-1-dx.com"));
    const Eigen::Matrix3d turn = Eigen::AngleAxisd(1.5707963267948966, Eigen::Vector3d::UnitZ()).toRotationMatrix();
    checkpoint.point.positions = (turn * checkpoint.point.positions).eval();
    std::filesystem::remove("PES-0/coord-1-dx.log");
    support::write_file("PES-0/coord-1-dx.fchk", support::checkpoint_text(checkpoint));
    EXPECT_EQ(
        refusals_of_run(),
        "PES-0/coord-1-dx.fchk: expected the geometry of the .com with atom 2 at (0.000000, 0.772189, -0.455236), "
        "found it at (-0.772189, 0.000000, -0.455236); the molecule is the same in another frame, compute with "
        "nosymm\n");
}

TEST(refusals, a_checkpoint_without_gradient_or_cut) {
    const good_folder good;
    support::twin_checkpoint checkpoint;
    checkpoint.numbers = good.molecule.reference.numbers;
    checkpoint.point = good.molecule.at(read_geometry_file("PES-0/coord-1-dx.com"));
    const std::string whole = support::checkpoint_text(checkpoint);
    checkpoint.point.forces.resize(3, 0);
    std::filesystem::remove("PES-0/coord-1-dx.log");
    support::write_file("PES-0/coord-1-dx.fchk", support::checkpoint_text(checkpoint));
    EXPECT_EQ(refusals_of_run(), "PES-0/coord-1-dx.fchk: expected a section 'Cartesian Gradient', found none\n");
    support::write_file("PES-0/coord-1-dx.fchk", whole.substr(0, whole.size() - 2));
    EXPECT_EQ(refusals_of_run(),
              "PES-0/coord-1-dx.fchk: expected a line end at the end of the file, found none; it was cut\n");
}

TEST(refusals, forces_that_are_no_numbers) {
    const good_folder good;
    std::string text = support::read_file("PES-0/coord-1-dx.log");
    const std::size_t table = text.find("Forces (Hartrees/Bohr)");
    const std::size_t row = text.find("\n      1 ", table);
    support::write_file("PES-0/coord-1-dx.log", text.replace(row + 22, 15, "***************"));
    const std::string refused = refusals_of_run();
    EXPECT_EQ(refused,
              "PES-0/coord-1-dx.log:29: expected an atom's number and the force on it, found '1        8     "
              "***************  -0.000000000   -0.000000000'\n");
    std::filesystem::remove("PES-0/coord-1-dx.log");
    support::write_file("PES-0/coord-1-dx.forces", "0 0 0\n0 0 nan\n0 0 0\n");
    EXPECT_EQ(refusals_of_run(),
              "PES-0/coord-1-dx.forces:2: expected three numbers, 'energy' or 'dipole', found '0 0 nan'\n");
}

TEST(refusals, what_is_no_log_of_gaussian) {
    const good_folder good;
    support::write_file("PES-0/coord-0-00.log", "");
    support::write_file("PES-0/coord-1-dx.log", "Segmentation fault\n");
    support::write_file("PES-0/coord-1-dy.log", std::string(3000, '\0'));
    EXPECT_EQ(refusals_of_run(),
              "PES-0/coord-0-00.log: expected the log of a finished job, found one without a geometry\n"
              "PES-0/coord-1-dx.log: expected the log of a finished job, found one without a geometry\n"
              "PES-0/coord-1-dy.log: expected the log of a finished job, found one without a geometry\n");
}

TEST(refusals, a_log_in_a_turned_frame) {
    const good_folder good;
    support::twin_job job = job_of(good.molecule, "coord-1-dx");
    const Eigen::Matrix3d turn = Eigen::AngleAxisd(1.5707963267948966, Eigen::Vector3d::UnitZ()).toRotationMatrix();
    job.points[0].positions = (turn * job.points[0].positions).eval();
    write_log("coord-1-dx", job);
    job = job_of(good.molecule, "coord-1-dy");  // the forces are below the line of asterisks, their geometry is nowhere
    job.route = "#p b3lyp/6-31g(d) force";
    job.standard = {turn, Eigen::Vector3d::Zero()};
    job.input_tables = false;
    job.archive = false;
    write_log("coord-1-dy", job);
    EXPECT_EQ(refusals_of_run(),
              "PES-0/coord-1-dx.log:16: expected the geometry of the .com with atom 2 at (0.000000, 0.772189, "
              "-0.455236), found it at (-0.772189, 0.000000, -0.455236); the molecule is the same in another frame, "
              "compute with nosymm\n"
              "PES-0/coord-1-dy.log:27: expected the geometry of these forces in their frame, found none (give "
              "nosymm)\n");
}

TEST(refusals, only_the_same_molecule_is_said_to_stand_in_another_frame) {
    const good_folder good;
    support::twin_job job = job_of(good.molecule, "coord-1-dx");
    job.archive = false;
    job.points[0].positions.row(2).array() += 0.05;
    write_log("coord-1-dx", job);
    const std::string expected =
        "PES-0/coord-1-dx.log:16: expected the geometry of the .com with atom 1 at (-0.005000, 0.000000, 0.113809), "
        "found it at (-0.005000, 0.000000, 0.163809)";
    EXPECT_EQ(refusals_of_run(), expected + "; the molecule is the same in another frame, compute with nosymm\n");
    job.points[0].positions(2, 1) -= 0.001;
    write_log("coord-1-dx", job);
    EXPECT_EQ(refusals_of_run(), expected + "\n");
}

TEST(refusals, a_checkpoint_that_is_off_by_more_than_its_digits) {
    const good_folder good;
    support::twin_checkpoint checkpoint;
    checkpoint.numbers = good.molecule.reference.numbers;
    checkpoint.point = good.molecule.at(read_geometry_file("PES-0/coord-1-dx.com"));
    std::filesystem::remove("PES-0/coord-1-dx.log");
    support::write_file("PES-0/coord-1-dx.fchk", support::checkpoint_text(checkpoint));
    EXPECT_EQ(assemble().status, 0);
    checkpoint.point.positions(1, 2) += 2e-7;
    support::write_file("PES-0/coord-1-dx.fchk", support::checkpoint_text(checkpoint));
    EXPECT_EQ(refusals_of_run(),
              "PES-0/coord-1-dx.fchk: expected the geometry of the .com with atom 3 at (0.000000, -0.772189, "
              "-0.455236), found it at (0.000000, -0.772189, -0.455236)\n");
}

TEST(refusals, of_two_routes_that_occur_as_often_the_first_counts) {
    const good_folder good;
    for (const char* name : {"coord-1-dy", "coord-1-dz", "coord-2-dx", "coord-2-dy", "coord-2+dz"}) {
        replace_in("PES-0/" + std::string(name) + ".log", "b3lyp", "B3PW91");
    }
    const std::string text = refusals_of_run();
    const std::string first =
        "PES-0/coord-1-dy.log:6: expected the route '#p b3lyp/6-31g(d) force nosymm' as in most files, found '#p "
        "b3pw91/6-31g(d) force nosymm'\n";
    EXPECT_EQ(text.substr(0, first.size()), first);
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 5);
}

TEST(refusals, a_log_of_another_step) {
    const good_folder good;
    support::twin_job job = job_of(good.molecule, "coord-1-dx");
    job.points[0].positions(0, 0) = -0.01;
    write_log("coord-1-dx", job);
    EXPECT_EQ(
        refusals_of_run(),
        "PES-0/coord-1-dx.log:16: expected the geometry of the .com with atom 1 at (-0.005000, 0.000000, 0.113809), "
        "found it at (-0.010000, 0.000000, 0.113809)\n");
}

TEST(refusals, forces_of_an_earlier_geometry) {
    const good_folder good;
    support::twin_job job = job_of(good.molecule, "coord-1-dx");
    job.points.push_back(job.points[0]);
    job.points[1].forces.resize(3, 0);
    job.points[1].positions(0, 0) += 0.01;
    write_log("coord-1-dx", job);
    EXPECT_EQ(refusals_of_run(),
              "PES-0/coord-1-dx.log:26: expected forces at the last geometry, found those of an earlier one\n");
}

TEST(refusals, a_second_job_that_did_not_end) {
    const good_folder good;
    support::twin_log log{.jobs = {job_of(good.molecule, "coord-1-dx"), job_of(good.molecule, "coord-1-dx")}};
    log.jobs[1].ends_normally = false;
    support::write_file("PES-0/coord-1-dx.log", support::log_text(log));
    const std::string refused =
        "PES-0/coord-1-dx.log: expected the log of a finished job, found one whose last job, number 2, did not end "
        "normally\n";
    EXPECT_EQ(refusals_of_run(), refused);
    log.jobs[1].points.clear();  // it ended before its first geometry
    log.jobs[1].archive = false;
    support::write_file("PES-0/coord-1-dx.log", support::log_text(log));
    EXPECT_EQ(refusals_of_run(), refused);
}

TEST(refusals, logs_that_were_written_one_after_another) {
    const good_folder good;
    const std::string expected = assemble().standard_output;
    const std::string whole = support::read_file("PES-0/coord-1-dx.log");
    support::twin_job other_job = job_of(good.molecule, "coord-1-dx");
    other_job.points[0].forces *= -1.0;
    const std::string other = support::log_text({.jobs = {other_job}});
    const std::string error = " Error termination via Lnk1e in /opt/l502.exe at Thu Jan  1 00:00:00 2026.\n";
    const std::string refused =
        "PES-0/coord-1-dx.log: expected the log of a finished job, found one whose last job, number 2, did not end "
        "normally\n";
    // Wherever the first one broke off, the second one counts alone.
    for (std::size_t size = other.find('\n') + 1; size < other.size(); size += 211) {
        for (const std::string& between : {std::string(), "\n" + error, std::string("\nslurmstepd: cancelled\n")}) {
            SCOPED_TRACE(std::to_string(size) + between);
            support::write_file("PES-0/coord-1-dx.log", other.substr(0, size) + between + whole);
            const support::outcome done = assemble();
            EXPECT_EQ(done.status, 0) << done.standard_error;
            EXPECT_EQ(done.standard_output, expected);
            support::write_file("PES-0/coord-1-dx.log", whole + other.substr(0, size) + between);
            EXPECT_EQ(refusals_of_run(), refused);
        }
    }
    support::write_file("PES-0/coord-1-dx.log", other + whole);  // two that ended: the last one
    EXPECT_EQ(assemble().standard_output, expected);
}

TEST(refusals, checkpoints_of_another_molecule) {
    const good_folder good;
    support::twin_checkpoint checkpoint;
    checkpoint.numbers = good.molecule.reference.numbers;
    checkpoint.point = good.molecule.at(read_geometry_file("PES-0/coord-1-dx.com"));
    const auto write = [](const char* name, const support::twin_checkpoint& changed) {
        std::filesystem::remove("PES-0/" + std::string(name) + ".log");
        support::write_file("PES-0/" + std::string(name) + ".fchk", support::checkpoint_text(changed));
    };
    support::twin_checkpoint changed = checkpoint;
    changed.numbers[0] = 16;
    write("coord-0-00", changed);
    changed = checkpoint;
    changed.charge = -1;
    changed.multiplicity = 2;
    write("coord-1-dx", changed);
    changed = checkpoint;
    changed.point.positions(0, 0) = -0.01;
    write("coord-1-dy", changed);
    changed.numbers.pop_back();
    changed.point.positions.conservativeResize(3, 2);
    changed.point.forces.conservativeResize(3, 2);
    write("coord-1-dz", changed);
    write("coord-1+dz", checkpoint);
    replace_in("PES-0/coord-1+dz.fchk", "  8.00000000E+00  1.00000000E+00", "  8.00000000E+00  0.00000000E+00");
    changed = checkpoint;
    changed.route = "# hf/3-21g force nosymm";
    changed.point = good.molecule.at(read_geometry_file("PES-0/coord-2-dx.com"));
    write("coord-2-dx", changed);
    EXPECT_EQ(
        refusals_of_run(),
        "PES-0/coord-0-00.fchk: expected O as atom 1, found S\n"
        "PES-0/coord-1-dx.fchk: expected charge 0 and multiplicity 1, found -1 and 2\n"
        "PES-0/coord-1-dy.fchk: expected the geometry of the .com with atom 1 at (0.000000, -0.005000, 0.113809), "
        "found it at (-0.010000, 0.000000, 0.113809)\n"
        "PES-0/coord-1-dz.fchk: expected 3 atoms, found 2\n"
        "PES-0/coord-1+dz.fchk: expected no ghost atoms, found atom 2 without a nuclear charge\n"
        "PES-0/coord-2-dx.fchk: expected the route '#p b3lyp/6-31g(d) force nosymm' as in most files, found '# "
        "hf/3-21g force nosymm'\n");
}

TEST(refusals, checkpoints_without_a_route_by_another_method) {
    const good_folder good;
    int n = 0;
    const auto write = [&](const std::string& name, const char* method, const char* basis, const char* route) {
        support::twin_checkpoint checkpoint;
        checkpoint.method = method;
        checkpoint.basis = basis;
        checkpoint.route = route;
        checkpoint.numbers = good.molecule.reference.numbers;
        checkpoint.point = good.molecule.at(read_geometry_file("PES-0/" + name + ".com"));
        std::filesystem::remove("PES-0/" + name + ".log");
        support::write_file("PES-0/" + name + ".fchk", support::checkpoint_text(checkpoint));
    };
    for (const std::string& name : names()) {  // checkpoints and the archive entries of logs are alike
        if (++n % 2 == 0) {
            write(name, "rb3LYP", "6-31G(d)", "");
        }
    }
    EXPECT_EQ(assemble().status, 0);
    write("coord-1-dx", "RHF", "6-31G(d)", "");
    write("coord-1-dy", "RB3LYP", "6-31G", "");
    write("coord-1-dz", "RB3LYP", "6-31G(d)", "#p b3lyp/6-31g(d) force nosymm");
    write("coord-2-dx", "RHF", "6-31G(d)", "#p hf/6-31g(d) force nosymm");  // one message tells enough
    support::twin_job job = job_of(good.molecule, "coord-1+dz");
    job.method = "RB3PW91";
    write_log("coord-1+dz", job);
    EXPECT_EQ(refusals_of_run(),
              "PES-0/coord-1-dx.fchk:2: expected the method and basis 'rb3lyp/6-31g(d)' as in most files, found "
              "'rhf/6-31g(d)'\n"
              "PES-0/coord-1-dy.fchk:2: expected the method and basis 'rb3lyp/6-31g(d)' as in most files, found "
              "'rb3lyp/6-31g'\n"
              "PES-0/coord-1+dz.log:6: expected the method and basis 'rb3lyp/6-31g(d)' as in most files, found "
              "'rb3pw91/6-31g(d)'\n"
              "PES-0/coord-2-dx.fchk: expected the route '#p b3lyp/6-31g(d) force nosymm' as in most files, found '#p "
              "hf/6-31g(d) force nosymm'\n");
}

TEST(refusals, checkpoints_with_other_text_than_numbers) {
    const good_folder good;
    support::twin_checkpoint checkpoint;
    checkpoint.numbers = good.molecule.reference.numbers;
    checkpoint.point = good.molecule.at(read_geometry_file("PES-0/coord-1-dx.com"));
    checkpoint.other_sections = false;
    std::string text = support::checkpoint_text(checkpoint);
    const std::size_t gradient = text.find('\n', text.find("Cartesian Gradient")) + 1;
    std::filesystem::remove("PES-0/coord-1-dx.log");
    support::write_file("PES-0/coord-1-dx.fchk", text.replace(gradient, 16, " ***************"));
    EXPECT_EQ(refusals_of_run(),
              "PES-0/coord-1-dx.fchk:13: expected a number in the section 'Cartesian Gradient', found "
              "'***************'\n");
}

TEST(refusals, forces_that_are_all_zero) {
    const good_folder good;
    const auto write = [](const char* name) {
        std::filesystem::remove("PES-0/" + std::string(name) + ".log");
        support::write_file("PES-0/" + std::string(name) + ".forces", "0 0 0\n0 0 -0.0\n0 0 0\n");
    };
    write("coord-0-00");  // the forces of a stationary point
    write("coord-1-dx");  // out of the plane of three atoms, which turns them as a whole
    EXPECT_EQ(assemble().status, 0);
    write("coord-1-dy");
    write("coord-2+dz");
    const std::string refused =
        ".forces: expected forces at a displaced geometry, found zero on every atom; nothing was computed, compute it "
        "again\n";
    EXPECT_EQ(refusals_of_run(), "PES-0/coord-1-dy" + refused + "PES-0/coord-2+dz" + refused);
}

TEST(refusals, a_field_that_did_not_converge) {
    const good_folder good;
    const std::string failed = " >>>>>>>>>> Convergence criterion not met.\n";
    const std::string whole = support::read_file("PES-0/coord-1-dx.log");
    const std::size_t energy = whole.find(" SCF Done:");
    support::write_file("PES-0/coord-1-dx.log", whole.substr(0, energy) + failed + whole.substr(energy));
    EXPECT_EQ(refusals_of_run(),
              "PES-0/coord-1-dx.log:23: expected a self-consistent field that converged, found one that did not; "
              "compute it again\n");
    // The first one failed, and another algorithm went on from there.
    const std::string line = whole.substr(energy, whole.find('\n', energy) + 1 - energy);
    support::write_file("PES-0/coord-1-dx.log", whole.substr(0, energy) + failed + line + whole.substr(energy));
    EXPECT_EQ(assemble().status, 0);
    // It failed in a job before this one, which ended there.
    support::write_file("PES-0/coord-1-dx.log", whole.substr(0, energy) + failed + whole);
    EXPECT_EQ(assemble().status, 0);
}

TEST(refusals, compressed_logs_and_links_that_lead_nowhere) {
    const good_folder good;
    support::write_file("PES-0/coord-1-dx.log", "\x1f\x8b\x08 and more");
    std::filesystem::remove("PES-0/coord-1-dy.log");
    std::filesystem::create_symlink("gone", "PES-0/coord-1-dy.log");
    EXPECT_EQ(refusals_of_run(),
              "PES-0/coord-1-dx.log: expected the text of a log, found a compressed file; unpack it\n"
              "PES-0/coord-1-dy.log: cannot open: No such file or directory\n");
}

TEST(refusals, plain_forces_without_energies_in_another_unit) {
    const good_folder good;
    const auto write = [&](double factor) {
        for (const std::string& name : names()) {
            std::filesystem::remove("PES-0/" + name + ".log");
            std::ostringstream text;
            text.precision(12);
            text << factor * good.molecule.at(read_geometry_file("PES-0/" + name + ".com")).forces.transpose() << "\n";
            support::write_file("PES-0/" + name + ".forces", text.str());
        }
    };
    write(-1.0);
    std::string refused = refusals_of_run();
    EXPECT_TRUE(
        refused.starts_with("displacement_assembler: error: PES-0/files.out: expected forces, found a Hessian "
                            "whose diagonal has the sum -"))
        << refused;
    EXPECT_TRUE(refused.ends_with(" hartree/bohr^2; the .forces files hold gradients, which have the other sign\n"));
    write(1185.82);  // kcal/mol/angstrom
    refused = refusals_of_run();
    EXPECT_TRUE(
        refused.starts_with("displacement_assembler: error: PES-0/files.out: expected forces in hartree/bohr, "
                            "found a Hessian with "))
        << refused;
    EXPECT_TRUE(refused.ends_with("; the .forces files are of another unit\n")) << refused;
    write(1.0);
    EXPECT_EQ(assemble().status, 0);
}

TEST(refusals, plain_forces) {
    const good_folder good;
    const std::string row = "0.1 0.2 0.3\n";
    const auto write = [](const char* name, const std::string& text) {
        std::filesystem::remove("PES-0/" + std::string(name) + ".log");
        support::write_file("PES-0/" + std::string(name) + ".forces", text);
    };
    write("coord-0-00", "");
    write("coord-1-dx", row + row);
    write("coord-1-dy", row + row + row + row);
    write("coord-1-dz", row + row + "0.1 0.2 ****\n");
    write("coord-1+dz", "energy ****\n" + row + row + row);
    write("coord-2-dx", "dipole 0 1\n" + row + row + row);
    write("coord-2-dy", "energy 1\nenergy 1\n" + row + row + row);
    write("coord-2+dy", "dipole 1 2 3\n" + row + "dipole 1 2 3\n" + row + row);
    write("coord-2-dz", row + "0.1 0.2 1e400\n" + row);
    EXPECT_EQ(refusals_of_run(),
              "PES-0/coord-0-00.forces: expected forces on 3 atoms, found 0\n"
              "PES-0/coord-1-dx.forces: expected forces on 3 atoms, found 2\n"
              "PES-0/coord-1-dy.forces:4: expected forces on 3 atoms and no more, found '0.1 0.2 0.3'\n"
              "PES-0/coord-1-dz.forces:3: expected three numbers, 'energy' or 'dipole', found '0.1 0.2 ****'\n"
              "PES-0/coord-1+dz.forces:1: expected a number after 'energy', found 'energy ****'\n"
              "PES-0/coord-2-dx.forces:1: expected three numbers after 'dipole', found 'dipole 0 1'\n"
              "PES-0/coord-2-dy.forces:2: expected one energy, found 'energy 1'\n"
              "PES-0/coord-2+dy.forces:3: expected one dipole, found 'dipole 1 2 3'\n"
              "PES-0/coord-2-dz.forces:2: expected three numbers, 'energy' or 'dipole', found '0.1 0.2 1e400'\n");
}

TEST(refusals, without_the_reference_nothing_else_is_looked_at) {
    const good_folder good;
    replace_in("PES-0/coord-0-00.com", "#p", " p");
    replace_in("PES-0/coord-1-dx.com", "#p", " p");
    support::write_file("PES-0/coord-1-dy.log", "");
    std::filesystem::remove("PES-0/coord-1-dz.log");
    EXPECT_EQ(refusals_of_run(),
              "PES-0/coord-0-00.com: expected a route, found none\n"
              "PES-0/coord-1-dx.com: expected a route, found none\n"
              "PES-0/coord-1-dz: expected a .log, .out, .fchk or .forces, found none\n"
              "displacement_assembler: error: PES-0/files.out: 9 of 10 are there\n");
}

TEST(refusals, a_list_of_another_molecule) {
    const good_folder good;
    replace_in("PES-0/coord-0-00.com", "   H                0.00000000", "   H                0.15000000");
    EXPECT_EQ(
        refusals_of_run(),
        "PES-0/coord-0-00.com:8: expected atom 2 to be carried onto atom 3 by operation C2z of the list, found it "
        "elsewhere; the list is that of another molecule, run displacement_generator again\n");
}

TEST(refusals, operations_that_carry_atoms_farther_than_is_allowed) {
    // 0.002 bohr
    for (const char* unit : {"", " units=au"}) {
        const good_folder good;
        const std::string whole = support::read_file("PES-0/coord-0-00.com");
        const double allowed = *unit == '\0' ? 0.002 * 0.529177210903 : 0.002;
        for (const double beyond : {-1e-6, 1e-6}) {
            char moved[32];
            static_cast<void>(std::snprintf(moved, sizeof moved, "%.8f", allowed + beyond));
            support::write_file("PES-0/coord-0-00.com", whole);
            replace_in("PES-0/coord-0-00.com", "nosymm", "nosymm" + std::string(unit));
            replace_in("PES-0/coord-0-00.com", "   H                0.00000000",
                       "   H                " + std::string(moved));
            const std::string refused = refusals_of_run();
            EXPECT_EQ(refused.starts_with("PES-0/coord-0-00.com:8: expected atom 2 to be carried onto atom 3 by "
                                          "operation C2z of the list, found it elsewhere"),
                      beyond > 0.0)
                << refused;
        }
    }
}

TEST(refusals, steps_that_are_off_by_more_than_the_digits) {
    // Six decimals of dx, and eight of both coordinates: 0.51e-6 may be lost.
    const good_folder good;
    const std::string whole = support::read_file("PES-0/coord-1-dx.com");
    for (const char* step : {"-0.00500051", "-0.00499949", "-0.00500052", "-0.00499948"}) {
        SCOPED_TRACE(step);
        support::write_file("PES-0/coord-1-dx.com", whole);
        replace_in("PES-0/coord-1-dx.com", "-0.00500000", step);
        write_log("coord-1-dx", job_of(good.molecule, "coord-1-dx"));
        const std::string last = std::string(step).substr(10);
        if (last == "1" || last == "9") {
            EXPECT_EQ(assemble().standard_error, "");
        } else {
            EXPECT_EQ(refusals_of_run(),
                      "PES-0/coord-1-dx.com:7: expected x of atom 1 to be moved by -0.00500000 from the reference, "
                      "found " +
                          std::string(step) + "\n");
        }
    }
}

TEST(refusals, geometry_files) {
    const good_folder good;
    replace_in("PES-0/coord-1-dx.com", "-0.00500000", "-0.00500100");
    replace_in("PES-0/coord-1-dy.com", "0.77218912", "0.77218913");
    replace_in("PES-0/coord-1-dz.com", "b3lyp", "b3pw91");
    replace_in("PES-0/coord-1+dz.com", "0 1\n", "0 3\n");
    replace_in("PES-0/coord-2-dx.com", "   H ", "   F ");
    std::filesystem::remove("PES-0/coord-2-dy.com");
    replace_in("PES-0/coord-2+dy.com", "0 1\n", "2 1\n");
    replace_in("PES-0/coord-2-dz.com", "0.11380895\n", "0.11380895 7\n");
    replace_in("PES-0/coord-2+dz.com", "\n\n\n", "\n   H 0 0 9\n\n");
    EXPECT_EQ(refusals_of_run(),
              "PES-0/coord-1-dx.com:7: expected x of atom 1 to be moved by -0.00500000 from the reference, found "
              "-0.00500100\n"
              "PES-0/coord-1-dy.com:8: expected y of atom 2 to be moved by 0.00000000 from the reference, found "
              "0.00000001\n"
              "PES-0/coord-1-dz.com:2: expected the route '#p b3lyp/6-31g(d) force nosymm' of the reference, found '#p "
              "b3pw91/6-31g(d) force nosymm'\n"
              "PES-0/coord-1+dz.com:6: expected charge 0 and multiplicity 1 of the reference, found 0 and 3\n"
              "PES-0/coord-2-dx.com:8: expected atom 2, H, found 'F               -0.00500000    0.77218912   "
              "-0.45523579'\n"
              "PES-0/coord-2-dy.com: cannot open: No such file or directory\n"
              "PES-0/coord-2+dy.com:6: expected charge 0 and multiplicity 1 of the reference, found 2 and 1\n"
              "PES-0/coord-2-dz.com:7: expected three coordinates of atom 1, found 'O                0.00000000    "
              "0.00000000    0.11380895 7'\n"
              "PES-0/coord-2+dz.com:10: expected a blank line after 3 atoms, found 'H 0 0 9'\n");
}

TEST(refusals, geometry_files_that_are_cut_or_of_another_form) {
    struct geometry_case {
        const char* before;  ///< what stands before it is kept
        const char* rest;
        const char* message;
    };
    const good_folder good;
    const std::string whole = support::read_file("PES-0/coord-2-dy.com");
    for (const geometry_case& one :
         {geometry_case{"\n\nwater", "", "2: expected a blank line after the route, found the end of the file"},
          {"water", "", "3: expected a blank line after the title, found the end of the file"},
          {"\n0 1", "", "4: expected a blank line after the title, found the end of the file"},
          {"0 1", "", "5: expected charge and multiplicity, found the end of the file"},
          {"0 1", "\n", "6: expected charge and multiplicity, found ''"},
          {"0 1", ",1\n", "6: expected charge and multiplicity, found ',1'"},
          {"0 1", "0.5 1\n", "6: expected charge and multiplicity, found '0.5 1'"},
          {"0 1", "0\n", "6: expected charge and multiplicity, found '0'"},
          {"0 1", "0 one\n", "6: expected charge and multiplicity, found '0 one'"},
          {"   O ", "", "6: expected atom 1, O, found the end of the file"},
          {"-0.77218912", "x -0.77218912   -0.45523579\n",
           "9: expected three coordinates of atom 3, found 'H                0.00000000   x -0.77218912   "
           "-0.45523579'"}}) {
        SCOPED_TRACE(one.message);
        const std::size_t kept = whole.find(one.before);
        ASSERT_NE(kept, std::string::npos);
        support::write_file("PES-0/coord-2-dy.com", whole.substr(0, kept) + one.rest);
        EXPECT_EQ(refusals_of_run(), "PES-0/coord-2-dy.com:" + std::string(one.message) + "\n");
    }
    // An editor took the blank lines at the end away, or made them end in CR LF, or the title was empty.
    std::string windows;
    for (const char c : whole) {
        windows += c == '\n' ? "\r\n" : std::string(1, c);
    }
    std::string untitled = whole;
    untitled.erase(untitled.find("water"), 5);
    for (const std::string& text : {whole.substr(0, whole.size() - 3), windows, untitled}) {
        support::write_file("PES-0/coord-2-dy.com", text);
        EXPECT_EQ(assemble().standard_error, "") << text;
    }
}

TEST(refusals, a_log_that_is_cut_gives_no_result) {
    const good_folder good;
    support::twin_job job = job_of(good.molecule, "coord-1-dx");
    for (int i = 0; i < 1500; ++i) {
        job.between += " What Gaussian prints between the geometry and its forces is much longer.\n";
    }
    write_log("coord-1-dx", job);
    ASSERT_EQ(assemble().status, 0);
    const std::string whole = support::read_file("PES-0/coord-1-dx.log");
    ASSERT_GT(whole.size(), 100000U);
    std::vector<std::size_t> sizes;
    for (std::size_t size = 0; size < whole.size() - 60;
         size += size < 2000 || whole.size() - size < 4000 ? 100U : 1000U) {
        sizes.push_back(size);
    }
    for (const std::size_t size : sizes) {
        support::write_file("PES-0/coord-1-dx.log", whole.substr(0, size));
        const support::outcome done = assemble();
        ASSERT_EQ(done.status, 1) << size;
        ASSERT_EQ(done.standard_output, "") << size;
        ASSERT_TRUE(done.standard_error.starts_with("PES-0/coord-1-dx.log")) << done.standard_error;
    }
}

TEST(refusals, no_list) {
    const support::scratch_folder folder;
    const support::outcome done = assemble();
    EXPECT_EQ(done.status, 2);
    EXPECT_EQ(done.standard_error,
              "displacement_assembler: error: .: expected files.out or PES-0/files.out in this folder, found neither; "
              "run displacement_generator first\n");
}

TEST(refusals, a_list_that_does_not_agree_with_itself) {
    struct list_case {
        const char* from;
        const char* to;
        const char* message;
    };
    const std::vector<list_case> cases = {
        {"atoms:      3", "atoms: ******",
         "1: expected a number from 1 to 999999 as the number of atoms, "
         "found '******'"},
        {"atoms:      3\n", "atoms:      3 x\n", "1: expected this line to end at column 23, found ' x'"},
        {"files:     10", "files:     11",
         "14: expected the name of a geometry file, coord-..., found "
         "'Begin_vesk_info'"},
        {"Number of files:     10", "Number of Files:     10",
         "2: expected 'Number of files: ', found 'Number of Files:     10'"},
        {"dx=  0.005000", "dx=**********", "3: expected 'dx=' and the step, found 'dx=**********'"},
        {"coord-0-00", "coord-9-00", "4: expected the name of the reference, 'coord-0-00', found 'coord-9-00'"},
        {"       C2V", "       C3V",
         "15: expected 'Point          group:' and one of the eight groups, found 'Point          group:       "
         "C3V'"},
        {"operations:         4", "operations:         8", "16: expected 4 as the order of C2V, found '8'"},
        {"   -1.000000000    0.000000000    0.000000000", "   -0.500000000    0.000000000    0.000000000",
         "23: expected -1 in row 1, column 1 of the matrix of C2z, found '-0.500000000'"},
        {"       2      H        1       2       3       3       2",
         "       2      H        1       2       3       3       3",
         "38: expected Syz to carry the atoms onto different ones, found two that go to atom 3"},
        {"       1      O        8 ", "       1     Qq        8 ", "36: expected a chemical symbol, found 'Qq'"},
        {"       1      O        8 ", "       1      O        7 ",
         "36: expected 8 as the atomic number of this symbol, found '7'"},
        {"       2  1+dx           F       1 ", "       2  1+dx           F       4 ",
         "44: expected an operation that carries point 4 onto point 2, found C2z, which carries it onto point 3"},
        {"       2     C2z\n       3", "       2     Syz\n       3", "44: expected C2z as operation 2, found 'Syz'"},
        {"       9  2-dy           T       9 ", "       9  2-dy           T      10 ",
         "51: expected point 9, which is computed, to follow from itself by E, found '       9  2-dy           T  "
         " "
         "   10       1       E'"},
        {"      10  2+dy           T", "      10  2-dy           T", "52: expected the name 2+dy, found '2-dy'"},
        {"                    coord-1-dx\n", "                    coord-1/dx\n",
         "5: expected the name of a geometry file, coord-..., found '                    coord-1/dx'"},
        {"Operation         1         E", "Operation         1       C2z",
         "18: expected the operation E first, found 'C2z'"},
        {"       2      H        1       2 ", "       2      H        1       3 ",
         "37: expected atom 2 as its own image under E, found '3'"},
        {"       2  1+dx           F       1 ", "       2  1+dx           F       2 ",
         "44: expected another point than 2, which is not computed, as m, found '       2  1+dx           F       "
         "2       2     C2z'"},
        {"       2  1+dx           F       1 ", "       2  1+dx           F       0 ",
         "44: expected a number from 1 to 18 as m, found '0'"},
        {"                    coord-1-dy\n", "                    coord-3-dy\n",
         "45: expected coord-1-dy as name 3 at the top of the list, found coord-3-dy"},
        {"       5  1-dz           T", "       5  1-dz           G", "47: expected T or F as is_calc, found 'G'"},
        {"      14  3+dx           F       7       2     C2z", "      14  3+dx           F      13       4     Syz",
         "60: expected computed points as m, found point 13 for point 14"},
        {"End_vesk_info\n", "",
         "60: expected 'End_vesk_info', found the end of the list; displacement_generator did "
         "not finish, or the list was cut"},
        {"End_vesk_info\n", "End_vesk_info\n\n", "62: expected 'End_vesk_info' as the last line, found ''"},
        {"atoms:      3", "atoms:      0", "1: expected a number from 1 to 999999 as the number of atoms, found '0'"},
        {"Number of atoms:      3\nNumber of files:     10", "Number of atoms: 200000\nNumber of files:      0",
         "2: expected a number from 1 to 999999 as the number of files, found '0'"},
        {"files:     10", "files:     20", "2: expected a number from 1 to 19 as the number of files, found '20'"},
        {"files:     10", "files:     19",
         "14: expected the name of a geometry file, coord-..., found 'Begin_vesk_info'"},
        {"files:     10\n", "files:     10 x\n", "2: expected this line to end at column 23, found ' x'"},
        {"dx=  0.005000", "dy=  0.005000", "3: expected 'dx=' and the step, found 'dy=  0.005000'"},
        {"dx=  0.005000\n", "dx=  0.005000 x\n", "3: expected this line to end at column 13, found ' x'"},
        {"                    coord-1-dx\n", "                    coord-1 dx\n",
         "5: expected the name of a geometry file, coord-..., found '                    coord-1 dx'"},
        {"                    coord-1-dx\n", "                    coord-1\tdx\n",
         "5: expected the name of a geometry file, coord-..., found '                    coord-1\\tdx'"},
        {"                    coord-1-dx\n", "                    coord-1-dx x\n",
         "5: expected the name to end at column 30, found ' x'"},
        {"Begin_vesk_info", "Begin_info", "14: expected 'Begin_vesk_info', found 'Begin_info'"},
        {"Point          group:       C2V", "Point          Group:       C2V",
         "15: expected 'Point          group:' and one of the eight groups, found 'Point          Group:       "
         "C2V'"},
        {"       C2V\n", "       C2V x\n", "15: expected this line to end at column 31, found ' x'"},
        {"operations:         4\n", "operations:         4 x\n",
         "16: expected this line to end at column 31, found ' x'"},
        {"Operation     matrix:", "Operation   matrices:",
         "17: expected 'Operation     matrix:', found 'Operation   matrices:'"},
        {"Operation         1         E",
         "Atom correspondance:", "18: expected the operation E, found 'Atom correspondance:'"},
        {"Operation         1         E", "operation         1         E",
         "18: expected the operation E, found 'operation         1         E'"},
        {"Operation         1         E", "Operation         2         E",
         "18: expected 1 as the place of the operation, found '2'"},
        {"Operation         1         E\n", "Operation         1         E x\n",
         "18: expected this line to end at column 29, found ' x'"},
        {"Operation         2       C2z", "Operation         3       C2z",
         "22: expected 2 as the place of the operation, found '3'"},
        {"Operation         3       Szx", "Operation         3       C2z",
         "26: expected operations in the order E, C2z, C2y, C2x, I, Sxy, Szx, Syz, found 'C2z'"},
        {"Operation         3       Szx", "Operation         3       C4z",
         "26: expected operations in the order E, C2z, C2y, C2x, I, Sxy, Szx, Syz, found 'C4z'"},
        {"    0.000000000    0.000000000    1.000000000\nOperation         2",
         "    0.000000000    0.000000001    1.000000000\nOperation         2",
         "21: expected 0 in row 3, column 2 of the matrix of E, found '0.000000001'"},
        {"    0.000000000    0.000000000    1.000000000\nOperation         2",
         "    0.000000000    0.000000000***************\nOperation         2",
         "21: expected 1 in row 3, column 3 of the matrix of E, found '***************'"},
        {"    0.000000000    0.000000000    1.000000000\nOperation         2",
         "    0.000000000    0.000000000    1.000000000 x\nOperation         2",
         "21: expected the row to end at column 45, found ' x'"},
        {"Atom correspondance:", "Atom correspondence:",
         "34: expected an operation or 'Atom correspondance:', found 'Atom correspondence:'"},
        {"       n  symbol     nat ", "       m  symbol     nat ",
         "35: expected the heading of the correspondence table, found '       m  symbol     nat       E     C2z  "
         "   Szx     Syz'"},
        {"       n  symbol     nat ", "       n symbols     nat ",
         "35: expected the heading of the correspondence table, found '       n symbols     nat       E     C2z  "
         "   Szx     Syz'"},
        {"       n  symbol     nat ", "       n  symbol  number ",
         "35: expected the heading of the correspondence table, found '       n  symbol  number       E     C2z  "
         "   Szx     Syz'"},
        {"     C2z     Szx     Syz\n", "     C2z     Sxy     Syz\n", "35: expected the column of Szx, found 'Sxy'"},
        {"     C2z     Szx     Syz\n", "     C2z     Szx     Syz       I\n",
         "35: expected the heading to end at column 56, found '       I'"},
        {"       1      O        8 ", "       2      O        8 ", "36: expected 1 as the atom's number, found '2'"},
        {"       1      O        8 ", "       1      0        0 ", "36: expected a chemical symbol, found '0'"},
        {"       1      O        8 ", "       1    119        0 ", "36: expected a chemical symbol, found '119'"},
        {"       1      O        8 ", "       1    118        8 ",
         "36: expected 0 as the atomic number of this symbol, found '8'"},
        {"       1      O        8 ", "       1      1        8 ",
         "36: expected 0 as the atomic number of this symbol, found '8'"},
        {"       1      O        8 ", "       1     OZ        8 ", "36: expected a chemical symbol, found 'OZ'"},
        {"       1      O        8 ", "       1     Oz        8 ", "36: expected a chemical symbol, found 'Oz'"},
        {"       1      O        8 ", "       1     O(        8 ",
         "36: expected 0 as the atomic number of this symbol, found '8'"},
        {"       2      H        1       2       3 ", "       2      H        1       2       0 ",
         "37: expected a number from 1 to 3 as an image, found '0'"},
        {"       2      H        1       2       3 ", "       2      H        1       2       4 ",
         "37: expected a number from 1 to 3 as an image, found '4'"},
        {"       3       3       2\n", "       3       3       2 x\n",
         "37: expected the row to end at column 56, found ' x'"},
        {"Total         points:        18", "Total         points:        19", "39: expected 18 as 6 N, found '19'"},
        {"Calculated    points:         9", "Calculated    points:        10",
         "40: expected 9 as the number of files less one, found '10'"},
        {"      file is_calc", "      name is_calc",
         "41: expected '       n      file is_calc       m num(op)      op', found '       n      name is_calc     "
         "  m num(op)      op'"},
        {"       0  0-00           T       0       1       E", "       1  0-00           T       0       1       E",
         "42: expected 0 as the number of the point, found '1'"},
        {"       0  0-00           T       0       1       E", "       0  1-00           T       0       1       E",
         "42: expected the reference, 0-00, as row 0, found '       0  1-00           T       0       1       E'"},
        {"       0  0-00           T       0       1       E", "       0  0-00           F       0       1       E",
         "42: expected the reference, 0-00, as row 0, found '       0  0-00           F       0       1       E'"},
        {"       0  0-00           T       0       1       E", "       0  0-00           T       0       1     C2z",
         "42: expected the reference, 0-00, as row 0, found '       0  0-00           T       0       1     C2z'"},
        {"       0  0-00           T       0       1       E", "       0  0-00           T       1       1       E",
         "42: expected 0 as m, found '1'"},
        {"       0  0-00           T       0       1       E", "       0  0-00           T       0       2       E",
         "42: expected 1 as num(op), found '2'"},
        {"       0       1       E\n", "       0       1       E x\n",
         "42: expected the row to end at column 50, found ' x'"},
        {"       1  1-dx           T", "       2  1-dx           T",
         "43: expected 1 as the number of the point, found '2'"},
        {"       1  1-dx           T", "       1  1              T", "43: expected the name 1-dx, found '1'"},
        {"       1  1-dx           T", "       1  1+dx           T",
         "43: expected coord-1+dx as name 2 at the top of the list, found coord-1-dx"},
        {"       1  1-dx           T", "       1  2-dx           T", "43: expected the name 1-dx, found '2-dx'"},
        {"       2  1+dx           F       1 ", "       2  1+dx           F      19 ",
         "44: expected a number from 1 to 18 as m, found '19'"},
        {"       2     C2z\n       3", "       0     C2z\n       3",
         "44: expected a number from 1 to 4 as num(op), found '0'"},
        {"       2     C2z\n       3", "       5     C2z\n       3",
         "44: expected a number from 1 to 4 as num(op), found '5'"},
        {"       2     C2z\n       3", "       2     C2z x\n       3",
         "44: expected the row to end at column 50, found ' x'"},
        {"       9       1       E\n", "       9       2     C2z\n",
         "51: expected point 9, which is computed, to follow from itself by E, found '       9  2-dy           T  "
         "     9       2     C2z'"},
    };
    const good_folder good;
    const std::string whole = support::read_file("PES-0/files.out");
    for (const list_case& one : cases) {
        SCOPED_TRACE(one.message);
        support::write_file("PES-0/files.out", whole);
        replace_in("PES-0/files.out", one.from, one.to);
        EXPECT_EQ(refusals_of_run(2),
                  "displacement_assembler: error: PES-0/files.out:" + std::string(one.message) + "\n");
    }
}

TEST(refusals, no_list_for_blanks_within_its_columns_or_behind_them) {
    const good_folder good;
    const std::string expected = assemble().standard_output;
    std::string wider = support::read_file("PES-0/files.out");
    for (const char* line : {"atoms:      3", "files:     10", "dx=  0.005000", "coord-1-dx", "       C2V",
                             "operations:         4", "Operation         2       C2z", "Syz\n       1      O",
                             "       3       3       2", "points:        18", "       9       1       E"}) {
        const std::size_t at = wider.find(line);
        ASSERT_NE(at, std::string::npos) << line;
        wider.insert(wider.find('\n', at), " \t ");
    }
    support::write_file("PES-0/files.out", wider);
    replace_in("PES-0/files.out", "1-dx           T       1", "1-dx    T       1       ");
    replace_in("PES-0/files.out", "0-00           T       0       1       E", "0-00    T       0       1       E");
    const support::outcome done = assemble();
    EXPECT_EQ(done.standard_error, "");
    EXPECT_EQ(done.standard_output, expected);
}

TEST(refusals, a_list_with_a_name_too_many) {
    const good_folder good;
    replace_in("PES-0/files.out", "files:     10", "files:     11");
    replace_in("PES-0/files.out", "points:         9", "points:        10");
    replace_in("PES-0/files.out", "Begin_vesk_info", "                    coord-3-dx\nBegin_vesk_info");
    EXPECT_EQ(refusals_of_run(2),
              "displacement_assembler: error: PES-0/files.out:61: expected a computed point for each name, found none "
              "for coord-3-dx\n");
}

TEST(refusals, a_list_with_a_name_too_few) {
    const good_folder good;
    replace_in("PES-0/files.out", "files:     10", "files:      9");
    replace_in("PES-0/files.out", "points:         9", "points:         8");
    replace_in("PES-0/files.out", "                    coord-2+dz\n", "");
    EXPECT_EQ(refusals_of_run(2),
              "displacement_assembler: error: PES-0/files.out:53: expected coord-2+dz as name 10 at the top of the "
              "list, found no more names\n");
}

TEST(refusals, a_list_that_carries_an_atom_onto_one_of_another_element) {
    const good_folder good;
    replace_in("PES-0/files.out", "8       1       1 ", "8       1       2 ");
    replace_in("PES-0/files.out", "1       2       3 ", "1       2       1 ");
    replace_in("PES-0/files.out", "1       3       2 ", "1       3       3 ");
    EXPECT_EQ(refusals_of_run(2),
              "displacement_assembler: error: PES-0/files.out:38: expected C2z to carry atoms onto those of the same "
              "element, found atom 1 carried onto atom 2\n");
}

TEST(refusals, a_list_that_is_cut_gives_no_result) {
    const good_folder good;
    const std::string whole = support::read_file("PES-0/files.out");
    support::write_file("PES-0/files.out", "");
    EXPECT_EQ(assemble().standard_error,
              "displacement_assembler: error: PES-0/files.out:1: expected 'Number of atoms: ', found the end of the "
              "list; displacement_generator did not finish, or the list was cut\n");
    for (std::size_t size = 0; size < whole.size() - 1; size += 37) {
        support::write_file("PES-0/files.out", whole.substr(0, size));
        const support::outcome done = assemble();
        ASSERT_EQ(done.status, 2) << size;
        ASSERT_EQ(done.standard_output, "") << size;
    }
}

TEST(refusals, outputs_that_are_inputs) {
    const good_folder good;
    std::filesystem::create_hard_link("PES-0/coord-1-dx.log", "other");
    const std::string before = support::read_file("PES-0/coord-1-dx.log");
    for (const char* name : {"PES-0/coord-1-dx.log", "other"}) {
        const support::outcome done = assemble({"--molden", name});
        EXPECT_EQ(done.status, 2);
        EXPECT_EQ(done.standard_error, "displacement_assembler: error: " + std::string(name) +
                                           ": expected another file than an input, which is never overwritten\n");
        EXPECT_EQ(done.standard_output, "");
    }
    EXPECT_EQ(support::read_file("PES-0/coord-1-dx.log"), before);
    // Beside plain forces it would be the input of the next run.
    EXPECT_EQ(assemble({"--hessian", "./PES-0/coord-0-00.fchk"}).standard_error,
              "displacement_assembler: error: ./PES-0/coord-0-00.fchk: expected another file than an input, which is "
              "never overwritten\n");
    EXPECT_EQ(assemble({"--molden", "x", "--hessian", "./x"}).standard_error,
              "displacement_assembler: error: ./x: expected another file for each output, found the same one twice\n");
    EXPECT_EQ(assemble({"--molden", "nowhere/x"}).standard_error,
              "displacement_assembler: error: nowhere/x: cannot open for writing: No such file or directory\n");
}

TEST(refusals, command_lines) {
    const good_folder good;
    struct line_case {
        std::vector<std::string> arguments;
        const char* message;
    };
    for (const line_case& one :
         {line_case{{"--masses", "heavy"}, "--masses: expected isotope or average, found 'heavy'"},
          {{"--mass", "2"}, "--mass: expected ATOM=VALUE, such as 3=2.014, found '2'"},
          {{"--mass", "0=2"}, "--mass: expected ATOM=VALUE, such as 3=2.014, found '0=2'"},
          {{"--mass", "x=2"}, "--mass: expected ATOM=VALUE, such as 3=2.014, found 'x=2'"},
          {{"--mass", "1=0.00099"}, "--mass: expected a mass from 0.001 to 10000 amu, found '1=0.00099'"},
          {{"--mass", "1=10000.1"}, "--mass: expected a mass from 0.001 to 10000 amu, found '1=10000.1'"},
          {{"--mass", "1=nan"}, "--mass: expected ATOM=VALUE, such as 3=2.014, found '1=nan'"},
          {{"--mass", "1=-2"}, "--mass: expected a mass from 0.001 to 10000 amu, found '1=-2'"},
          {{"--mass", "1=2", "--mass", "1=3"}, "--mass: expected each atom once, found atom 1 twice"},
          {{"--molden", ""}, "--molden: expected the name of a file, found ''"},
          {{"--hessian", "-"}, "--hessian: expected the name of a file, found '-'"},
          {{""}, "FOLDER: expected the name of a folder, found an empty one"}}) {
        const support::outcome done = assemble(one.arguments);
        EXPECT_EQ(done.status, 2);
        EXPECT_EQ(done.standard_output, "");
        EXPECT_EQ(done.standard_error, "displacement_assembler: error: command line: " + std::string(one.message) +
                                           " (displacement_assembler --help tells more)\n");
    }
    EXPECT_EQ(assemble({"--mass", "1=0.001", "--mass", "3=10000"}).status, 0);
    EXPECT_EQ(assemble({"--mass", "4=2"}).standard_error,
              "displacement_assembler: error: command line: --mass: expected an atom from 1 to 3, found 4\n");
}

TEST(refusals, show_no_more_than_200_characters_of_a_text) {
    const auto cut = [](const std::string& text) {
        return text.substr(0, 200) + "... (" + std::to_string(text.size() - 200) + " more characters)";
    };
    const good_folder good;
    const std::string route = "#p b3lyp/6-31g(d) force nosymm";
    const std::string usual = route + " iop(" + std::string(180, '1') + ")";
    const std::string other = route + " iop(" + std::string(190, '2') + ")";
    for (const std::string& name : names()) {
        replace_in("PES-0/" + name + ".com", route, usual);
    }
    write_logs(good.molecule);
    support::twin_job job = job_of(good.molecule, "coord-1-dy");
    job.route = other;
    write_log("coord-1-dy", job);
    replace_in("PES-0/coord-1-dx.com", usual, other);
    EXPECT_EQ(refusals_of_run(), "PES-0/coord-1-dx.com:2: expected the route '" + cut(usual) +
                                     "' of the reference, found '" + cut(other) +
                                     "'\nPES-0/coord-1-dy.log:6: expected the route '" + cut(usual) +
                                     "' as in most files, found '" + cut(other) + "'\n");
    replace_in("PES-0/coord-1-dx.com", other, usual);
    for (const std::string& name : names()) {
        job = job_of(good.molecule, name);
        job.route = other;
        write_log(name, job);
    }
    EXPECT_EQ(assemble().standard_error, "PES-0/files.out: notice: the route of the results is '" + cut(other) +
                                             "', that of the .com files '" + cut(usual) + "'\n");
    const std::string name(201, 'x');
    EXPECT_EQ(assemble({name}).standard_error,
              "displacement_assembler: error: " + cut(name) +
                  ": expected files.out or PES-0/files.out in this folder, found neither; run displacement_generator "
                  "first\n");
    EXPECT_EQ(assemble({"--molden", name, "--hessian", name}).standard_error,
              "displacement_assembler: error: " + cut(name) +
                  ": expected another file for each output, found the same one twice\n");
}

TEST(check_hessian, refuses_what_no_molecule_has) {
    // A step of 0.01 bohr allows 1e-4 / 0.01 + 10 * 0.01^2 = 0.011 hartree/bohr^2.
    const auto stopped = [](double asymmetry, double largest, double sum, bool is_plain) {
        assembler::analysis made;
        made.longest_step = 0.01;
        made.hessian.largest_asymmetry = asymmetry;
        made.hessian.row = 1;
        made.hessian.column = 3;
        made.hessian.hessian = Eigen::MatrixXd::Zero(6, 6);
        made.hessian.hessian(4, 4) = largest;
        made.hessian.hessian(0, 0) = sum - largest;
        return support::stopped_with([&] { assembler::check_hessian("list", made, is_plain); });
    };
    for (const bool is_plain : {false, true}) {
        EXPECT_EQ(stopped(0.01099, 1.0, 2.0, is_plain), "no error");
        EXPECT_EQ(stopped(0.01101, 1.0, 2.0, is_plain),
                  "list: expected the forces of one potential, found a Hessian with an asymmetry of 0.011 "
                  "hartree/bohr^2 between y of atom 1 and x of atom 2; results of these points, or of those from "
                  "which they follow, are of another geometry, frame or unit, or no exact gradients|standard error|1");
        EXPECT_EQ(stopped(0.0, 15.0, 15.0, is_plain), "no error");
        EXPECT_EQ(stopped(0.0, 15.1, 15.1, is_plain),
                  is_plain ? "list: expected forces in hartree/bohr, found a Hessian with 15.1 hartree/bohr^2 for y of "
                             "atom 2; the .forces files are of another unit|standard error|1"
                           : "no error");
        EXPECT_EQ(stopped(0.0, 1.0, -0.0099, is_plain), "no error");
        EXPECT_EQ(stopped(0.0, 1.0, -0.0101, is_plain),
                  is_plain ? "list: expected forces, found a Hessian whose diagonal has the sum -0.0101 "
                             "hartree/bohr^2; the .forces files hold gradients, which have the other "
                             "sign|standard error|1"
                           : "no error");
    }
}

TEST(in_parallel, does_all_once_and_tells_how_far_it_is) {
    for (const std::size_t count : {0U, 1U, 15U, 16U, 17U, 1000U}) {
        std::vector<std::atomic<int>> done(count);
        std::size_t told = 0;
        assembler::in_parallel(
            count, [&](std::size_t n) { ++done.at(n); },
            [&](std::size_t so_far) {
                EXPECT_GT(so_far, told);
                EXPECT_LE(so_far, count);
                told = so_far;
            });
        EXPECT_TRUE(std::all_of(done.begin(), done.end(), [](const std::atomic<int>& times) { return times == 1; }));
        EXPECT_TRUE(count >= 16 || told == count);  // fewer files are worth no second thread
    }
}

TEST(in_parallel, does_all_by_itself_where_no_thread_can_begin) {
    pthread_attr_t usual;
    ASSERT_EQ(pthread_getattr_default_np(&usual), 0);
    pthread_attr_t huge;
    ASSERT_EQ(pthread_getattr_default_np(&huge), 0);
    ASSERT_EQ(pthread_attr_setstacksize(&huge, std::size_t{1} << 46U), 0);
    ASSERT_EQ(pthread_setattr_default_np(&huge), 0);
    EXPECT_THROW(std::thread([] {}).join(), std::system_error);
    std::size_t done = 0;
    assembler::in_parallel(100, [&](std::size_t n) { EXPECT_EQ(n, done++); });
    EXPECT_EQ(done, 100U);
    EXPECT_EQ(pthread_setattr_default_np(&usual), 0);
}

TEST(memory_limit, that_a_geometry_file_exceeds) {
    if (support::sanitized) {
        GTEST_SKIP() << "the sanitizers need more address space than this limit leaves";
    }
    const good_folder good;
    std::filesystem::resize_file("PES-0/coord-1-dx.com", std::uintmax_t{200} << 20U);
    const support::outcome done = assemble_within(100000);
    EXPECT_EQ(done.status, 1);
    EXPECT_EQ(done.standard_output, "");
    EXPECT_EQ(done.standard_error,
              "PES-0/coord-1-dx.com: std::bad_alloc\n"
              "displacement_assembler: error: PES-0/files.out: 10 of 10 are there, not all of them can be used\n");
}
