#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "molecules.hpp"
#include "written_run.hpp"

using namespace displacement_generator;

// Laws that the files of a run obey for every molecule whose atoms are well apart.

namespace {

using property::displacement;
using property::displacement_of;
using property::engine;
using property::info_block;
using property::matrix3;
using property::molecule;
using property::point;
using property::written_run;

generator::control any_settings(engine& random) {
    generator::control settings;
    settings.std_orient = property::one_of<int>(random, {0, 1, 1}) != 0;
    settings.symm = property::one_of<int>(random, {0, 1, 1, 1, 1, 1, 1, 1}) != 0;
    settings.disp_sign = property::one_of<int>(random, {-1, -1, 1, 0});
    settings.dx = property::one_of<double>(random, {settings.dx, 0.001, 0.005, -0.01, 0.0123456789});
    return settings;
}

/// Runs of molecules of every group in turn. The coordinates are written with 8 decimals, or with all.
template <class law>
void for_runs(unsigned seed, int count, std::size_t most_atoms, const law& check) {
    engine random(seed);
    for (int n = 0; n < count; ++n) {
        const auto group = static_cast<std::size_t>(n) % property::groups().size();
        const molecule atoms = property::symmetric_molecule(random, property::groups()[group], most_atoms);
        const generator::control settings = any_settings(random);
        SCOPED_TRACE(n);
        check(settings, atoms, n % 2 == 0 ? 8 : -1);
        if (testing::Test::HasFailure()) {
            return;
        }
    }
}

/// Half a unit of the last printed place, twice, and the rounding of a double.
constexpr double printed = 1.01e-8;

point times(const matrix3& matrix, const point& at) {
    point result{};
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t j = 0; j < 3; ++j) {
            result.at(i) += matrix.at(i).at(j) * at.at(j);
        }
    }
    return result;
}

/// A geometry with one coordinate moved: step 0 by minus dx, step 1 by plus dx.
molecule displaced(molecule atoms, int point_number, double dx) {
    const displacement d = displacement_of(point_number);
    atoms[d.atom].at.at(d.axis) += d.step == 0 ? -dx : dx;
    return atoms;
}

/// Whether the two have the same atoms in the same places, in any order.
bool same_places(const molecule& a, const molecule& b, double within) {
    std::vector<bool> taken(b.size(), false);
    for (const property::atom& from : a) {
        bool found = false;
        for (std::size_t j = 0; j < b.size() && !found; ++j) {
            found = !taken[j] && from.symbol == b[j].symbol && std::abs(from.at[0] - b[j].at[0]) <= within &&
                    std::abs(from.at[1] - b[j].at[1]) <= within && std::abs(from.at[2] - b[j].at[2]) <= within;
            if (found) {
                taken[j] = true;
            }
        }
        if (!found) {
            return false;
        }
    }
    return a.size() == b.size();
}

void write_symbols_alike(molecule& atoms) {
    for (property::atom& each : atoms) {
        each.symbol[0] = static_cast<char>(std::toupper(each.symbol[0]));
    }
}

TEST(written_file_laws, list_block_and_files_agree) {
    for_runs(201, 64, 14, [](const generator::control& settings, const molecule& atoms, int decimals) {
        const written_run run = property::run(settings, atoms, decimals);
        const info_block& info = run.list.info;
        EXPECT_EQ(run.list.natom, static_cast<int>(atoms.size()));
        EXPECT_EQ(info.total, 6 * run.list.natom);
        EXPECT_EQ(info.calculated, run.list.nfiles - 1);
        EXPECT_NEAR(run.list.dx, settings.dx, 0.5000001e-6);
        EXPECT_EQ(info.operations.size(), static_cast<std::size_t>(info.order));

        std::vector<std::string> names;
        std::set<std::string> files = {"files.out"};
        for (int n = 0; n <= info.total; ++n) {
            const info_block::point_row& row = info.points[static_cast<std::size_t>(n)];
            if (row.is_calc) {
                names.push_back("coord-" + row.tag);
                files.insert(names.back() + ".com");
                EXPECT_EQ(row.m, n);
                EXPECT_EQ(row.num_op, 1);
                EXPECT_EQ(row.op, "E");
            } else {
                EXPECT_LT(row.m, n);
                EXPECT_TRUE(info.points.at(static_cast<std::size_t>(row.m)).is_calc);
                EXPECT_EQ(row.op, info.operations.at(static_cast<std::size_t>(row.num_op - 1)).name);
            }
        }
        EXPECT_EQ(run.list.names, names);
        std::set<std::string> found;
        for (const auto& [name, bytes] : run.files) {
            found.insert(name);
        }
        EXPECT_EQ(found, files);
    });
}

