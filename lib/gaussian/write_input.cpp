#include <array>
#include <cmath>
#include <cstddef>
#include <string>
#include <string_view>

#include "base/error.hpp"
#include "base/fixed_columns.hpp"
#include "gaussian/fields.hpp"
#include "gaussian/ready_input.hpp"
#include "gaussian/route.hpp"
#include "gaussian/symbols.hpp"

namespace displacement_generator::gaussian {

namespace {

/// A route is broken between keywords where a line would be longer than this.
constexpr std::size_t route_width = 100;

/// The generator copies this many characters of a line.
constexpr std::size_t longest_line = 500;

// An atom line, as the generator writes it:
//   columns  1- 5 symbol      A5, a text of 2 characters
//           6-16 blank        11X
//          17-58 x, y and z   3F14.8
constexpr int symbol_width = 5;
constexpr int blank_width = 11;
constexpr int coordinate_width = 14;
constexpr int coordinate_decimals = 8;

[[noreturn]] void stop(const std::string& what, std::string_view line) {
    throw base::run_error(what + ", found '" + base::shown(line) + "'");
}

void append_line(std::string& text, std::string_view line, std::string_view what) {
    line = stripped_at_end(line);
    if (line.size() > longest_line) {
        stop("expected a line of at most " + std::to_string(longest_line) + " characters in " + std::string(what),
             line);
    }
    if (line.find('\n') != std::string_view::npos) {
        stop("expected one line in " + std::string(what), line);
    }
    text += line;
    text += '\n';
}

/// A line after the route, none of which may begin like one: the generator takes the last such line.
void append_later_line(std::string& text, std::string_view line, std::string_view what) {
    if (stripped(line).starts_with('#')) {
        stop("expected no line after the route that begins with '#', which would be taken for the route, in " +
                 std::string(what),
             line);
    }
    append_line(text, line, what);
}

/// Where a route is broken: at the last blank outside brackets and quotations that keeps the line short, else at the
/// first one.
std::size_t break_of(std::string_view route) {
    std::size_t last = std::string_view::npos;
    for (route_walk walk{route}; !walk.ended(); walk.step()) {
        if (walk.at >= route_width && last != std::string_view::npos) {
            return last;
        }
        if (route[walk.at] == ' ' && walk.depth == 0 && walk.at > 2) {  // not right behind the "#p"
            last = walk.at;
        }
    }
    return route.size() <= route_width || last == std::string_view::npos ? route.size() : last;
}

void append_route(std::string& text, std::string_view route) {
    if (!route.starts_with('#')) {
        stop("expected a route, which begins with '#'", route);
    }
    while (!route.empty()) {
        const std::size_t size = break_of(route);
        append_line(text, route.substr(0, size), "the route");
        route = stripped(route.substr(size));
    }
}

void append_coordinate(std::string& text, double value) {
    std::array<char, coordinate_width> column{};
    base::put_real(column.data(), coordinate_width, coordinate_decimals, value);
    const std::string_view digits(column.data(), column.size());
    if (!std::isfinite(value) || digits.front() != ' ') {
        throw base::run_error("expected coordinates between -1000 and 10000 angstrom, found " + std::to_string(value));
    }
    const bool is_zero = digits.find_first_of("123456789") == std::string_view::npos;
    base::append_real(text, coordinate_width, coordinate_decimals, is_zero ? 0.0 : value);  // without a minus sign
}

void append_atoms(std::string& text, const molecule& atoms) {
    if (atoms.positions.cols() != static_cast<Eigen::Index>(atoms.numbers.size())) {
        throw base::run_error("found " + std::to_string(atoms.positions.cols()) + " positions, expected " +
                              std::to_string(atoms.numbers.size()));
    }
    for (std::size_t i = 0; i < atoms.numbers.size(); ++i) {
        std::string symbol(symbol_of(atoms.numbers[i]));
        symbol.resize(2, ' ');
        base::append_text(text, symbol_width, symbol);
        text.append(blank_width, ' ');
        for (int j = 0; j < 3; ++j) {
            append_coordinate(text, atoms.positions(j, static_cast<Eigen::Index>(i)));
        }
        text += '\n';
    }
}

}  // namespace

std::string write_input(const ready_input& ready) {
    std::string text;
    for (const std::string& line : ready.link0) {
        append_line(text, line, "the Link 0 lines");
    }
    append_route(text, ready.route);
    text += '\n';
    for (const std::string& line : ready.title) {
        append_later_line(text, line, "the title");
    }
    text += '\n';
    text += std::to_string(ready.atoms.charge) + " " + std::to_string(ready.atoms.multiplicity) + "\n";
    append_atoms(text, ready.atoms);
    text += '\n';
    for (const section& lines : ready.sections) {
        for (const std::string& line : lines.lines) {
            append_later_line(text, line, "the sections after the molecule");
        }
        text += '\n';
    }
    return text;
}

}  // namespace displacement_generator::gaussian
