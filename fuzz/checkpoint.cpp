#include "gaussian/checkpoint.hpp"

#include <algorithm>
#include <cmath>

#include "gaussian/source.hpp"
#include "harness.hpp"

using namespace displacement_generator;

// The input is a formatted checkpoint; its bytes also serve as the numbers of one that is written and read back.

namespace {

/// A message names a line of the file, or the file alone where something is missing in all of it.
void check_error(const base::run_error& error, int lines) {
    fuzz::check_message(error, "fchk");
    const std::string_view message = error.what();
    if (message.substr(5, 1) != " ") {
        fuzz::checked_line(error, "fchk", 1, lines);
    }
}

void check_same(const gaussian::checkpoint& a, const gaussian::checkpoint& b) {
    fuzz::check(a.numbers == b.numbers && a.charge == b.charge && a.multiplicity == b.multiplicity,
                "the same molecule");
    fuzz::check(a.coordinates == b.coordinates, "the same coordinates");
    fuzz::check(a.gradient.cols() == b.gradient.cols() && a.gradient == b.gradient, "the same gradient");
    fuzz::check(a.weights.size() == b.weights.size() && a.weights == b.weights, "the same weights");
    fuzz::check(a.force_constants.size() == b.force_constants.size() && a.force_constants == b.force_constants,
                "the same force constants");
    fuzz::check(
        a.dipole_derivatives.cols() == b.dipole_derivatives.cols() && a.dipole_derivatives == b.dipole_derivatives,
        "the same dipole derivatives");
    fuzz::check(a.energy == b.energy && a.dipole == b.dipole, "the same energy and dipole");
}

gaussian::checkpoint written_and_read(const gaussian::checkpoint& what) {
    gaussian::source from("fchk", gaussian::checkpoint_text(what));
    return gaussian::read_checkpoint(from);
}

/// Written with the digits of its fields, a checkpoint comes back; once more, it comes back as it was.
void check_written(std::string_view bytes) {
    fuzz::draw values(bytes);
    gaussian::checkpoint what;
    const std::size_t atoms = 1 + values.below(4);
    const auto count = static_cast<Eigen::Index>(atoms);
    what.numbers.assign(atoms, static_cast<int>(1 + values.below(118)));
    what.charge = values.integer();
    what.multiplicity = 1 + static_cast<int>(values.below(5));
    const auto any = [&](Eigen::Index) {
        const double value = values.finite();
        return value > 1e300 || value < -1e300 ? 0.0 : value;  // rounded to nine digits the largest are not finite
    };
    what.coordinates = Eigen::Matrix3Xd::NullaryExpr(3, count, any);
    what.gradient = Eigen::Matrix3Xd::NullaryExpr(3, count, any);
    what.force_constants = Eigen::VectorXd::NullaryExpr(3 * count * (3 * count + 1) / 2, any);
    what.energy = any(0);
    const gaussian::checkpoint once = written_and_read(what);
    fuzz::check(once.numbers == what.numbers && once.charge == what.charge, "the same molecule");
    for (Eigen::Index i = 0; i < what.coordinates.size(); ++i) {
        const double value = what.coordinates.data()[i];
        const double found = once.coordinates.data()[i];
        fuzz::check(std::abs(found - value) <= std::abs(value) * 5.1e-9 + 1e-320, "nine digits come back");
    }
    check_same(once, written_and_read(once));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(data, data + size);
    gaussian::source from("fchk", text);
    gaussian::checkpoint found;
    if (const auto error = fuzz::stopped([&] { found = gaussian::read_checkpoint(from); })) {
        check_error(*error, static_cast<int>(fuzz::records(text).size()));
    } else {
        const auto atoms = static_cast<Eigen::Index>(found.numbers.size());
        fuzz::check(atoms > 0 && found.coordinates.cols() == atoms && found.coordinates.allFinite(),
                    "every atom has coordinates");
        // Nine digits of any number stay finite where the number is not among the very largest.
        if (found.coordinates.cwiseAbs().maxCoeff() < 1e300) {
            found.gradient.resize(3, 0);
            found.weights.resize(0);
            found.force_constants.resize(0);
            found.dipole_derivatives.resize(3, 0);
            found.energy.reset();
            found.dipole.reset();
            const gaussian::checkpoint once = written_and_read(found);
            fuzz::check(
                once.numbers == found.numbers && once.charge == found.charge && once.multiplicity == found.multiplicity,
                "what is read can be written");
            check_same(once, written_and_read(once));
        }
    }
    if (size % 4 == 1) {
        check_written(text);
    }
    return 0;
}
