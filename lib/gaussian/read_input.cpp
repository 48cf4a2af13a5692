#include "gaussian/read_input.hpp"

#include <algorithm>
#include <cstddef>
#include <numbers>
#include <utility>

#include "base/error.hpp"
#include "base/free_format.hpp"
#include "gaussian/constants.hpp"
#include "gaussian/fields.hpp"
#include "gaussian/lines.hpp"
#include "gaussian/read_molecule.hpp"
#include "gaussian/ready_route.hpp"

namespace displacement_generator::gaussian {

namespace {

/// Jobs are the lines between those that say --Link1--; one without a line of its own counts for nothing.
std::vector<std::pair<std::size_t, std::size_t>> jobs_of(const std::vector<input_line>& lines) {
    std::vector<std::pair<std::size_t, std::size_t>> jobs;
    std::size_t begin = 0;
    bool is_empty = true;
    for (std::size_t i = 0; i <= lines.size(); ++i) {
        if (i == lines.size() || equal_words(lines[i].text, "--link1--")) {
            if (!is_empty) {
                jobs.emplace_back(begin, i);
            }
            begin = i + 1;
            is_empty = true;
        } else {
            is_empty = is_empty && lines[i].text.empty();
        }
    }
    return jobs;
}

void refuse_includes(const input& job, const cursor& here) {
    for (std::size_t i = here.at; i < here.end; ++i) {
        if (here.lines[i].text.starts_with('@')) {
            stop_at(job.name, here.lines[i].number,
                    "found '" + base::shown(here.lines[i].text) +
                        "', which includes a file; put the text of that file in its place");
        }
    }
}

/// Reads up to the route; comments stay where they are.
void read_link0(cursor& here, input& job) {
    for (; !here.ended(); ++here.at) {
        const input_line& line = here.line();
        if (line.text.starts_with('#')) {
            return;
        }
        if (line.is_comment() || line.text.starts_with('%')) {
            job.link0.emplace_back(line.raw);
        } else if (!line.is_blank() && !begins_with(line.text, "$rungauss")) {
            stop_at(job.name, line.number,
                    "expected a Link 0 line, which begins with '%', or the route, which begins with '#', found '" +
                        base::shown(line.text) + "'");
        }
    }
    stop_at(job.name, here.number(), "expected a route, which begins with '#', found the end of the job");
}

void read_route(cursor& here, input& job) {
    job.route_line = here.line().number;
    for (; !here.ended() && !here.line().is_blank(); ++here.at) {
        std::string_view text = here.line().text;
        if (text.starts_with('%')) {
            job.link0.emplace_back(here.line().raw);
            continue;
        }
        if (!job.route_text.empty()) {
            text = stripped(text.substr(head_size(text)));
            job.route_text += text.empty() ? "" : " ";
        }
        job.route_text += text;
    }
    job.keywords = parse_route(job.route_text, place_of(job.name, job.route_line));
}

/// Whether any part of a keyword has an option whose name begins like one of these.
bool has_option(const route& job, std::string_view keyword, std::initializer_list<std::string_view> beginnings) {
    for (const route_keyword& word : job.keywords) {
        for (const route_option& option : word.parts.front().options) {
            for (const std::string_view beginning : beginnings) {
                if (word.name() == keyword && begins_with(option.name, beginning)) {
                    return true;
                }
            }
        }
    }
    return false;
}

bool is_in_checkpoint(const route& job) {
    return has_option(job, "geom", {"check", "chk", "allcheck", "allchk", "step", "modify"}) || is_restart(job);
}

/// Stops the run where the optimisation of an input begins from more than one molecule.
void refuse_several_molecules(const input& job) {
    for (const route_keyword& word : job.keywords.keywords) {
        const auto& options = word.parts.front().options;
        if (begins_with(word.name(), "opt") && std::any_of(options.begin(), options.end(), [](const auto& option) {
                return is_one_of(option.name, {"qst2", "qst3", "path"});
            })) {
            stop_at(
                job.name, job.route_line,
                quoted(word.text) + " has more than one molecule in the input; prepare the log of the optimisation");
        }
    }
}

input_units units_of(const route& job) {
    input_units units{1.0, std::numbers::pi / 180.0};
    if (has_option(job, "units", {"au", "bohr"})) {
        units.length = bohr_in_angstrom;
    }
    if (has_option(job, "units", {"rad"})) {
        units.angle = 1.0;
    }
    return units;
}

/// Whether a line may be one of charge and multiplicity: pairs of integers.
bool is_charge_line(std::string_view text) {
    const std::vector<std::string_view> fields = fields_of(text);
    return fields.size() >= 2 && fields.size() % 2 == 0 && std::all_of(fields.begin(), fields.end(), is_integer);
}

void skip_blank_lines(cursor& here) {
    while (!here.ended() && here.line().is_blank()) {
        ++here.at;
    }
}

/// Reads the title, up to the line of charge and multiplicity. It may be empty: then that line comes at once behind
/// blank ones.
void read_title(cursor& here, input& job) {
    if (!here.ended()) {
        ++here.at;  // the blank line that ends the route
    }
    const bool may_be_empty = !here.ended() && here.line().is_blank();
    skip_blank_lines(here);
    if (here.ended()) {
        stop_at(job.name, here.number(), "expected a title after the route, found the end of the job");
    }
    job.title.line = here.line().number;
    // A blank line ends the title only where it had text: one of comments alone is none yet.
    for (bool has_text = false; !here.ended() && !has_text; skip_blank_lines(here)) {
        if ((may_be_empty || !job.title.lines.empty()) && is_charge_line(here.line().text)) {
            return;
        }
        for (; !here.ended() && !here.line().is_blank(); ++here.at) {
            has_text = has_text || !here.line().is_comment();
            job.title.lines.emplace_back(here.line().raw);
        }
    }
}

void read_charge(cursor& here, input& job, std::vector<notice>& notices) {
    here.skip_blank();
    if (here.ended()) {
        stop_at(job.name, here.number(),
                "expected a line of charge and multiplicity after the title, found the end of the job");
    }
    const input_line& line = here.line();
    const std::vector<std::string_view> fields = fields_of(line.text);
    if (!is_charge_line(line.text)) {
        stop_at(job.name, line.number,
                "expected charge and multiplicity, two integers, found '" + base::shown(line.text) +
                    "'; the title, which begins on line " + std::to_string(job.title.line) + ", ends before it");
    }
    if (base::read_integer(fields[0], job.atoms.charge) != base::number_status::ok ||
        base::read_integer(fields[1], job.atoms.multiplicity) != base::number_status::ok ||
        job.atoms.multiplicity < 1) {
        stop_at(job.name, line.number,
                "expected a charge and a positive multiplicity, found '" + base::shown(line.text) + "'");
    }
    if (fields.size() > 2) {
        job.first_fragment_line = line.number;
        notices.push_back({line.number, "the first charge and multiplicity were taken, those of fragments dropped"});
    }
    ++here.at;
}

/// Reads what stands after the molecule. Every blank line ends a section; those at the end of the job end none.
void read_sections(cursor& here, input& job) {
    std::size_t end = here.end;
    while (end > here.at && here.lines[end - 1].is_blank()) {
        --end;
    }
    if (!here.ended()) {
        ++here.at;  // the blank line that ends the molecule
    }
    while (here.at < end) {
        section next{here.line().number, {}};
        for (; here.at < end && !here.line().is_blank(); ++here.at) {
            next.lines.emplace_back(here.line().raw);
        }
        job.sections.push_back(std::move(next));
        ++here.at;
    }
}

/// Reads one job. Result: false where its molecule is in a checkpoint file.
bool read_job(cursor here, input& job, std::vector<notice>& notices) {
    refuse_includes(job, here);
    read_link0(here, job);
    read_route(here, job);
    if (is_in_checkpoint(job.keywords)) {
        return false;
    }
    refuse_several_molecules(job);
    if (std::any_of(job.keywords.keywords.begin(), job.keywords.keywords.end(),
                    [](const route_keyword& word) { return begins_with(word.name(), "extraover"); })) {
        stop_at(job.name, job.route_line,
                "found 'extraoverlays', whose section before the title cannot be kept; take it out");
    }
    read_title(here, job);
    read_charge(here, job, notices);
    read_molecule(here, units_of(job.keywords), job, notices);
    read_sections(here, job);
    return true;
}

}  // namespace

input read_input(std::string_view text, const std::string& name, std::vector<notice>& notices) {
    const std::vector<input_line> lines = lines_of(text, name);
    const auto jobs = jobs_of(lines);
    int first_route_line = 0;
    for (std::size_t i = 0; i < jobs.size(); ++i) {
        input job;
        job.name = name;
        job.jobs = static_cast<int>(jobs.size());
        job.job = static_cast<int>(i) + 1;
        std::vector<notice> own;
        if (read_job({lines, jobs[i].first, jobs[i].second}, job, own)) {
            if (jobs.size() > 1) {
                notices.push_back(
                    {job.route_line, "job " + std::to_string(job.job) + " of " + std::to_string(jobs.size()) +
                                         " is the first one that holds a molecule; the others are dropped"});
            }
            notices.insert(notices.end(), own.begin(), own.end());
            return job;
        }
        first_route_line = first_route_line == 0 ? job.route_line : first_route_line;
    }
    if (first_route_line != 0) {
        throw base::run_error(
            place_of(name, first_route_line) +
            ": the molecule is in a checkpoint file, as the route says; prepare the log of the job that "
            "wrote it, or its formatted checkpoint");
    }
    throw base::run_error(place_of(name, 1) + ": expected a Gaussian input, found no line of one");
}

}  // namespace displacement_generator::gaussian
