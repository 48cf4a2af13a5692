#pragma once

#include <array>
#include <random>
#include <string>
#include <vector>

// Molecules at random, symmetric by construction.

namespace displacement_generator::property {

using engine = std::mt19937_64;
using point = std::array<double, 3>;

struct atom {
    std::string symbol;
    point at{};
};

using molecule = std::vector<atom>;

/// What an operation does to x, y and z: each keeps its sign or changes it.
using signs = std::array<int, 3>;

/// Operations 1..8 by what they do; element 0 is not used.
extern const std::array<signs, 9> operation_signs;

point image(const signs& operation, const point& at);

/// The sixteen groups that operations 1..8 make, in every setting of their axes, each a list of operations.
const std::vector<std::vector<int>>& groups();

/// Any one of the choices.
template <class choice>
const choice& one_of(engine& random, const std::vector<choice>& choices) {
    return choices[std::uniform_int_distribution<std::size_t>(0, choices.size() - 1)(random)];
}

/// A molecule that has at least these operations. Some of its atoms lie on axes, in planes or at the origin. Any two
/// atoms are at least 0.4 apart, so that an operation is present beyond doubt or not at all; no coordinate is greater
/// than 5.
///   most_atoms  in  about the greatest number of atoms, which an orbit may exceed by 7
molecule symmetric_molecule(engine& random, const std::vector<int>& operations, std::size_t most_atoms);

/// The same of any of the groups.
molecule any_molecule(engine& random, std::size_t most_atoms);

/// Moves every coordinate by so little that every operation stays.
void shake(engine& random, molecule& atoms);

/// The operations that map the molecule onto itself, found atom by atom, and the image of each atom (from 0) under
/// each.
struct operations_found {
    std::vector<int> operations;
    std::array<std::vector<std::size_t>, 9> images;
};
operations_found find_operations(const molecule& atoms);

/// The molecule turned by each of the 24 turns that carry the axes into one another.
std::vector<molecule> turned_every_way(const molecule& atoms);

}  // namespace displacement_generator::property
