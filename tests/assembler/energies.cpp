#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <sstream>

#include "displacement_assembler/energies.hpp"
#include "model.hpp"

using namespace displacement_generator;
using namespace displacement_generator::assembler_tests;

// Whether energies and forces belong together: what is refused, what is told, and what passes.

namespace {

constexpr const char* end_of_refusals =
    "displacement_assembler: error: PES-0/files.out: 10 of 10 are there, not all of them can be used\n";
constexpr const char* long_steps = "dx = 0.005";
constexpr const char* short_steps = "dx = 0.001";

/// Water in plain forces, each result changed as a test likes.
class water_folder {
  public:
    using change = std::function<void(const std::string& name, support::twin_point& point)>;

    explicit water_folder(const char* settings = long_steps) {
        generate("water", settings);
        molecule = make_model(read_geometry_file("PES-0/coord-0-00.com"));
    }

    [[nodiscard]] support::twin_point at(const std::string& name) const {
        return molecule.at(read_geometry_file("PES-0/" + name + ".com"));
    }

    void write_forces(const change& changed, const char* energy_format = "%.10f") const {
        for (const std::string& name : names()) {
            support::twin_point point = at(name);
            changed(name, point);
            std::ostringstream text;
            if (point.energy) {
                char energy[64];
                static_cast<void>(std::snprintf(energy, sizeof energy, energy_format, *point.energy));
                text << "energy " << energy << "\n";
            }
            text.precision(12);
            text << point.forces.transpose() << "\n";
            support::write_file("PES-0/" + name + ".forces", text.str());
        }
    }

    void write_logs(const change& changed, const char* route = nullptr) const {
        for (const std::string& name : names()) {
            support::twin_job job = job_of(molecule, name);
            job.route = route == nullptr ? job.route : route;
            job.archive = false;  // which shows no more than seven decimals of an energy
            changed(name, job.points[0]);
            write_log(name, job);
        }
    }

    support::scratch_folder folder;
    model molecule;
};

/// Energies (hartree) above one that is the same for all, and what the forces tell of them.
struct energy_pair {
    double energy;
    double by_forces;
};

assembler::energy_verdict judge(const std::vector<energy_pair>& pairs, double step) {
    std::vector<assembler::energy_point> points;
    for (const energy_pair& one : pairs) {
        points.push_back({"name", points.size(), one.energy, one.by_forces});
    }
    return assembler::judge_energies(points, step);
}

/// Eight energies that follow from forces `factor` times as large, but for what is added to one half of them and taken
/// from the other.
std::vector<energy_pair> eight_of(double by_forces, double factor, double off) {
    std::vector<energy_pair> pairs;
    for (int i = 0; i < 8; ++i) {
        const double own = i < 4 ? by_forces : -by_forces;
        pairs.push_back({factor * own + (i % 2 == 0 ? off : -off), own});
    }
    return pairs;
}

using places = std::vector<std::size_t>;

void no_change(const std::string& /*unused*/, support::twin_point& /*unused*/) {}

void expect_no_word(const char* what) {
    const support::outcome done = assemble();
    EXPECT_EQ(done.status, 0) << what;
    EXPECT_EQ(done.standard_error,
              "PES-0/files.out: notice: no intensities: PES-0/coord-1-dx.forces has no dipole moment\n")
        << what;
}

}  // namespace

TEST(energies, those_of_the_forces_pass) {
    for (const char* settings : {long_steps, short_steps, "dx = 0.02", "dx = 0.1"}) {
        SCOPED_TRACE(settings);
        const water_folder water(settings);
        water.write_forces(no_change);
        expect_no_word("all digits");
        water.write_forces(no_change, "%.6f");
        expect_no_word("six decimals");
        water.write_forces([](const std::string& name, support::twin_point& point) {
            if (name == "coord-0-00") {
                point.energy.reset();
            }
        });
        expect_no_word("no energy of the reference");
        // A cubic potential with the strongest bonds there are: 1/6 t x^3 for each coordinate.
        water.write_forces([&](const std::string& /*unused*/, support::twin_point& point) {
            constexpr double bohr = 0.529177210903;
            constexpr double third_derivative = -9.0;
            const Eigen::Matrix3Xd x = (point.positions - water.molecule.reference.positions) / bohr;
            *point.energy += third_derivative / 6.0 * x.array().cube().sum();
            point.forces.array() -= third_derivative / 2.0 * x.array().square();
        });
        EXPECT_EQ(assemble().status, 0);
        EXPECT_EQ(assemble().standard_error.find("energ"), std::string::npos) << assemble().standard_error;
        // Loose convergence, and a coarse grid: at random but always the same.
        for (const double noise : {1e-6, 8e-6}) {
            water.write_forces([&](const std::string& name, support::twin_point& point) {
                *point.energy += noise * std::sin(static_cast<double>(7 * name[6] + 5 * name[7] + 3 * name[9]));
            });
            expect_no_word("noise");
        }
    }
}

