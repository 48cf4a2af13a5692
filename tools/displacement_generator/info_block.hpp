#pragma once

#include "base/array.hpp"
#include "base/text.hpp"
#include "file_list.hpp"

namespace displacement_generator::generator {

/// Ends the list with the info block, from which the forces of all points are rebuilt out of those of the computed
/// ones, and closes it.
///   ipg      in   point group, 1..8
///   nop      in   number of operations present
///   ops      in   (1..8) the operations present, in 1..nop
///   opr      in   (1..8) place of an operation in ops, or 0
///   op_name  in   (1..11) operation labels
///   natom    in   number of atoms
///   jrels    in   (natom, 8) image of each atom under each operation
///   nat      in   (1..natom) atomic numbers
///   symbol   in   (1..natom) element symbols
///   ndisp    in   6 natom
///   ncalc    in   number of points to compute
///   f_calc   in   (1..ndisp) point must be computed
///   m_calc   in   (1..ndisp) the computed point that it follows from
///   m_symm   in   (1..ndisp) the operation by which it does
///   fnames   in   (0..ndisp) name tags
///   list     in/out
void write_info_block(int ipg, int nop, base::view1<const int> ops, base::view1<const int> opr,
                      base::view1<const base::text<3>> op_name, int natom, base::view2<const int> jrels,
                      base::view1<const int> nat, base::view1<const base::text<2>> symbol, int ndisp, int ncalc,
                      base::view1<const bool> f_calc, base::view1<const int> m_calc, base::view1<const int> m_symm,
                      base::view1<const base::text<200>> fnames, file_list& list);

/// How many bytes the info block has. Arguments as above.
long long info_block_size(int nop, int natom, int ndisp);

}  // namespace displacement_generator::generator
