#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

#include "base/error.hpp"
#include "base/free_format.hpp"
#include "gaussian/fields.hpp"
#include "gaussian/lines.hpp"
#include "gaussian/ready_input.hpp"
#include "gaussian/ready_route.hpp"
#include "gaussian/symbols.hpp"

namespace displacement_generator::gaussian {

namespace {

/// The first line of a section, or the last one of the file's that is known, for messages.
std::string shown_first_line(const section& lines) {
    return lines.lines.empty() ? "an empty section" : quoted(lines.lines.front());
}

/// Whether a Link 0 line names a file that all jobs would share, or kills the job half-way.
bool names_a_shared_file(std::string_view line) {
    line = stripped(line);
    if (!line.starts_with('%')) {
        return false;
    }
    const std::string_view key = stripped(line.substr(1, line.find_first_of("= \t") - 1));
    return is_one_of(key, {"chk", "oldchk", "schk", "rwf", "int", "d2e", "scr", "save", "kjob", "oldmatrix",
                           "oldrawmatrix", "errorsave"});
}

std::vector<std::string> ready_link0(const input& source) {
    std::vector<std::string> kept;
    std::copy_if(source.link0.begin(), source.link0.end(), std::back_inserter(kept),
                 [](const std::string& line) { return !names_a_shared_file(line); });
    return kept;
}

/// Whether a line is more than a comment.
bool has_text(std::string_view line) { return !stripped(line.substr(0, line.find('!'))).empty(); }

/// A title that the generator finds to be one: with a line, and none that begins like a route.
std::vector<std::string> ready_title(const std::vector<std::string>& title, int line, std::vector<notice>& notices) {
    std::vector<std::string> ready = title;
    if (std::none_of(title.begin(), title.end(), has_text)) {
        notices.push_back({line, "the title is empty; 'no title' takes its place"});
        ready.emplace_back("no title");
    }
    for (std::size_t i = 0; i < ready.size(); ++i) {
        if (stripped(ready[i]).starts_with('#')) {
            ready[i] = std::string("- ").append(ready[i]);
            notices.push_back({line + static_cast<int>(i),
                               "'- ' put before a line of the title, which would be taken for the route"});
        }
    }
    return ready;
}

constexpr std::string_view marks_of_constraints[] = {"freeze", "frozen", "(f)", "(f,", "nstep", "stepsize"};

bool is_basis_end(std::string_view line) { return stripped(line).starts_with("****"); }

/// Whether a line may be one of ModRedundant, of a generalised internal coordinate, or of a list of atoms.
bool is_coordinate_line(std::string_view line) {
    const std::vector<std::string_view> fields = fields_of(line.substr(0, line.find('!')));
    if (fields.empty()) {
        return true;
    }
    const std::string_view first = fields.front();
    return first.size() == 1 || !is_letter(first.front()) || line.find_first_of("=(") != std::string_view::npos ||
           equal_words(first, "atoms") || equal_words(first, "noatoms") || begins_with(first, "notatoms");
}

/// Stops the run where the section that a removed keyword should have is another one.
void check_removed(const input& source, const section& found, const section_claim& owner) {
    for (std::size_t i = 0; i < found.lines.size(); ++i) {
        if (is_basis_end(found.lines[i]) ||
            (owner.place == modredundant_place && !is_coordinate_line(found.lines[i]))) {
            stop_at(source.name, found.line + static_cast<int>(i),
                    "expected the section of '" + base::shown(owner.owner) + "', found '" +
                        base::shown(found.lines[i]) + "'; take the keyword out, or give its section");
        }
    }
}

/// Whether a line of ModRedundant, or of a generalised internal coordinate, freezes or scans something.
bool is_constraint(std::string_view line) {
    line = line.substr(0, line.find('!'));
    if (line.find('(') != std::string_view::npos) {
        const std::string text = lower(line);
        return std::any_of(std::begin(marks_of_constraints), std::end(marks_of_constraints),
                           [&](std::string_view mark) { return text.find(mark) != std::string::npos; });
    }
    const std::vector<std::string_view> fields = fields_of(line);
    return !fields.empty() && std::any_of(fields.begin() + 1, fields.end(), [](std::string_view field) {
        return is_one_of(field, {"f", "s"});
    });
}

/// Tells of the first line of a section that goes and that an optimisation may not leave a stationary point with.
void tell_of_constraints(const section& found, const section_claim& owner, std::vector<notice>& notices) {
    if (owner.place != modredundant_place && owner.place != frozen_place) {
        return;
    }
    for (std::size_t i = 0; i < found.lines.size(); ++i) {
        if (owner.place == frozen_place ? has_text(found.lines[i]) : is_constraint(found.lines[i])) {
            notices.push_back({found.line + static_cast<int>(i),
                               quoted(stripped(found.lines[i])) +
                                   " left out, which freezes or scans coordinates: make sure that the geometry is a "
                                   "stationary point"});
            return;
        }
    }
}

/// Whether a line is `atom [neighbour order ...]`.
bool is_connectivity_line(std::string_view line, int atoms) {
    const std::vector<std::string_view> fields = fields_of(line.substr(0, line.find('!')));
    for (std::size_t i = 0; i < fields.size(); ++i) {
        int atom = 0;
        double order = 0.0;
        const bool is_atom = i == 0 || i % 2 == 1;
        if (is_atom ? base::read_integer(fields[i], atom) != base::number_status::ok || atom < 1 || atom > atoms
                    : base::read_real(fields[i], order) != base::number_status::ok) {
            return false;
        }
    }
    return fields.size() % 2 == 1 || fields.empty();
}

void check_connectivity(const input& source, const section& found, const section_claim& owner) {
    const int atoms = static_cast<int>(source.atoms.numbers.size() + source.dummies.size());
    for (std::size_t i = 0; i < found.lines.size(); ++i) {
        if (!is_connectivity_line(found.lines[i], atoms)) {
            stop_at(source.name, found.line + static_cast<int>(i),
                    "expected the connectivity that '" + base::shown(owner.owner) + "' asks for, found '" +
                        base::shown(found.lines[i]) + "'; take the keyword out, or give its section");
        }
    }
}

[[noreturn]] void stop_at_doubtful(const input& source, const section& found, const section_claim& owner) {
    stop_at(source.name, found.line,
            "found " + shown_first_line(found) + " after the molecule, and nobody can tell whether it belongs to '" +
                base::shown(owner.owner) + "'; take that keyword and its section out");
}

bool has_lines(const section& found) { return !found.lines.empty(); }

std::size_t count_with_lines(const std::vector<section>& sections) {
    return static_cast<std::size_t>(std::count_if(sections.begin(), sections.end(), has_lines));
}

/// Takes the sections of analyses off the end, after those that the energy needs: where all are there, and no more.
///   others  in      how many others there should be
///   rest    in/out  sections; an empty one counts for nothing
void remove_analyses(const input& source, const std::vector<section_claim>& analyses, std::size_t others,
                     std::vector<section>& rest) {
    const std::size_t found = count_with_lines(rest);
    if (analyses.empty() || found == 0) {
        return;
    }
    if (found != others + analyses.size() && (others > 0 || found > analyses.size())) {
        stop_at_doubtful(source, *std::find_if(rest.begin(), rest.end(), has_lines), analyses.front());
    }
    std::size_t left = found - std::min(others, found);
    for (; !rest.empty() && (left > 0 || !has_lines(rest.back())); rest.pop_back()) {
        if (has_lines(rest.back())) {
            check_removed(source, rest.back(), analyses.front());
            --left;
        }
    }
}

/// Puts those sections after the molecule that stay.
///   has_connectivity  out  whether a connectivity is among them
std::vector<section> ready_sections(const input& source, bool keep_connectivity, bool keep_others,
                                    std::vector<notice>& notices) {
    using fate = section_claim::fate;
    const std::vector<section>& all = source.sections;
    std::vector<section> kept;
    std::size_t at = 0;
    std::vector<section_claim> late;
    std::vector<section_claim> analyses;
    const std::vector<section_claim> claims = claims_of(source.keywords);
    const section_claim* taken_by =
        nullptr;  // a section that goes may be that of another keyword, if one lacks its own
    const section* taken = nullptr;
    std::size_t lacking = 0;
    for (const section_claim& owner : claims) {
        if (owner.place >= other_place) {
            (owner.place == other_place ? late : analyses).push_back(owner);
            continue;
        }
        if (at == all.size()) {
            lacking += owner.what == fate::kept ? 1 : 0;
            continue;
        }
        const section& found = all[at];
        if (owner.what == fate::unknown_count) {
            stop_at(source.name, found.line,
                    "found " + shown_first_line(found) +
                        " after the molecule, and nobody can tell whether it belongs to '" + base::shown(owner.owner) +
                        "'; take that keyword and its sections out");
        }
        ++at;
        if (owner.place == connectivity_place) {
            check_connectivity(source, found, owner);
            if (keep_connectivity) {
                kept.push_back(found);
            }
        } else if (owner.what == fate::removed) {
            check_removed(source, found, owner);
            tell_of_constraints(found, owner, notices);
            if (has_lines(found)) {
                taken_by = &owner;
                taken = &found;
            }
        } else if (keep_others) {
            kept.push_back(found);
        }
    }
    const auto removed = static_cast<std::size_t>(std::count_if(
        late.begin(), late.end(), [](const section_claim& owner) { return owner.what == fate::removed; }));
    std::vector<section> rest(all.begin() + static_cast<std::ptrdiff_t>(at), all.end());
    remove_analyses(source, analyses, late.size(), rest);
    if (taken != nullptr && lacking + late.size() - removed > count_with_lines(rest)) {
        stop_at_doubtful(source, *taken, *taken_by);
    }
    if (removed > 0 && !rest.empty()) {
        if (removed < late.size() || rest.size() > removed) {
            const auto owner = std::find_if(late.begin(), late.end(),
                                            [](const section_claim& claim) { return claim.what == fate::removed; });
            stop_at_doubtful(source, rest.front(), *owner);
        }
        return kept;
    }
    if (keep_others) {
        kept.insert(kept.end(), rest.begin(), rest.end());
    } else if (!rest.empty()) {
        notices.push_back(
            {rest.front().line, "the sections after the molecule are left out: the new route asks for none"});
    }
    return kept;
}

/// Takes the numbers of a field, `4` or `4-7`; false where it has others than those of atoms.
bool take_atoms(std::string_view field, std::vector<bool>& listed) {
    const std::size_t hyphen = field.find('-');
    const std::string_view end = hyphen == std::string_view::npos ? field : field.substr(hyphen + 1);
    int first = 0;
    int last = 0;
    if (base::read_integer(field.substr(0, hyphen), first) != base::number_status::ok ||
        base::read_integer(end, last) != base::number_status::ok || first < 1 || last < first ||
        last > static_cast<int>(listed.size())) {
        return false;
    }
    std::fill(listed.begin() + first - 1, listed.begin() + last, true);
    return true;
}

/// Which atoms, dummies included, a line of a basis set lists by their numbers, which end in a 0; none where it is not
/// such a line.
std::vector<bool> listed_atoms(const input& source, std::string_view line) {
    std::vector<std::string_view> fields = fields_of(line.substr(0, line.find('!')));
    std::vector<bool> listed(source.atoms.numbers.size() + source.dummies.size());
    if (fields.size() < 2 || fields.back() != "0") {
        return {};
    }
    fields.pop_back();
    const bool lists =
        std::all_of(fields.begin(), fields.end(), [&](std::string_view field) { return take_atoms(field, listed); });
    return lists ? listed : std::vector<bool>{};
}

/// Whether a list of atoms has one of two atoms of the same element.
bool parts_an_element(const std::vector<int>& numbers, const std::vector<bool>& listed) {
    std::array<std::array<bool, 2>, largest_atomic_number + 1> found{};
    for (std::size_t i = 0; i < listed.size(); ++i) {
        found.at(static_cast<std::size_t>(numbers[i])).at(listed[i] ? 1 : 0) = true;
    }
    return std::any_of(found.begin(), found.end(), [](const auto& of) { return of[0] && of[1]; });
}

/// Which atoms the first field of a line lists by their numbers, as `2 2.0` or `4-7 Nuc 0.0`; none where it lists none.
std::vector<bool> first_listed(const input& source, const std::vector<std::string_view>& fields) {
    if (fields.size() < 2 || fields.front().empty() || !is_digit(fields.front().front())) {
        return {};
    }
    std::vector<bool> listed(source.atoms.numbers.size() + source.dummies.size());
    return take_atoms(fields.front(), listed) ? listed : std::vector<bool>{};
}

std::vector<std::string_view> fields_before_comment(std::string_view line) {
    return fields_of(line.substr(0, line.find('!')));
}

/// Which atoms have a sphere unlike that of another atom of their element, by the lines `atom radius ...` of a section.
std::vector<bool> unlike_spheres(const input& source, const section& radii) {
    const std::vector<int>& numbers = source.atoms.numbers;
    std::vector<std::vector<std::string_view>> spheres(numbers.size());
    for (const std::string& line : radii.lines) {
        const std::vector<std::string_view> fields = fields_before_comment(line);
        const std::vector<bool> listed = first_listed(source, fields);
        for (std::size_t i = 0; i < listed.size(); ++i) {
            if (listed[i]) {
                spheres[i].assign(fields.begin() + 1, fields.end());
            }
        }
    }
    std::array<const std::vector<std::string_view>*, largest_atomic_number + 1> first{};
    std::array<bool, largest_atomic_number + 1> differ{};
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        const auto element = static_cast<std::size_t>(numbers[i]);
        first.at(element) = first.at(element) == nullptr ? &spheres[i] : first.at(element);
        differ.at(element) = differ.at(element) || *first.at(element) != spheres[i];
    }
    std::vector<bool> unlike(numbers.size());
    std::transform(numbers.begin(), numbers.end(), unlike.begin(),
                   [&](int number) { return differ.at(static_cast<std::size_t>(number)); });
    return unlike;
}

/// How the lines of a section may name atoms by their numbers, besides as those of a basis set.
struct numbered_lines {
    bool may_be_massage;       ///< `atom word ...` changes an atom
    bool are_radii;            ///< `atom radius` changes the sphere of an atom
    std::vector<bool> unlike;  ///< of radii in a molecule without dummy atoms: as unlike_spheres tells
};

/// Which atoms, dummies included, a line names by their numbers to make them unlike others; none where it names none.
std::vector<bool> named_atoms(const input& source, std::string_view line, const numbered_lines& what) {
    if (std::vector<bool> listed = listed_atoms(source, line); !listed.empty()) {
        return listed;
    }
    const std::vector<std::string_view> fields = fields_before_comment(line);
    if (fields.size() < 2 ||
        !(what.are_radii || (what.may_be_massage && !fields[1].empty() && is_letter(fields[1].front())))) {
        return {};
    }
    std::vector<bool> listed = first_listed(source, fields);
    const bool all_are_like_others = std::equal(listed.begin(), listed.end(), what.unlike.begin(), what.unlike.end(),
                                                [](bool is_named, bool is_unlike) { return !is_named || !is_unlike; });
    return all_are_like_others ? std::vector<bool>{} : listed;
}

bool mentions(std::string_view line, std::string_view word) {
    return lower(line.substr(0, line.find('!'))).find(word) != std::string::npos;
}

/// Stops the run at a line that would mean something else in the ready input.
void check_line(const input& source, const section& kept, std::size_t i, const numbered_lines& what,
                std::vector<notice>& notices) {
    const std::string& text = kept.lines[i];
    const int line = kept.line + static_cast<int>(i);
    if (stripped(text).starts_with('#')) {
        stop_at(source.name, line,
                "found " + quoted(text) + " after the molecule, which would be taken for the route; take the line out");
    }
    if (mentions(text, "extrasph")) {
        stop_at(
            source.name, line,
            "found " + quoted(stripped(text)) + ", whose spheres are fixed in space and cannot be kept; take them out");
    }
    const std::vector<bool> named = named_atoms(source, text, what);
    if (!source.dummies.empty() && !named.empty()) {
        stop_at(source.name, line,
                "found " + quoted(text) +
                    ", whose atom numbers may count dummy atoms, which are left out; name the elements instead");
    }
    if (parts_an_element(source.atoms.numbers, named)) {
        notices.push_back({line, quoted(stripped(text)) +
                                     " names some atoms of an element and not all: if symmetry exchanges them "
                                     "with the others, set symm = F in the generator's control file"});
    }
}

/// The same for all lines. The radii that `ModifySph` asks for stand in the section after its own.
void check_lines(const input& source, const route& ready, const std::vector<section>& sections,
                 std::vector<notice>& notices) {
    const bool has_massage = std::any_of(ready.keywords.begin(), ready.keywords.end(),
                                         [](const route_keyword& keyword) { return keyword.name() == "massage"; });
    bool radii_follow = false;
    for (const section& kept : sections) {
        const bool has_unlike = radii_follow && source.dummies.empty();
        const numbered_lines what{has_massage, radii_follow,
                                  has_unlike ? unlike_spheres(source, kept) : std::vector<bool>{}};
        for (std::size_t i = 0; i < kept.lines.size(); ++i) {
            check_line(source, kept, i, what, notices);
        }
        radii_follow = std::any_of(kept.lines.begin(), kept.lines.end(),
                                   [](const std::string& line) { return mentions(line, "modifysph"); });
    }
}

void check_atoms_suit(const input& source, const route& job, const std::string& in_space) {
    for (const route_keyword& keyword : job.keywords) {
        const std::string& name = keyword.name();
        if (source.first_type_line != 0 && is_one_of(name, {"amber", "uff", "dreiding", "mm"})) {
            stop_at(source.name, source.first_type_line,
                    "found an atom with a type for the force field '" + base::shown(keyword.text) +
                        "', which cannot be kept; give the route of another method");
        }
        if (name == "units" && !in_space.empty() && !source.sections.empty()) {
            stop_at(source.name, source.route_line,
                    quoted(in_space) + " may have coordinates in the units of '" + base::shown(keyword.text) +
                        "'; give the whole input in angstrom");
        }
    }
}

/// Refuses a route that asks for a section where there is none.
void check_sections_exist(const route& ready, const std::string& place) {
    for (const route_keyword& keyword : ready.keywords) {
        if (asks_for_section(keyword)) {
            throw base::run_error(place + ": '" + base::shown(keyword.text) +
                                  "' needs a section after the molecule, found none; prepare the input of the job "
                                  "instead, or give a route that needs none with --route, and put keyword and section "
                                  "into the prepared input by hand");
        }
    }
}

/// How many sections the keywords of a route have that stay with them, the connectivity aside.
std::size_t count_asked(const route& job) {
    const std::vector<section_claim> claims = claims_of(job);
    return static_cast<std::size_t>(std::count_if(claims.begin(), claims.end(), [](const section_claim& claim) {
        return claim.what == section_claim::fate::kept && claim.place != connectivity_place;
    }));
}

/// Refuses a new route that asks for another number of sections than there are: each would be read as the one before
/// or after it. What the source's own route does not ask for either stands at the end and is not read.
void check_sections_suit(const input& source, const route& ready, const std::vector<section>& sections,
                         std::size_t connectivities) {
    const std::size_t asked = count_asked(ready);
    const std::size_t found = count_with_lines(sections) - connectivities;
    if (asked > found || (asked < found && asked != count_asked(source.keywords))) {
        throw base::run_error("the new route: expected as many sections after the molecule as its keywords need, " +
                              std::to_string(asked) + ", found " + std::to_string(found) +
                              "; give the input the sections of this route");
    }
}

}  // namespace

