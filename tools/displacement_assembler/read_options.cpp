#include <CLI/CLI.hpp>
#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "base/error.hpp"
#include "base/free_format.hpp"
#include "companion/command_line.hpp"
#include "options.hpp"

namespace displacement_generator::assembler {

namespace {

// What an atom may weigh, in amu: far less and far more than any isotope.
constexpr double least_mass = 0.001;
constexpr double largest_mass = 10000.0;

[[noreturn]] void stop(const std::string& what) { companion::refuse_command_line(program_name, what); }

atom_mass read_atom_mass(std::string_view text) {
    atom_mass result{};
    const std::size_t sign = text.find('=');
    if (sign == std::string_view::npos ||
        base::read_integer(text.substr(0, sign), result.atom) != base::number_status::ok || result.atom < 1 ||
        base::read_real(text.substr(sign + 1), result.mass) != base::number_status::ok) {
        stop("--mass: expected ATOM=VALUE, such as 3=2.014, found '" + base::shown(text) + "'");
    }
    if (!(result.mass >= least_mass && result.mass <= largest_mass)) {
        stop("--mass: expected a mass from 0.001 to 10000 amu, found '" + base::shown(text) + "'");
    }
    return result;
}

void take_masses(const std::string& kind, const std::vector<std::string>& masses, options& asked) {
    if (kind != "isotope" && kind != "average") {
        stop("--masses: expected isotope or average, found '" + base::shown(kind) + "'");
    }
    asked.average_masses = kind == "average";
    for (const std::string& text : masses) {
        const atom_mass next = read_atom_mass(text);
        if (std::any_of(asked.atom_masses.begin(), asked.atom_masses.end(),
                        [&](const atom_mass& other) { return other.atom == next.atom; })) {
            stop("--mass: expected each atom once, found atom " + std::to_string(next.atom) + " twice");
        }
        asked.atom_masses.push_back(next);
    }
}

void check_name(const CLI::Option* option, const char* name, const std::string& value) {
    if (option->count() != 0 && (value.empty() || value == "-")) {
        stop(std::string(name) + ": expected the name of a file, found '" + value + "'");
    }
}

}  // namespace

std::string read_options(int argc, const char* const* argv, options& asked) {
    CLI::App app(
        "Computes frequencies, normal modes and symmetry species from displacement_generator's list and the forces\n"
        "of its files: coord-TAG.log, .out, .fchk or .forces beside each coord-TAG.com. The table goes to standard\n"
        "output, notices go to standard error.",
        program_name);
    companion::add_common_options(app);
    std::string kind = "isotope";
    std::vector<std::string> masses;
    const CLI::Option* folder =
        app.add_option("FOLDER", asked.folder, "the folder PES-0, or one that holds it (default: here)")->type_name("");
    app.add_option("--masses", kind,
                   "isotope: the most abundant one of each element (default); average: the "
                   "standard atomic weights")
        ->type_name("KIND");
    app.add_option("--mass", masses, "of one atom, in amu; may be given several times")
        ->type_name("ATOM=VALUE")
        ->expected(1)
        ->allow_extra_args(false)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    const CLI::Option* molden =
        app.add_option("--molden", asked.molden, "write the modes for viewers")->type_name("FILE");
    const CLI::Option* hessian =
        app.add_option("--hessian", asked.hessian, "write Hessian and dipole derivatives as a formatted checkpoint")
            ->type_name("FILE");
    if (std::string text = companion::parse(app, argc, argv); !text.empty()) {
        return text;
    }
    if (folder->count() != 0 && asked.folder.empty()) {
        stop("FOLDER: expected the name of a folder, found an empty one");
    }
    check_name(molden, "--molden", asked.molden);
    check_name(hessian, "--hessian", asked.hessian);
    take_masses(kind, masses, asked);
    return {};
}

}  // namespace displacement_generator::assembler
