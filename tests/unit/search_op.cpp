#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>
#include <numeric>
#include <random>
#include <string_view>
#include <vector>

#include "symmetry/operations.hpp"
#include "symmetry/symmetry.hpp"

using namespace displacement_generator;

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double not_a_number = std::numeric_limits<double>::quiet_NaN();
constexpr double tol_of_a_run = 0.001F;

using point = std::array<double, 3>;

struct atom {
    point at;
    int nat = 6;
    double mass = 12.0;
};

using molecule = std::vector<atom>;

struct outcome {
    bool found = false;
    std::vector<int> jrels;
    bool operator==(const outcome&) const = default;
};

constexpr int untouched = -99;

outcome searched(const molecule& atoms, base::view2<const double> r, double tol, bool found_before = true) {
    const int natom = static_cast<int>(atoms.size());
    const base::array2<double> x("x", 3, natom);
    const base::array1<int> nat("nat", 1, natom);
    const base::array1<double> mass("mass", 1, natom);
    const base::array1<int> jrels("jrels", 1, natom + 2);
    for (int i = 1; i <= natom; ++i) {
        const atom& from = atoms[static_cast<std::size_t>(i - 1)];
        for (int c = 1; c <= 3; ++c) {
            x(c, i) = from.at[static_cast<std::size_t>(c - 1)];
        }
        nat(i) = from.nat;
        mass(i) = from.mass;
    }
    for (int i = 1; i <= jrels.upper(); ++i) {
        jrels(i) = untouched;
    }
    outcome result;
    result.found = found_before;
    symmetry::search_op(natom, x, nat, mass, r, jrels, result.found, tol);
    for (int i = 1; i <= natom; ++i) {
        result.jrels.push_back(jrels(i));
        for (int c = 1; c <= 3; ++c) {  // the molecule itself stays as it is, to the last bit
            const double before = atoms[static_cast<std::size_t>(i - 1)].at[static_cast<std::size_t>(c - 1)];
            const bool same = x(c, i) == before || (std::isnan(before) && std::isnan(x(c, i)));
            EXPECT_TRUE(same && std::signbit(x(c, i)) == std::signbit(before)) << "atom " << i;
        }
    }
    EXPECT_EQ(jrels(natom + 1), untouched);
    EXPECT_EQ(jrels(natom + 2), untouched);
    return result;
}

outcome searched(const molecule& atoms, int operation, double tol, bool found_before = true) {
    return searched(atoms, symmetry::symm_op.matrix(operation), tol, found_before);
}

/// The rule itself: every atom against every atom, by distance.
outcome by_the_rule(const molecule& atoms, base::view2<const double> r, double tol) {
    const std::size_t natom = atoms.size();
    outcome result;
    result.jrels.assign(natom, 0);
    for (std::size_t i = 0; i < natom; ++i) {
        point turned = {0.0, 0.0, 0.0};
        for (int row = 1; row <= 3; ++row) {
            for (int column = 1; column <= 3; ++column) {
                turned[static_cast<std::size_t>(row - 1)] +=
                    r(row, column) * atoms[i].at[static_cast<std::size_t>(column - 1)];
            }
        }
        bool matched = false;
        for (std::size_t j = 0; j < natom; ++j) {
            const double d1 = turned[0] - atoms[j].at[0];
            const double d2 = turned[1] - atoms[j].at[1];
            const double d3 = turned[2] - atoms[j].at[2];
            const double distance = std::sqrt(d1 * d1 + d2 * d2 + d3 * d3);
            if (tol >= distance && atoms[j].mass == atoms[i].mass && atoms[j].nat == atoms[i].nat) {
                result.jrels[i] = static_cast<int>(j + 1);
                result.jrels[j] = static_cast<int>(i + 1);
                matched = true;
                break;
            }
        }
        if (!matched) {
            result.jrels.assign(natom, 0);
            return result;
        }
    }
    result.found = true;
    return result;
}

outcome by_the_rule(const molecule& atoms, int operation, double tol) {
    return by_the_rule(atoms, symmetry::symm_op.matrix(operation), tol);
}

