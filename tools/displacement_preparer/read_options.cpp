#include <CLI/CLI.hpp>
#include <array>
#include <charconv>
#include <cstdio>
#include <string>

#include "base/error.hpp"
#include "companion/command_line.hpp"
#include "frame/frame.hpp"
#include "options.hpp"

namespace displacement_generator::preparer {

namespace {

[[noreturn]] void stop(const std::string& what) { companion::refuse_command_line(program_name, what); }

/// A limit of an option in its shortest decimals, without an exponent.
std::string limit(double value) {
    std::array<char, 32> text{};
    char* const end = std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed).ptr;
    return {text.data(), end};
}

std::string number(double value) {
    std::array<char, 32> text{};
    static_cast<void>(std::snprintf(text.data(), text.size(), "%.10g", value));
    return text.data();
}

void check(const options& asked) {
    if (asked.source.empty() || asked.output.empty()) {
        stop(std::string(asked.source.empty() ? "SOURCE" : "--output") +
             ": expected the name of a file, found an empty one");
    }
    if (!(asked.tolerance >= frame::least_tolerance && asked.tolerance <= frame::largest_tolerance)) {
        stop("--tolerance: expected " + limit(frame::least_tolerance) + " to " + limit(frame::largest_tolerance) +
             " angstrom, found " + number(asked.tolerance));
    }
    if (asked.multiplicity && *asked.multiplicity < 1) {
        stop("--multiplicity: expected 1 or more, found " + std::to_string(*asked.multiplicity));
    }
}

}  // namespace

std::string read_options(int argc, const char* const* argv, options& asked) {
    CLI::App app(
        "Makes a Gaussian input from a Gaussian input or log, a formatted checkpoint or an xyz file, in the frame in\n"
        "which displacement_generator computes the fewest displacements. The report and all notices go to standard "
        "error.",
        program_name);
    companion::add_common_options(app);
    app.add_option("SOURCE", asked.source,
                   "the molecule; the kind of file is recognised by its content; - is standard input")
        ->required()
        ->type_name("");
    app.add_option("-o,--output", asked.output, "the input to write; - is standard output (the default)")
        ->type_name("FILE");
    app.add_option("--tolerance", asked.tolerance, "how far an atom may be moved, in angstrom (default 0.01)")
        ->type_name("X");
    const CLI::Option* route =
        app.add_option("--route", asked.route, "the route in place of the source's, from its # on")->type_name("TEXT");
    app.add_option("--charge", asked.charge, "the charge in place of the source's")->type_name("N");
    app.add_option("--multiplicity", asked.multiplicity, "the multiplicity in place of the source's")->type_name("N");
    app.add_flag("--keep-frame", asked.keep_frame, "neither move nor turn the molecule, only make its symmetry exact");
    if (std::string text = companion::parse(app, argc, argv); !text.empty()) {
        return text;
    }
    if (route->count() != 0 && asked.route.empty()) {
        stop("--route: expected a route, which begins with '#', found nothing");
    }
    check(asked);
    return {};
}

}  // namespace displacement_generator::preparer