// The file of the computed point, turned as a whole by the operation, is the derived geometry.
TEST(written_file_laws, a_derived_geometry_is_the_operation_applied_to_its_source) {
    int derived = 0;
    for_runs(202, 64, 14, [&](generator::control settings, molecule atoms, int decimals) {
        // Atoms a little out of their places are found by a wide step only.
        const bool shaken = decimals < 0;
        if (shaken) {
            engine random(atoms.size());
            property::shake(random, atoms);
            settings.dx *= 50;
        }
        write_symbols_alike(atoms);
        const written_run run = property::run(settings, atoms, decimals);
        const info_block& info = run.list.info;
        const molecule reference = run.geometry(0);
        const double within = shaken ? 1e-3 : 2 * printed;
        for (int q = 1; q <= info.total; ++q) {
            const info_block::point_row& row = info.points[static_cast<std::size_t>(q)];
            if (row.is_calc) {
                EXPECT_TRUE(same_places(run.geometry(q), displaced(reference, q, settings.dx), printed)) << q;
                continue;
            }
            ++derived;
            molecule carried = run.geometry(row.m);
            for (property::atom& each : carried) {
                each.at = times(info.operations.at(static_cast<std::size_t>(row.num_op - 1)).matrix, each.at);
            }
            EXPECT_TRUE(same_places(carried, displaced(reference, q, settings.dx), within))
                << "point " << q << " from " << row.m << " by " << row.op;
        }
    });
    EXPECT_GT(derived, 1000);
}

using forces = std::vector<point>;

/// A potential that knows nothing but kinds and places of atoms, in part about the origin and the axes: pairs, triples,
/// and a field that has the symmetry of the group and no other. Without any symmetry of the field its forces on the
/// molecule as a whole do not vanish, nor do their moments.
class potential {
  public:
    potential(engine& random, const std::vector<info_block::operation>& operations) {
        std::uniform_real_distribution<double> coefficient(-1.0, 1.0);
        for (double& each : strength_) {
            each = coefficient(random);
        }
        for (int a = 0; a <= 4; ++a) {
            for (int b = 0; a + b <= 4; ++b) {
                for (int c = 0; a + b + c <= 4; ++c) {
                    const bool stays = std::all_of(operations.begin(), operations.end(), [&](const auto& operation) {
                        const auto& m = operation.matrix;
                        return std::pow(m[0][0], a) * std::pow(m[1][1], b) * std::pow(m[2][2], c) > 0;
                    });
                    if (stays) {
                        field_.push_back({coefficient(random), {a, b, c}});
                    }
                }
            }
        }
    }

    [[nodiscard]] forces at(const molecule& atoms) const {
        forces result(atoms.size(), point{0, 0, 0});
        for (std::size_t i = 0; i < atoms.size(); ++i) {
            add_field(atoms[i], result[i]);
            for (std::size_t j = 0; j < atoms.size(); ++j) {
                if (j > i) {
                    add_pair(atoms, i, j, result);
                }
                for (std::size_t k = j + 1; k < atoms.size(); ++k) {
                    if (j != i && k != i) {
                        add_triple(atoms, i, j, k, result);
                    }
                }
            }
        }
        return result;
    }

  private:
    struct monomial {
        double coefficient;
        std::array<int, 3> powers;
    };

    /// A number for every set of kinds; those of two symbols do not depend on their order.
    [[nodiscard]] double strength(const std::string& a, const std::string& b = "", const std::string& c = "") const {
        const std::size_t middle = std::hash<std::string>{}(b) % 1009 + std::hash<std::string>{}(c) % 1009;
        return strength_.at((std::hash<std::string>{}(a) % 1013 + 7 * middle) % strength_.size());
    }