TEST(search_op, finds_an_operation_and_the_image_of_each_atom) {
    using symmetry::c2z;
    using symmetry::identity;
    using symmetry::inversion;
    using symmetry::sxy;
    using symmetry::syz;
    struct row {
        std::string_view name;
        molecule atoms;
        int operation;
        double tol;
        outcome expected;
    };
    const double tol = 0.5;  // exact, as are the coordinates below
    const std::vector<row> rows = {
        {"the identity", {{{1, 2, 3}}, {{4, 5, 6}}}, identity, tol, {true, {1, 2}}},
        {"no atoms", {}, inversion, tol, {true, {}}},
        {"one atom in its place", {{{0, 0, 3}}}, c2z, tol, {true, {1}}},
        {"one atom out of place", {{{1, 0, 3}}}, c2z, tol, {false, {0}}},
        {"two exchanged", {{{1, 2, 3}}, {{-1, -2, 3}}}, c2z, tol, {true, {2, 1}}},
        {"another element in the place", {{{1, 2, 3}, 6, 12.0}, {{-1, -2, 3}, 7, 12.0}}, c2z, tol, {false, {0, 0}}},
        {"another mass in the place", {{{1, 2, 3}, 6, 12.0}, {{-1, -2, 3}, 6, 13.0}}, c2z, tol, {false, {0, 0}}},
        {"elements at zero distance", {{{1, 0, 0}, 6, 1.0}, {{-1, 0, 0}, 7, 1.0}}, syz, tol, {false, {0, 0}}},
        {"masses that differ in the last bit",
         {{{1, 0, 0}, 6, 1.0}, {{-1, 0, 0}, 6, std::nextafter(1.0, 2.0)}},
         syz,
         tol,
         {false, {0, 0}}},
        {"masses that are zeros of either sign",
         {{{1, 0, 0}, 6, 0.0}, {{-1, 0, 0}, 6, -0.0}},
         syz,
         tol,
         {true, {2, 1}}},
        {"a mass that is not a number never matches", {{{0, 0, 0}, 6, not_a_number}}, identity, tol, {false, {0}}},
        {"just within", {{{0, 0, 0.25}}}, sxy, tol, {true, {1}}},
        {"just outside", {{{0, 0, 0.25 + 5e-10}}}, sxy, tol, {false, {0}}},
        {"outside by one bit", {{{0, 0, std::nextafter(0.25, 1.0)}}}, sxy, tol, {false, {0}}},
        {"just within, of a run", {{{0, 0, tol_of_a_run / 2}}}, sxy, tol_of_a_run, {true, {1}}},
        {"just outside, of a run", {{{0, 0, tol_of_a_run / 2 + 5e-10}}}, sxy, tol_of_a_run, {false, {0}}},
        // Near twins are both taken for the first of them. The store for the first match is then overwritten.
        {"twins", {{{0, 0, 1}}, {{0, 0, 1.25}}}, identity, tol, {true, {2, 1}}},
        {"twins and their mirror images",
         {{{0, 0, 1}}, {{0, 0, 1.25}}, {{0, 0, -1}}, {{0, 0, -1.25}}},
         sxy,
         tol,
         {true, {4, 3, 1, 1}}},
        {"the lowest-numbered of three", {{{0, 0, 0}}, {{0, 0, 0.25}}, {{0, 0, 0.5}}}, sxy, tol, {true, {3, 1, 1}}},
        {"a nearer one that stands behind", {{{1, 0, 0.25}}, {{-1, 0, 0}}, {{1, 0, 0}}}, syz, tol, {true, {2, 3, 2}}},
        {"what matched is forgotten when the third atom does not",
         {{{1, 0, 0}}, {{-1, 0, 0}}, {{5, 0, 0}}},
         syz,
         tol,
         {false, {0, 0, 0}}},
        {"the first that matches in all three",
         {{{0, 0, 0}, 7, 12.0}, {{0, 0, 0}, 6, 13.0}, {{0, 0, 0}, 6, 12.0}},
         inversion,
         tol,
         {true, {1, 2, 3}}},
        {"a tolerance of zero met", {{{1, 2, 3}}, {{-1, -2, 3}}}, c2z, 0.0, {true, {2, 1}}},
        {"a tolerance of minus zero met", {{{1, 2, 3}}, {{-1, -2, 3}}}, c2z, -0.0, {true, {2, 1}}},
        {"a tolerance of zero missed", {{{0, 0, 5e-324}}}, sxy, 0.0, {true, {1}}},  // its square is zero
        {"a tolerance of zero missed by a square", {{{0, 0, 1e-150}}}, sxy, 0.0, {false, {0}}},
        {"a negative tolerance", {{{1, 2, 3}}}, identity, -1e-300, {false, {0}}},
        {"a tolerance that is not a number", {{{1, 2, 3}}}, identity, not_a_number, {false, {0}}},
        {"an infinite tolerance", {{{1, 2, 3}}, {{4, 5, 6}}}, identity, infinity, {true, {2, 1}}},
        {"an infinite tolerance and an infinite distance", {{{0, 0, 1e200}}}, sxy, infinity, {true, {1}}},
        {"a tolerance whose square is infinite", {{{0, 0, 1e150}}}, sxy, 1e200, {true, {1}}},
        {"a distance that is infinite by its square", {{{0, 0, 1e200}}}, sxy, 1e250, {false, {0}}},
        {"a coordinate that is not a number", {{{not_a_number, 0, 0}}}, identity, infinity, {false, {0}}},
        {"a coordinate that is infinite", {{{infinity, 0, 0}}}, identity, infinity, {false, {0}}},
    };
    for (const row& tested : rows) {
        for (const bool found_before : {false, true}) {
            SCOPED_TRACE(tested.name);
            const outcome result = searched(tested.atoms, tested.operation, tested.tol, found_before);
            EXPECT_EQ(result.found, tested.expected.found);
            EXPECT_EQ(result.jrels, tested.expected.jrels);
            EXPECT_EQ(by_the_rule(tested.atoms, tested.operation, tested.tol), tested.expected);
        }
    }
}

