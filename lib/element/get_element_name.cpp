#include <array>
#include <cstddef>
#include <string>

#include "base/error.hpp"
#include "element/element.hpp"

namespace displacement_generator {

namespace {

char upper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }
char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

/// A symbol in the form in which it is looked up.
base::text<2> in_table_form(std::string_view symbol) {
    base::text<2> form(base::left_adjusted(symbol));
    char& first = form.characters[0];
    char& second = form.characters[1];
    first = upper(first);
    if (second >= 'A' && second <= 'Z') {
        second = lower(first);  // of the first letter, not of the second: two capitals are no symbol
    }
    return form;
}

constexpr std::size_t no_place = std::size_t{26} * 27;

/// Where a symbol stands among all pairs of a capital and a blank or a small letter; `no_place` where it is no such
/// pair.
std::size_t place_of(const base::text<2>& form) {
    const char first = form.characters[0];
    const char second = form.characters[1];
    if (first < 'A' || first > 'Z' || (second != ' ' && (second < 'a' || second > 'z'))) {
        return no_place;
    }
    const int row = first - 'A';
    const int column = second == ' ' ? 0 : second - 'a' + 1;
    return static_cast<std::size_t>(row) * 27 + static_cast<std::size_t>(column);
}

}  // namespace

void element::get_element_name(int natom, base::view1<int> nat, base::text_view symbol, std::string_view sym_nat) {
    const base::text<8> direction(sym_nat);
    if (direction != sym_nat) {  // cut, it could be taken for the other direction
        throw base::run_error("direction '" + base::shown(base::trimmed(sym_nat)) + "': expected 8 characters, found " +
                              std::to_string(base::trimmed(sym_nat).size()));
    }
    if (direction == "sym->nat") {
        constexpr int unknown = -1;
        std::array<int, no_place + 1> numbers{};
        numbers.fill(unknown);
        for (int k = atom.lower(); k <= atom.upper(); ++k) {
            numbers[place_of(atom(k))] = k;  // of equal entries the last counts
        }
        for (int i = 1; i <= natom; ++i) {
            if (const int k = numbers[place_of(in_table_form(symbol(i)))]; k != unknown) {
                nat(i) = k;
            }
        }
    } else {
        for (int i = 1; i <= natom; ++i) {
            symbol(i).assign(atom(nat(i)));
        }
    }
}

}  // namespace displacement_generator
