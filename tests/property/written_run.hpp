#pragma once

#include <array>
#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "displacement_generator/control.hpp"
#include "molecules.hpp"

// A run as the one who assembles the results finds it: everything here is read back from the written files, by columns.

namespace displacement_generator::property {

using matrix3 = std::array<std::array<double, 3>, 3>;  ///< by rows

/// The info block at the end of the list.
struct info_block {
    struct operation {
        std::string name;
        matrix3 matrix{};
    };
    struct atom_row {
        std::string symbol;
        int nat = 0;
        std::vector<int> images;  ///< counted from 1, one for each operation
    };
    struct point_row {
        std::string tag;
        bool is_calc = false;
        int m = 0;
        int num_op = 0;
        std::string op;
    };

    std::string group;
    int order = 0;
    std::vector<operation> operations;
    std::vector<atom_row> atoms;
    int total = 0;
    int calculated = 0;
    std::vector<point_row> points;  ///< element 0 is the reference geometry
};

struct file_list {
    int natom = 0;
    int nfiles = 0;
    double dx = 0.0;
    std::vector<std::string> names;
    info_block info;
};

/// Reads a list. Anything that does not stand in its columns is a failure of the test that is running.
file_list read_list(const std::string& bytes);

/// The atoms of a geometry file whose atom lines begin behind `head`.
molecule read_geometry(const std::string& bytes, std::string_view head, std::size_t natom);

/// The Gaussian input of a molecule up to its atom lines.
extern const std::string_view input_head;

/// What a run leaves: the files below PES-0 and what the list says.
struct written_run {
    std::map<std::string, std::string> files;
    file_list list;

    /// The atoms in the file of a computed point, 0 for the reference geometry.
    [[nodiscard]] molecule geometry(int n) const;
};

/// Runs the program on a molecule, in a folder of its own.
///   decimals  in  of the coordinates in the input; -1 for all digits that a double has
written_run run(generator::control settings, const molecule& atoms, int decimals);

/// The coordinate that a point moves, all from 0.
struct displacement {
    std::size_t atom;
    std::size_t axis;
    std::size_t step;
};
displacement displacement_of(int n);

}  // namespace displacement_generator::property
