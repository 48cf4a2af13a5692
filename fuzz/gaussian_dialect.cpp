#include <algorithm>
#include <cmath>
#include <vector>

#include "gaussian/ready_input.hpp"
#include "gaussian/route.hpp"
#include "gjf/gjf.hpp"
#include "harness.hpp"

// What holds for every input that can be made ready: it reads again as the same molecule, it is ready already, and the
// generator finds the same atoms in it. What stops the run names a line that exists.

using namespace displacement_generator;

namespace {

/// A position as printed is off by half of its last decimal at the most.
constexpr double half_a_decimal = 0.5000001e-8;

/// Checks the notices, and that the ones found on a ready input do not say that something was left out again.
void check_notices(const std::vector<gaussian::notice>& notices, int lines) {
    for (const gaussian::notice& told : notices) {
        fuzz::check(told.line >= 0 && told.line <= lines, "a notice names a line that exists");
        fuzz::check(!told.text.empty(), "a notice says something");
    }
}

void check_same_molecule(const gaussian::molecule& found, const gaussian::molecule& expected) {
    fuzz::check_equal(found.charge, expected.charge, "the charge is read again");
    fuzz::check_equal(found.multiplicity, expected.multiplicity, "the multiplicity is read again");
    fuzz::check(found.numbers == expected.numbers, "the atoms are read again");
    fuzz::check(found.positions.cols() == expected.positions.cols(), "every atom has a position");
    for (Eigen::Index i = 0; i < found.positions.cols(); ++i) {
        for (int j = 0; j < 3; ++j) {
            fuzz::check(std::abs(found.positions(j, i) - expected.positions(j, i)) <= half_a_decimal,
                        "positions are read again, to the last digit printed");
        }
    }
}

/// What the generator itself reads of a ready input.
void check_generator_reads(const std::string& text, const gaussian::molecule& atoms) {
    static const fuzz::memory_file file;
    file.set(text);
    const int natom = static_cast<int>(atoms.numbers.size());
    int found = 0;
    gjf::get_gjf_natom(file.name(), found);
    fuzz::check_equal(found, natom, "the generator finds all atoms");
    const base::array2<double> xyz("xyz", 3, natom);
    const base::array1<base::text<2>> symbol("symbol", 1, natom);
    gjf::get_gjf_coord(file.name(), natom, xyz, symbol);
    for (int i = 1; i <= natom; ++i) {
        for (int j = 1; j <= 3; ++j) {
            fuzz::check(std::abs(xyz(j, i) - atoms.positions(j - 1, i - 1)) <= half_a_decimal,
                        "the generator reads the positions");
        }
    }
}

void check_ready(const gaussian::input& job, int lines) {
    std::vector<gaussian::notice> notices;
    gaussian::ready_input ready;
    if (const auto error = fuzz::stopped([&] { ready = gaussian::make_ready(job, "", notices); })) {
        fuzz::checked_line(*error, job.name, 1, lines);
        return;
    }
    check_notices(notices, lines);
    std::string text;
    if (fuzz::stopped([&] { text = gaussian::write_input(ready); })) {
        fuzz::check(text.empty(), "nothing is written where the run stops");
        return;
    }
    std::vector<gaussian::notice> none;
    const gaussian::input again = gaussian::read_input(text, "ready", none);
    check_same_molecule(again.atoms, job.atoms);
    fuzz::check(none.empty(), "a ready input is read without a notice");
    fuzz::check_equal(gaussian::write_input(gaussian::make_ready(again, "", none)), text, "a ready input is ready");
    check_generator_reads(text, job.atoms);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes(data, data + size);
    const int lines = std::max(static_cast<int>(fuzz::records(bytes).size()), 1);
    std::vector<gaussian::notice> notices;
    gaussian::input job;
    if (const auto error = fuzz::stopped([&] { job = gaussian::read_input(bytes, "mol.gjf", notices); })) {
        fuzz::checked_line(*error, "mol.gjf", 1, lines);
        fuzz::check(job.atoms.numbers.empty(), "a failure leaves the result untouched");
        return 0;
    }
    check_notices(notices, lines);
    check_ready(job, lines);
    return 0;
}