    void add_field(const property::atom& on, point& force) const {
        for (const monomial& term : field_) {
            for (std::size_t c = 0; c < 3; ++c) {
                std::array<int, 3> powers = term.powers;
                if (powers.at(c) == 0) {
                    continue;
                }
                double slope = strength(on.symbol) * term.coefficient * powers.at(c);
                --powers.at(c);
                for (std::size_t d = 0; d < 3; ++d) {
                    slope *= std::pow(on.at.at(d) / 4, powers.at(d));
                }
                force.at(c) -= slope / 4;
            }
        }
    }

    /// S exp(-r), where the force is S exp(-r) along the line between the two.
    void add_pair(const molecule& atoms, std::size_t i, std::size_t j, forces& result) const {
        const std::string& a = std::min(atoms[i].symbol, atoms[j].symbol);
        const std::string& b = std::max(atoms[i].symbol, atoms[j].symbol);
        const point& p = atoms[i].at;
        const point& q = atoms[j].at;
        const double r = std::hypot(p[0] - q[0], p[1] - q[1], p[2] - q[2]);
        for (std::size_t c = 0; c < 3; ++c) {
            const double f = 3 * strength(a, b) * std::exp(-r) * (p.at(c) - q.at(c)) / r;
            result[i].at(c) += f;
            result[j].at(c) -= f;
        }
    }

    /// S u.v exp(-(u.u + v.v)/8), where u and v go from atom i to j and to k.
    void add_triple(const molecule& atoms, std::size_t i, std::size_t j, std::size_t k, forces& result) const {
        point u{};
        point v{};
        for (std::size_t c = 0; c < 3; ++c) {
            u.at(c) = atoms[j].at.at(c) - atoms[i].at.at(c);
            v.at(c) = atoms[k].at.at(c) - atoms[i].at.at(c);
        }
        const auto dot = [](const point& a, const point& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; };
        const double factor =
            strength(atoms[i].symbol, atoms[j].symbol, atoms[k].symbol) * std::exp(-(dot(u, u) + dot(v, v)) / 8);
        for (std::size_t c = 0; c < 3; ++c) {
            const double on_j = -factor * (v.at(c) - dot(u, v) * u.at(c) / 4);
            const double on_k = -factor * (u.at(c) - dot(u, v) * v.at(c) / 4);
            result[j].at(c) += on_j;
            result[k].at(c) += on_k;
            result[i].at(c) -= on_j + on_k;
        }
    }

    std::array<double, 97> strength_{};
    std::vector<monomial> field_;
};

// The forces of every point, got from those of the computed ones as the info block says, are those that the potential
// has at that point.
TEST(written_file_laws, forces_are_rebuilt_from_the_info_block) {
    engine random(203);
    int derived = 0;
    double greatest_change = 0.0;
    for_runs(204, 48, 9, [&](const generator::control& settings, molecule atoms, int decimals) {
        write_symbols_alike(atoms);
        const written_run run = property::run(settings, atoms, decimals);
        const info_block& info = run.list.info;
        const potential energy(random, info.operations);
        const molecule reference = run.geometry(0);
        std::map<int, forces> computed;
        for (int p = 0; p <= info.total; ++p) {
            if (info.points[static_cast<std::size_t>(p)].is_calc) {
                computed[p] = energy.at(run.geometry(p));
            }
        }
        for (int q = 1; q <= info.total; ++q) {
            const info_block::point_row& row = info.points[static_cast<std::size_t>(q)];
            const auto n = static_cast<std::size_t>(row.num_op - 1);
            forces rebuilt(atoms.size());
            for (std::size_t i = 0; i < atoms.size(); ++i) {
                const auto to = static_cast<std::size_t>(info.atoms.at(i).images.at(n) - 1);
                rebuilt.at(to) = times(info.operations.at(n).matrix, computed.at(row.m).at(i));
            }
            const forces direct = energy.at(displaced(reference, q, settings.dx));
            for (std::size_t i = 0; i < atoms.size(); ++i) {
                for (std::size_t c = 0; c < 3; ++c) {
                    const double f = direct[i].at(c);
                    ASSERT_NEAR(rebuilt[i].at(c), f, 2e-7 * (1 + std::abs(f)))
                        << "point " << q << " from " << row.m << " by " << row.op << ", atom " << i + 1;
                    greatest_change = std::max(greatest_change, std::abs(f - computed.at(0)[i].at(c)));
                }
            }
            derived += row.is_calc ? 0 : 1;
        }
    });
    EXPECT_GT(derived, 500);
    EXPECT_GT(greatest_change, 1e-3);  // or nothing would have been seen
}

