#include <array>
#include <cstdio>

#include "analysis.hpp"
#include "gaussian/symbols.hpp"

namespace displacement_generator::assembler {

namespace {

void append_vector(std::string& text, const Eigen::Vector3d& vector) {
    std::array<char, 128> row{};
    static_cast<void>(std::snprintf(row.data(), row.size(), "%16.9f%16.9f%16.9f\n", vector(0), vector(1), vector(2)));
    text += row.data();
}

void append_values(std::string& text, const Eigen::VectorXd& values) {
    std::array<char, 64> row{};
    for (const double value : values) {
        static_cast<void>(std::snprintf(row.data(), row.size(), "%14.4f\n", value));
        text += row.data();
    }
}

}  // namespace

std::string molden_text(const displacement_list& list, const analysis& made) {
    std::string atoms = "[Atoms] AU\n";
    std::string coordinates = "[FR-COORD]\n";
    std::array<char, 64> label{};
    for (std::size_t i = 0; i < list.numbers.size(); ++i) {
        const std::string symbol(gaussian::symbol_of(list.numbers[i]));
        const auto column = static_cast<Eigen::Index>(i);
        static_cast<void>(
            std::snprintf(label.data(), label.size(), "%-2s%7zu%5d", symbol.c_str(), i + 1, list.numbers[i]));
        atoms += label.data();
        append_vector(atoms, made.positions.col(column));
        static_cast<void>(std::snprintf(label.data(), label.size(), "%-2s", symbol.c_str()));
        coordinates += label.data();
        append_vector(coordinates, made.positions.col(column));
    }
    std::string text = "[Molden Format]\n" + atoms + "[FREQ]\n";
    append_values(text, made.modes.frequencies);
    if (made.modes.intensities.size() != 0) {
        text += "[INT]\n";
        append_values(text, made.modes.intensities);
    }
    text += coordinates + "[FR-NORM-COORD]\n";
    for (Eigen::Index mode = 0; mode < made.modes.frequencies.size(); ++mode) {
        text += "vibration " + std::to_string(mode + 1) + "\n";
        for (Eigen::Index i = 0; i < made.positions.cols(); ++i) {
            append_vector(text, made.modes.displacements.col(mode).segment<3>(3 * i));
        }
    }
    return text;
}

}  // namespace displacement_generator::assembler
