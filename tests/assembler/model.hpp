#pragma once

#include <Eigen/Core>
#include <filesystem>
#include <string>
#include <vector>

#include "gaussian_twin.hpp"
#include "support.hpp"

// A molecule whose energy is a quadratic form, in place of what Gaussian computes: forces, dipole moments and
// vibrations are known without any list, symmetry or difference.

namespace displacement_generator::assembler_tests {

/// A geometry file as the generator wrote it.
struct geometry_file {
    std::vector<int> numbers;
    Eigen::Matrix3Xd positions;  ///< angstrom
};
geometry_file read_geometry_file(const std::filesystem::path& path);

/// Energy 1/2 x H x with x the displacement from the reference (bohr), and a dipole moment that is linear in x.
struct model {
    geometry_file reference;
    Eigen::MatrixXd hessian;   ///< hartree/bohr^2, without forces on rigid motions, symmetric under all operations
    Eigen::Matrix3Xd dipoles;  ///< derivatives, e

    [[nodiscard]] support::twin_point at(const geometry_file& geometry) const;
};

/// A model in which nothing else is special: a random positive form, averaged over the operations of the molecule.
model make_model(const geometry_file& reference);

/// Vibrations by the textbook: the mass-weighted Hessian as a whole diagonalised, the six rigid motions left out.
struct textbook {
    Eigen::VectorXd frequencies;      ///< cm-1
    Eigen::VectorXd reduced_masses;   ///< amu
    Eigen::VectorXd force_constants;  ///< mdyne/angstrom
    Eigen::VectorXd intensities;      ///< km/mol
    Eigen::MatrixXd displacements;    ///< a column a mode, Cartesian, of length 1; the sign is arbitrary
};
textbook vibrations_of(const model& from, const std::vector<double>& masses);

/// A row of the table.
struct table_row {
    int number;
    std::string species;
    double frequency;
    double reduced_mass;
    double force_constant;
    std::string intensity;
};
std::vector<table_row> rows_of(const std::string& table);

/// The program that is tested, run in the current folder.
support::outcome assemble(const std::vector<std::string>& arguments = {});
/// The same with so much address space (kB), which is too little for the sanitizers.
support::outcome assemble_within(int limit);

/// Writes the input of an example and runs the generator on it in the current folder; `settings` are lines for its
/// control file.
void generate(const std::string& example, const std::string& settings = "dx = 0.005");
/// The same for a text.
void generate_from(const std::string& input, const std::string& settings);
/// One neon atom, all of whose results are there: forces of zero.
void compute_neon();

/// The names (without ending) of all geometry files in PES-0, the reference first.
std::vector<std::string> names();

/// The job for one geometry file.
support::twin_job job_of(const model& from, const std::string& name);
/// Writes a log for every file in PES-0.
void write_logs(const model& from);
void write_log(const std::string& name, const support::twin_job& job);

}  // namespace displacement_generator::assembler_tests