// What follows compares the search with the rule that it is a faster form of.

using generator = std::mt19937_64;

template <class choice>
choice one_of(generator& random, const std::vector<choice>& choices) {
    return choices[std::uniform_int_distribution<std::size_t>(0, choices.size() - 1)(random)];
}

const std::vector<double>& tolerances() {
    static const std::vector<double> all = {
        0.0,    -0.0,   -1.0,   -5e-324, not_a_number, infinity,     -infinity,
        5e-324, 1e-310, 1e-200, 1e-162,  1e-160,       tol_of_a_run, 0.25,
        0.5,    1.0,    3.0,    1e154,   1.4e154,      1e200,        std::numeric_limits<double>::max()};
    return all;
}

const std::vector<int>& sizes() {
    static const std::vector<int> all = {0, 1, 2, 3, 7, 8, 9, 31, 32, 33, 63, 64, 65, 127, 128, 129, 200};
    return all;
}

int any_operation(generator& random) { return std::uniform_int_distribution<int>(1, 11)(random); }

void compare(const molecule& atoms, int operation, double tol) {
    const outcome expected = by_the_rule(atoms, operation, tol);
    const outcome found = searched(atoms, operation, tol);
    ASSERT_EQ(found.found, expected.found) << "operation " << operation << ", tolerance " << tol;
    ASSERT_EQ(found.jrels, expected.jrels) << "operation " << operation << ", tolerance " << tol;
}

/// Atoms and all their images, in any order: the operation is present unless something is spoilt.
molecule symmetric_molecule(generator& random, int natom, int operation) {
    std::uniform_real_distribution<double> coordinate(-5.0, 5.0);
    const std::vector<int> numbers = {1, 6};
    const std::vector<double> masses = {1.0, 12.0};
    molecule atoms;
    while (static_cast<int>(atoms.size()) < natom) {
        atom next{{coordinate(random), coordinate(random), coordinate(random)},
                  one_of(random, numbers),
                  one_of(random, masses)};
        if (static_cast<int>(atoms.size()) + 1 == natom) {
            next.at = {0.0, 0.0, 0.0};  // in its own place under everything
        }
        const base::array2<double> image("image", 3, 1);
        for (int repeat = 0; repeat < 4 && static_cast<int>(atoms.size()) < natom; ++repeat) {
            atoms.push_back(next);
            for (int c = 1; c <= 3; ++c) {
                image(c, 1) = next.at.at(static_cast<std::size_t>(c - 1));
            }
            symmetry::rotn(1, symmetry::symm_op.matrix(operation), image);
            next.at = {image(1, 1), image(2, 1), image(3, 1)};
            if (repeat == 0 && operation == 1) {
                break;
            }
            if (operation <= 8 && repeat == 1) {
                break;
            }
        }
    }
    std::shuffle(atoms.begin(), atoms.end(), random);
    return atoms;
}

