#include "command_line.hpp"

#include <CLI/CLI.hpp>
#include <cstddef>

#include "base/error.hpp"

namespace displacement_generator::companion {

namespace {

/// A message of the command-line library in the form of ours.
std::string in_our_form(const CLI::ParseError& error) {
    std::string text = base::shown(error.what(), 300);
    if (text.size() > 1 && text[0] >= 'A' && text[0] <= 'Z' && text[1] >= 'a' && text[1] <= 'z') {
        text[0] = static_cast<char>(text[0] - 'A' + 'a');
    }
    return text;
}

}  // namespace

void refuse_command_line(std::string_view program, const std::string& what) {
    throw base::run_error("command line: " + what + " (" + std::string(program) + " --help tells more)");
}

void add_common_options(CLI::App& line) {
    constexpr std::size_t column_of_explanations = 26;
    line.get_formatter()->column_width(column_of_explanations);
    line.option_defaults()->multi_option_policy(CLI::MultiOptionPolicy::Throw);
    line.set_version_flag("--version", line.get_name() + " " DISPLACEMENT_GENERATOR_VERSION,
                          "print the version and end");
    line.set_help_flag("-h,--help", "print this help and end");
}

std::string parse(CLI::App& line, int argc, const char* const* argv) {
    try {
        line.parse(argc, argv);
    } catch (const CLI::CallForHelp&) {
        return line.help();
    } catch (const CLI::CallForVersion& version) {
        return std::string(version.what()) + "\n";
    } catch (const CLI::ParseError& error) {
        refuse_command_line(line.get_name(), in_our_form(error));
    }
    return {};
}

}  // namespace displacement_generator::companion
