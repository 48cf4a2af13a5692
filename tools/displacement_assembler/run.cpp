#include "run.hpp"

#include <unistd.h>

#include <string_view>
#include <vector>

#include "analysis.hpp"
#include "base/error.hpp"
#include "companion/program.hpp"
#include "gaussian/checkpoint.hpp"
#include "new_files.hpp"
#include "printed.hpp"
#include "progress.hpp"

namespace displacement_generator::assembler {

namespace {

constexpr std::string_view list_name = "files.out";

/// What stands before the names of the list and its files: empty, or ending in a slash.
std::string find_folder(const std::string& asked) {
    const std::string given = asked == "." ? "" : asked.ends_with('/') ? asked : asked + "/";
    for (const std::string& folder : {given, given + "PES-0/"}) {
        if (access((folder + std::string(list_name)).c_str(), F_OK) == 0) {
            return folder;
        }
    }
    throw base::run_error(base::shown(asked, 200) +
                          ": expected files.out or PES-0/files.out in this folder, found neither; run "
                          "displacement_generator first");
}

/// Stops the run with all that is missing or refused.
void check_refusals(const std::string& list_path, const std::vector<std::string>& refusals, std::size_t files,
                    std::size_t there) {
    if (refusals.empty()) {
        return;
    }
    std::string text;
    for (const std::string& refusal : refusals) {
        text += refusal + "\n";
    }
    companion::print_to_standard_error(text);
    throw base::run_error(list_path + ": " + std::to_string(there) + " of " + std::to_string(files) + " are there" +
                              (there == files ? ", not all of them can be used" : ""),
                          base::message_stream::standard_error, 1);
}

std::string notices(const std::string& list_path, const geometry_set& geometries, const results& found,
                    const analysis& made) {
    std::string text;
    const auto add = [&](const std::string& notice) { text += list_path + ": notice: " + notice + "\n"; };
    if (!found.route.empty() && found.route != plain_route(geometries.reference.route)) {
        add("the route of the results is '" + base::shown(found.route, 200) + "', that of the .com files '" +
            base::shown(plain_route(geometries.reference.route), 200) + "'");
    }
    for (const std::string& notice : found.notices) {
        add(notice);
    }
    if (made.largest_force > force_of_stationary_point) {
        add("the largest force at the reference is more than 0.00045 hartree/bohr: this is not a stationary point, and "
            "harmonic frequencies mean little there");
    }
    if (made.hessian.largest_asymmetry > 0.1 * largest_asymmetry(made.longest_step)) {
        add("the Hessian has an asymmetry of " + printed("%.4f", made.hessian.largest_asymmetry) +
            " hartree/bohr^2 between " + coordinate_name(made.hessian.row) + " and " +
            coordinate_name(made.hessian.column) +
            ": forces of these points, or of those from which they follow, do not belong to one potential, or the step "
            "is too large, or too small for the noise of the forces");
    }
    if (!found.without_dipole.empty()) {
        add("no intensities: " + base::shown(found.without_dipole, 200) + " has no dipole moment");
    }
    for (const vibration::left_out_operation& one : made.group.left_out) {
        add("species are assigned without " + one.name + ": " + one.reason);
    }
    return text;
}

std::string hessian_text(const displacement_list& list, const geometry_set& geometries, const results& found,
                         const analysis& made) {
    gaussian::checkpoint contents;
    contents.title = "Hessian from forces, by displacement_assembler";
    contents.job = "Freq";
    contents.route = found.route;
    contents.charge = geometries.reference.charge;
    contents.multiplicity = geometries.reference.multiplicity;
    contents.numbers = list.numbers;
    contents.coordinates = made.positions;
    contents.weights = made.masses;
    contents.energy = found.reference.energy;
    contents.gradient = -found.reference.forces;
    contents.dipole = found.reference.dipole;
    contents.dipole_derivatives = made.dipole_derivatives;
    const Eigen::Index size = made.hessian.hessian.rows();
    contents.force_constants.resize(size * (size + 1) / 2);
    for (Eigen::Index row = 0; row < size; ++row) {
        contents.force_constants.segment(row * (row + 1) / 2, row + 1) =
            made.hessian.hessian.col(row).head(row + 1);  // symmetric
    }
    return gaussian::checkpoint_text(contents);
}

/// All files that are or may be read.
std::vector<std::string> inputs_of(const std::string& folder, const displacement_list& list) {
    std::vector<std::string> paths = {folder + std::string(list_name)};
    for (const listed_file& file : list.files) {
        for (const char* ending : {".com", ".log", ".out", ".fchk", ".forces"}) {
            paths.push_back(folder + file.name + ending);
        }
    }
    return paths;
}

void check_outputs_of(const options& asked, const std::string& folder, const displacement_list& list) {
    std::vector<std::string> outputs;
    for (const std::string& name : {asked.molden, asked.hessian}) {
        if (!name.empty()) {
            outputs.push_back(name);
        }
    }
    if (!outputs.empty()) {
        check_outputs(outputs, inputs_of(folder, list));
    }
}

/// The analysis, with a word to who waits for it: the time grows with the third power of the size, and 200 atoms take
/// some tenths of a second.
analysis analysis_of(const Eigen::VectorXd& masses, const displacement_list& list, const geometry_set& geometries,
                     results& found) {
    constexpr Eigen::Index small = 200;
    progress shown;
    if (masses.size() >= small) {
        shown.show("computing the vibrations of " + std::to_string(masses.size()) + " atoms");
    }
    return vibrations_of(masses, list, geometries, found);
}

displacement_list list_at(const std::string& path) {
    gaussian::source from(path, gaussian::opening::regular_only);
    return read_list(from);
}

}  // namespace

void run(const options& asked) {
    const std::string folder = find_folder(asked.folder);
    const std::string list_path = folder + std::string(list_name);
    const displacement_list list = list_at(list_path);
    const Eigen::VectorXd masses = atom_masses(asked, list.numbers);
    check_outputs_of(asked, folder, list);

    std::vector<std::string> refusals;
    const geometry_set geometries = read_geometries(folder, list, refusals);
    results found = read_results(folder, list, geometries, refusals);
    check_refusals(base::shown(list_path, list_path.size()), refusals, list.files.size(),
                   list.files.size() - static_cast<std::size_t>(found.missing));

    const analysis made = analysis_of(masses, list, geometries, found);
    check_hessian(base::shown(list_path, list_path.size()), made, found.are_plain);
    new_files files;
    if (!asked.molden.empty()) {
        files.write(asked.molden, molden_text(list, made));
    }
    if (!asked.hessian.empty()) {
        files.write(asked.hessian, hessian_text(list, geometries, found, made));
    }
    companion::print_to_standard_error(notices(base::shown(list_path, list_path.size()), geometries, found, made));
    companion::print(table(asked, list, found, made));
    files.put_in_place();
}

}  // namespace displacement_generator::assembler