TEST(search_op, is_the_rule_for_symmetric_molecules_of_every_size) {
    generator random(20240301);
    std::uniform_real_distribution<double> noise(-4e-4, 4e-4);
    int present = 0;
    int absent = 0;
    for (int round = 0; round < 100; ++round) {
        for (const int natom : sizes()) {
            const int operation = any_operation(random);
            molecule atoms = symmetric_molecule(random, natom, operation);
            if (round % 2 == 1) {
                for (atom& moved : atoms) {
                    for (double& c : moved.at) {
                        c += noise(random);
                    }
                }
            }
            if (round % 5 == 4 && natom > 0) {  // one atom of another kind: the last that is looked at, or any
                atom& other = round % 10 == 4                                           ? atoms.back()
                              : one_of<std::size_t>(random, {0, atoms.size() / 2}) == 0 ? atoms.front()
                                                                                        : atoms[atoms.size() / 2];
                (round % 3 == 0 ? other.mass : other.at[0]) += 3.0;
            }
            compare(atoms, operation, tol_of_a_run);
            (by_the_rule(atoms, operation, tol_of_a_run).found ? present : absent) += 1;
        }
    }
    EXPECT_GT(present, 500);
    EXPECT_GT(absent, 250);
}

TEST(search_op, is_the_rule_for_large_molecules) {
    generator random(20240309);
    for (const int natom : {1008, 1023, 1024, 1025, 2047}) {
        const int operation = std::uniform_int_distribution<int>(1, 8)(random);
        molecule atoms = symmetric_molecule(random, natom, operation);
        compare(atoms, operation, tol_of_a_run);
        EXPECT_TRUE(searched(atoms, operation, tol_of_a_run).found);
        // The same atoms once more: every one has a match of a lower number.
        const molecule once = atoms;
        atoms.insert(atoms.end(), once.begin(), once.end());
        compare(atoms, operation, tol_of_a_run);
        atoms.back().at[0] += 1.0;
        compare(atoms, operation, tol_of_a_run);
    }
}

TEST(search_op, is_the_rule_where_many_atoms_are_near) {
    generator random(20240302);
    const std::vector<double> grid = {-0.5, -0.25, 0.0, -0.0, 0.25, 0.5};
    const std::vector<int> numbers = {1, 1, 1, 6};
    const std::vector<double> masses = {1.0, 1.0, 1.0, 2.0};
    int present = 0;
    for (int round = 0; round < 250; ++round) {
        for (const int natom : sizes()) {
            molecule atoms;
            const bool one_kind = round % 2 == 0;
            const bool on_a_line = round % 3 == 0;  // along each of the three axes in turn
            for (int i = 0; i < natom; ++i) {
                atom next{{one_of(random, grid), one_of(random, grid), one_of(random, grid)}};
                if (on_a_line) {
                    next.at[static_cast<std::size_t>((round + 1) % 3)] *= 8;
                    next.at[static_cast<std::size_t>((round + 2) % 3)] = 0;
                }
                if (!one_kind) {
                    next.nat = one_of(random, numbers);
                    next.mass = one_of(random, masses);
                }
                atoms.push_back(next);
            }
            const int operation = any_operation(random);
            const double tol = one_of(random, tolerances());
            compare(atoms, operation, tol);
            present += by_the_rule(atoms, operation, tol).found ? 1 : 0;
        }
    }
    EXPECT_GT(present, 300);
}