/// A text with the signs of all tags changed for each other.
std::string with_other_signs(std::string text) {
    for (std::size_t i = 1; i + 2 < text.size(); ++i) {
        if ((text[i] == '+' || text[i] == '-') && text[i + 1] == 'd' && text[i - 1] >= '0' && text[i - 1] <= '9') {
            text[i] = text[i] == '+' ? '-' : '+';
        }
    }
    return text;
}

TEST(written_file_laws, the_sign_of_the_steps_changes_labels_only) {
    for_runs(205, 24, 10, [](generator::control settings, const molecule& atoms, int decimals) {
        settings.disp_sign = -1;
        const auto files = property::run(settings, atoms, decimals).files;
        for (const int same : {0, 2}) {
            settings.disp_sign = same;
            EXPECT_EQ(property::run(settings, atoms, decimals).files, files) << same;
        }
        settings.disp_sign = 1;
        std::map<std::string, std::string> relabelled;
        for (const auto& [name, bytes] : files) {
            relabelled[with_other_signs(name)] = name == "files.out" ? with_other_signs(bytes) : bytes;
        }
        EXPECT_NE(relabelled, files);
        EXPECT_EQ(property::run(settings, atoms, decimals).files, relabelled);
    });
}

TEST(written_file_laws, a_displaced_file_differs_from_the_reference_in_one_coordinate) {
    for_runs(206, 64, 14, [](const generator::control& settings, const molecule& atoms, int decimals) {
        const written_run run = property::run(settings, atoms, decimals);
        const std::string& reference = run.files.at("coord-" + run.list.info.points[0].tag + ".com");
        const molecule unmoved = run.geometry(0);
        const bool as_given = !settings.symm || !settings.std_orient;
        for (int p = 1; p <= run.list.info.total; ++p) {
            const info_block::point_row& row = run.list.info.points[static_cast<std::size_t>(p)];
            if (!row.is_calc) {
                continue;
            }
            const displacement d = displacement_of(p);
            const std::size_t columns = property::input_head.size() + 59 * d.atom + 16 + 14 * d.axis;
            std::string bytes = run.files.at("coord-" + row.tag + ".com");
            ASSERT_EQ(bytes.size(), reference.size());
            const std::string moved = bytes.substr(columns, 14);
            const double step = d.step == 0 ? -settings.dx : settings.dx;
            EXPECT_NEAR(std::stod(moved), unmoved[d.atom].at.at(d.axis) + step, printed);
            if (as_given) {
                char expected[64] = {};
                const double before = decimals < 0 ? atoms[d.atom].at.at(d.axis) : unmoved[d.atom].at.at(d.axis);
                static_cast<void>(std::snprintf(expected, sizeof expected, "%14.8f", before + step));
                EXPECT_EQ(moved, expected);
            }
            EXPECT_NE(moved, reference.substr(columns, 14));
            bytes.replace(columns, 14, reference, columns, 14);
            EXPECT_EQ(bytes, reference) << "point " << p;
        }
    });
}

// Without symmetry every point is computed, and its files are those that a run with symmetry writes of as many.
TEST(written_file_laws, symmetry_only_leaves_files_out) {
    for_runs(207, 32, 10, [](generator::control settings, const molecule& atoms, int decimals) {
        settings.std_orient = false;
        settings.symm = false;
        const written_run all = property::run(settings, atoms, decimals);
        EXPECT_EQ(all.list.info.calculated, all.list.info.total);
        settings.symm = true;
        const written_run some = property::run(settings, atoms, decimals);
        for (const auto& [name, bytes] : some.files) {
            if (name != "files.out") {
                ASSERT_TRUE(all.files.contains(name)) << name;
                EXPECT_EQ(all.files.at(name), bytes) << name;
            }
        }
    });
}

}  // namespace
