#include <cmath>

#include "symmetry/operations.hpp"
#include "symmetry/symmetry.hpp"

namespace displacement_generator::symmetry {

namespace {

enum point_group_index { pg_c1 = 1, pg_cs, pg_c2, pg_c2v, pg_d2h, pg_ci, pg_c2h, pg_d2 };

/// No turn: the orientation is right already.
constexpr int no_turn = 0;

struct rule {
    int present;  ///< the operation that decides
    int ipg;      ///< the group that it decides for
    int turn;     ///< the operation by which the molecule is turned then
};

/// With two operations: the first of these that is present decides. The x axis comes before the y axis here, unlike
/// below.
constexpr rule two_operations[] = {
    {syz, pg_cs, c4y}, {szx, pg_cs, c4x}, {sxy, pg_cs, no_turn}, {inversion, pg_ci, no_turn},
    {c2x, pg_c2, c4y}, {c2y, pg_c2, c4x}, {c2z, pg_c2, no_turn},
};

void turn_by(int k, int natom, base::view2<double> x, bool std_orient) {
    if (k != no_turn && std_orient) {
        rotn(natom, symm_op.matrix(k), x);
    }
}

/// C2h and C2v: the axis becomes z.
int axis_turn(base::view1<const bool> op) { return op(c2y) ? c4x : op(c2x) ? c4y : no_turn; }

/// Turns a planar molecule with its axis on z into the yz plane.
void turn_plane(int natom, base::view2<double> x, bool std_orient) {
    constexpr double planar = 1e-6;
    bool all_y_zero = true;
    bool all_z_zero = true;
    for (int i = 1; i <= natom; ++i) {
        all_y_zero = all_y_zero && !(std::abs(x(2, i)) > planar);
        all_z_zero = all_z_zero && !(std::abs(x(3, i)) > planar);
    }
    turn_by(all_y_zero ? c4z : no_turn, natom, x, std_orient);
    turn_by(all_z_zero ? c4y : no_turn, natom, x, std_orient);
}

}  // namespace

void std_orient(int natom, base::view2<double> x, int nop, int& ipg, base::view1<const bool> op, bool std_orient) {
    if (nop == 1) {
        ipg = pg_c1;
    } else if (nop == 8) {
        ipg = pg_d2h;
    } else if (nop == 2) {
        for (const rule& r : two_operations) {
            if (op(r.present)) {
                ipg = r.ipg;
                turn_by(r.turn, natom, x, std_orient);
                return;
            }
        }
    } else if (op(inversion)) {
        ipg = pg_c2h;
        turn_by(axis_turn(op), natom, x, std_orient);
    } else if (op(syz) || op(szx)) {
        ipg = pg_c2v;
        turn_by(axis_turn(op), natom, x, std_orient);
        // Twice: a molecule that the first pass brought into the xy plane is turned on by the second.
        turn_plane(natom, x, std_orient);
        turn_plane(natom, x, std_orient);
    } else {
        ipg = pg_d2;
    }
}

}  // namespace displacement_generator::symmetry