TEST(energies, a_single_stale_result_is_refused) {
    const water_folder water;
    const support::twin_point other = water.at("coord-2+dz");
    water.write_forces([&](const std::string& name, support::twin_point& point) {
        if (name == "coord-1-dy") {
            point.forces = other.forces;
            point.energy = other.energy;
        }
    });
    const support::outcome done = assemble();
    EXPECT_EQ(done.status, 1);
    EXPECT_EQ(done.standard_output, "");
    EXPECT_TRUE(done.standard_error.starts_with("PES-0/coord-1-dy.forces: expected an energy of -76.0000"))
        << done.standard_error;
    EXPECT_TRUE(done.standard_error.ends_with(
        std::string("; energy or forces are of another geometry or state, compute it again, and write all digits of "
                    "the energy\n") +
        end_of_refusals))
        << done.standard_error;
}

TEST(energies, those_of_another_level_refuse_no_log) {
    const water_folder water;
    for (const char* route : {"#p td(nstates=3)/b3lyp/6-31g* force nosymm",
                              "#p rcis/6-31g* force nosymm",
                              "#p oniom(b3lyp/6-31g*:uff) force nosymm",
                              "#p ub2plypd3/cc-pvdz force nosymm",
                              "#p rob2plyp/cc-pvdz force nosymm",
                              "#p mpw2plypd/cc-pvdz force nosymm",
                              "#p dsdpbep86/cc-pvdz force nosymm",
                              "#p pbe0dh/cc-pvdz force nosymm",
                              "#p pbeqidh/cc-pvdz force nosymm",
                              "#p tda/b3lyp/6-31g* force nosymm",
                              "#p b3lyp/6-31g*,td force nosymm",
                              "#p b3lyp/6-31g* td=nstates=3 force nosymm",
                              "#p eomccsd/6-31g* force nosymm",
                              "#p ccsd(eom)/6-31g* force nosymm",
                              "#p sac-ci/6-31g* force nosymm",
                              "#p zindo force nosymm",
                              "#p casscf(4,4)/6-31g* force nosymm",
                              "#p cas(4,4)/6-31g* force nosymm",
                              "#p gvb(1)/6-31g* force nosymm",
                              "#p external='x' force nosymm"}) {
        SCOPED_TRACE(route);
        // The field's energy differs along one bond only.
        water.write_logs(
            [](const std::string& name, support::twin_point& point) {
                if (name == "coord-2+dy" || name == "coord-2-dy") {
                    *point.energy += name == "coord-2+dy" ? 2e-4 : -2e-4;
                }
            },
            route);
        const support::outcome done = assemble();
        EXPECT_EQ(done.status, 0);
        EXPECT_NE(done.standard_error.find("notice: some energies do not follow from the forces"), std::string::npos)
            << done.standard_error;
    }
}

TEST(energies, words_that_only_begin_like_another_level_name_none) {
    const water_folder water;
    for (const char* route : {"#p b3lyp/6-31g* force nosymm", "#p cisd/6-31g* force nosymm"}) {
        SCOPED_TRACE(route);
        water.write_logs([](const std::string& name,
                            support::twin_point& point) { *point.energy += name == "coord-2+dy" ? 2e-4 : 0.0; },
                         route);
        EXPECT_EQ(assemble().status, 1);
    }
}

