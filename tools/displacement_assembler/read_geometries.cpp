#include <cmath>
#include <exception>
#include <string_view>
#include <utility>

#include "base/error.hpp"
#include "gaussian/constants.hpp"
#include "gaussian/route.hpp"
#include "geometry.hpp"
#include "in_parallel.hpp"
#include "printed.hpp"

namespace displacement_generator::assembler {

namespace {

/// The list has six decimals of dx, and both coordinates whose difference is the step have eight.
constexpr double step_rounding = 0.5e-6 + 2 * 0.5e-8 + 1e-10;
constexpr std::string_view axis_names = "xyz";

/// The unit of lengths that a route asks for, in angstrom.
double unit_of(const geometry& from, const std::string& place) {
    for (const gaussian::route_keyword& keyword : gaussian::parse_route(from.route, place).keywords) {
        if (keyword.name() != "units" && keyword.name() != "unit") {
            continue;
        }
        for (const gaussian::route_option& option : keyword.parts.front().options) {
            if (option.name == "au" || option.name == "bohr") {
                return gaussian::bohr_in_angstrom;
            }
        }
    }
    return 1.0;
}

/// The step of a displaced file; stops the run where another coordinate is moved or the step is not dx.
double step_of(const std::string& name, const geometry& displaced, const geometry& reference, Eigen::Index point,
               double dx) {
    if (displaced.route != reference.route) {
        throw base::run_error(name + ":" + std::to_string(displaced.route_line) + ": expected the route '" +
                              base::shown(reference.route, 200) + "' of the reference, found '" +
                              base::shown(displaced.route, 200) + "'");
    }
    if (displaced.charge != reference.charge || displaced.multiplicity != reference.multiplicity) {
        throw base::run_error(name + ":" + std::to_string(displaced.first_atom_line - 1) + ": expected charge " +
                              std::to_string(reference.charge) + " and multiplicity " +
                              std::to_string(reference.multiplicity) + " of the reference, found " +
                              std::to_string(displaced.charge) + " and " + std::to_string(displaced.multiplicity));
    }
    const Eigen::Index own = point / 2;
    const Eigen::Matrix3Xd moved = displaced.positions - reference.positions;
    for (Eigen::Index c = 0; c < moved.size(); ++c) {
        const double expected = c != own ? 0.0 : point % 2 == 0 ? -dx : dx;
        const double allowed = c != own ? 0.0 : step_rounding;
        if (!(std::abs(moved.reshaped()(c) - expected) <= allowed)) {
            throw base::run_error(name + ":" + std::to_string(displaced.first_atom_line + static_cast<int>(c / 3)) +
                                  ": expected " + coordinate_name(c) + " to be moved by " + printed("%.8f", expected) +
                                  " from the reference, found " + printed("%.8f", moved.reshaped()(c)));
        }
    }
    return moved.reshaped()(own);
}

/// Stops the run where an operation of the list is none of the reference: derived forces would be those of another
/// molecule.
void check_operations(const std::string& name, const geometry& reference, double unit_in_angstrom,
                      const displacement_list& list) {
    const double allowed = vibration::position_tolerance * gaussian::bohr_in_angstrom / unit_in_angstrom;
    for (std::size_t k = 0; k < list.relations.symmetry.size(); ++k) {
        const vibration::operation& by = list.relations.symmetry[k];
        for (Eigen::Index atom = 0; atom < reference.positions.cols(); ++atom) {
            const Eigen::Index image = by.images(atom);
            if (!((by.matrix * reference.positions.col(atom) - reference.positions.col(image)).norm() <= allowed)) {
                throw base::run_error(name + ":" + std::to_string(reference.first_atom_line + static_cast<int>(atom)) +
                                      ": expected atom " + std::to_string(atom + 1) + " to be carried onto atom " +
                                      std::to_string(image + 1) + " by operation " + list.operation_names[k] +
                                      " of the list, found it elsewhere; the list is that of another molecule, run "
                                      "displacement_generator again");
            }
        }
    }
}

}  // namespace

std::string coordinate_name(Eigen::Index c) {
    return std::string(1, axis_names[static_cast<std::size_t>(c % 3)]) + " of atom " + std::to_string(c / 3 + 1);
}

geometry_set read_geometries(const std::string& folder, const displacement_list& list,
                             std::vector<std::string>& refusals) {
    geometry_set result;
    result.steps = Eigen::VectorXd::Zero(static_cast<Eigen::Index>(6 * list.numbers.size()));
    std::vector<std::string> problems(list.files.size());
    const auto take = [&](std::size_t i, const auto& use) {
        const std::string name = folder + list.files[i].name + ".com";
        try {
            gaussian::source from(name, gaussian::opening::regular_only);
            use(from.name(), read_geometry(from, list.symbols));
        } catch (const base::run_error& error) {
            problems[i] = error.what();
        } catch (const std::exception& error) {  // for want of memory, for example: never beyond a thread
            problems[i] = name + ": " + error.what();
        }
    };
    take(0, [&](const std::string& name, geometry&& found) {
        result.unit_in_angstrom = unit_of(found, name + ":" + std::to_string(found.route_line));
        check_operations(name, found, result.unit_in_angstrom, list);
        result.reference = std::move(found);
    });
    const bool has_reference = problems[0].empty();
    in_parallel(list.files.size() - 1, [&](std::size_t i) {
        take(i + 1, [&](const std::string& name, geometry&& found) {
            if (const Eigen::Index point = list.files[i + 1].point; has_reference) {
                result.steps(point) = step_of(name, found, result.reference, point, list.dx);
            }
        });
    });
    for (const std::string& problem : problems) {
        result.are_good.push_back(has_reference && problem.empty());
        if (!problem.empty()) {
            refusals.push_back(problem);
        }
    }
    return result;
}

}  // namespace displacement_generator::assembler
