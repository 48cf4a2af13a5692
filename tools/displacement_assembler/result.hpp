#pragma once

#include <Eigen/Core>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "geometry.hpp"

namespace displacement_generator::assembler {

/// Whether a result is a `.forces` file, which a script has written.
inline bool is_plain(std::string_view file) { return file.ends_with(".forces"); }

/// A route in small letters with single blanks.
std::string plain_route(std::string_view route);

/// What was computed at one geometry, in atomic units and in the frame of its geometry file.
struct result {
    std::string file;                       ///< it was read from
    Eigen::Matrix3Xd forces;                ///< hartree/bohr, a column an atom
    std::optional<double> energy;           ///< hartree
    std::optional<Eigen::Vector3d> dipole;  ///< e bohr
    std::string route;                      ///< in small letters, single blanks; empty where the file holds none
    std::string route_place;                ///< what a message about it begins with
    std::string method;                     ///< with its basis, "rb3lyp/6-31g(d)"; empty where the file tells none
    std::string method_place;               ///< what a message about it begins with
};

/// The geometry that a result must belong to.
struct expected_geometry {
    const std::vector<int>& numbers;  ///< atomic numbers
    int charge;
    int multiplicity;
    Eigen::Matrix3Xd positions;  ///< angstrom
};

/// The result that stands beside a geometry file: the first of STEM.log, STEM.out, STEM.fchk and STEM.forces that
/// exists; empty where none does.
///   stem  in  path of the geometry file without its ".com"
std::string find_result(const std::string& stem);

/// Reads a result.
///   path      in  from find_result
///   expected  in
/// Stops the run with "NAME: ..." or "NAME:LINE: ..." where it cannot be trusted: not finished, no forces, other atoms,
/// another geometry or frame.
result read_result(const std::string& path, const expected_geometry& expected);

/// What was computed at all geometries of a list.
struct results {
    result reference;
    Eigen::MatrixXd forces;      ///< (3N, 6N) a point a column; those of computed points are filled
    Eigen::Matrix3Xd dipoles;    ///< (3, 6N) in the same way; without columns where a point has none
    std::string without_dipole;  ///< the first file without a dipole moment; empty where all have one
    /// What a user must know beside the numbers, though nothing is refused for it.
    std::vector<std::string> notices;
    int missing = 0;            ///< how many files of the list have no result
    std::string route;          ///< of all that have one, as result::route; empty where no file holds one
    std::string method;         ///< of all that have one, as result::method, where a file has this and no route
    bool are_plain = true;      ///< whether all are `.forces` files
    std::size_t described = 0;  ///< how many results have the route or the method
};

/// Reads all results, several at a time.
///   folder, list  in      as for read_geometries
///   geometries    in      the results of files that are not good are looked for, but not read
///   refusals      in/out  a message is appended for each result that is missing or refused, in the order of the list
results read_results(const std::string& folder, const displacement_list& list, const geometry_set& geometries,
                     std::vector<std::string>& refusals);

}  // namespace displacement_generator::assembler
