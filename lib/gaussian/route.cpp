#include "gaussian/route.hpp"

#include <algorithm>
#include <cstddef>

#include "base/error.hpp"
#include "gaussian/fields.hpp"
#include "gaussian/ready_route.hpp"

namespace displacement_generator::gaussian {

namespace {

bool is_separator(char c) { return is_gap(c) || c == ','; }

/// Whether a character belongs to the keyword before it and to the one after it, blanks about it or not.
bool joins(char c) { return c == '=' || c == '/'; }

std::size_t after_gap(std::string_view text, std::size_t at) {
    while (at < text.size() && is_gap(text[at])) {
        ++at;
    }
    return at;
}

/// The size of the quotation that begins at a place of a text, its marks included; 0 where none does. One without a
/// second mark goes to the end of the text. A mark within a word is a prime.
std::size_t quotation_size(std::string_view text, std::size_t at) {
    constexpr std::string_view marks = "'\"";
    const auto precedes_word = [](char c) { return is_separator(c) || joins(c) || c == '('; };
    if (marks.find(text[at]) == std::string_view::npos || (at > 0 && !precedes_word(text[at - 1]))) {
        return 0;
    }
    return std::min(text.find(text[at], at + 1), text.size() - 1) + 1 - at;
}

[[noreturn]] void bracket_error(std::string_view text, const std::string& place) {
    throw base::run_error(place + ": expected as many '(' as ')' in the route, found '" + base::shown(text) + "'");
}

/// Takes one keyword with its options off the front of a route, without the blanks that do not separate.
///   rest  in/out  begins with no separator, and ends with no blank
std::string take_keyword(std::string_view& rest, const std::string& place) {
    std::string keyword;
    int depth = 0;
    std::size_t at = 0;
    while (at < rest.size()) {
        const char c = rest[at];
        if (const std::size_t quoted = quotation_size(rest, at); quoted > 0) {
            if (quoted == 1 || rest[at + quoted - 1] != c) {
                throw base::run_error(place + ": expected a second quotation mark in the route, found '" +
                                      base::shown(rest.substr(at)) + "'");
            }
            keyword += rest.substr(at, quoted);
            at += quoted;
            continue;
        }
        if (c == ')' && --depth < 0) {
            bracket_error(rest, place);
        }
        depth += c == '(' ? 1 : 0;
        if (depth > 0) {
            keyword += c == '\t' || c == '\r' ? ' ' : c;
            ++at;
            continue;
        }
        if (is_gap(c)) {
            const std::size_t next = after_gap(rest, at);
            if (!joins(rest[next]) && rest[next] != '(') {
                break;
            }
            at = next;
            continue;
        }
        if (c == ',') {
            break;
        }
        if (keyword.ends_with(')') && (is_letter(c) || is_digit(c))) {
            break;  // opt=(ts)freq
        }
        keyword += c;
        at = joins(c) ? after_gap(rest, at + 1) : at + 1;
    }
    if (depth != 0) {
        bracket_error(rest, place);
    }
    rest.remove_prefix(at);
    return keyword;
}

/// Whether a keyword can stand between any two others: it neither begins nor ends with what would join them, nor begins
/// with what would be something else at the beginning of a line.
bool is_keyword(std::string_view text) {
    constexpr std::string_view not_first = "=/(#%@";
    return not_first.find(text.front()) == std::string_view::npos && !joins(text.back());
}

/// Splits a text at those of some separators that stand outside brackets; empty pieces are left out.
std::vector<std::string_view> split(std::string_view text, std::string_view separators) {
    std::vector<std::string_view> pieces;
    std::size_t begin = 0;
    for (route_walk walk{text};; walk.step()) {
        if (walk.ended() || (walk.depth == 0 && separators.find(text[walk.at]) != std::string_view::npos)) {
            if (walk.at > begin) {
                pieces.push_back(text.substr(begin, walk.at - begin));
            }
            begin = walk.at + 1;
        }
        if (walk.ended()) {
            return pieces;
        }
    }
}

/// Whether a text begins with a bracket whose other one is its end.
bool is_in_brackets(std::string_view text) {
    route_walk walk{text};
    while (!walk.ended()) {
        walk.step();
        if (walk.depth == 0) {
            return text.front() == '(' && walk.ended();
        }
    }
    return false;
}

std::string name_of(std::string_view text) { return lower(stripped(text.substr(0, text.find_first_of("=(")))); }

route_part part_of(std::string_view text) {
    route_part part{std::string(text), name_of(text), {}};
    std::string_view options = text.substr(std::min(text.find_first_of("=("), text.size()));
    if (!options.empty() && options.front() == '=') {
        options.remove_prefix(1);
    }
    if (is_in_brackets(options)) {
        options = options.substr(1, options.size() - 2);
    }
    for (const std::string_view option : split(options, ", ")) {
        part.options.push_back({std::string(option), name_of(option)});
    }
    return part;
}

void add_stray_option(const route_keyword& option, route_keyword& job_type) {
    job_type.parts.front().options.push_back({option.text, option.name()});
    job_type.text += "," + option.text;
    job_type.stray_options += (job_type.stray_options.empty() ? "" : ",") + option.text;
}

}  // namespace

void route_walk::step() {
    const std::size_t quoted = quotation_size(text, at);
    depth += text[at] == '(' ? 1 : (text[at] == ')' ? -1 : 0);
    at += std::max(quoted, std::size_t{1});
}

std::size_t head_size(std::string_view line) {
    if (!line.starts_with('#')) {
        return 0;
    }
    const bool has_letter = line.size() > 1 && std::string_view("pntPNT").find(line[1]) != std::string_view::npos &&
                            (line.size() == 2 || is_separator(line[2]));
    return has_letter ? 2 : 1;
}

route parse_route(std::string_view text, const std::string& place) {
    text = stripped(text);
    if (text.empty() || text.front() != '#') {
        throw base::run_error(place + ": expected a route, which begins with '#', found '" + base::shown(text) + "'");
    }
    route job;
    job.head = text.substr(0, head_size(text));
    std::string_view rest = text.substr(job.head.size());
    while (true) {
        while (!rest.empty() && is_separator(rest.front())) {
            rest.remove_prefix(1);
        }
        if (rest.empty()) {
            return job;
        }
        route_keyword keyword{take_keyword(rest, place), {}};
        if (!is_keyword(keyword.text)) {
            throw base::run_error(place + ": expected a keyword with its options in the route, found '" +
                                  base::shown(keyword.text) + "'");
        }
        for (const std::string_view piece : split(keyword.text, "/")) {
            keyword.parts.push_back(part_of(piece));
        }
        if (!job.keywords.empty() && is_job_type(job.keywords.back()) && is_stray_option(keyword)) {
            add_stray_option(keyword, job.keywords.back());
        } else {
            job.keywords.push_back(std::move(keyword));
        }
    }
}

std::string text_of(const route& job) {
    std::string text = job.head;
    for (const route_keyword& keyword : job.keywords) {
        text += ' ';
        text += keyword.text;
    }
    return text;
}

}  // namespace displacement_generator::gaussian