TEST(energies, forces_of_another_step_are_refused) {
    for (const char* settings : {"dx = 0.002", short_steps}) {
        const water_folder water(settings);
        for (const double factor : {0.8, 1.25}) {
            SCOPED_TRACE(settings + std::string(" ") + std::to_string(factor));
            water.write_forces([&](const std::string& /*unused*/, support::twin_point& point) {
                point.forces *= factor;  // as of a harmonic potential at other steps
            });
            const support::outcome done = assemble();
            EXPECT_EQ(done.status, 1);
            EXPECT_TRUE(done.standard_error.starts_with(
                "PES-0/files.out: expected energies that follow from the forces, found those of forces " +
                std::string(factor < 1.0 ? "1.25" : "0.8")))
                << done.standard_error;
        }
    }
}

TEST(energies, files_without_any_are_told_of) {
    const water_folder water;
    water.write_forces([](const std::string& /*unused*/, support::twin_point& point) { point.energy.reset(); });
    const support::outcome done = assemble();
    EXPECT_EQ(done.status, 0);
    EXPECT_TRUE(
        done.standard_error.starts_with("PES-0/files.out: notice: the .forces files hold no energies: nothing "
                                        "shows whether they are of these geometries\n"))
        << done.standard_error;
    water.write_logs([](const std::string& /*unused*/, support::twin_point& point) { point.energy.reset(); });
    EXPECT_EQ(assemble().standard_error.find("energies"), std::string::npos) << assemble().standard_error;
}

TEST(energies, a_reference_of_another_calculation_is_refused) {
    const water_folder water;
    water.write_forces([](const std::string& name, support::twin_point& point) {
        if (name == "coord-0-00") {
            *point.energy = -76.5;
        }
    });
    EXPECT_EQ(assemble().standard_error,
              std::string("PES-0/coord-0-00.forces: expected an energy of -76.0000000 hartree by its forces and those "
                          "of the reference, found -76.5000000; energy or forces are of another geometry or state, "
                          "compute it again, and write all digits of the energy\n") +
                  end_of_refusals);
}

TEST(energies, a_log_of_another_state_is_refused_and_a_coarse_grid_told_of) {
    const water_folder water;
    for (const double off : {1.1e-4, 2e-5}) {
        water.write_logs([&](const std::string& name, support::twin_point& point) {
            if (name == "coord-1-dy") {
                *point.energy += off;
            }
        });
        const support::outcome done = assemble();
        if (off > 1e-4) {
            EXPECT_EQ(done.status, 1);
            EXPECT_TRUE(done.standard_error.starts_with("PES-0/coord-1-dy.log: expected an energy of "));
        } else {
            EXPECT_EQ(done.status, 0);
            EXPECT_EQ(done.standard_error,
                      "PES-0/files.out: notice: some energies do not follow from the forces, that of "
                      "PES-0/coord-1-dy.log is off by 2.0e-05 hartree\n");
        }
    }
}

TEST(energies, gradients_and_other_units_are_refused) {
    struct unit_case {
        double factor;
        const char* shown;
    };
    for (const char* settings : {long_steps, short_steps}) {
        const water_folder water(settings);
        for (const unit_case& one :
             {unit_case{-1.0, "-1"}, {51.4220674763, "0.0194"}, {-51.4220674763, "-0.0194"}, {1.889726, "0.529"}}) {
            SCOPED_TRACE(one.factor);
            water.write_forces(
                [&](const std::string& /*unused*/, support::twin_point& point) { point.forces *= one.factor; });
            const support::outcome done = assemble();
            EXPECT_EQ(done.status, 1);
            EXPECT_EQ(done.standard_output, "");
            EXPECT_EQ(done.standard_error,
                      "PES-0/files.out: expected energies that follow from the forces, found those of forces " +
                          std::string(one.shown) +
                          " times as large; .forces files have forces and not gradients, in hartree/bohr, of these "
                          "geometries, and energies in hartree\n" +
                          end_of_refusals);
        }
    }
}

