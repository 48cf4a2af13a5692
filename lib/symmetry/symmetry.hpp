#pragma once

#include "../base/array.hpp"
#include "../base/text.hpp"

// The abelian point groups about the axes of the input, the operations, and which displaced geometries follow from
// which.
//
// Coordinates x are (3, natom), in the units of the input. Operations are numbered 1..8 = E, C2z, C2y, C2x, I, Sxy,
// Szx, Syz and 9..11 = C4z, C4y, C4x; only 1..8 are ever looked for, and each of these is its own inverse.
//
// Displacement points are numbered p = 6 (i - 1) + 2 (j - 1) + k for atom i, coordinate j = 1, 2, 3 (x, y, z) and step
// k = 1, 2.

namespace displacement_generator::symmetry {

// ---- Tables

/// Point-group labels, pg_name(1..8).
extern const base::view1<const base::text<3>> pg_name;
/// Number of irreducible representations, which is the order of the group, nrep(1..8).
extern const base::view1<const int> nrep;
/// Labels of the irreducible representations, irrep(1..8, group); slots that are not needed are blank.
extern const base::view2<const base::text<3>> irrep;
/// Operation labels, op_name(1..11).
extern const base::view1<const base::text<3>> op_name;
/// Operation matrices, symm_op(row, column, 1..11): a point x goes to x'(i) = sum over j of symm_op(i, j, k) x(j).
extern const base::view3<const double> symm_op;

// ---- Routines

/// Turns vectors: v(:, c) becomes R v(:, c). The three products of a component are added to zero in the order of j.
///   n  in      number of vectors
///   r  in      (3, 3) the matrix
///   v  in/out  (3, n)
void rotn(int n, base::view2<const double> r, base::view2<double> v);

/// Chooses the point group from the operations found, and turns the molecule by quarter turns so that the axis of the
/// group becomes z, the mirror plane of a Cs molecule xy, and a planar C2v molecule lies in yz.
///   natom       in      number of atoms
///   x           in/out  (3, natom) coordinates; turned only when `std_orient` is true
///   nop         in      number of operations present
///   ipg         out     point group, 1..8; unchanged where nop is 2 and no operation of 2..8 is present
///   op          in      (1..8) operation present
///   std_orient  in      whether to turn
void std_orient(int natom, base::view2<double> x, int nop, int& ipg, base::view1<const bool> op, bool std_orient);

/// Tests whether an operation maps the molecule onto itself: whether every turned atom lies within `tol` of an atom of
/// the same atomic number and mass. Of several such atoms the lowest-numbered is its image.
///   natom   in   number of atoms
///   x       in   (3, natom) coordinates
///   nat     in   (1..natom) atomic numbers
///   mass    in   (1..natom) masses
///   r       in   (3, 3) the operation's matrix, its own inverse
///   jrels   out  (1..natom) image of each atom; where j is the image of i, i is stored as that of j as well, and
///                a later atom may overwrite it. All 0 when the operation is absent.
///   found   out  whether the operation is present; without atoms it is
///   tol     in   largest distance, in the units of x
void search_op(int natom, base::view2<const double> x, base::view1<const int> nat, base::view1<const double> mass,
               base::view2<const double> r, base::view1<int> jrels, bool& found, double tol);

/// Decides which displacement points must be computed, and from which of these, by which operation, each other one
/// follows. The lowest-numbered point of those that go over into one another is computed; a point that can be had in
/// several ways takes the first computed point that reaches it, and of that the lowest operation.
///   disp_sign  in   1: the unit vector of step 1 is negative, of step 2 positive; anything else: the other way
///                   round. The relations are the same for both.
///   natom      in   number of atoms
///   x          in   (3, natom) coordinates; not looked at
///   matrices   in   (3, 3, 11) operation matrices, as in symm_op
///   jrels      in   (natom, 8) image of each atom under each operation
///   op         in   (1..8) operation present
///   tol        in   largest distance between unit vectors that count as equal
///   n6         in   6 natom
///   ncalc      out  number of points to compute
///   f_calc     out  (1..n6) point must be computed
///   n_calc_n6  out  (1..n6) the points to compute in ascending order in 1..ncalc, then 0
///   m_calc     out  (1..n6) the computed point that it follows from; itself when computed
///   m_symm     out  (1..n6) the operation, 2..8, that carries m_calc onto it; 1 when computed
void search_symm_xyz(int disp_sign, int natom, base::view2<const double> x, base::view3<const double> matrices,
                     base::view2<const int> jrels, base::view1<const bool> op, double tol, int n6, int& ncalc,
                     base::view1<bool> f_calc, base::view1<int> n_calc_n6, base::view1<int> m_calc,
                     base::view1<int> m_symm);

/// Finds the point group, turns the molecule into standard orientation if told to, and finds operations, correspondence
/// and points to compute in the orientation that results. The group rests on the operations found before turning.
/// Nothing is rejected: operations that make no group, possible within the tolerance, are classified by the same rules.
///   disp_sign   in      as for search_symm_xyz
///   natom       in      number of atoms
///   x           in/out  (3, natom) coordinates
///   nat         in      (1..natom) atomic numbers
///   mass        in      (1..natom) masses
///   tol         in      as for search_op
///   std_orient  in      whether to turn
///   n6          in      6 natom
///   ncalc, n_calc_n6, m_calc, f_calc, m_symm  out  as for search_symm_xyz
///   ipg         out     point group, as for std_orient
///   op          out     (1..8) operation present
///   jrels       out     (natom, 8) image of each atom under each operation; a column is 0 when the operation is absent
void point_group(int disp_sign, int natom, base::view2<double> x, base::view1<const int> nat,
                 base::view1<const double> mass, double tol, bool std_orient, int n6, int& ncalc,
                 base::view1<int> n_calc_n6, base::view1<int> m_calc, base::view1<bool> f_calc, base::view1<int> m_symm,
                 int& ipg, base::view1<bool> op, base::view2<int> jrels);

}  // namespace displacement_generator::symmetry
