#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <string_view>
#include <utility>
#include <vector>

#include "symmetry/operations.hpp"
#include "symmetry/symmetry.hpp"

using namespace displacement_generator;

namespace {

using symmetry::c2x;
using symmetry::c2y;
using symmetry::c2z;
using symmetry::inversion;
using symmetry::sxy;
using symmetry::syz;
using symmetry::szx;

using point = std::array<double, 3>;
using molecule = std::vector<point>;

constexpr int from_before = -77;  ///< what the group number holds on entry

struct outcome {
    int ipg = from_before;
    molecule x;
    bool operator==(const outcome&) const = default;
};

outcome oriented(const molecule& x, int nop, const std::array<bool, 8>& present, bool turning) {
    const int natom = static_cast<int>(x.size());
    const base::array2<double> coordinates("x", 3, natom);
    const base::array1<bool> op("op", 1, 8);
    for (int i = 1; i <= natom; ++i) {
        for (int c = 1; c <= 3; ++c) {
            coordinates(c, i) = x.at(static_cast<std::size_t>(i - 1)).at(static_cast<std::size_t>(c - 1));
        }
    }
    for (int k = 1; k <= 8; ++k) {
        op(k) = present.at(static_cast<std::size_t>(k - 1));
    }
    outcome result;
    symmetry::std_orient(natom, coordinates, nop, result.ipg, op, turning);
    for (int i = 1; i <= natom; ++i) {
        result.x.push_back({coordinates(1, i), coordinates(2, i), coordinates(3, i)});
    }
    for (int k = 1; k <= 8; ++k) {
        EXPECT_EQ(op(k), present.at(static_cast<std::size_t>(k - 1))) << "operation " << k << " was changed";
    }
    return result;
}

std::array<bool, 8> flags(const std::vector<int>& operations) {
    std::array<bool, 8> result = {true};
    for (const int k : operations) {
        result.at(static_cast<std::size_t>(k - 1)) = true;
    }
    return result;
}

// The quarter turns, written out.
molecule c4z(molecule x) {
    for (auto& [a, b, c] : x) {
        a = std::exchange(b, -a);
    }
    return x;
}
molecule c4y(molecule x) {
    for (auto& [a, b, c] : x) {
        c = std::exchange(a, -c);
    }
    return x;
}
molecule c4x(molecule x) {
    for (auto& [a, b, c] : x) {
        b = std::exchange(c, -b);
    }
    return x;
}

const molecule anywhere = {{1, 2, 3}, {-4, 5, 0.5}};

struct row {
    std::string_view name;
    int nop;
    std::vector<int> present;  ///< besides the identity
    molecule x;
    int ipg;
    molecule turned;
};

const std::vector<row>& rows() {
    static const std::vector<row> all = {
        {"C1", 1, {}, anywhere, 1, anywhere},
        {"C1 rests on the count alone", 1, {c2x, syz}, anywhere, 1, anywhere},
        {"D2h", 8, {c2z, c2y, c2x, inversion, sxy, szx, syz}, anywhere, 5, anywhere},
        {"D2h rests on the count alone", 8, {}, anywhere, 5, anywhere},
        {"D2h in the zx plane", 8, {}, {{1, 0, 3}}, 5, {{1, 0, 3}}},

        {"Cs, x = 0", 2, {syz}, {{1, 2, 3}}, 2, {{-3, 2, 1}}},
        {"Cs, y = 0", 2, {szx}, {{1, 2, 3}}, 2, {{1, 3, -2}}},
        {"Cs, z = 0", 2, {sxy}, {{1, 2, 3}}, 2, {{1, 2, 3}}},
        {"Ci", 2, {inversion}, {{1, 2, 3}}, 6, {{1, 2, 3}}},
        {"C2, x", 2, {c2x}, {{1, 2, 3}}, 3, {{-3, 2, 1}}},
        {"C2, y", 2, {c2y}, {{1, 2, 3}}, 3, {{1, 3, -2}}},
        {"C2, z", 2, {c2z}, {{1, 2, 3}}, 3, {{1, 2, 3}}},
        {"nothing of 2..8", 2, {}, {{1, 2, 3}}, from_before, {{1, 2, 3}}},

        // Of two operations that decide, the one that stands first.
        {"Syz before Szx", 2, {syz, szx}, {{1, 2, 3}}, 2, {{-3, 2, 1}}},
        {"Szx before Sxy", 2, {szx, sxy}, {{1, 2, 3}}, 2, {{1, 3, -2}}},
        {"Sxy before I", 2, {sxy, inversion}, {{1, 2, 3}}, 2, {{1, 2, 3}}},
        {"I before C2x", 2, {inversion, c2x}, {{1, 2, 3}}, 6, {{1, 2, 3}}},
        {"C2x before C2y", 2, {c2x, c2y}, {{1, 2, 3}}, 3, {{-3, 2, 1}}},
        {"C2y before C2z", 2, {c2y, c2z}, {{1, 2, 3}}, 3, {{1, 3, -2}}},
        {"two operations in a plane are not turned for it", 2, {c2z}, {{1, 0, 3}}, 3, {{1, 0, 3}}},

        {"C2h, x", 4, {inversion, c2x, syz}, {{1, 2, 3}}, 7, {{-3, 2, 1}}},
        {"C2h, y", 4, {inversion, c2y, szx}, {{1, 2, 3}}, 7, {{1, 3, -2}}},
        {"C2h, z", 4, {inversion, c2z, sxy}, {{1, 2, 3}}, 7, {{1, 2, 3}}},
        {"C2h, C2y before C2x", 4, {inversion, c2y, c2x}, {{1, 2, 3}}, 7, {{1, 3, -2}}},
        {"C2h in the zx plane is not turned for it", 4, {inversion, c2z, sxy}, {{1, 0, 3}}, 7, {{1, 0, 3}}},
        {"C2h in the xy plane is not turned for it", 4, {inversion, c2z, sxy}, {{1, 2, 0}}, 7, {{1, 2, 0}}},
        {"I alone is enough for C2h", 4, {inversion}, {{1, 2, 3}}, 7, {{1, 2, 3}}},

        {"C2v, x", 4, {c2x, sxy, szx}, {{1, 2, 3}}, 4, {{-3, 2, 1}}},
        {"C2v, y", 4, {c2y, sxy, syz}, {{1, 2, 3}}, 4, {{1, 3, -2}}},
        {"C2v, z", 4, {c2z, szx, syz}, {{1, 2, 3}}, 4, {{1, 2, 3}}},
        {"C2v, C2y before C2x", 4, {c2x, c2y, szx}, {{1, 2, 3}}, 4, {{1, 3, -2}}},
        {"C2v by Syz alone", 4, {syz}, {{1, 2, 3}}, 4, {{1, 2, 3}}},
        {"C2v by Szx alone", 4, {szx}, {{1, 2, 3}}, 4, {{1, 2, 3}}},
        {"Sxy alone is not enough for C2v", 4, {c2x, sxy}, {{1, 2, 3}}, 8, {{1, 2, 3}}},
        {"C2v, z, in the zx plane", 4, {c2z, szx, syz}, {{1, 0, 3}, {-1, 0, 3}}, 4, {{0, -1, 3}, {0, 1, 3}}},
        {"C2v, z, in the yz plane", 4, {c2z, szx, syz}, {{0, 2, 3}, {0, -2, 3}}, 4, {{0, 2, 3}, {0, -2, 3}}},
        // Already in xz after the turn of the axis, into yz by the planarity step.
        {"C2v, x, in the zx plane", 4, {c2x, sxy, szx}, {{1, 0, 3}}, 4, {{0, 3, 1}}},
        {"C2v, x, in the xy plane", 4, {c2x, sxy, szx}, {{1, 2, 0}}, 4, {{0, 2, 1}}},
        {"C2v, y, in the yz plane", 4, {c2y, sxy, syz}, {{0, 2, 3}}, 4, {{0, 3, -2}}},
        {"C2v, y, in the xy plane", 4, {c2y, sxy, syz}, {{1, 2, 0}}, 4, {{0, -1, -2}}},
        // In xy with its axis on z: the first pass leaves it in yz.
        {"C2v flagged, in the xy plane", 4, {szx}, {{1, 2, 0}}, 4, {{0, 2, 1}}},
        {"linear on z: a quarter turn twice", 4, {c2z, szx, syz}, {{0, 0, 1}, {0, 0, -2}}, 4, {{0, 0, 1}, {0, 0, -2}}},
        // Linear but for so little that it counts as zero: what is left of it shows how often the molecule was turned.
        {"nearly linear on z", 4, {c2z, szx, syz}, {{1e-7, 5e-7, 2}}, 4, {{-1e-7, -5e-7, 2}}},
        {"nearly linear on y", 4, {c2z, szx, syz}, {{1e-7, 2, 5e-7}}, 4, {{-1e-7, 2, -5e-7}}},
        {"nearly linear on x", 4, {c2z, szx, syz}, {{2, 1e-7, 5e-7}}, 4, {{-1e-7, -2, -5e-7}}},
        // Both turns in the first pass; the second finds it on y.
        {"linear on x", 4, {c2z, szx, syz}, {{1, 0, 0}}, 4, {{0, -1, 0}}},

        {"D2", 4, {c2z, c2y, c2x}, {{1, 2, 3}}, 8, {{1, 2, 3}}},
        {"D2 in the zx plane", 4, {c2z, c2y, c2x}, {{1, 0, 3}}, 8, {{1, 0, 3}}},

        // Counts that no group has are taken by the rules for four operations.
        {"none", 0, {}, {{1, 2, 3}}, 8, {{1, 2, 3}}},
        {"three with I and C2x", 3, {inversion, c2x}, {{1, 2, 3}}, 7, {{-3, 2, 1}}},
        {"three with Syz and C2y", 3, {syz, c2y}, {{1, 2, 3}}, 4, {{1, 3, -2}}},
        {"five with two axes", 5, {c2z, c2y, c2x}, {{1, 2, 3}}, 8, {{1, 2, 3}}},
        {"six with I", 6, {inversion, syz, szx, c2x, c2y}, {{1, 2, 3}}, 7, {{1, 3, -2}}},
        {"seven without I", 7, {c2z, c2y, c2x, sxy, szx, syz}, {{1, 2, 3}}, 4, {{1, 3, -2}}},

        {"no atoms", 4, {c2z, szx, syz}, {}, 4, {}},
    };
    return all;
}

TEST(std_orient, chooses_the_group_and_turns) {
    for (const row& tested : rows()) {
        SCOPED_TRACE(tested.name);
        const outcome result = oriented(tested.x, tested.nop, flags(tested.present), true);
        EXPECT_EQ(result.ipg, tested.ipg);
        EXPECT_EQ(result.x, tested.turned);
    }
}

TEST(std_orient, chooses_the_same_group_without_turning) {
    for (const row& tested : rows()) {
        SCOPED_TRACE(tested.name);
        const outcome result = oriented(tested.x, tested.nop, flags(tested.present), false);
        EXPECT_EQ(result.ipg, tested.ipg);
        EXPECT_EQ(result.x, tested.x);
    }
}

TEST(std_orient, flat_within_one_millionth) {
    struct flat_row {
        double off;
        bool is_flat;
    };
    const double flatness = 1e-6;
    const std::vector<flat_row> offsets = {
        {0.0, true},
        {-0.0, true},
        {1e-6, true},
        {-1e-6, true},
        {std::nextafter(flatness, 1.0), false},
        {-std::nextafter(flatness, 1.0), false},
        {1.0000001e-6, false},
        {-1.0000001e-6, false},
        {std::numeric_limits<double>::infinity(), false},
        {1.0, false},
    };
    const std::array<bool, 8> c2v = flags({c2z, szx, syz});
    for (const flat_row& tested : offsets) {
        SCOPED_TRACE(tested.off);
        // The atom that tells stands first, in the middle and last.
        for (std::size_t at = 0; at < 3; ++at) {
            molecule near_zx = {{1, 0, 2}, {3, 0, 4}, {-5, 0, 6}};
            near_zx[at][1] = tested.off;
            const outcome in_zx = oriented(near_zx, 4, c2v, true);
            EXPECT_EQ(in_zx.x[at][1], tested.is_flat ? -near_zx[at][0] : near_zx[at][1]);

            molecule near_xy = {{1, 2, 0}, {3, 4, 0}, {-5, 6, 0}};
            near_xy[at][2] = tested.off;
            const outcome in_xy = oriented(near_xy, 4, c2v, true);
            EXPECT_EQ(in_xy.x[at][2], tested.is_flat ? near_xy[at][0] : near_xy[at][2]);
        }
    }
    // What is not a number is not greater than anything.
    const outcome spoilt = oriented({{1, std::numeric_limits<double>::quiet_NaN(), 2}, {3, 0, 4}}, 4, c2v, true);
    EXPECT_EQ(spoilt.x[1], (point{0, -3, 4}));
}

// The rules once more, as they would be said to a person, for every set of flags and every count.
outcome by_the_rules(molecule x, int nop, const std::array<bool, 8>& op, bool turning) {
    const bool has_c2y = op[2];
    const bool has_c2x = op[3];
    const bool has_i = op[4];
    const bool has_sxy = op[5];
    const bool has_szx = op[6];
    const bool has_syz = op[7];
    const auto turn = [&](molecule (*by)(molecule)) { x = turning ? by(x) : x; };
    const auto planarity = [&] {
        bool all_y_zero = true;
        bool all_z_zero = true;
        for (const point& atom : x) {
            if (std::abs(atom[1]) > 1e-6) {
                all_y_zero = false;
            }
            if (std::abs(atom[2]) > 1e-6) {
                all_z_zero = false;
            }
        }
        if (all_y_zero) {
            turn(c4z);
        }
        if (all_z_zero) {
            turn(c4y);
        }
    };
    int ipg = from_before;
    if (nop == 1) {
        ipg = 1;
    } else if (nop == 8) {
        ipg = 5;
    } else if (nop == 2) {
        if (has_syz) {
            ipg = 2;
            turn(c4y);
        } else if (has_szx) {
            ipg = 2;
            turn(c4x);
        } else if (has_sxy) {
            ipg = 2;
        } else if (has_i) {
            ipg = 6;
        } else if (has_c2x) {
            ipg = 3;
            turn(c4y);
        } else if (has_c2y) {
            ipg = 3;
            turn(c4x);
        } else if (op[1]) {
            ipg = 3;
        }
    } else {
        if (has_i) {
            ipg = 7;
            if (has_c2y) {
                turn(c4x);
            } else if (has_c2x) {
                turn(c4y);
            }
        } else if (has_syz || has_szx) {
            ipg = 4;
            if (has_c2y) {
                turn(c4x);
            } else if (has_c2x) {
                turn(c4y);
            }
            planarity();
        } else {
            ipg = 8;
        }
        if (ipg == 4 || ipg == 5) {
            planarity();
        }
    }
    return {ipg, x};
}

TEST(std_orient, follows_the_rules_for_every_set_of_flags) {
    const std::vector<molecule> molecules = {
        anywhere,
        {{1, 0, 3}, {2, 0, 4}},
        {{1, 2, 0}, {3, 4, 0}},
        {{0, 2, 3}, {0, 4, 5}},
        {{1, 0, 0}, {2, 0, 0}},
        {{0, 1, 0}, {0, 2, 0}},
        {{0, 0, 1}, {0, 0, 2}},
        {{0, 0, 0}},
        {{1, 2, 0}, {3, 4, 0}, {5, 6, 7}},
    };
    for (unsigned bits = 0; bits < 256; ++bits) {
        std::array<bool, 8> op{};
        for (std::size_t k = 0; k < 8; ++k) {
            op.at(k) = ((bits >> k) & 1U) != 0;
        }
        for (int nop = -1; nop <= 9; ++nop) {
            for (const molecule& x : molecules) {
                for (const bool turning : {true, false}) {
                    const outcome expected = by_the_rules(x, nop, op, turning);
                    const outcome found = oriented(x, nop, op, turning);
                    ASSERT_EQ(found.ipg, expected.ipg) << "flags " << bits << ", count " << nop;
                    ASSERT_EQ(found.x, expected.x) << "flags " << bits << ", count " << nop << ", first atom "
                                                   << x[0][0] << ' ' << x[0][1] << ' ' << x[0][2];
                }
            }
        }
    }
}

}  // namespace