TEST(energies, those_of_another_level_are_told_of) {
    const water_folder water;
    // As a self-consistent field beside forces of a correlated method: other force constants, and not at its minimum.
    const auto other_level = [&](const std::string& /*unused*/, support::twin_point& point) {
        const Eigen::Matrix3Xd x = (point.positions - water.molecule.reference.positions) / 0.529177210903;
        *point.energy += 0.05 * (*point.energy + 76.0) + 0.01 * x.sum();
    };
    const std::string told =
        "PES-0/files.out: notice: the energies do not follow from the forces, that of PES-0/coord-";
    const std::string reason = " hartree: they are of another level, or the forces are not of these geometries\n";
    water.write_forces(other_level);
    support::outcome done = assemble();
    EXPECT_EQ(done.status, 0);
    EXPECT_TRUE(done.standard_error.starts_with(told)) << done.standard_error;
    EXPECT_NE(done.standard_error.find(reason), std::string::npos);
    water.write_logs(other_level);
    done = assemble();
    EXPECT_EQ(done.status, 0);
    EXPECT_TRUE(done.standard_error.starts_with(told)) << done.standard_error;
    EXPECT_TRUE(done.standard_error.ends_with(reason)) << done.standard_error;
    // Logs are never refused for a factor, which their forces cannot have.
    water.write_logs([](const std::string& /*unused*/, support::twin_point& point) {
        point.energy = -76.0 - 2.0 * (*point.energy + 76.0);
    });
    EXPECT_EQ(assemble().status, 0);
}

TEST(energies, huge_numbers_are_told_of) {
    const water_folder water;
    water.write_forces([](const std::string& name,
                          support::twin_point& point) { *point.energy *= name == "coord-1-dx" ? 1e300 : -1e300; },
                       "%.3e");
    support::outcome done = assemble();
    EXPECT_EQ(done.status, 0);
    EXPECT_TRUE(done.standard_error.starts_with("PES-0/files.out: notice: the energies do not follow from the forces"))
        << done.standard_error;
    water.write_forces(
        [](const std::string& /*unused*/, support::twin_point& point) { point.forces.setConstant(1.7e308); });
    done = assemble();
    EXPECT_NE(done.status, 0);
}

TEST(energies, a_number_that_stands_for_all_is_told_of) {
    const water_folder water;
    water.write_forces([](const std::string& /*unused*/, support::twin_point& point) { point.energy = -76.0; });
    const support::outcome done = assemble();
    EXPECT_EQ(done.status, 0);
    EXPECT_TRUE(done.standard_error.starts_with(
        "PES-0/files.out: notice: all energies are the same: they could not be compared with the forces\n"))
        << done.standard_error;
}

// By hand, of a step of 0.01 bohr: anharmonic terms of 2 * 10 * 0.01^3 / 12 = 1.667e-6 hartree are allowed, and 1e-6
// beside them.

TEST(judge_energies, allows_anharmonic_terms_and_noise) {
    for (const double step : {0.01, -0.01}) {
        for (const double off : {2.6e-6, -2.6e-6, 2.7e-6, -2.7e-6}) {
            SCOPED_TRACE(off);
            const assembler::energy_verdict verdict =
                judge({{0.0, 0.0}, {1e-3, 1e-3}, {2e-3 + off, 2e-3}, {3e-3, 3e-3}, {-1e-3, -1e-3}}, step);
            EXPECT_EQ(verdict.off, std::abs(off) > 2.65e-6 ? places{2} : places{});
            EXPECT_TRUE(verdict.most_agree);
            EXPECT_FALSE(verdict.one_number);
            EXPECT_FALSE(verdict.all_by_this);
            EXPECT_NEAR(verdict.reference, 0.0, 1e-15);
        }
    }
}

TEST(judge_energies, allows_what_is_as_large_as_the_limit) {
    EXPECT_EQ(judge({{0.0, 0.0}, {1e-6, 0.0}, {0.0, 0.0}}, 0.0).off, places{});
    EXPECT_EQ(judge({{0.0, 0.0}, {1.0000001e-6, 0.0}, {0.0, 0.0}}, 0.0).off, places{1});
    // What is no larger shows nothing.
    EXPECT_FALSE(judge({{0.0, 0.0}, {1e-6, 1e-6}, {-1e-6, -1e-6}, {0.5, 1e-3}}, 0.0).most_agree);
    EXPECT_TRUE(judge({{0.0, 0.0}, {2e-6, 2e-6}, {-2e-6, -2e-6}, {0.5, 1e-3}}, 0.0).most_agree);
}

