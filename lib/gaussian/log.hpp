#pragma once

#include <Eigen/Core>
#include <optional>
#include <string>
#include <vector>

#include "molecule.hpp"
#include "notice.hpp"
#include "source.hpp"

namespace displacement_generator::gaussian {

/// The frame of a geometry from a log. The input's frame is the one Gaussian read the molecule in, and that of the
/// forces; the standard orientation is turned and shifted against it unless `nosymm` was asked for.
enum class frame { input, standard };

/// One job of a log, with its last geometry.
struct log_job {
    int number = 0;               ///< 1 for the first job of the log; 0: no job has a geometry
    int line = 0;                 ///< of the route
    std::string route;            ///< in one line; empty where the log holds none
    std::string method;           ///< "RB3LYP", from the archive entry
    std::string basis;            ///< "6-31G(d)", likewise
    std::string user_route;       ///< of this job, or where Gaussian began it itself, of the job before it
    bool has_charge = false;      ///< whether charge and multiplicity were found
    int geometries = 0;           ///< how many were computed
    gaussian::molecule molecule;  ///< the last geometry. Dummy atoms, ghosts and translation vectors are left out
    frame in = frame::input;      ///< `standard` only where the log shows the last geometry in no other frame
    int decimals = 0;             ///< of the positions: 6 from a table, 10 from the archive entry
    int geometry_line = 0;  ///< of the heading of the table; 0 where the positions are from the archive entry alone
    int dummies = 0;        ///< centres with the atomic number -1
    int ghosts = 0;         ///< centres with the atomic number 0, or with the atomic type of a ghost
    int vectors = 0;        ///< centres with the atomic number -2: translation vectors
    int typed = 0;          ///< atoms with an atomic type other than 0: of ONIOM, molecular mechanics or a fragment
    bool ended_normally = false;

    int unconverged_line = 0;      ///< where the log says that the last self-consistent field did not converge
    std::optional<double> energy;  ///< hartree, of the highest level that the log shows for the last geometry

    /// Forces on the atoms of `molecule` at `force_positions`, in hartree/bohr, in the input's frame. Without columns
    /// where there are none that can be used; then `forces_problem` tells why, as a whole message with its place.
    Eigen::Matrix3Xd forces;
    Eigen::Matrix3Xd force_positions;  ///< angstrom
    int forces_line = 0;               ///< of the heading of the table
    bool forces_of_last = false;       ///< whether they are those of the last geometry
    std::string forces_problem;
    /// In atomic units, at the geometry of the forces and in their frame; for an ion about the origin of that frame.
    std::optional<Eigen::Vector3d> dipole;
};

struct log_contents {
    int jobs = 0;
    int ended_normally = 0;  ///< how many of them
    std::string
        first_route;  ///< that of job 1. A job that Gaussian began itself (`opt freq`) has a route of its making
    log_job job;      ///< the last job that has a geometry
};

/// Reads a Gaussian log in one pass, holding no more of it than two geometries with their forces. A log may be cut
/// anywhere: what is taken are the last tables that are complete.
///   from     in/out  to the end
///   notices  in/out  what was found and passed over is appended, such as another geometry in the archive entry
/// Stops the run with "NAME:LINE: ..." where the last geometry cannot be read (asterisks, other text than numbers).
log_contents read_log(source& from, std::vector<notice>& notices);

}  // namespace displacement_generator::gaussian
