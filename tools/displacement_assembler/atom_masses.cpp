#include "analysis.hpp"
#include "base/error.hpp"
#include "element/atomic_masses.hpp"

namespace displacement_generator::assembler {

Eigen::VectorXd atom_masses(const options& asked, const std::vector<int>& numbers) {
    Eigen::VectorXd masses(static_cast<Eigen::Index>(numbers.size()));
    for (Eigen::Index i = 0; i < masses.size(); ++i) {
        const int number = numbers[static_cast<std::size_t>(i)];
        masses(i) = asked.average_masses ? element::atomic_weight(number) : element::main_isotope(number).mass;
    }
    for (const atom_mass& one : asked.atom_masses) {
        if (one.atom > masses.size()) {
            throw base::run_error("command line: --mass: expected an atom from 1 to " + std::to_string(masses.size()) +
                                  ", found " + std::to_string(one.atom));
        }
        masses(one.atom - 1) = one.mass;
    }
    return masses;
}

}  // namespace displacement_generator::assembler