TEST(judge_energies, allows_noise_as_most_points_have_it) {
    struct noise_case {
        double noise;  ///< of half of the points
        double off;    ///< of one
        bool is_off;
    };
    // Twenty medians, but 2e-5 at the most.
    for (const noise_case& one :
         {noise_case{3e-7, 7.6e-6, false}, {3e-7, 7.8e-6, true}, {2e-6, 2.16e-5, false}, {2e-6, 2.18e-5, true}}) {
        SCOPED_TRACE(one.off);
        const double noise = one.noise;
        const assembler::energy_verdict verdict = judge({{0.0, 0.0},
                                                         {1e-3 + noise, 1e-3},
                                                         {-1e-3 - noise, -1e-3},
                                                         {2e-3 + noise, 2e-3},
                                                         {-2e-3 - noise, -2e-3},
                                                         {3e-3 + noise, 3e-3},
                                                         {4e-3 - one.off, 4e-3}},
                                                        0.01);
        EXPECT_EQ(verdict.off, one.is_off ? places{6} : places{});
    }
}

TEST(judge_energies, needs_more_points_that_agree_than_that_are_off) {
    std::vector<energy_pair> pairs = {{0.0, 0.0}, {0.0, 2e-6}, {0.0, -2e-6}, {0.5, 1e-3}, {1e-3, 1e-3}};
    EXPECT_EQ(judge(pairs, 0.01).off, places{3});
    EXPECT_FALSE(judge(pairs, 0.01).most_agree);  // of the first three nothing could be told
    pairs.push_back({-1e-3, -1e-3});
    EXPECT_TRUE(judge(pairs, 0.01).most_agree);
    pairs = {{0.0, 0.0}, {0.5, 1e-3}};
    EXPECT_EQ(judge(pairs, 0.01).off, places{});  // two tell nothing
    pairs.push_back({1e-3, 1e-3});
    EXPECT_EQ(judge(pairs, 0.01).off, places{1});
    EXPECT_FALSE(judge(pairs, 0.01).most_agree);
}

TEST(judge_energies, stops_at_numbers_that_are_no_energies) {
    for (const double huge : {1e9, -1e9, std::nan("")}) {
        for (const energy_pair& pair : {energy_pair{huge, 0.0}, {0.0, huge}}) {
            const assembler::energy_verdict verdict = judge({{0.0, 0.0}, pair, {1e-3, 1e-3}, {-1e-3, -1e-3}}, 0.01);
            EXPECT_EQ(verdict.off, places{1});
            EXPECT_FALSE(verdict.most_agree);
            EXPECT_EQ(verdict.reference, 0.0);
        }
    }
    EXPECT_TRUE(judge({{0.0, 0.0}, {9.9e8, 0.0}, {1e-3, 1e-3}, {-1e-3, -1e-3}}, 0.01).most_agree);
}

TEST(judge_energies, knows_one_number_where_the_forces_would_show_another) {
    EXPECT_FALSE(judge({{-76.0, 0.0}, {-76.0, 2.6e-6}, {-76.0, -2.6e-6}}, 0.01).one_number);
    EXPECT_TRUE(judge({{-76.0, 0.0}, {-76.0, 2.6e-6}, {-76.0, -2.7e-6}}, 0.01).one_number);
    EXPECT_FALSE(judge({{-76.0, 0.0}, {-76.0, 1e-3}, {-76.1, -1e-3}}, 0.01).one_number);
}

TEST(judge_energies, fits_nothing_to_forces_of_no_consequence) {
    const assembler::energy_verdict verdict =
        judge({{0.0, 0.0}, {0.1, 0.0}, {0.2, 0.0}, {0.3, 0.0}, {0.4, 0.0}, {0.5, 0.0}, {0.6, 0.0}, {0.7, 0.0}}, 0.01);
    EXPECT_EQ(verdict.off.size(), 7U);
    EXPECT_FALSE(verdict.most_agree);
    EXPECT_FALSE(verdict.all_by_this);
}

