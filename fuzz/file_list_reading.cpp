#include "displacement_assembler/displacement_list.hpp"
#include "harness.hpp"

using namespace displacement_generator;

// The input is a list, as the generator writes it. What is read must be a whole list: forces of all points follow from
// it.

namespace {

void check_list(const assembler::displacement_list& list) {
    const std::size_t natom = list.numbers.size();
    const auto points = static_cast<Eigen::Index>(6 * natom);
    fuzz::check(natom > 0 && list.symbols.size() == natom, "every atom has a symbol and a number");
    fuzz::check(list.relations.sources.size() == points, "every point has a source");
    std::size_t computed = 0;
    for (Eigen::Index p = 0; p < points; ++p) {
        computed += list.relations.sources(p) == p ? 1U : 0U;
    }
    fuzz::check(list.files.size() == computed + 1, "every computed point has a file");
    for (std::size_t i = 1; i < list.files.size(); ++i) {
        fuzz::check(list.relations.sources(list.files[i].point) == list.files[i].point,
                    "a file is of a computed point");
    }
    constexpr std::size_t few = 60;
    if (natom > few) {
        return;
    }
    Eigen::MatrixXd forces = Eigen::MatrixXd::Ones(points / 2, points);
    Eigen::VectorXd steps(points);
    for (Eigen::Index p = 0; p < points; ++p) {
        steps(p) = p % 2 == 0 ? -1.0 : 1.0;
    }
    const Eigen::VectorXd expected = steps;
    vibration::rebuild_forces(list.relations, forces, steps);
    fuzz::check(steps == expected, "odd points lower and even points raise");
    fuzz::check(forces.cwiseAbs() == Eigen::MatrixXd::Ones(points / 2, points), "operations change signs alone");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(data, data + size);
    assembler::displacement_list list;
    gaussian::source from("list", text);
    const auto error = fuzz::stopped([&] { list = assembler::read_list(from); });
    if (error) {
        fuzz::check_message(*error, "list");
        fuzz::checked_line(*error, "list", 1, static_cast<int>(fuzz::records(text).size()) + 1);
        return 0;
    }
    check_list(list);
    return 0;
}
