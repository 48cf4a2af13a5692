#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>

#include "base/error.hpp"
#include "gaussian/checkpoint.hpp"
#include "gaussian/fields.hpp"
#include "gaussian/forces_file.hpp"
#include "gaussian/log.hpp"
#include "gaussian/source.hpp"
#include "gaussian/superpose.hpp"
#include "gaussian/symbols.hpp"
#include "gaussian/words.hpp"
#include "printed.hpp"
#include "result.hpp"

namespace displacement_generator::assembler {

namespace {

/// How far (angstrom) a coordinate may lie from that of the geometry file beside half of its last digit: rounding of
/// conversions between bohr and angstrom with the constants of several versions.
constexpr double conversion = 1e-7;
/// Two geometries that are equal but for their frame, and how far off a turned one is at least.
constexpr double same_when_turned = 2e-5;
constexpr double off_when_turned = 1e-3;

/// Method and basis in the letter case of a route, cut to the columns that a checkpoint has for them.
std::string plain_method(std::string_view method, std::string_view basis) {
    constexpr std::size_t columns = 30;
    if (method.empty()) {
        return {};
    }
    return plain_route(method.substr(0, columns)) + "/" + plain_route(basis.substr(0, columns));
}

std::string point_text(const Eigen::Vector3d& at) { return printed("(%.6f, %.6f, %.6f)", at(0), at(1), at(2)); }

void check_atoms(const std::string& place, const std::vector<int>& numbers, const expected_geometry& expected) {
    if (numbers.size() != expected.numbers.size()) {
        throw base::run_error(place + ": expected " + std::to_string(expected.numbers.size()) + " atoms, found " +
                              std::to_string(numbers.size()));
    }
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        if (numbers[i] != expected.numbers[i]) {
            throw base::run_error(place + ": expected " + std::string(gaussian::symbol_of(expected.numbers[i])) +
                                  " as atom " + std::to_string(i + 1) + ", found " +
                                  std::string(gaussian::symbol_of(numbers[i])));
        }
    }
}

void check_charge(const std::string& place, const gaussian::molecule& found, const expected_geometry& expected) {
    if (found.charge != expected.charge || found.multiplicity != expected.multiplicity) {
        throw base::run_error(place + ": expected charge " + std::to_string(expected.charge) + " and multiplicity " +
                              std::to_string(expected.multiplicity) + ", found " + std::to_string(found.charge) +
                              " and " + std::to_string(found.multiplicity));
    }
}

/// Stops the run unless positions are those of the geometry file.
///   digits  in  (angstrom) half a unit of the last digit of each coordinate
void check_positions(const std::string& place, const Eigen::Matrix3Xd& positions, const expected_geometry& expected,
                     const Eigen::Matrix3Xd& digits) {
    const Eigen::Matrix3Xd off = (positions - expected.positions).cwiseAbs() - digits;
    Eigen::Index row = 0;
    Eigen::Index atom = 0;
    if (off.maxCoeff(&row, &atom) <= conversion) {
        return;
    }
    std::string message = place + ": expected the geometry of the .com with atom " + std::to_string(atom + 1) + " at " +
                          point_text(expected.positions.col(atom)) + ", found it at " + point_text(positions.col(atom));
    if (positions.cols() > 1 && off.maxCoeff() > off_when_turned &&
        gaussian::superpose(positions, expected.positions).largest_distance <= same_when_turned) {
        message += "; the molecule is the same in another frame, compute with nosymm";
    }
    throw base::run_error(message);
}

void read_log(const std::string& path, const expected_geometry& expected, result& found) {
    gaussian::source from(path, gaussian::opening::regular_only);
    if (constexpr std::string_view gzip = "\x1f\x8b"; from.first_bytes().starts_with(gzip)) {
        throw base::run_error(from.name() + ": expected the text of a log, found a compressed file; unpack it");
    }
    std::vector<gaussian::notice> notices;
    gaussian::log_contents log = gaussian::read_log(from, notices);
    gaussian::log_job& job = log.job;
    if (job.number == 0) {
        throw base::run_error(from.name() + ": expected the log of a finished job, found one without a geometry");
    }
    if (job.number != log.jobs || !job.ended_normally) {  // what failed before a job that was begun anew is no matter
        throw base::run_error(from.name() + ": expected the log of a finished job, found one " +
                              (log.jobs == 1 ? "that" : "whose last job, number " + std::to_string(log.jobs) + ",") +
                              " did not end normally");
    }
    check_atoms(from.name() + ":" + std::to_string(job.geometry_line != 0 ? job.geometry_line : job.line),
                job.molecule.numbers, expected);
    if (job.has_charge) {
        check_charge(from.name() + ":" + std::to_string(job.line), job.molecule, expected);
    }
    if (job.unconverged_line != 0) {
        throw base::run_error(from.name() + ":" + std::to_string(job.unconverged_line) +
                              ": expected a self-consistent field that converged, found one that did not; compute it "
                              "again");
    }
    if (job.forces.cols() == 0) {
        throw base::run_error(job.forces_problem);
    }
    if (!job.forces_of_last) {
        throw base::run_error(from.name() + ":" + std::to_string(job.forces_line) +
                              ": expected forces at the last geometry, found those of an earlier one");
    }
    const double half_digit = 0.5 * std::pow(10.0, -job.decimals);
    check_positions(from.name() + ":" + std::to_string(job.geometry_line != 0 ? job.geometry_line : job.forces_line),
                    job.force_positions, expected,
                    Eigen::Matrix3Xd::Constant(3, job.force_positions.cols(), half_digit));
    found.forces = std::move(job.forces);
    found.energy = job.energy;
    found.dipole = job.dipole;
    found.route = plain_route(job.route);
    found.route_place = from.name() + ":" + std::to_string(job.line);
    found.method = plain_method(job.method, job.basis);
    found.method_place = found.route_place;
}

void read_checkpoint(const std::string& path, const expected_geometry& expected, result& found) {
    gaussian::source from(path, gaussian::opening::regular_only);
    const gaussian::checkpoint contents = gaussian::read_checkpoint(from);
    if (!from.line_is_whole()) {  // a checkpoint has no mark of its end; at least its last line must be whole
        throw base::run_error(from.name() + ": expected a line end at the end of the file, found none; it was cut");
    }
    if (!contents.ghosts.empty()) {
        throw base::run_error(from.name() + ": expected no ghost atoms, found atom " +
                              std::to_string(contents.ghosts.front()) + " without a nuclear charge");
    }
    const gaussian::molecule molecule = gaussian::molecule_of(contents);
    check_atoms(from.name(), molecule.numbers, expected);
    check_charge(from.name(), molecule, expected);
    if (contents.gradient.cols() == 0) {
        throw base::run_error(from.name() + ": expected a section 'Cartesian Gradient', found none");
    }
    // nine digits
    const Eigen::Matrix3Xd digits = molecule.positions.cwiseAbs() * 1e-8;
    check_positions(from.name(), molecule.positions, expected, digits);
    found.forces = -contents.gradient;
    found.energy = contents.energy;
    found.dipole = contents.dipole;
    found.route = plain_route(contents.route);
    found.route_place = from.name();
    found.method = plain_method(contents.method, contents.basis);
    found.method_place = from.name() + ":2";
}

void read_plain_forces(const std::string& path, const expected_geometry& expected, result& found) {
    gaussian::source from(path, gaussian::opening::regular_only);
    gaussian::forces_file contents = gaussian::read_forces(from, static_cast<int>(expected.numbers.size()));
    found.forces = std::move(contents.forces);
    found.energy = contents.energy;
    found.dipole = contents.dipole;
}

struct kind {
    std::string_view ending;
    void (*read)(const std::string& path, const expected_geometry& expected, result& found);
};
constexpr std::array kinds = {kind{".log", read_log}, kind{".out", read_log}, kind{".fchk", read_checkpoint},
                              kind{".forces", read_plain_forces}};

}  // namespace

std::string plain_route(std::string_view route) {
    std::string plain;
    for (std::string_view word = gaussian::next_word(route); !word.empty(); word = gaussian::next_word(route)) {
        plain += plain.empty() ? "" : " ";
        plain += word;
    }
    return gaussian::lower(plain);
}

std::string find_result(const std::string& stem) {
    for (const kind& next : kinds) {
        // A link that leads nowhere is a result that cannot be read, and not one that is missing.
        if (std::string path = stem + std::string(next.ending);
            faccessat(AT_FDCWD, path.c_str(), F_OK, AT_SYMLINK_NOFOLLOW) == 0) {
            return path;
        }
    }
    return {};
}

result read_result(const std::string& path, const expected_geometry& expected) {
    result found;
    found.file = path;
    const auto has_ending = [&](const kind& one) { return path.ends_with(one.ending); };
    std::find_if(kinds.begin(), kinds.end(), has_ending)->read(path, expected, found);  // find_result knows no others
    return found;
}

}  // namespace displacement_generator::assembler
