#include <algorithm>
#include <array>
#include <cmath>

#include "file/file.hpp"
#include "gjf/gjf.hpp"
#include "harness.hpp"

using namespace displacement_generator;

// The input is a Gaussian input. Its sections, symbols and coordinates are found by the program and, here, by hand.

namespace {

constexpr std::size_t section_length = 200;
constexpr int untouched = -77;

struct sections {
    int route = 0;
    int title = 0;
    int charge = 0;
    int natom = -1;  ///< -1 without an atom section
};

int blank_behind(const std::vector<std::string>& lines, int line) {
    const auto begin = lines.begin() + std::min(line, static_cast<int>(lines.size()));
    const auto blank = std::find(begin, lines.end(), "");
    return blank == lines.end() ? 0 : static_cast<int>(blank - lines.begin()) + 1;
}

sections find_by_hand(const std::vector<std::string>& lines) {
    const int nline = static_cast<int>(lines.size());
    sections found;
    for (int i = 1; i <= nline; ++i) {
        const std::string& line = lines[static_cast<std::size_t>(i - 1)];
        const std::size_t first = line.find_first_not_of(' ');
        found.route = first != std::string::npos && line[first] == '#' ? i : found.route;
    }
    const int behind_route = found.route == 0 ? 0 : blank_behind(lines, found.route);
    if (behind_route == 0 || behind_route == nline) {
        return found;
    }
    found.title = behind_route + 1;
    const int behind_title = blank_behind(lines, found.title);
    if (behind_title == 0 || behind_title == nline) {
        return found;
    }
    found.charge = behind_title + 1;
    const int behind_atoms = blank_behind(lines, found.charge);
    found.natom = (behind_atoms == 0 ? nline + 1 : behind_atoms) - found.charge - 1;
    return found;
}

/// One reader of a line number: it finds what is there, or stops with a line that exists and leaves its result alone.
template <class reader>
void check_section(const reader& get, const std::string& name, int nline, int expected) {
    int found = untouched;
    const auto error = fuzz::stopped([&] { get(name, found); });
    if (expected > 0) {
        fuzz::check(!error, "a section that is there is found");
        fuzz::check_equal(found, expected, "a section is found where it is");
    } else {
        fuzz::check(error.has_value(), "a section that is missing stops the run");
        fuzz::checked_line(*error, name, 1, std::max(nline, 1));
        fuzz::check_equal(found, untouched, "a failure leaves the result alone");
    }
}

struct atom {
    std::string symbol;
    std::array<double, 3> x{};
};

/// The symbol of an atom line and what follows it.
std::optional<std::string> take_symbol(std::string_view line, std::string_view& rest) {
    const std::size_t begin = line.find_first_not_of(" \t");
    rest = begin == std::string_view::npos ? std::string_view{} : line.substr(begin);
    std::string symbol;
    std::size_t at = 0;
    if (!rest.empty() && (rest.front() == '\'' || rest.front() == '"')) {
        const char mark = rest.front();
        for (at = 1; at < rest.size(); ++at) {
            if (rest[at] == mark && !rest.substr(at + 1).starts_with(mark)) {
                break;
            }
            at += rest[at] == mark ? std::size_t{1} : std::size_t{0};
            symbol += rest[at];
        }
        if (at >= rest.size()) {
            return std::nullopt;
        }
        ++at;
    } else {
        const std::vector<fuzz::field> found = fuzz::fields(rest);
        if (found.empty() || !found[0]) {
            return std::nullopt;
        }
        symbol = *found[0];
        at = symbol.size();
    }
    rest = rest.substr(at);
    const std::size_t next = rest.find_first_not_of(" \t");
    if (next != std::string_view::npos && rest[next] == ',') {
        rest = rest.substr(next + 1);
    }
    return symbol;
}

std::optional<atom> atom_by_hand(std::string_view line) {
    atom result;
    std::string_view rest;
    const std::optional<std::string> symbol = take_symbol(line, rest);
    if (!symbol) {
        return std::nullopt;
    }
    result.symbol = *symbol;
    const std::vector<fuzz::field> found = fuzz::fields(rest);
    for (std::size_t i = 0; i < 3; ++i) {
        const std::optional<double> x = i < found.size() && found[i] ? fuzz::real(*found[i]) : std::nullopt;
        if (!x || std::isinf(*x)) {
            return std::nullopt;
        }
        result.x[i] = *x;
    }
    return result;
}

void check_coordinates(const std::string& name, const std::vector<std::string>& lines, const sections& found) {
    const base::text<2> no_symbol("?!");
    const base::array2<double> xyz("xyz", 3, found.natom);
    const base::array1<base::text<2>> symbol("symbol", 1, found.natom);
    for (int j = 1; j <= found.natom; ++j) {
        symbol(j) = no_symbol;
        for (int i = 1; i <= 3; ++i) {
            xyz(i, j) = untouched;
        }
    }
    const auto error = fuzz::stopped([&] { gjf::get_gjf_coord(name, found.natom, xyz, symbol); });
    int wrong = 0;
    for (int j = 1; j <= found.natom; ++j) {
        const std::optional<atom> expected = atom_by_hand(lines[static_cast<std::size_t>(found.charge + j - 1)]);
        if (wrong == 0 && !expected) {
            wrong = j;
            continue;
        }
        fuzz::check(symbol(j) == (wrong == 0 ? base::text<2>(std::string_view(expected->symbol)) : no_symbol),
                    "symbols are those written, up to the line that is wrong");
        for (int i = 1; i <= 3; ++i) {
            const double x = wrong == 0 ? expected->x[static_cast<std::size_t>(i - 1)] : untouched;
            fuzz::check(fuzz::same_bits(xyz(i, j), x), "coordinates are those written, up to the line that is wrong");
        }
    }
    fuzz::check(error.has_value() == (wrong != 0), "atom lines are read where they are right");
    if (error) {
        fuzz::check_equal(fuzz::checked_line(*error, name, 1, static_cast<int>(lines.size())), found.charge + wrong,
                          "the message names the first line that is wrong");
    }
}

template <std::size_t n>
void check_lines(const std::string& name, const std::vector<std::string>& expected) {
    const int nline = static_cast<int>(expected.size());
    fuzz::check_equal(file::num_file_lines(name), nline, "the lines are counted");
    const base::array1<base::text<n>> lines("lines", 1, nline);
    file::read_lines(name, nline, lines);
    for (int i = 1; i <= nline; ++i) {
        fuzz::check(lines(i) == base::text<n>(std::string_view(expected[static_cast<std::size_t>(i - 1)])),
                    "a line is read, cut or padded");
    }
    const base::array1<base::text<n>> more("lines", 1, nline + 1);
    fuzz::check(fuzz::stopped([&] { file::read_lines(name, nline + 1, more); }).has_value(),
                "a line that is not there stops the run");
}

void check_input(const std::string& bytes) {
    static const fuzz::memory_file file;
    file.set(bytes);
    const std::string& name = file.name();
    std::vector<std::string> lines = fuzz::records(bytes);
    const int nline = static_cast<int>(lines.size());
    check_lines<500>(name, lines);
    check_lines<7>(name, lines);

    for (std::string& line : lines) {
        line = fuzz::cut(line, section_length);
    }
    const sections found = find_by_hand(lines);
    check_section(gjf::get_gjf_route_linenumber, name, nline, found.route);
    check_section(gjf::get_gjf_title_linenumber, name, nline, found.title);
    check_section(gjf::get_gjf_charge_linenumber, name, nline, found.charge);
    check_section(gjf::get_gjf_atom_linenumber, name, nline, found.charge == 0 ? 0 : found.charge + 1);
    if (found.natom != 0) {
        check_section(gjf::get_gjf_natom, name, nline, found.natom);
    }
    if (found.natom >= 0) {
        int natom = untouched;
        gjf::get_gjf_natom(name, natom);
        fuzz::check_equal(natom, found.natom, "the atoms are counted");
        check_coordinates(name, lines, found);
    }
    int fid = 0;
    file::get_free_fid(fid);
    fuzz::check_equal(fid, 100, "every unit is given back");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes(data, data + size);
    check_input(bytes);
    if (size % 8 == 2) {
        // Files are read in blocks of this size: behind a line this long a block ends anywhere in the input.
        constexpr std::size_t block = 65536;
        check_input(std::string(block - 1 - fuzz::scaled(data[size / 2], std::min(size, block)), '%') + '\n' + bytes);
    }
    return 0;
}
