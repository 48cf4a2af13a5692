#include "run.hpp"

#include <cmath>
#include <string>
#include <utility>

#include "base/error.hpp"
#include "check_prepared.hpp"
#include "companion/program.hpp"
#include "frame/frame.hpp"
#include "gaussian/fields.hpp"
#include "gaussian/ready_input.hpp"
#include "prepared_file.hpp"
#include "report.hpp"
#include "source_molecule.hpp"

namespace displacement_generator::preparer {

namespace {

/// The number of 8 decimals next to a coordinate, as an input is written with them.
double printed(double coordinate) {
    constexpr double decimals = 1e8;
    return std::round(coordinate * decimals) / decimals + 0.0;  // no -0
}

/// The molecule as it is, for what is fixed in space.
frame::frame_result untouched(const gaussian::molecule& atoms) {
    frame::frame_result result;
    result.positions = atoms.positions.unaryExpr(&printed);
    result.rotation.setIdentity();
    result.shift.setZero();
    result.largest_move = (result.positions - atoms.positions).colwise().norm().maxCoeff();
    const frame::displacement_count count = frame::count_displacements(atoms.numbers, result.positions);
    result.group = count.group;
    result.computed = count.computed;
    return result;
}

frame::frame_result framed(const options& asked, source_molecule& found) {
    const gaussian::molecule& atoms = found.ready.atoms;
    if (!found.ready.fixed_in_space.empty()) {
        std::string text = gaussian::quoted(found.ready.fixed_in_space);
        text +=
            " is fixed in space: the molecule is neither moved nor turned. Set symm = F in the generator's control "
            "file";
        if (frame::keep_frame(atoms.numbers, atoms.positions, frame::least_tolerance).exact) {
            text += "; std_orient = F is enough if what is fixed in space has the molecule's symmetry";
        }
        found.notices.push_back({0, std::move(text)});
        return untouched(atoms);
    }
    frame::frame_result result = asked.keep_frame ? frame::keep_frame(atoms.numbers, atoms.positions, asked.tolerance)
                                                  : frame::prepare(atoms.numbers, atoms.positions, asked.tolerance);
    if (!result.exact) {
        found.notices.push_back({0,
                                 "the generator finds symmetry that holds to its own tolerance of 0.001 angstrom, "
                                 "but not to --tolerance: give a larger one"});
    }
    return result;
}

/// Messages about the molecule as a whole name its source.
template <class work>
auto of_source(const source_molecule& found, work&& what) {
    try {
        return what();
    } catch (const base::run_error& error) {
        throw base::run_error(found.name + ": " + error.what());
    }
}

}  // namespace

prepared prepare(const options& asked) {
    source_molecule found = read_source(asked);
    const frame::displacement_count written =
        frame::count_displacements(found.ready.atoms.numbers, found.ready.atoms.positions);
    const frame::frame_result now = of_source(found, [&] { return framed(asked, found); });
    found.ready.atoms.positions = now.positions;
    prepared result;
    result.text = of_source(found, [&] { return gaussian::write_input(found.ready); });
    result.report = report(found, written, now);
    result.source = found.file;
    result.atoms = found.ready.atoms;
    result.count = {now.group, now.computed};
    return result;
}

void run(const options& asked) {
    const prepared result = prepare(asked);
    prepared_file output(asked.output, result.source);
    output.write(result.text);
    check_prepared(output.temporary(), result.atoms, result.count);
    companion::print_to_standard_error(result.report);  // first: an OUTPUT whose notices nobody saw is none
    output.put_in_place(result.text);
}

}  // namespace displacement_generator::preparer
