#include <Eigen/QR>
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <map>
#include <string_view>

#include "base/error.hpp"
#include "energies.hpp"
#include "gaussian/constants.hpp"
#include "gaussian/fields.hpp"
#include "in_parallel.hpp"
#include "progress.hpp"
#include "result.hpp"
#include "vibration/rigid_motions.hpp"

namespace displacement_generator::assembler {

namespace {

/// What is kept of a result beside its forces.
struct summary {
    bool is_missing = false;
    std::string refusal;
    bool has_dipole = false;
    std::string file;
    std::string route;
    std::string route_place;
    std::string method;
    std::string method_place;
    std::optional<double> energy;
};

/// Whether a route asks for forces of another level than that of the energy that a log prints as that of its field: of
/// an excited state, of several layers, or of a double hybrid.
bool names_other_level(std::string_view route) {
    constexpr std::string_view between = " ,/=()";
    while (!route.empty()) {
        const std::size_t size = std::min(route.find_first_of(between), route.size());
        std::string_view word = route.substr(0, size);
        word.remove_prefix(word.starts_with("ro") ? 2 : word.starts_with('r') || word.starts_with('u') ? 1 : 0);
        if (gaussian::is_one_of(
                word, {"td", "tda", "cis", "eomccsd", "eom", "sac-ci", "zindo", "casscf", "cas", "gvb", "external"}) ||
            word.starts_with("oniom") || word.starts_with("b2plyp") || word.starts_with("mpw2plyp") ||
            word.starts_with("dsdpbep86") || word.starts_with("pbe0dh") || word.starts_with("pbeqidh")) {
            return true;
        }
        route.remove_prefix(std::min(size + 1, route.size()));
    }
    return false;
}

/// The text that most results have in some member; of several, the one that comes first in the list. Empty where no
/// result has one.
std::string usual(const std::vector<summary>& all, std::string summary::*what) {
    std::map<std::string_view, std::size_t> count;
    for (const summary& one : all) {
        count[one.*what] += (one.*what).empty() ? 0U : 1U;
    }
    std::string_view most;
    for (const summary& one : all) {
        if (count[one.*what] > count[most]) {
            most = one.*what;
        }
    }
    return std::string(most);
}

/// Whether moving a coordinate moves the molecule as a whole, to first order: a force need not follow. So it is with an
/// atom out of the plane of three, and with one across the line of two.
bool is_rigid(const Eigen::Matrix3Xd& positions, Eigen::Index coordinate) {
    constexpr double nearly_all = 1.0 - 1e-6;
    const Eigen::MatrixXd motions =
        vibration::rigid_motions(Eigen::VectorXd::Ones(positions.cols()), positions);  // dependent ones on a line
    const Eigen::VectorXd moved = Eigen::VectorXd::Unit(positions.size(), coordinate);
    const Eigen::VectorXd part = motions * motions.completeOrthogonalDecomposition().solve(moved);
    return part(coordinate) > nearly_all;
}

class gathering {
  public:
    gathering(const std::string& folder, const displacement_list& list, const geometry_set& geometries)
        : folder_(folder), list_(list), geometries_(geometries), summaries_(list.files.size()) {
        const auto natom = static_cast<Eigen::Index>(list.numbers.size());
        found_.forces.resize(3 * natom, 6 * natom);
        found_.dipoles.resize(3, 6 * natom);
    }

    /// Takes a file of the list; for any thread.
    void take_file(std::size_t i) {
        try {
            take(i);
        } catch (const base::run_error& error) {
            summaries_[i].refusal = error.what();
        } catch (const std::exception& error) {  // for want of memory, for example: never beyond a thread
            summaries_[i].refusal = folder_ + list_.files[i].name + ": " + error.what();
        }
    }

    results finish(std::vector<std::string>& refusals);

  private:
    void take(std::size_t i);
    void check_routes();
    void check_methods();
    void check_energies(std::vector<std::string>& refusals);

