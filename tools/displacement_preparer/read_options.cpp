#include <CLI/CLI.hpp>
#include <array>
#include <cstdio>
#include <string>

#include "base/error.hpp"
#include "frame/frame.hpp"
#include "options.hpp"

namespace displacement_generator::preparer {

namespace {

[[noreturn]] void stop(const std::string& what) {
    throw base::run_error("command line: " + what + " (displacement_preparer --help tells more)");
}

std::string number(double value) {
    std::array<char, 32> text{};
    static_cast<void>(std::snprintf(text.data(), text.size(), "%.10g", value));
    return text.data();
}

/// A message of the command-line library in the form of ours.
std::string in_our_form(const CLI::ParseError& error) {
    std::string text = base::shown(error.what(), 300);
    if (text.size() > 1 && text[0] >= 'A' && text[0] <= 'Z' && text[1] >= 'a' && text[1] <= 'z') {
        text[0] = static_cast<char>(text[0] - 'A' + 'a');
    }
    return text;
}

void check(const options& asked) {
    if (asked.source.empty() || asked.output.empty()) {
        stop(std::string(asked.source.empty() ? "SOURCE" : "--output") +
             ": expected the name of a file, found an empty one");
    }
    if (!(asked.tolerance >= frame::least_tolerance && asked.tolerance <= frame::largest_tolerance)) {
        stop("--tolerance: expected " + number(frame::least_tolerance) + " to " + number(frame::largest_tolerance) +
             " angstrom, found " + number(asked.tolerance));
    }
    if (asked.multiplicity && *asked.multiplicity < 1) {
        stop("--multiplicity: expected 1 or more, found " + std::to_string(*asked.multiplicity));
    }
}

}  // namespace

std::string read_options(int argc, const char* const* argv, options& asked) {
    CLI::App app(
        "Makes a Gaussian input of any molecule from Gaussian, in the frame in which displacement_generator computes\n"
        "fewest displacements. Report and notices go to standard error.",
        "displacement_preparer");
    constexpr std::size_t column = 26;
    app.get_formatter()->column_width(column);
    app.option_defaults()->multi_option_policy(CLI::MultiOptionPolicy::Throw);
    app.set_version_flag("--version", std::string("displacement_preparer " DISPLACEMENT_GENERATOR_VERSION),
                         "print the version and end");
    app.set_help_flag("-h,--help", "print this help and end");
    app.add_option("SOURCE", asked.source,
                   "Gaussian input or log, formatted checkpoint or xyz file, told by its content; - is standard input")
        ->required()
        ->type_name("");
    app.add_option("-o,--output", asked.output, "the input to write; - is standard output (default)")
        ->type_name("FILE");
    app.add_option("--tolerance", asked.tolerance, "how far an atom may be moved, in angstrom (default 0.01)")
        ->type_name("X");
    const CLI::Option* route =
        app.add_option("--route", asked.route, "in place of the source's, from its # on")->type_name("TEXT");
    app.add_option("--charge", asked.charge, "in place of the source's")->type_name("N");
    app.add_option("--multiplicity", asked.multiplicity, "in place of the source's")->type_name("N");
    app.add_flag("--keep-frame", asked.keep_frame, "neither move nor turn the molecule, only make it exact");
    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp&) {
        return app.help();
    } catch (const CLI::CallForVersion& version) {
        return std::string(version.what()) + "\n";
    } catch (const CLI::ParseError& error) {
        stop(in_our_form(error));
    }
    if (route->count() != 0 && asked.route.empty()) {
        stop("--route: expected a route, which begins with '#', found nothing");
    }
    check(asked);
    return {};
}

}  // namespace displacement_generator::preparer