// In a plane square to the weights the sums of all atoms are the same, but for their last digits. Of equal places many
// are taken twice or more.
TEST(search_op, is_the_rule_where_all_sums_are_one) {
    generator random(20240311);
    constexpr double second = 0.7548776662466927;
    constexpr double third = 0.5698402909980532;
    int present = 0;
    for (const int natom : {2, 5, 17, 130, 500}) {
        for (int round = 0; round < 16; ++round) {
            std::uniform_int_distribution<int> place(-natom, natom);
            const double height = round % 2 == 0 ? 0.0 : 1.0;
            molecule atoms;
            while (static_cast<int>(atoms.size()) < natom) {
                const double along = 0.5 * place(random);
                const double across = round % 4 < 2 ? 0.0 : 0.25 * place(random);
                const point at = {height - second * along - third * across, along, across};
                atoms.push_back({at});
                if (round % 8 != 7) {
                    atoms.push_back({{-at[0], -at[1], -at[2]}});
                }
            }
            std::shuffle(atoms.begin(), atoms.end(), random);
            for (const int operation : {symmetry::identity, symmetry::c2z, symmetry::inversion}) {
                for (const double tol : {tol_of_a_run, 0.3, 1e-9}) {
                    compare(atoms, operation, tol);
                    present += by_the_rule(atoms, operation, tol).found ? 1 : 0;
                }
            }
        }
    }
    EXPECT_GT(present, 400);
}

TEST(search_op, is_the_rule_where_numbers_are_not) {
    generator random(20240303);
    const std::vector<double> coordinates = {0.0,    -0.0,  1.0,      -1.0,      5e-324,      1e-310,  -1e-170,
                                             1e-160, 1e154, -1e154,   1e200,     -1.7e308,    1.7e308, 1e308,
                                             -1e308, 5.0,   infinity, -infinity, not_a_number};
    const std::vector<double> masses = {1.0, 1.0, 1.0, infinity, not_a_number};
    for (int round = 0; round < 20000; ++round) {
        molecule atoms;
        const int natom = std::uniform_int_distribution<int>(0, 6)(random);
        const bool finite = round % 2 == 0;
        for (int i = 0; i < natom; ++i) {
            atom next{};
            for (double& c : next.at) {
                do {
                    c = one_of(random, coordinates);
                } while (finite && !std::isfinite(c));
            }
            next.mass = round % 4 == 3 ? one_of(random, masses) : 1.0;
            atoms.push_back(next);
        }
        compare(atoms, any_operation(random), one_of(random, tolerances()));
    }
    // One spoilt atom among many, in every place.
    for (const double spoilt : {not_a_number, infinity, 1e200}) {
        for (std::size_t place = 0; place < 130; ++place) {
            molecule atoms = symmetric_molecule(random, 130, symmetry::inversion);
            atoms[place].at[place % 3] = spoilt;
            compare(atoms, symmetry::inversion, tol_of_a_run);
            compare(atoms, symmetry::identity, infinity);
        }
    }
}

// Squares of components as small as these are lost.
TEST(search_op, is_the_rule_for_molecules_too_small_to_square) {
    generator random(20240308);
    const std::vector<double> coordinates = {0.0, 1e-163, -3e-163, 1e-160, -2e-155, 1e-151, -1e-151, 5e-324};
    const std::vector<double> near = {0.0, 1e-200, 1e-160, 1e-152, -1.0};
    int present = 0;
    for (int round = 0; round < 5000; ++round) {
        molecule atoms;
        for (int i = one_of<int>(random, {1, 2, 3, 4}); i > 0; --i) {
            atoms.push_back({{one_of(random, coordinates), one_of(random, coordinates), one_of(random, coordinates)}});
        }
        const int operation = any_operation(random);
        const double tol = one_of(random, near);
        compare(atoms, operation, tol);
        present += by_the_rule(atoms, operation, tol).found ? 1 : 0;
    }
    EXPECT_GT(present, 500);
}

