#include "element/element.hpp"

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

}  // namespace

void element::get_element_name(int natom, base::view1<int> nat, base::text_view symbol, std::string_view sym_nat) {
    if (sym_nat == "sym->nat") {
        for (int i = 1; i <= natom; ++i) {
            const base::text<2> form = in_table_form(symbol(i));
            for (int k = atom.upper(); k >= atom.lower(); --k) {  // downwards: of equal entries the last counts
                if (atom(k) == form) {
                    nat(i) = k;
                    break;
                }
            }
        }
    } else {
        for (int i = 1; i <= natom; ++i) {
            symbol(i).assign(atom(nat(i)));
        }
    }
}