ready_input make_ready(const input& source, std::string_view replacement, std::vector<notice>& notices) {
    const bool is_replaced = !replacement.empty();
    const std::string place = is_replaced ? "the new route" : place_of(source.name, source.route_line);
    const int line = is_replaced ? 0 : source.route_line;
    const route job = is_replaced ? parse_route(replacement, place) : source.keywords;
    const bool can_keep_connectivity = source.dummies.empty() && !source.sections.empty() &&
                                       has_connectivity(source.keywords) && !source.sections.front().lines.empty();
    const bool keep_connectivity = can_keep_connectivity && has_connectivity(job);
    const route ready = ready_route(job, keep_connectivity, place, line, notices);
    for (const route_keyword& keyword : source.keywords.keywords) {
        if (is_optimization(keyword)) {
            notices.push_back({source.route_line, quoted(keyword.text) +
                                                      " left out: the geometry is taken as it is, make sure that it is "
                                                      "optimised already"});
        } else if (is_path(keyword)) {
            notices.push_back({source.route_line,
                               quoted(keyword.text) + " left out: make sure that the geometry is a stationary point"});
        }
    }
    const std::string in_space = fixed_in_space(ready);
    check_atoms_suit(source, job, in_space);
    if (has_connectivity(job) && !keep_connectivity) {
        notices.push_back({line, "the connectivity is left out: there is none, or its atom numbers count dummy atoms"});
    }
    const bool asks = std::any_of(ready.keywords.begin(), ready.keywords.end(), asks_for_section);
    ready_input result;
    result.sections = ready_sections(source, keep_connectivity, !is_replaced || asks, notices);
    check_lines(source, ready, result.sections, notices);
    if (is_replaced && result.sections.size() == (keep_connectivity ? 1U : 0U)) {
        check_sections_exist(ready, place);
    } else if (is_replaced) {
        check_sections_suit(source, ready, result.sections, keep_connectivity ? 1 : 0);
    }
    result.link0 = ready_link0(source);
    result.route = text_of(ready);
    result.title = ready_title(source.title.lines, source.title.line, notices);
    result.atoms = source.atoms;
    result.fixed_in_space = in_space;
    return result;
}

ready_input make_ready(const std::string& name, int line, std::string_view route, std::string_view title,
                       const molecule& atoms, std::vector<notice>& notices) {
    const std::string place = place_of(name, line);
    const gaussian::route job = parse_route(route, place);
    const gaussian::route ready = ready_route(job, false, place, line, notices);
    check_sections_exist(ready, place);
    ready_input result;
    result.route = text_of(ready);
    const std::string_view text = stripped(title);
    std::vector<std::string> lines;
    if (!text.empty()) {
        lines.emplace_back(text);
    }
    result.title = ready_title(lines, 0, notices);
    result.atoms = atoms;
    result.fixed_in_space = fixed_in_space(ready);
    return result;
}

}  // namespace displacement_generator::gaussian