TEST(judge_energies, tells_a_factor_by_all_points_together) {
    // Of a step of 0.001 each energy is within what is allowed.
    for (const double factor : {1.06, 0.94, 1.04, 0.96}) {
        SCOPED_TRACE(factor);
        std::vector<energy_pair> pairs = eight_of(5e-6, factor, 0.0);
        const assembler::energy_verdict verdict = judge(pairs, 0.001);
        EXPECT_TRUE(verdict.off.empty());
        ASSERT_EQ(verdict.all_by_this.has_value(), std::abs(factor - 1.0) > 0.05);
        EXPECT_NEAR(verdict.all_by_this.value_or(factor), factor, 1e-9);
        pairs.pop_back();
        EXPECT_FALSE(judge(pairs, 0.001).all_by_this);
    }
    // The slope's standard deviation is off * sqrt(8 / (8 - 2) / (8 * 5e-6^2)), and a tenth of the excess 1 is allowed.
    EXPECT_TRUE(judge(eight_of(5e-6, 2.0, 1.2e-6), 0.001).all_by_this);
    EXPECT_FALSE(judge(eight_of(5e-6, 2.0, 1.25e-6), 0.001).all_by_this);
    // The excess over the width 1e-5 must be more than the anharmonic terms, 10 / 6 * step^3.
    EXPECT_TRUE(judge(eight_of(5e-6, 2.0, 0.0), 0.0181).all_by_this);
    EXPECT_FALSE(judge(eight_of(5e-6, 2.0, 0.0), 0.0182).all_by_this);
    // No point may be farther from the line than what is allowed, 2e-5.
    const assembler::energy_verdict verdict = judge(eight_of(1e-3, -1.0, 1.9e-5), 0.001);
    EXPECT_FALSE(verdict.most_agree);
    EXPECT_NEAR(verdict.all_by_this.value_or(0.0), -1.0, 1e-9);
    EXPECT_FALSE(judge(eight_of(1e-3, -1.0, 2.1e-5), 0.001).all_by_this);
}

// What is told of an energy that is off, and which files are refused.

TEST(check_energies, refuses_what_is_certain_and_tells_of_the_worst_beside_it) {
    const auto told_of = [](const std::vector<std::string>& files, const std::vector<double>& off, bool other_level) {
        std::vector<assembler::energy_point> points;
        for (std::size_t i = 0; i < 12; ++i) {
            points.push_back({i < files.size() ? files[i] : "good.log", 20 + i,
                              -76.0 + 1e-3 * static_cast<double>(i) + (i < off.size() ? off[i] : 0.0),
                              1e-3 * static_cast<double>(i), other_level});
        }
        return assembler::check_energies(points, 0.01);
    };
    const std::string end = " hartree by its forces and those of the reference, found ";
    const std::string reason = "; energy or forces are of another geometry or state, compute it again";
    assembler::energy_messages told =
        told_of({"a.log", "b.forces", "c.log", "d.fchk"}, {9e-5, 3e-5, 1.1e-4, -9.5e-5}, false);
    EXPECT_EQ(told.refused, (places{21, 22}));
    ASSERT_EQ(told.refusals.size(), 2U);
    EXPECT_EQ(told.refusals[0], "b.forces: expected an energy of -75.9990000" + end + "-75.9989700" + reason +
                                    ", and write all digits of the energy");
    EXPECT_EQ(told.refusals[1], "c.log: expected an energy of -75.9980000" + end + "-75.9978900" + reason);
    const std::string off = "some energies do not follow from the forces, that of ";
    EXPECT_EQ(told.notices, std::vector<std::string>{off + "d.fchk is off by -9.5e-05 hartree"});
    EXPECT_EQ(told.refusal_of_all, "");
    told = told_of({"a.log", "b.forces", "c.log"}, {-3e-3, 3e-5, 2e-3}, true);
    EXPECT_EQ(told.refused, places{21});
    EXPECT_EQ(told.notices, std::vector<std::string>{off + "a.log is off by -3.0e-03 hartree"});
    told = told_of({}, {}, false);
    EXPECT_TRUE(told.refused.empty() && told.refusals.empty() && told.notices.empty());
}

TEST(check_energies, refuses_a_factor_of_plain_forces_only) {
    for (const char* last : {"a.forces", "a.log"}) {
        std::vector<assembler::energy_point> points;
        for (int i = -4; i <= 4; ++i) {
            points.push_back({i == 4 ? last : "a.forces", 0, -2e-3 * i, 1e-3 * i});
        }
        const assembler::energy_messages told = assembler::check_energies(points, 0.01);
        const bool all_plain = std::string(last) == "a.forces";
        EXPECT_EQ(told.refusal_of_all,
                  all_plain ? "expected energies that follow from the forces, found those of forces -2 times as large; "
                              ".forces files have forces and not gradients, in hartree/bohr, of these geometries, and "
                              "energies in hartree"
                            : "");
        EXPECT_TRUE(told.refused.empty());
        EXPECT_EQ(told.notices.size(), all_plain ? 0U : 1U);
    }
}
