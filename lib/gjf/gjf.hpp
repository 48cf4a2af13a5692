#pragma once

#include <string_view>

#include "../base/array.hpp"
#include "../base/text.hpp"

// A Gaussian input with one molecule in Cartesian coordinates:
//
//   any lines                      link-0 lines, for example; not looked at
//   route section                  from the last line of the file that begins with "#" to the next blank line
//   title section                  from the line after that blank line to the next one, at least one line
//   charge and multiplicity        one line, not looked at
//   atom lines                     to the next blank line or the end of the file: symbol x y z
//   anything                       not looked at
//
// A blank line is empty or holds nothing but spaces; a tab is not a blank here. Of each line the first 200 characters
// count.
//
// Every routine is given the path of the file and reads it itself: once to count its lines, once for the lines. A file
// that cannot be opened stops the run as file::num_file_lines does. A section that is missing stops the run with a
// message that names the file, the line where the search began, and what was looked for; the results are unchanged
// then.
//
// The files are read through the units of the module `file`: for one thread at a time.

namespace displacement_generator::gjf {

/// Line number of the route line.
///   fname   in   the file; trailing blanks are not part of the name
///   iroute  out  counted from 1
void get_gjf_route_linenumber(std::string_view fname, int& iroute);

/// Line number of the first title line.
void get_gjf_title_linenumber(std::string_view fname, int& ititle);

/// Line number of the charge and multiplicity line. The first title line is taken as one even if it is blank.
void get_gjf_charge_linenumber(std::string_view fname, int& icharge);

/// Line number of the first atom line: one more than that of the charge line, even if there is no atom.
void get_gjf_atom_linenumber(std::string_view fname, int& iatom);

/// Number of atom lines.
void get_gjf_natom(std::string_view fname, int& natom);

/// Symbols and coordinates of the first atom lines. The fields of a line are separated by blanks, tabs or commas; what
/// follows the third number is not looked at.
///   fname   in   the file
///   natom   in   how many atom lines to read
///   xyz     out  (3, natom) coordinates, as written
///   symbol  out  (1..natom) the first word of each line, cut to 2 characters or padded
/// A line without a symbol, with fewer than three numbers, or with a field that is no number among them stops the run;
/// what was read before it stays.
void get_gjf_coord(std::string_view fname, int natom, base::view2<double> xyz, base::view1<base::text<2>> symbol);

}  // namespace displacement_generator::gjf
