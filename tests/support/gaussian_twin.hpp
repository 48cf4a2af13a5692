#pragma once

#include <Eigen/Core>
#include <optional>
#include <string>
#include <vector>

// Texts in the layouts of Gaussian's logs and formatted checkpoints, made from given numbers. This writer shares no
// code with the readers.

namespace displacement_generator::support {

/// One geometry with what a job computed there. All in one frame, that of the input.
struct twin_point {
    Eigen::Matrix3Xd positions;             ///< angstrom
    Eigen::Matrix3Xd forces;                ///< hartree/bohr; without columns: no table of forces
    std::optional<double> energy;           ///< hartree
    std::optional<Eigen::Vector3d> dipole;  ///< atomic units
};

/// A job as it shall show in a log.
struct twin_job {
    std::string route = "#p b3lyp/6-31g(d) force nosymm";
    std::string method = "RB3LYP";  ///< in the archive entry
    std::string title = "twin";
    int charge = 0;
    int multiplicity = 1;
    std::vector<int> numbers;        ///< of the centres; -1, 0 and -2 as Gaussian prints them
    std::vector<twin_point> points;  ///< one an orientation; an optimisation has many

    /// Rotation and shift that take the input's frame to the standard orientation: p goes to rotation * p + shift
    /// (angstrom). Where it has a value the log has standard orientations and the line of asterisks.
    struct turn {
        Eigen::Matrix3d rotation;
        Eigen::Vector3d shift;
    };
    std::optional<turn> standard;
    bool input_tables = true;  ///< whether there are tables in the input's frame
    bool z_matrix = false;     ///< "Z-Matrix orientation:" instead of "Input orientation:"
    bool archive = true;       ///< whether an archive entry stands at the end, with the last geometry
    bool ends_normally = true;
    double correlation = 0.0;  ///< where it is not 0: the archive has an energy MP2 lower by this
    std::string between;       ///< text after each geometry, as Gaussian prints much
};

struct twin_log {
    std::string before = {};  ///< what a batch system printed
    std::vector<twin_job> jobs = {};
    bool carriage_returns = false;
    bool bars = false;  ///< separators of the archive entry as on Windows
};

std::string log_text(const twin_log& log);

/// A job of one point, as the generator's files ask for: numbers, positions, forces; the rest to be set.
twin_job one_point(std::vector<int> numbers, const Eigen::Matrix3Xd& positions, const Eigen::Matrix3Xd& forces);

/// A formatted checkpoint.
struct twin_checkpoint {
    std::string title = "twin";
    std::string method = "RB3LYP";
    std::string basis = "6-31G(d)";
    std::string route;  ///< empty: no section
    int charge = 0;
    int multiplicity = 1;
    std::vector<int> numbers;
    twin_point point;                     ///< positions in angstrom
    Eigen::MatrixXd force_constants;      ///< 3N x 3N, hartree/bohr^2; without size: no section
    Eigen::Matrix3Xd dipole_derivatives;  ///< a column a coordinate; without columns: no section
    std::vector<double> weights;          ///< empty: no section
    bool other_sections = true;           ///< sections that no reader wants, among them texts and logicals
};

std::string checkpoint_text(const twin_checkpoint& checkpoint);

}  // namespace displacement_generator::support
