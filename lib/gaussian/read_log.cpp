#include <cctype>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/error.hpp"
#include "gaussian/constants.hpp"
#include "gaussian/log.hpp"
#include "gaussian/log_rows.hpp"
#include "gaussian/scan_log.hpp"
#include "gaussian/superpose.hpp"
#include "gaussian/words.hpp"

namespace displacement_generator::gaussian {

namespace {

constexpr int table_decimals = 6;
constexpr int archive_decimals = 10;
/// Two numbers printed with six decimals for one value, or one such number and the value, differ by no more.
constexpr double same_digits = 1.1e-6;
/// A table of six decimals laid on another one in a turned frame: rounding of both and of the rotation found.
constexpr double same_when_turned = 1e-5;

// Both are for positions of the same atoms, of which there is one at least.

bool same_positions(const Eigen::Matrix3Xd& a, const Eigen::Matrix3Xd& b) {
    return (a - b).cwiseAbs().maxCoeff() <= same_digits;
}

bool same_when_laid_on(const Eigen::Matrix3Xd& a, const Eigen::Matrix3Xd& b) {
    return superpose(a, b).largest_distance <= same_when_turned;
}

bool has_word(std::string_view route, std::string_view word) {
    std::string lower(route);
    for (char& c : lower) {
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
    return lower.find(word) != std::string::npos;
}

/// Whether a route keeps the input's frame.
bool keeps_frame(std::string_view route) {
    return has_word(route, "nosym") || has_word(route, "symmetry=none") || has_word(route, "symm=none") ||
           has_word(route, "symmetry(none)") || has_word(route, "symmetry=(none)");
}

std::string place(const std::string& name, int line) { return name + ":" + std::to_string(line) + ": "; }

class assembly {
  public:
    assembly(std::string name, scanned_job& from, std::vector<notice>& notices)
        : name_(std::move(name)), from_(from), notices_(notices) {}

    log_job build() {
        take_heading();
        take_geometry();
        take_energy();
        take_forces();
        return std::move(job_);
    }

  private:
    void take_heading();
    void take_geometry();
    void tell_of_other_geometry(const log_rows& rows, int line);
    void take_energy();
    void take_forces();
    Eigen::Matrix3Xd positions_in(const log_table& table);
    std::optional<Eigen::Matrix3Xd> positions_of_forces(const log_point& point);
    void take_dipole(const log_point& point);

    std::string name_;
    scanned_job& from_;
    std::vector<notice>& notices_;
    log_job job_;
};

void assembly::take_heading() {
    job_.number = from_.number;
    job_.line = from_.line;
    job_.route = from_.route.empty() ? from_.archive.route : from_.route;
    job_.method = from_.archive.method;
    job_.basis = from_.archive.basis;
    job_.user_route = from_.user_route;
    job_.ended_normally = from_.ended_normally;
    job_.geometries = from_.geometries;
    job_.has_charge = from_.has_charge || from_.archive.has_charge;
    job_.molecule.charge = from_.has_charge ? from_.charge : from_.archive.molecule.charge;
    job_.molecule.multiplicity = from_.has_charge ? from_.multiplicity : from_.archive.molecule.multiplicity;
}

void assembly::take_geometry() {
    const molecule& archived = from_.archive.molecule;
    const log_point& last = from_.last;
    if (last.is_empty()) {  // a terse log
        job_.geometries = 1;
        job_.molecule.numbers = archived.numbers;
        job_.molecule.positions = archived.positions;
        job_.decimals = archive_decimals;
        return;
    }
    const bool in_input_frame = last.input.line != 0;
    const log_table& table = in_input_frame ? last.input : last.standard;
    log_rows rows = read_positions(name_, table);
    job_.geometry_line = table.line;
    job_.dummies = rows.dummies;
    job_.ghosts = rows.ghosts;
    job_.vectors = rows.vectors;
    job_.typed = rows.typed;
    if (rows.numbers.empty()) {
        throw base::run_error(place(name_, table.line) + "expected a table with atoms, found none");
    }
    const bool same =
        archived.numbers == rows.numbers && (in_input_frame ? same_positions(archived.positions, rows.values)
                                                            : same_when_laid_on(archived.positions, rows.values));
    if (!same) {
        tell_of_other_geometry(rows, table.line);
    }
    job_.molecule.numbers = std::move(rows.numbers);
    job_.molecule.positions = same ? archived.positions : rows.values;
    job_.decimals = same ? archive_decimals : table_decimals;
    if (!in_input_frame && !same && (last.axes_restored || !keeps_frame(job_.route))) {
        job_.in = frame::standard;
        notices_.push_back({table.line, "the last geometry stands in the log in the standard orientation only"});
    }
}

/// The last table may be of a displacement (numerical frequencies) or of a step that was not taken.
///   line  in  of the heading of the table
void assembly::tell_of_other_geometry(const log_rows& rows, int line) {
    const molecule& archived = from_.archive.molecule;
    if (archived.numbers != rows.numbers) {
        return;
    }
    const double distance = superpose(archived.positions, rows.values).largest_distance;
    if (distance > same_when_turned) {
        notices_.push_back({line,
                            "the geometry of this table is taken, the last one; that of the archive entry is another "
                            "one, with an atom up to " +
                                std::to_string(distance) +
                                " angstrom away if they are laid on each other: make sure that the one taken is the "
                                "one that you want"});
    }
}

void assembly::take_energy() {
    job_.unconverged_line = from_.last.failed_line;
    job_.energy = from_.archive.energy && (from_.archive.beyond_self_consistent || !from_.last.energy)
                      ? from_.archive.energy
                      : from_.last.energy;
}

/// The positions of the atoms of the last geometry, which are those of every geometry of a job.
Eigen::Matrix3Xd assembly::positions_in(const log_table& table) {
    log_rows rows = read_positions(name_, table);
    if (rows.numbers != job_.molecule.numbers) {
        throw base::run_error(place(name_, table.line) + "expected the " +
                              std::to_string(job_.molecule.numbers.size()) + " atoms of the last geometry, found " +
                              std::to_string(rows.numbers.size()) + " or other atoms");
    }
    return std::move(rows.values);
}

/// The geometry to which the forces belong, in their frame. Without a value, and with `forces_problem`, where the log
/// does not show it.
std::optional<Eigen::Matrix3Xd> assembly::positions_of_forces(const log_point& point) {
    if (job_.forces_of_last && job_.in == frame::input && (point.axes_restored || point.input.line == 0)) {
        return job_.molecule.positions;
    }
    if (point.input.line != 0) {
        Eigen::Matrix3Xd input = job_.forces_of_last ? job_.molecule.positions : positions_in(point.input);
        // Without the line of asterisks the forces are in the frame of the standard orientation.
        if (point.axes_restored || point.standard.line == 0 || same_positions(input, positions_in(point.standard))) {
            return input;
        }
    }
    job_.forces_problem = place(name_, job_.forces_line) +
                          "expected the geometry of these forces in their frame, found none (give nosymm)";
    return std::nullopt;
}

void assembly::take_forces() {
    job_.forces_of_last = from_.last.forces.line != 0;
    const log_point& point = job_.forces_of_last ? from_.last : from_.with_forces;
    job_.forces_line = point.forces.line;
    if (point.forces.line == 0) {
        job_.forces_problem = name_ + ": expected a table of forces, found none";
        return;
    }
    if (point.forces.rows.empty()) {
        job_.forces_problem = place(name_, point.forces.line) + "expected a table of forces, found a part of one";
        return;
    }
    try {
        log_rows rows = read_force_rows(name_, point.forces);
        if (rows.numbers != job_.molecule.numbers) {
            job_.forces_problem = place(name_, point.forces.line) + "expected forces on the " +
                                  std::to_string(job_.molecule.numbers.size()) + " atoms of the geometry, found " +
                                  std::to_string(rows.numbers.size()) + " or other atoms";
            return;
        }
        std::optional<Eigen::Matrix3Xd> positions = positions_of_forces(point);
        if (!positions) {
            return;
        }
        job_.forces = std::move(rows.values);
        job_.force_positions = std::move(*positions);
    } catch (const base::run_error& error) {
        job_.forces_problem = error.what();
        return;
    }
    take_dipole(point);
}

/// Column map: three fields of 15 columns, which touch where a number is negative.
bool read_dipole(std::string_view fields, Eigen::Vector3d& dipole) {
    constexpr std::size_t width = 15;
    fields = fields.substr(0, fields.find_last_not_of(' ') + 1);
    if (fields.size() != 3 * width) {
        return false;
    }
    for (std::size_t i = 0; i < 3; ++i) {
        if (!read_printed_real(without_blanks(fields.substr(i * width, width)), dipole(static_cast<Eigen::Index>(i)))) {
            return false;
        }
    }
    return true;
}

/// The dipole stands above the line of asterisks, in the standard orientation where there is one: it is turned into the
/// frame of the forces. That of an ion depends on the origin, which the shift moves.
void assembly::take_dipole(const log_point& point) {
    if (point.dipole_line == 0) {
        return;
    }
    Eigen::Vector3d dipole;
    if (!read_dipole(point.dipole, dipole)) {
        notices_.push_back({point.dipole_line, "the dipole moment cannot be read"});
        return;
    }
    if (point.standard.line != 0) {
        Eigen::Matrix3Xd standard;
        try {
            standard = positions_in(point.standard);
        } catch (const base::run_error& error) {
            notices_.push_back({point.dipole_line, std::string("the frame of the dipole moment: ") + error.what()});
            return;
        }
        if (!same_positions(standard, job_.force_positions)) {
            if (!same_when_laid_on(standard, job_.force_positions)) {
                notices_.push_back(
                    {point.dipole_line, "the dipole moment is not in the frame of the forces; it is passed over"});
                return;
            }
            const rigid_motion motion = superpose(standard, job_.force_positions);
            dipole = motion.rotation * dipole + job_.molecule.charge * motion.shift / bohr_in_angstrom;
        }
    }
    job_.dipole = dipole;
}

}  // namespace

log_contents read_log(source& from, std::vector<notice>& notices) {
    scanned_log log = scan_log(from, notices);
    log_contents contents;
    contents.jobs = log.jobs;
    contents.ended_normally = log.ended_normally;
    contents.first_route = std::move(log.first_route);
    if (log.job.number != 0) {
        contents.job = assembly(from.name(), log.job, notices).build();
    }
    return contents;
}

}  // namespace displacement_generator::gaussian
