#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

#include "base/error.hpp"
#include "gaussian/checkpoint.hpp"
#include "gaussian/checkpoint_route.hpp"
#include "gaussian/fields.hpp"
#include "gaussian/lines.hpp"
#include "gaussian/log.hpp"
#include "gaussian/read_input.hpp"
#include "gaussian/route.hpp"
#include "gaussian/source.hpp"
#include "gaussian/xyz.hpp"
#include "source_molecule.hpp"

namespace displacement_generator::preparer {

namespace {

/// Inputs are held in memory as a whole: far more than any has.
constexpr std::size_t longest_input = std::size_t{64} << 20U;

std::string counted(int count, const std::string& what) {
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

/// The title of an input that is made of a source without one.
std::string made_title(const std::string& name) {
    const std::size_t slash = name.rfind('/');
    return "prepared from " + base::shown(slash == std::string::npos ? name : name.substr(slash + 1), 100);
}

/// Makes a molecule ready that was in no input, with the source's route or the one in its place.
///   line  in  of the source's route; 0: none
void make_ready(const options& asked, int line, const std::string& title, const gaussian::molecule& atoms,
                source_molecule& result) {
    if (!result.old_route.empty()) {
        const std::string place = gaussian::place_of(result.name, line);
        if (const std::string keyword = gaussian::may_end_elsewhere(gaussian::parse_route(result.old_route, place));
            !keyword.empty()) {
            result.notices.push_back(
                {line, gaussian::quoted(keyword) +
                           " may end elsewhere than at a stationary point: make sure that this geometry is one"});
        }
    }
    const bool is_replaced = !asked.route.empty();
    result.ready = gaussian::make_ready(is_replaced ? "the new route" : result.name, is_replaced ? 0 : line,
                                        is_replaced ? asked.route : result.old_route, title, atoms, result.notices);
    result.old_route = result.old_route.empty() ? asked.route : result.old_route;
}

void read_input(const options& asked, gaussian::source& from, source_molecule& result) {
    const std::string text = from.rest(longest_input);
    const gaussian::input job = gaussian::read_input(text, result.name, result.notices);
    result.description = "Gaussian input of " + counted(job.jobs, "job");
    if (job.jobs > 1) {
        result.description += ", job " + std::to_string(job.job) + " taken";
    }
    result.old_route = job.route_text;
    result.ready = gaussian::make_ready(job, asked.route, result.notices);
}

/// Stops the run where a log has centres that are no atoms of the molecule.
void check_centres(const gaussian::log_job& job, const std::string& name) {
    if (job.ghosts > 0) {
        gaussian::stop_at(name, job.geometry_line,
                          "found " + counted(job.ghosts, "ghost atom") + ", which cannot be kept");
    }
    if (job.vectors > 0) {
        gaussian::stop_at(
            name, job.geometry_line,
            "found " + counted(job.vectors, "translation vector") + "; only single molecules can be prepared");
    }
}

/// Stops the run where the last geometry of a log may be a part of the molecule.
void check_whole(const gaussian::log_job& job, const std::string& name) {
    if (job.route.empty()) {
        return;
    }
    for (const gaussian::route_keyword& keyword :
         gaussian::parse_route(job.route, gaussian::place_of(name, job.line)).keywords) {
        if (keyword.name() == "counterpoise" || keyword.name() == "counter") {
            gaussian::stop_at(name, job.line,
                              "the last geometry may be that of a fragment, as '" + base::shown(keyword.text) +
                                  "' says; prepare the input of the job instead");
        }
    }
}

/// The route of a log: where Gaussian itself began the job that has the last geometry, that of the job before it.
void take_log_route(const options& asked, const gaussian::log_contents& log, source_molecule& result) {
    result.old_route = log.job.route;
    if (gaussian::is_continuation(log.job.route) && !log.job.user_route.empty()) {
        result.notices.push_back({log.job.line,
                                  "Gaussian began this job itself, with a route that takes method and "
                                  "basis from a checkpoint file: the route of the job before it is "
                                  "used"});
        result.old_route = log.job.user_route;
    }
    if (!asked.route.empty()) {
        return;
    }
    if (result.old_route.empty()) {
        gaussian::stop_at(result.name, 0, "expected a route, found none; give one with --route");
    }
    if (gaussian::is_incomplete(result.old_route, gaussian::place_of(result.name, log.job.line))) {
        gaussian::stop_at(result.name, log.job.line,
                          "the route '" + base::shown(result.old_route, 200) +
                              "' takes method and basis from a checkpoint file; give the route with --route");
    }
}

void read_log(const options& asked, gaussian::source& from, source_molecule& result) {
    const gaussian::log_contents log = gaussian::read_log(from, result.notices);
    const gaussian::log_job& job = log.job;
    if (job.number == 0) {
        gaussian::stop_at(result.name, 0, "expected a log with a geometry, found none in " + counted(log.jobs, "job"));
    }
    result.description = "log of " + counted(log.jobs, "job") + ", " +
                         (job.geometries == 1 ? "1 geometry" : std::to_string(job.geometries) + " geometries");
    if (log.jobs > 1) {
        result.description += " in job " + std::to_string(job.number);
    }
    result.description += job.geometries > 1 ? ", the last one taken" : "";
    check_centres(job, result.name);
    check_whole(job, result.name);
    if (!job.has_charge && !(asked.charge && asked.multiplicity)) {
        gaussian::stop_at(result.name, job.line,
                          "expected charge and multiplicity, found none; give them with --charge and --multiplicity");
    }
    if (job.typed > 0) {
        result.notices.push_back({job.geometry_line, "the types of " + counted(job.typed, "atom") + " are dropped"});
    }
    if (!job.ended_normally) {
        result.notices.push_back({job.line,
                                  "this job did not end normally: make sure that its last geometry is the "
                                  "one that you want"});
    }
    take_log_route(asked, log, result);
    make_ready(asked, job.line, made_title(result.name), job.molecule, result);
    if (!result.ready.fixed_in_space.empty() && job.in != gaussian::frame::input) {
        gaussian::stop_at(
            result.name, job.geometry_line,
            "'" + base::shown(result.ready.fixed_in_space) +
                "' is fixed in space, in the frame of the input, and this geometry is in the standard orientation; "
                "prepare the input with this geometry instead");
    }
}

void read_checkpoint(const options& asked, gaussian::source& from, source_molecule& result) {
    const gaussian::checkpoint found = gaussian::read_checkpoint(from);
    result.description = "formatted checkpoint";
    if (!found.ghosts.empty()) {
        gaussian::stop_at(
            result.name, 0,
            "found " + counted(static_cast<int>(found.ghosts.size()), "ghost atom") + ", which cannot be kept");
    }
    if (found.vectors > 0) {
        gaussian::stop_at(
            result.name, 0,
            "found " + counted(found.vectors, "translation vector") + "; only single molecules can be prepared");
    }
    if (asked.route.empty()) {
        result.old_route = gaussian::checkpoint_route(found, result.name, result.notices);
    } else {
        result.old_route = found.route;
    }
    make_ready(asked, 0, found.title.empty() ? made_title(result.name) : found.title, molecule_of(found), result);
    if (!result.ready.fixed_in_space.empty()) {
        gaussian::stop_at(
            result.name, 0,
            "'" + base::shown(result.ready.fixed_in_space) +
                "' is fixed in space, in the frame of the input, and a checkpoint may be in another one; prepare the "
                "input instead");
    }
}

void read_xyz(const options& asked, gaussian::source& from, source_molecule& result) {
    const gaussian::xyz_contents found = gaussian::read_xyz(from);
    result.description = "xyz file of " + counted(found.frames, "frame");
    result.description += found.frames > 1 ? ", the last one taken" : "";
    if (asked.route.empty()) {
        gaussian::stop_at(result.name, 0,
                          "an xyz file holds no route; give one with --route, for example --route '#p b3lyp/6-31g(d)'");
    }
    make_ready(asked, 0, made_title(result.name), found.molecule, result);
}

/// Puts a number from the command line in place of the source's.
void replace(const std::optional<int>& asked, const char* what, int& value, source_molecule& result) {
    if (asked && *asked != value) {
        result.notices.push_back(
            {0, std::string(what) + " " + std::to_string(*asked) + " takes the place of " + std::to_string(value)});
    }
    value = asked.value_or(value);
}

void check_electrons(const source_molecule& found) {
    const gaussian::molecule& atoms = found.ready.atoms;
    long long electrons = -static_cast<long long>(atoms.charge);
    for (const int number : atoms.numbers) {
        electrons += number;
    }
    const long long unpaired = atoms.multiplicity - 1LL;
    if (electrons < unpaired || (electrons - unpaired) % 2 != 0) {
        gaussian::stop_at(found.name, 0,
                          "a molecule of charge " + std::to_string(atoms.charge) + " has " + std::to_string(electrons) +
                              " electrons, expected a possible multiplicity, found " +
                              std::to_string(atoms.multiplicity) +
                              "; give the right ones with --charge and --multiplicity");
    }
}

}  // namespace

source_molecule read_source(const options& asked) {
    gaussian::source from(asked.source);
    source_molecule result;
    result.name = from.name();
    result.file = identity_of(from.blocks().descriptor);
    switch (gaussian::kind_of(from)) {
        case gaussian::source_kind::input:
            read_input(asked, from, result);
            break;
        case gaussian::source_kind::log:
            read_log(asked, from, result);
            break;
        case gaussian::source_kind::checkpoint:
            read_checkpoint(asked, from, result);
            break;
        case gaussian::source_kind::xyz:
            read_xyz(asked, from, result);
            break;
        case gaussian::source_kind::unknown:
            gaussian::stop_at(
                result.name, 0,
                "expected a Gaussian input, a log, a formatted checkpoint or an xyz file, found none of these");
    }
    replace(asked.charge, "charge", result.ready.atoms.charge, result);
    replace(asked.multiplicity, "multiplicity", result.ready.atoms.multiplicity, result);
    check_electrons(result);
    return result;
}

}  // namespace displacement_generator::preparer
