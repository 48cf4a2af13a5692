#pragma once

#include <string>
#include <string_view>

#include "../base/array.hpp"
#include "../base/text.hpp"

// What the routines of this room share: a file's lines, and the search for one section after the other in them.

namespace displacement_generator::gjf {

struct input_lines {
    std::string name;  ///< of the file, as messages show it
    int nline;
    base::array1<base::text<200>> lines;

    explicit input_lines(std::string_view fname);
};

int find_route(const input_lines& input);
int find_title(const input_lines& input);
int find_charge(const input_lines& input);
int find_atom(const input_lines& input);
int count_atoms(const input_lines& input);

/// What a message ends in where several lines count as the title, as charge and atoms are among them if a blank line
/// was left out; empty where it is one line, or none.
///   first, last  in  the first and the last line of the title
std::string long_title_hint(int first, int last);

}  // namespace displacement_generator::gjf
