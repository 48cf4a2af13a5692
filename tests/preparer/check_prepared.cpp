#include "displacement_preparer/check_prepared.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "support.hpp"

using namespace displacement_generator;

namespace {

// C2v about these axes: the mean of 18 points, 2 that the axis keeps (those of the oxygen along it), 12 of the plane of
// the molecule and 4 of the other plane: 36 / 4 = 9.
constexpr const char* water =
    "#p hf/sto-3g force nosymm\n\nwater\n\n0 1\n O 0.0 0.0 0.11\n H 0.0 0.75 -0.47\n H 0.0 -0.75 -0.47\n\n";
constexpr int c2v = 4;

struct claim {
    std::string text = water;
    gaussian::molecule meant{0, 1, {8, 1, 1}, Eigen::Matrix3Xd(3, 3)};
    frame::displacement_count promised{c2v, 9};

    claim() { meant.positions << 0, 0, 0, 0, 0.75, -0.75, 0.11, -0.47, -0.47; }
};

std::string complaint(const claim& made) {
    const support::scratch_folder folder;
    support::write_file("mol.gjf", made.text);
    return support::stopped_with([&] { preparer::check_prepared("mol.gjf", made.meant, made.promised); });
}

TEST(check_prepared, what_was_meant_passes) { EXPECT_EQ(complaint({}), "no error"); }

TEST(check_prepared, everything_else_stops_the_run) {
    struct row {
        std::function<void(claim&)> change;
        std::string complaint;
    };
    const std::vector<row> rows = {
        {[](claim& made) { made.meant.charge = -1; }, "expected charge and multiplicity '-1 1', found '0 1'"},
        {[](claim& made) { made.meant.multiplicity = 3; }, "expected charge and multiplicity '0 3', found '0 1'"},
        {[](claim& made) { made.text.replace(made.text.find(" H 0.0 -0.75"), 19, ""); }, "expected 3 atoms, found 2"},
        {[](claim& made) { made.meant.numbers[1] = 9; }, "expected symbol 'F' of atom 2, found 'H '"},
        {[](claim& made) { made.meant.positions(2, 0) = 0.125; },
         "expected coordinate 0.125000 of atom 1, found 0.110000"},
        {[](claim& made) { made.meant.positions(1, 2) = 0.75; },
         "expected coordinate 0.750000 of atom 3, found -0.750000"},
        {[](claim& made) { made.promised.group = 1; }, "expected 1 as number of the point group, found 4"},
        {[](claim& made) { made.promised.computed = 8; }, "expected 8 displacements to compute, found 9"},
    };
    for (const row& r : rows) {
        claim made;
        r.change(made);
        EXPECT_EQ(complaint(made), "the prepared input is not what was meant, which is a fault of this program: " +
                                       r.complaint + "|standard error|2");
    }
}

}  // namespace
