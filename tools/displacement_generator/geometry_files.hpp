#pragma once

#include "base/array.hpp"
#include "base/text.hpp"
#include "file_list.hpp"

namespace displacement_generator::generator {

/// Writes the reference geometry and every displaced geometry that must be computed, each the Gaussian input with its
/// atom lines rewritten, and enters their names in the list. Step 1 of a coordinate moves it by minus `dx`, step 2 by
/// plus `dx`.
///   lines       in   (1..nline) the Gaussian input
///   icharge     in   line number of the charge line
///   iatom_end   in   line number of the last atom line
///   nline       in   number of lines
///   natom       in   number of atoms
///   ndig_natom  in   number of digits of natom: every atom number in a name has as many
///   symbol      in   (1..natom) element symbols
///   x           in   (3, natom) coordinates, in the units of the input
///   dx          in   step, in the same units
///   disp_sign   in   1: the names of step 1 have "+" and those of step 2 "-"; anything else: the other way round
///   f_calc      in   (1..6 natom) point must be computed
///   list        in/out  the names are appended
///   fnames      out  (0..6 natom) name tag of every point, computed or not; 0 is the reference geometry
void write_geometry_files(base::view1<const base::text<500>> lines, int icharge, int iatom_end, int nline, int natom,
                          int ndig_natom, base::view1<const base::text<2>> symbol, base::view2<const double> x,
                          double dx, int disp_sign, base::view1<const bool> f_calc, file_list& list,
                          base::view1<base::text<200>> fnames);

/// How many bytes each of these files has. Arguments as above.
long long geometry_file_size(base::view1<const base::text<500>> lines, int icharge, int iatom_end, int nline,
                             int natom);

}  // namespace displacement_generator::generator
