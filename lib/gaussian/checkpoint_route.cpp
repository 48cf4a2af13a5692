#include "gaussian/checkpoint_route.hpp"

#include <algorithm>
#include <initializer_list>

#include "base/error.hpp"
#include "gaussian/fields.hpp"

namespace displacement_generator::gaussian {

namespace {

/// Whether a text is one word that a route can hold as method or basis.
bool is_route_word(std::string_view text) {
    constexpr std::string_view marks = "-+*(),";
    return !text.empty() && (is_letter(text.front()) || is_digit(text.front())) &&
           std::all_of(text.begin(), text.end(), [&](char c) {
               return (is_letter(c) || is_digit(c)) || marks.find(c) != std::string_view::npos;
           });
}

/// What Gaussian prints for a basis that was read from a section, or for none.
bool is_unnamed_basis(std::string_view basis) {
    return is_one_of(basis, {"gen", "genecp", "general", "chkbas", "chkbasis", "unknown"});
}

/// The method as a route has it: the mark of a frozen core behind it becomes an option. Empty where it cannot be told.
std::string method_of(std::string_view text) {
    std::string_view option;
    const std::string word = lower(text);
    if (word.ends_with("-fc")) {
        option = "(fc)";
    } else if (word.ends_with("-fu")) {
        option = "(full)";
    }
    if (!option.empty()) {
        text.remove_suffix(3);
    }
    const bool has_option = text.find('(') != std::string_view::npos;
    if (!is_route_word(text) || (has_option && !option.empty()) || word.find("oniom") != std::string::npos ||
        word.find("td-") != std::string::npos) {
        return {};
    }
    return std::string(text) + std::string(option);
}

}  // namespace

bool is_continuation(std::string_view route) { return lower(route).find("genchk") != std::string::npos; }

std::string checkpoint_route(const checkpoint& from, const std::string& name, std::vector<notice>& notices) {
    if (!from.route.empty()) {
        if (is_continuation(from.route)) {
            throw base::run_error(name + ": the route '" + base::shown(from.route, 200) +
                                  "' takes method and basis from another checkpoint file; give the route with "
                                  "--route");
        }
        return from.route;
    }
    const std::string method = method_of(from.method);
    const std::string basis_word = lower(from.basis);
    const bool is_built_in = basis_word == "zdo";  // of a semi-empirical method
    if (method.empty() || (!is_built_in && (!is_route_word(from.basis) || is_unnamed_basis(from.basis)))) {
        throw base::run_error(name + ":2: expected a method and a basis that a route can hold, found '" +
                              base::shown(from.method) + "' and '" + base::shown(from.basis) +
                              "'; give the route with --route");
    }
    notices.push_back({2,
                       "the route is made of this line's method and basis: what else the job was computed with, such "
                       "as a solvent, dispersion or a grid, is not in the checkpoint; --route gives another one"});
    return "#p " + method + (is_built_in ? "" : "/" + from.basis);
}

}  // namespace displacement_generator::gaussian