// Two atoms, one at the centre: the operation is present where the other lies within the tolerance of the centre. Its
// distance is a few bits from the tolerance.
TEST(search_op, is_the_rule_to_the_last_bit_of_a_distance) {
    generator random(20240304);
    std::normal_distribution<double> direction;
    std::uniform_int_distribution<int> bits(-3, 3);
    const std::vector<double> near = {tol_of_a_run, 0.001, 0.25,  1.0, 1e-150,   3e-155,
                                      1e-160,       1e150, 1e153, 0.1, 1.0 / 3.0};
    int within = 0;
    int outside = 0;
    for (int round = 0; round < 60000; ++round) {
        double tol = one_of(random, near);
        point d = {direction(random), direction(random), direction(random)};
        if (round % 3 == 0) {
            d[1] = 0.0;
        }
        if (round % 6 == 0) {
            d[2] = 0.0;
        }
        const double length = std::sqrt(d[0] * d[0] + d[1] * d[1] + d[2] * d[2]);
        for (double& c : d) {
            c *= tol / length;
        }
        for (int step = bits(random); step != 0; step += step < 0 ? 1 : -1) {
            d[0] = std::nextafter(d[0], step < 0 ? 0.0 : d[0] * 2);
        }
        for (int step = bits(random); step != 0; step += step < 0 ? 1 : -1) {
            tol = std::nextafter(tol, step < 0 ? 0.0 : infinity);
        }
        const molecule atoms = {{{0, 0, 0}}, {d}};
        compare(atoms, symmetry::inversion, tol);
        (by_the_rule(atoms, symmetry::inversion, tol).found ? within : outside) += 1;
    }
    EXPECT_GT(within, 10000);
    EXPECT_GT(outside, 10000);
}

// The mirror images match within the tolerance; but beside a large component each of the two small ones may be lost in
// a sum of all or change its last digit, wherever it stands and whatever the sum is of.
TEST(search_op, is_the_rule_where_rounding_tells_sums_apart) {
    generator random(20240306);
    std::uniform_real_distribution<double> large(5e9, 2e10);
    for (int round = 0; round < 3000; ++round) {
        const std::size_t mirrored = static_cast<std::size_t>(round) % 3;
        const double half_a_digit = std::ldexp(1.0, one_of<int>(random, {-22, -21, -20, -19}));
        point at = {0, 0, 0};
        at[(mirrored + 1 + static_cast<std::size_t>(round) / 3 % 2) % 3] = large(random);
        molecule atoms = {{at}, {at}};
        atoms[0].at.at(mirrored) = 1e-9 - half_a_digit;
        atoms[1].at.at(mirrored) = 1e-9 + half_a_digit;
        constexpr int mirrors[] = {symmetry::syz, symmetry::szx, symmetry::sxy};
        EXPECT_EQ(searched(atoms, mirrors[mirrored], 3e-9), (outcome{true, {2, 1}})) << round;
    }
}

// The same with two large components, for a few pairs so close together that nothing else tells them apart.
TEST(search_op, is_the_rule_among_few_digits) {
    generator random(20240310);
    std::uniform_real_distribution<double> large(-2e10, 2e10);
    std::uniform_real_distribution<double> small(-4e-6, 4e-6);
    std::uniform_int_distribution<int> digits(-2, 2);
    const double digit = 0x1p-19;  // of 1e10
    int present = 0;
    for (int round = 0; round < 8000; ++round) {
        const point centre = {large(random), large(random), 0.0};
        molecule atoms;
        for (int pair = one_of<int>(random, {1, 1, 2, 3}); pair > 0; --pair) {
            const point at = {centre[0] + digits(random) * digit, centre[1] + digits(random) * digit, small(random)};
            atoms.push_back({at});
            atoms.push_back({{at[0] + digits(random) * digit, at[1] + digits(random) * digit, -at[2] + small(random)}});
        }
        const double tol = one_of<double>(random, {2e-6, 4e-6, 1e-5});
        compare(atoms, symmetry::sxy, tol);
        present += by_the_rule(atoms, symmetry::sxy, tol).found ? 1 : 0;
    }
    EXPECT_GT(present, 1600);
}

