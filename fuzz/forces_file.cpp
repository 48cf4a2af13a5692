#include "gaussian/forces_file.hpp"

#include "gaussian/source.hpp"
#include "gaussian/xyz.hpp"
#include "harness.hpp"

using namespace displacement_generator;

// The input is a digit, the number of atoms, and a file of forces; all of it is also read as an xyz file.

namespace {

/// The words of a line, as the streams of the library part them, up to a comment.
std::vector<std::string> words(const std::string& line) {
    std::vector<std::string> result(1);
    for (const char c : line.substr(0, line.find('#'))) {
        if (c == ' ' || c == '\t') {
            if (!result.back().empty()) {
                result.emplace_back();
            }
        } else {
            result.back() += c;
        }
    }
    if (result.back().empty()) {
        result.pop_back();
    }
    return result;
}

void check_forces(const std::string& text, int atoms) {
    gaussian::source from("file", text);
    gaussian::forces_file found;
    std::vector<std::string> lines = fuzz::records(text);
    if (!lines.empty() && lines[0].starts_with("\xef\xbb\xbf")) {  // a byte order mark is no text
        lines[0].erase(0, 3);
    }
    const auto error = fuzz::stopped([&] { found = gaussian::read_forces(from, atoms); });
    if (error) {
        fuzz::check_message(*error, "file");
        if (std::string_view(error->what()).substr(5, 1) != " ") {
            fuzz::checked_line(*error, "file", 1, static_cast<int>(lines.size()));
        }
        return;
    }
    // Every word of the file is one of those that were read, in their order.
    Eigen::Index atom = 0;
    for (const std::string& line : lines) {
        const std::vector<std::string> parts = words(line);
        if (parts.empty()) {
            continue;
        }
        if (parts[0] == "energy") {
            fuzz::check(parts.size() == 2 && found.energy.has_value(), "an energy is read");
            continue;
        }
        if (parts[0] == "dipole") {
            fuzz::check(parts.size() == 4 && found.dipole.has_value(), "a dipole is read");
            continue;
        }
        fuzz::check(parts.size() == 3 && atom < found.forces.cols(), "a line of forces has three numbers");
        for (std::size_t k = 0; k < 3; ++k) {
            // A number with a sign alone before its exponent is one that the C library does not know.
            if (const auto value = fuzz::real(parts[k])) {
                fuzz::check(fuzz::same_bits(found.forces(static_cast<Eigen::Index>(k), atom), *value),
                            "the number is read as the C library reads it");
            }
        }
        ++atom;
    }
    fuzz::check(atom == atoms && found.forces.cols() == atoms && found.forces.allFinite(), "every atom has a force");
}

void check_xyz(const std::string& text) {
    gaussian::source from("file", text);
    gaussian::xyz_contents found;
    if (const auto error = fuzz::stopped([&] { found = gaussian::read_xyz(from); })) {
        fuzz::check_message(*error, "file");
        return;
    }
    const auto lines = static_cast<int>(fuzz::records(text).size());
    const auto atoms = static_cast<Eigen::Index>(found.molecule.numbers.size());
    fuzz::check(found.frames > 0 && atoms > 0 && found.line + 1 + atoms <= lines, "the last frame is in the file");
    fuzz::check(found.molecule.positions.cols() == atoms && found.molecule.positions.allFinite(),
                "every atom has a position");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(data, data + size);
    check_xyz(text);
    if (size != 0) {
        check_forces(text.substr(1), data[0] % 8);
    }
    return 0;
}
