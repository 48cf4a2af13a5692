#include "gaussian/checkpoint_route.hpp"

#include <algorithm>
#include <initializer_list>

#include "base/error.hpp"
#include "gaussian/fields.hpp"
#include "gaussian/ready_route.hpp"
#include "gaussian/route.hpp"

namespace displacement_generator::gaussian {

namespace {

/// Whether a text is one word that a route can hold as method or basis.
///   more  in  characters that it may also have
bool is_route_word(std::string_view text, std::string_view more) {
    constexpr std::string_view marks = "-(),";
    return !text.empty() && (is_letter(text.front()) || is_digit(text.front())) &&
           std::all_of(text.begin(), text.end(), [&](char c) {
               return (is_letter(c) || is_digit(c)) || marks.find(c) != std::string_view::npos ||
                      more.find(c) != std::string_view::npos;
           });
}

/// What Gaussian prints for a basis that was read from a section, or for none.
bool is_unnamed_basis(std::string_view basis) {
    return is_one_of(basis, {"gen", "genecp", "general", "chkbas", "chkbasis", "unknown", "mixed"});
}

/// Whether a method, in small letters, needs more than its name to be told: layers, orbitals, a state.
bool needs_more(std::string_view word) {
    if (word.find("oniom") != std::string_view::npos || word.find("asscf") != std::string_view::npos) {
        return true;
    }
    for (const std::string_view spin : {"ro", "r", "u"}) {
        if (word.starts_with(spin)) {
            word.remove_prefix(spin.size());
            break;
        }
    }
    return word.starts_with("gvb") || word.starts_with("td") || word.starts_with("eom") || word.starts_with("sac") ||
           word.starts_with("zindo") || word.starts_with("mixed") ||
           (word.starts_with("cis") && !word.starts_with("cisd"));
}

/// Parts of pure functionals between which a hyphen may be printed that no route has: B-LYP is BLYP.
std::string without_hyphen(std::string_view text) {
    const std::size_t hyphen = text.find('-');
    std::string joined(text);
    if (hyphen != std::string_view::npos &&
        is_one_of(text.substr(hyphen + 1),
                  {"vwn", "vwn5", "lyp", "p86", "pw91", "pl", "b95", "pbe", "tpss", "v5lyp"}) &&
        !lower(text.substr(0, hyphen)).ends_with("lc")) {
        joined.erase(hyphen, 1);
    }
    return joined;
}

/// The method as a route has it: the mark of a frozen core behind it becomes an option. Empty where it cannot be told.
std::string method_of(std::string_view text) {
    constexpr std::string_view triples = "(T)";
    constexpr std::size_t mark_size = 3;
    const std::string word = lower(text);
    std::string option;
    if (word.ends_with("-fc") || word.ends_with("-fu")) {
        option = word.ends_with("c") ? "fc" : "full";
        text.remove_suffix(mark_size);
        if (text.ends_with(triples)) {
            option.insert(0, "T,");
            text.remove_suffix(triples.size());
        }
        option = "(" + option + ")";
    }
    const bool has_option = text.find('(') != std::string_view::npos;
    if (!is_route_word(text, "") || (has_option && !option.empty()) || needs_more(word)) {
        return {};
    }
    return without_hyphen(text) + option;
}

}  // namespace

bool is_continuation(std::string_view route) { return lower(route).find("genchk") != std::string::npos; }

bool is_incomplete(std::string_view route, const std::string& place) {
    if (is_continuation(route)) {
        return true;
    }
    const gaussian::route job = parse_route(route, place);
    return is_restart(job) && std::none_of(job.keywords.begin(), job.keywords.end(),
                                           [](const route_keyword& keyword) { return keyword.parts.size() > 1; });
}

std::string checkpoint_route(const checkpoint& from, const std::string& name, std::vector<notice>& notices) {
    if (!from.route.empty()) {
        if (is_incomplete(from.route, name)) {
            throw base::run_error(name + ": the route '" + base::shown(from.route, 200) +
                                  "' takes method and basis from another checkpoint file; give the route with "
                                  "--route");
        }
        return from.route;
    }
    const std::string method = method_of(from.method);
    const std::string basis_word = lower(from.basis);
    const bool is_built_in = basis_word == "zdo" || basis_word == "mm";  // of a semi-empirical method or a force field
    if (method.empty() || (!is_built_in && (!is_route_word(from.basis, "+*'/") || is_unnamed_basis(from.basis)))) {
        throw base::run_error(name + ":2: expected a method and a basis that a route can hold, found '" +
                              base::shown(from.method) + "' and '" + base::shown(from.basis) +
                              "'; give the route with --route");
    }
    notices.push_back({2,
                       "the route is made of this line's method and basis: what else the job was computed with, such "
                       "as a solvent, dispersion or a grid, is not in the checkpoint; --route gives another one"});
    std::string route = "#p " + method;
    if (!is_built_in) {
        route += "/" + from.basis;
    }
    return route;
}

}  // namespace displacement_generator::gaussian