    const std::string& folder_;
    const displacement_list& list_;
    const geometry_set& geometries_;
    std::vector<summary> summaries_;
    results found_;
};

void gathering::take(std::size_t i) {
    const listed_file& file = list_.files[i];
    const std::string stem = folder_ + file.name;
    summary& kept = summaries_[i];
    kept.file = find_result(stem);
    if (kept.file.empty()) {
        kept.is_missing = true;
        kept.refusal = base::shown(stem, stem.size()) + ": expected a .log, .out, .fchk or .forces, found none";
        return;
    }
    if (!geometries_.are_good[i]) {
        return;
    }
    const geometry& reference = geometries_.reference;
    expected_geometry expected{list_.numbers, reference.charge, reference.multiplicity, reference.positions};
    if (file.point >= 0) {
        expected.positions.reshaped()(file.point / 2) += geometries_.steps(file.point);
    }
    expected.positions *= geometries_.unit_in_angstrom;
    result read = read_result(kept.file, expected);
    kept.has_dipole = read.dipole.has_value();
    kept.route = read.route;
    kept.route_place = read.route_place;
    kept.method = read.method;
    kept.method_place = read.method_place;
    kept.energy = read.energy;
    if (file.point < 0) {
        found_.reference = std::move(read);
        return;
    }
    if ((read.forces.array() == 0.0).all() && !is_rigid(reference.positions, file.point / 2)) {
        throw base::run_error(base::shown(kept.file, kept.file.size()) +
                              ": expected forces at a displaced geometry, found zero on every atom; nothing was "
                              "computed, compute it again");
    }
    found_.forces.col(file.point) = read.forces.reshaped();
    if (read.dipole) {
        found_.dipoles.col(file.point) = *read.dipole;
    }
}

/// All results must have the route that most of them have.
void gathering::check_routes() {
    found_.route = usual(summaries_, &summary::route);
    for (summary& one : summaries_) {
        if (!one.route.empty() && one.route != found_.route) {
            one.refusal = one.route_place + ": expected the route '" + base::shown(found_.route, 200) +
                          "' as in most files, found '" + base::shown(one.route, 200) + "'";
        }
    }
}

/// Checkpoints of older versions have no route. Their method and basis must be those of the other results.
void gathering::check_methods() {
    const auto lacks_route = [](const summary& one) { return one.route.empty() && !one.method.empty(); };
    if (std::none_of(summaries_.begin(), summaries_.end(), lacks_route)) {
        return;
    }
    found_.method = usual(summaries_, &summary::method);
    for (summary& one : summaries_) {
        if (one.refusal.empty() && !one.method.empty() && one.method != found_.method) {
            one.refusal = one.method_place + ": expected the method and basis '" + base::shown(found_.method, 200) +
                          "' as in most files, found '" + base::shown(one.method, 200) + "'";
        }
    }
}

/// Holds the energies against the forces.
void gathering::check_energies(std::vector<std::string>& refusals) {
    if (!geometries_.are_good[0] || !summaries_[0].refusal.empty()) {
        return;  // without the forces of the reference there is nothing to go by
    }
    const double unit_in_bohr = geometries_.unit_in_angstrom / gaussian::bohr_in_angstrom;
    std::vector<energy_point> points;
    double longest = 0.0;
    for (std::size_t i = 0; i < summaries_.size(); ++i) {
        const summary& one = summaries_[i];
        if (!one.energy || !one.refusal.empty()) {
            continue;
        }
        points.push_back({one.file, i, *one.energy, 0.0, names_other_level(one.route)});
        if (const Eigen::Index point = list_.files[i].point; point >= 0) {
            const double step = geometries_.steps(point) * unit_in_bohr;
            const double force = found_.reference.forces.reshaped()(point / 2) + found_.forces(point / 2, point);
            points.back().by_forces = -0.5 * step * force;
            longest = std::max(longest, std::abs(step));
        }
    }
    if (points.empty() && found_.are_plain) {
        found_.notices.emplace_back(
            "the .forces files hold no energies: nothing shows whether they are of these geometries");
        return;
    }
    energy_messages told = assembler::check_energies(points, longest);
    for (std::size_t k = 0; k < told.refused.size(); ++k) {
        summaries_[told.refused[k]].refusal = told.refusals[k];
    }
    if (!told.refusal_of_all.empty()) {
        refusals.push_back(base::shown(folder_, folder_.size()) + "files.out: " + told.refusal_of_all);
    }
    found_.notices = std::move(told.notices);
}

results gathering::finish(std::vector<std::string>& refusals) {
    check_routes();
    check_methods();
    found_.are_plain =
        std::all_of(summaries_.begin(), summaries_.end(), [](const summary& one) { return is_plain(one.file); });
    std::vector<std::string> of_energies;
    check_energies(of_energies);
    for (std::size_t i = 0; i < summaries_.size(); ++i) {
        const summary& one = summaries_[i];
        found_.missing += one.is_missing ? 1 : 0;
        found_.described += one.route.empty() && one.method.empty() ? 0U : 1U;
        if (!one.refusal.empty()) {
            refusals.push_back(one.refusal);
        } else if (!one.has_dipole && found_.without_dipole.empty() && list_.files[i].point >= 0) {
            found_.without_dipole = one.file;
        }
    }
    refusals.insert(refusals.end(), of_energies.begin(), of_energies.end());
    if (!found_.without_dipole.empty()) {
        found_.dipoles.resize(3, 0);
    }
    return std::move(found_);
}

}  // namespace

results read_results(const std::string& folder, const displacement_list& list, const geometry_set& geometries,
                     std::vector<std::string>& refusals) {
    gathering files(folder, list, geometries);
    {
        progress shown;
        const std::string all = " of " + std::to_string(list.files.size());
        in_parallel(
            list.files.size(), [&](std::size_t i) { files.take_file(i); },
            [&](std::size_t done) { shown.show_if_long("read ", done, all); });
    }
    return files.finish(refusals);
}

}  // namespace displacement_generator::assembler