// Pairs of mirror images as far apart as the tolerance allows, in all directions.
TEST(search_op, is_the_rule_where_all_components_differ) {
    generator random(20240307);
    std::normal_distribution<double> direction;
    std::uniform_real_distribution<double> anywhere(-2.0, 2.0);
    int present = 0;
    for (int round = 0; round < 3000; ++round) {
        molecule atoms;
        for (int pair = 0; pair < 20; ++pair) {
            point d = {direction(random), direction(random), direction(random)};
            const double scale = 0.999 * tol_of_a_run / std::sqrt(d[0] * d[0] + d[1] * d[1] + d[2] * d[2]);
            const point at = {anywhere(random), anywhere(random), anywhere(random)};
            atoms.push_back({at});
            atoms.push_back({{at[0] + scale * d[0], at[1] + scale * d[1], -at[2] - scale * d[2]}});
        }
        compare(atoms, symmetry::sxy, tol_of_a_run);
        present += by_the_rule(atoms, symmetry::sxy, tol_of_a_run).found ? 1 : 0;
    }
    EXPECT_GT(present, 2900);
}

// A shear that is its own inverse carries the second atom to minus infinity, which is within an infinite tolerance.
TEST(search_op, is_the_rule_where_only_turned_atoms_overflow) {
    double elements[] = {1, 0, 0, 1e308, -1, 0, 0, 0, 1};
    const base::view2<const double> r("r", elements, 3, 3);
    EXPECT_EQ(searched({{{0, 0, 5}}, {{0, -10, 0}}}, r, infinity), (outcome{true, {2, 1}}));
}

TEST(search_op, of_no_atoms_is_present) {
    for (const int natom : {0, -1, -40}) {
        const base::array2<double> x("x", 3, 0);
        const base::array1<int> nat("nat", 1, 0);
        const base::array1<double> mass("mass", 1, 0);
        const base::array1<int> jrels("jrels", 1, 1);
        jrels(1) = untouched;
        bool found = false;
        symmetry::search_op(natom, x, nat, mass, symmetry::symm_op.matrix(symmetry::inversion), jrels, found, 0.001);
        EXPECT_TRUE(found) << natom;
        EXPECT_EQ(jrels(1), untouched) << natom;
    }
}

// Pairs of mirror images, side by side along an axis, so far from the origin that few digits are left for the distance.
// Whatever else is near in that direction must not hide a match, nor make one.
TEST(search_op, is_the_rule_far_from_the_origin) {
    generator random(20240305);
    std::uniform_int_distribution<int> bits(-3, 3);
    std::uniform_real_distribution<double> anywhere(-3.0, 3.0);
    const std::vector<double> far = {0.0, 1.0, 1e3, 16777216.0, 1e7, -1e9, 3e12, 1e30, 3.4e38, 3.5e38, -1e100};
    const std::vector<double> near = {tol_of_a_run, 0.25, 1.0, 1e4, 1e25, 1e80};
    int present = 0;
    for (int round = 0; round < 4000; ++round) {
        const double tol = one_of(random, near);
        const std::size_t axis = std::uniform_int_distribution<std::size_t>(0, 1)(random);
        molecule atoms;
        const int pairs = one_of<int>(random, {1, 1, 1, 2, 16, 32, 33, 65});
        for (int pair = 0; pair < pairs; ++pair) {
            const double at = one_of(random, far) + (round % 2 == 0 ? 0.0 : tol * anywhere(random));
            double other = at + (round % 3 == 0 ? tol : round % 3 == 1 ? -tol : tol * anywhere(random) / 3);
            for (int step = bits(random); step != 0; step += step < 0 ? 1 : -1) {
                other = std::nextafter(other, step < 0 ? -infinity : infinity);
            }
            point mirrored = {0.0, 0.0, 1.0 + pair};
            mirrored.at(axis) = at;
            atoms.push_back({mirrored});
            mirrored.at(axis) = other;
            mirrored[2] = -mirrored[2];
            atoms.push_back({mirrored});
        }
        std::shuffle(atoms.begin(), atoms.end(), random);
        compare(atoms, symmetry::sxy, tol);
        present += by_the_rule(atoms, symmetry::sxy, tol).found ? 1 : 0;
    }
    EXPECT_GT(present, 500);
    EXPECT_LT(present, 3500);
}

}  // namespace
