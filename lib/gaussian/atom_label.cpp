#include "gaussian/atom_label.hpp"

#include <algorithm>
#include <cstddef>

#include "base/error.hpp"
#include "base/free_format.hpp"
#include "gaussian/fields.hpp"
#include "gaussian/symbols.hpp"

namespace displacement_generator::gaussian {

namespace {

constexpr int element_count = 118;

[[noreturn]] void stop(const std::string& place, const std::string& what) {
    throw base::run_error(place + ": " + what);
}

[[noreturn]] void refuse_isotope(const std::string& place, std::string_view text) {
    stop(place, isotope_refused(text));
}

/// Reads the atomic number that a label begins with, which has no sign.
int number_at_front(std::string_view core, std::string_view text, const std::string& place) {
    int number = 0;
    if (base::read_integer(core, number) != base::number_status::ok || number > element_count) {
        stop(place, "expected an element symbol or an atomic number from 1 to 118, found '" + base::shown(text) + "'");
    }
    if (number == 0) {
        stop(place, quoted(text) + " is a ghost atom, which is no part of a molecule; take it out");
    }
    return number;
}

/// Reads the symbol that a label begins with: the one of two letters where there is one.
void read_symbol(std::string_view core, std::string_view text, const std::string& place, atom_label& label) {
    const auto* const letters_end = std::find_if_not(core.begin(), core.end(), is_letter);
    const std::string_view letters = core.substr(0, static_cast<std::size_t>(letters_end - core.begin()));
    if (letters.empty()) {
        stop(place, "expected an element symbol or an atomic number, found '" + base::shown(text) + "'");
    }
    if (equal_words(letters, "tv")) {
        stop(place, quoted(text) + " is a translation vector; periodic systems cannot be prepared");
    }
    if (begins_with(letters, "bq")) {
        stop(place, quoted(text) + " is a ghost atom, which is no part of a molecule; take it out");
    }
    const int of_one = number_of(letters.substr(0, 1));
    const int of_two = letters.size() < 2 ? 0 : number_of(letters.substr(0, 2));
    if (of_two != 0 && of_one != 0 && letters.size() > 2) {
        stop(place, quoted(text) + " may be " + std::string(symbol_of(of_one)) + " or " +
                        std::string(symbol_of(of_two)) + "; expected the symbol alone");
    }
    if (of_two == 0 && of_one == 0) {
        if (lower(letters.front()) == 'x') {
            return;  // a dummy atom, whatever its name
        }
        if (letters.size() == 1 && (lower(letters.front()) == 'd' || lower(letters.front()) == 't')) {
            refuse_isotope(place, text);
        }
        stop(place, "expected an element symbol or an atomic number, found '" + base::shown(text) + "'");
    }
    label.number = of_two != 0 ? of_two : of_one;
    const std::string_view name = core.substr(of_two != 0 ? 2 : 1);
    constexpr std::string_view marks = "_.'*+";
    if (!std::all_of(name.begin(), name.end(),
                     [&](char c) { return is_letter(c) || is_digit(c) || marks.find(c) != std::string_view::npos; })) {
        stop(place, "expected letters and digits after the symbol of an atom, found '" + base::shown(text) + "'");
    }
    label.has_name = !name.empty();
}

void read_parameter(std::string_view parameter, std::string_view text, const std::string& place, atom_label& label) {
    const std::string name = lower(stripped(parameter.substr(0, parameter.find('='))));
    if (name == "fragment") {
        label.has_fragment = true;
    } else if (name == "pdbname" || name == "resname" || name == "resnum") {
        label.has_residue = true;
    } else if (is_one_of(name, {"spin", "zeff", "qmom", "nmagm", "gfac"})) {
        label.has_moment = true;
    } else if (name == "iso") {
        refuse_isotope(place, text);
    } else {
        stop(place, "the parameter '" + base::shown(stripped(parameter)) + "' of '" + base::shown(text) +
                        "' cannot be kept, and the forces may depend on it; take it out");
    }
}

/// Takes the parameters in brackets off the front.
void read_parameters(std::string_view& rest, std::string_view text, const std::string& place, atom_label& label) {
    const std::size_t end = rest.find(')');
    if (end == std::string_view::npos) {
        stop(place, "expected a ')' in '" + base::shown(text) + "', found none");
    }
    std::string_view inner = rest.substr(1, end - 1);
    rest.remove_prefix(end + 1);
    while (!inner.empty()) {
        const std::string_view parameter = inner.substr(0, inner.find(','));
        if (!stripped(parameter).empty()) {
            read_parameter(parameter, text, place, label);
        }
        inner.remove_prefix(std::min(parameter.size() + 1, inner.size()));
    }
}

}  // namespace

std::string isotope_refused(std::string_view text) {
    return quoted(text) +
           " is an isotope, which does not change the forces; expected the element's symbol alone, and the isotope to "
           "be named when the frequencies are computed";
}

atom_label read_label(std::string_view text, const std::string& place) {
    atom_label label;
    if (text == "-1") {
        return label;  // the atomic number of a dummy atom
    }
    const std::string_view core = text.substr(0, text.find_first_of("-("));
    if (!core.empty() && is_digit(core.front())) {
        label.number = number_at_front(core, text, place);
    } else {
        read_symbol(core, text, place, label);
    }
    std::string_view rest = text.substr(core.size());
    while (!rest.empty()) {
        if (rest.front() == '(') {
            read_parameters(rest, text, place, label);
            continue;
        }
        if (rest.front() != '-') {
            stop(place, "expected nothing after the ')' of an atom, found '" + base::shown(rest) + "'");
        }
        const std::string_view type = rest.substr(0, rest.find('('));
        if (begins_with(type, "-bq")) {
            stop(place, quoted(text) + " is a ghost atom, which is no part of a molecule; take it out");
        }
        label.has_type = true;
        rest.remove_prefix(type.size());
    }
    return label;
}

}  // namespace displacement_generator::gaussian
