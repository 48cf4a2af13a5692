#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <numeric>

#include "displacement_generator/control.hpp"
#include "displacement_generator/run.hpp"
#include "harness.hpp"

using namespace displacement_generator;

// A whole run in a scratch folder. The input is a control file, a line "=====" and a Gaussian input; without that line
// its bytes choose settings and place atoms, many of them by symmetry. Everything that the run leaves is read back and
// compared with what follows from the input, computed here in other ways.

namespace {

namespace fs = std::filesystem;

constexpr std::string_view work_dir = "PES-0";
constexpr std::string_view make_work_dir = "/bin/mkdir -p PES-0";
constexpr double tol = 0.001F;
constexpr std::size_t most_atoms = 16;

int folders_made = 0;

}  // namespace

/// In place of a shell, which would take longer than all the rest.
extern "C" int system(const char* command) {
    fuzz::check(command == make_work_dir, "the shell is given the command");
    ++folders_made;
    ::mkdir(work_dir.data(), 0777);
    return 0;
}

namespace {

/// A folder for all runs; each leaves it empty. In between the fuzzer has its own current folder back.
class scratch {
  public:
    scratch() : before_(::open(".", O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
        std::string name = (fs::temp_directory_path() / "displacement-fuzz-XXXXXX").string();
        fuzz::check(::mkdtemp(name.data()) != nullptr, "a scratch folder can be made");
        path_ = name;
        folder_ = ::open(name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    }
    ~scratch() {
        std::error_code ignored;
        fs::remove_all(path_, ignored);
    }
    scratch(const scratch&) = delete;
    scratch& operator=(const scratch&) = delete;

    void enter() const { fuzz::check(::fchdir(folder_) == 0, "the scratch folder can be entered"); }
    void leave() const { fuzz::check(::fchdir(before_) == 0, "the scratch folder can be left"); }

  private:
    int before_;
    int folder_ = -1;
    fs::path path_;
};

void write_file(const fs::path& name, std::string_view bytes) {
    std::ofstream(name, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

std::string read_file(const fs::path& name) {
    std::ifstream input(name, std::ios::binary);
    return {std::istreambuf_iterator<char>(input), std::istreambuf_iterator<char>()};
}

/// Everything in the working directory, which is empty afterwards.
std::map<std::string, std::string> take_outputs() {
    std::map<std::string, std::string> outputs;
    std::error_code missing;
    for (const auto& entry : fs::directory_iterator(work_dir, missing)) {
        outputs[entry.path().filename().string()] = read_file(entry.path());
    }
    for (const auto& [name, bytes] : outputs) {
        fs::remove(fs::path(work_dir) / name);
    }
    return outputs;
}

// ---- Inputs

using vector = std::array<double, 3>;

struct atom {
    std::string symbol;
    vector x{};
};

constexpr std::array<vector, 8> signs = {{
    {1, 1, 1},
    {-1, -1, 1},
    {-1, 1, -1},
    {1, -1, -1},
    {-1, -1, -1},
    {1, 1, -1},
    {1, -1, 1},
    {-1, 1, 1},
}};
constexpr std::array<std::string_view, 8> names = {"E", "C2z", "C2y", "C2x", "I", "Sxy", "Szx", "Syz"};

vector turned(std::size_t operation, const vector& x) {
    return {signs[operation][0] * x[0], signs[operation][1] * x[1], signs[operation][2] * x[2]};
}

/// A coordinate such as molecules have, or one that is the tolerance or a hair more or less away from it.
double drawn_coordinate(fuzz::draw& values) {
    constexpr std::array<double, 8> places = {0.0, 0.5, 1.0, -0.75, 1.25, 2.0, -1.0, 0.0625};
    constexpr std::array<double, 8> shifts = {0.0, 0.0, 0.0, 0.0, 1e-6, 5e-4, tol, -0.0010000000474974515};
    const std::uint8_t choice = values.byte();
    return places[choice & 7] + shifts[choice >> 3 & 7] * ((choice & 64) != 0 ? 0.5 : 1.0);
}

std::string written(const atom& a) {
    return a.symbol + " " + fuzz::in_full(a.x[0]) + " " + fuzz::in_full(a.x[1]) + " " + fuzz::in_full(a.x[2]) + "\n";
}

/// A molecule of drawn atoms and of the images of some of them under drawn operations.
std::string drawn_molecule(fuzz::draw& values) {
    constexpr std::array<std::string_view, 8> symbols = {"H", "C", "O", "Cl", "Xx", "D", "h", "Be"};
    std::string text = "#p test\n\ntitle\n\n0 1\n";
    std::array<std::size_t, 3> operations = {};
    for (std::size_t& operation : operations) {
        operation = values.below(8);
    }
    std::size_t natom = 0;
    while (!values.empty() && natom < most_atoms) {
        const std::uint8_t choice = values.byte();
        std::vector<atom> atoms(1);
        atoms[0].symbol = symbols[choice & 7];
        for (double& x : atoms[0].x) {
            x = drawn_coordinate(values);
        }
        for (std::size_t k = 0; k < operations.size(); ++k) {
            if ((choice >> (3 + k) & 1) != 0) {
                for (std::size_t n = atoms.size(); n > 0; --n) {
                    atoms.push_back({atoms[n - 1].symbol, turned(operations[k], atoms[n - 1].x)});
                }
            }
        }
        for (auto a = atoms.begin(); a != atoms.end(); ++a) {
            const bool is_new = std::none_of(atoms.begin(), a, [&](const atom& other) { return other.x == a->x; });
            if (natom < most_atoms && is_new) {
                text += written(*a);
                ++natom;
            }
        }
    }
    return text + ((natom & 1) != 0 ? "" : "\n1 2 1.0\n\n");
}

std::string drawn_control(fuzz::draw& values) {
    constexpr std::array<std::string_view, 8> steps = {
        "", "dx = 0.01", "dx = -0.002", "dx = 0", "dx = 1234.5", "dx = 1d-9", "dx = 0.005", "dx=,"};
    const std::uint8_t choice = values.byte();
    std::string text = "&control ";
    text += (choice & 1) != 0 ? "std_orient = F " : "";
    text += (choice & 6) == 6 ? "symm = F " : "";
    text += (choice & 8) != 0 ? "disp_sign = 1 " : "";
    text += steps[choice >> 4 & 7];
    return text + "/\n";
}

/// What the run is expected to find in its input.
struct expectation {
    generator::control settings;
    std::vector<std::string> head;  ///< the lines up to the charge line, as they are copied
    std::vector<std::string> tail;  ///< the lines behind the atoms
    std::vector<atom> atoms;
};

/// Where the sections of the input lie; empty where one is missing.
std::optional<expectation> expected_sections(std::string_view input) {
    const std::vector<std::string> lines = fuzz::records(input);
    const auto is_blank = [&](std::size_t i) { return fuzz::cut(lines[i], 200).empty(); };
    const auto blank_from = [&](std::size_t i) {
        while (i < lines.size() && !is_blank(i)) {
            ++i;
        }
        return i;
    };
    std::size_t route = lines.size();
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const std::string line = fuzz::cut(lines[i], 200);
        const std::size_t first = line.find_first_not_of(' ');
        route = first != std::string::npos && line[first] == '#' ? i : route;
    }
    const std::size_t charge = blank_from(blank_from(route) + 2) + 1;
    if (charge >= lines.size()) {
        return std::nullopt;
    }
    expectation expected;
    const std::size_t behind = blank_from(charge + 1);
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (i <= charge) {
            expected.head.push_back(fuzz::cut(lines[i], 500));
        } else if (i >= behind) {
            expected.tail.push_back(fuzz::cut(lines[i], 500));
        } else {
            expected.atoms.push_back({fuzz::cut(lines[i], 200), {}});
        }
    }
    return expected;
}

/// The symbol and the coordinates in place of each atom line. Result: whether every line has them.
bool read_atoms(std::vector<atom>& atoms) {
    for (atom& a : atoms) {
        const std::vector<fuzz::field> found = fuzz::fields(a.symbol);
        if (found.size() < 4 || !found[0] || found[0]->find_first_of("'\"") == 0) {
            return false;
        }
        for (std::size_t i = 0; i < 3; ++i) {
            const std::optional<double> x = found[i + 1] ? fuzz::real(*found[i + 1]) : std::nullopt;
            if (!x || std::isinf(*x)) {
                return false;
            }
            a.x[i] = *x;
        }
        a.symbol = found[0]->substr(0, 2);
        a.symbol.resize(2, ' ');
    }
    return true;
}

// ---- Texts

/// A value of zero may have either sign: adding up the terms of a turn can change it.
bool same_column(std::string_view found, double expected) {
    return found == fuzz::in_columns(expected, 14, 8) ||
           (expected == 0.0 && found == fuzz::in_columns(-expected, 14, 8));
}

std::string right(std::string_view value, std::size_t width) {
    std::string column(value.substr(0, width));
    column.insert(0, width - column.size(), ' ');
    return column;
}

std::string right(std::size_t value, std::size_t width) { return right(std::to_string(value), width); }

std::string digits(std::size_t number, std::size_t count) {
    std::string text = std::to_string(number);
    text.insert(0, count - text.size(), '0');
    return text;
}

/// The lines of an output, one after the other.
class output {
  public:
    explicit output(const std::string& bytes) {
        fuzz::check(bytes.ends_with('\n'), "the last line of an output has its end");
        for (std::size_t begin = 0; begin < bytes.size();) {
            const std::size_t end = bytes.find('\n', begin);
            lines_.push_back(bytes.substr(begin, end - begin));
            begin = end + 1;
        }
    }

    const std::string& next() {
        fuzz::check(at_ < lines_.size(), "an output has all its lines");
        return lines_[at_++];
    }
    void expect(std::string_view line) {
        fuzz::check_equal(std::string_view(next()), line, "a line of an output is what it must be");
    }
    void expect_end() const { fuzz::check(at_ == lines_.size(), "an output ends where it must"); }

  private:
    std::vector<std::string> lines_;
    std::size_t at_ = 0;
};

// ---- Checks

/// What the list says of a run.
struct list {
    std::vector<std::string> files;
    std::string group;
    std::vector<std::size_t> operations;           ///< 0..7, in order
    std::vector<std::vector<std::size_t>> images;  ///< for each operation the image of each atom, from 0
    std::vector<bool> is_calc;
    std::vector<std::size_t> m;      ///< from 0
    std::vector<std::size_t> place;  ///< of the operation in `operations`
};

std::size_t number(std::string_view column) {
    const std::string text(column.substr(std::min(column.find_first_not_of(' '), column.size())));
    fuzz::check(!text.empty() && text.size() < 10 && text.find_first_not_of("0123456789") == std::string::npos,
                "a column of a table holds a number");
    return std::stoul(text);
}

std::string tag(const expectation& expected, std::size_t point) {
    const bool plus_first = expected.settings.disp_sign == 1;
    const std::size_t count = std::to_string(expected.atoms.size()).size();
    return digits(point / 6 + 1, count) + ((point % 2 == 0) == plus_first ? "+d" : "-d") + "xyz"[point % 6 / 2];
}

std::string reference_tag(const expectation& expected) {
    return digits(0, std::to_string(expected.atoms.size()).size()) + "-00";
}

std::string label(const expectation& expected, std::size_t operation) {
    return expected.settings.symm ? right(names[operation], 3) : "E  ";
}

void read_operations(const expectation& expected, output& text, list& found) {
    const std::string& group = text.next();
    fuzz::check(group.size() == 31 && group.starts_with("Point          group:"), "the point group has its line");
    found.group = group.substr(21 + 7);
    const std::string& count = text.next();
    fuzz::check(count.size() == 31 && count.starts_with("Number of operations:"), "the operations have their count");
    const std::map<std::string, std::size_t> orders = {{" C1", 1}, {" CS", 2}, {" C2", 2}, {"C2V", 4},
                                                       {"D2H", 8}, {" CI", 2}, {"C2H", 4}, {" D2", 4}};
    fuzz::check(orders.contains(found.group), "the point group is one of eight");
    fuzz::check_equal(number(std::string_view(count).substr(21)), orders.at(found.group),
                      "the number of operations is the order of the group");
    text.expect("Operation     matrix:");
    for (std::size_t operation = 0;;) {
        const std::string& head = text.next();
        if (head == "Atom correspondance:") {
            return;
        }
        while (operation < 8 &&
               head != "Operation" + right(found.operations.size() + 1, 10) + right(label(expected, operation), 10)) {
            ++operation;
        }
        fuzz::check(operation < 8, "an operation has its place and its name, in ascending order");
        for (std::size_t row = 0; row < 3; ++row) {
            std::string line;
            for (std::size_t column = 0; column < 3; ++column) {
                line += fuzz::in_columns(row == column ? signs[operation][row] : 0.0, 15, 9);
            }
            text.expect(line);
        }
        found.operations.push_back(operation++);
    }
}

void read_correspondence(const expectation& expected, output& text, list& found) {
    std::string head = "       n  symbol     nat";
    for (const std::size_t operation : found.operations) {
        head += right(label(expected, operation), 8);
    }
    text.expect(head);
    const std::size_t natom = expected.atoms.size();
    found.images.assign(found.operations.size(), std::vector<std::size_t>(natom));
    std::vector<std::string> kinds;
    for (std::size_t i = 0; i < natom; ++i) {
        const std::string& line = text.next();
        fuzz::check_equal(line.size(), 24 + 8 * found.operations.size(), "a row of the correspondence has its width");
        fuzz::check_equal(line.substr(0, 16), right(i + 1, 8) + right(expected.atoms[i].symbol, 8),
                          "a row of the correspondence is about its atom");
        const std::size_t nat = number(std::string_view(line).substr(16, 8));
        kinds.push_back(nat == 0 ? expected.atoms[i].symbol : std::to_string(nat));
        for (std::size_t k = 0; k < found.operations.size(); ++k) {
            const std::size_t image = number(std::string_view(line).substr(24 + 8 * k, 8));
            fuzz::check(image >= 1 && image <= natom, "an image is an atom");
            found.images[k][i] = image - 1;
        }
    }
    for (const std::vector<std::size_t>& image : found.images) {
        for (std::size_t i = 0; i < natom; ++i) {
            fuzz::check_equal(kinds[image[i]], kinds[i], "an image is of the same kind");
        }
    }
}

void read_points(const expectation& expected, output& text, list& found) {
    const std::size_t ndisp = 6 * expected.atoms.size();
    text.expect("Total         points:" + right(ndisp, 10));
    text.expect("Calculated    points:" + right(found.files.size() - 1, 10));
    text.expect("       n      file is_calc       m num(op)      op");
    const auto row = [](std::size_t n, std::string file) {
        file.resize(8, ' ');
        return right(n, 8) + "  " + file;
    };
    text.expect(row(0, reference_tag(expected)) + "       T       0       1       E");
    std::size_t listed = 1;
    for (std::size_t n = 0; n < ndisp; ++n) {
        const std::string& line = text.next();
        fuzz::check_equal(line.size(), std::size_t{50}, "a row of the point table has its width");
        fuzz::check_equal(line.substr(0, 18), row(n + 1, tag(expected, n)),
                          "a row of the point table is about its point");
        const std::string is_calc = line.substr(18, 8);
        fuzz::check(is_calc == "       T" || is_calc == "       F", "a point is computed or not");
        found.is_calc.push_back(is_calc.back() == 'T');
        found.m.push_back(number(std::string_view(line).substr(26, 8)) - 1);
        found.place.push_back(number(std::string_view(line).substr(34, 8)) - 1);
        fuzz::check(found.m[n] < ndisp && found.place[n] < found.operations.size(), "a relation names what there is");
        fuzz::check_equal(line.substr(42), right(label(expected, found.operations[found.place[n]]), 8),
                          "an operation has its name");
        if (found.is_calc[n]) {
            fuzz::check(listed < found.files.size() && found.files[listed] == "coord-" + tag(expected, n),
                        "what is computed is listed, in order");
            ++listed;
        }
    }
    fuzz::check_equal(listed, found.files.size(), "what is listed is computed");
}

list read_list(const expectation& expected, const std::string& bytes) {
    output text(bytes);
    list found;
    text.expect("Number of atoms: " + right(expected.atoms.size(), 6));
    const std::string& count = text.next();
    fuzz::check(count.size() == 23 && count.starts_with("Number of files: "), "the list has its count of files");
    text.expect("dx=" + fuzz::in_columns(expected.settings.dx, 10, 6));
    for (std::size_t n = number(std::string_view(count).substr(17)); n > 0; --n) {
        const std::string& line = text.next();
        fuzz::check_equal(line.size(), std::size_t{30}, "a name in the list has its width");
        found.files.push_back(line.substr(line.find_first_not_of(' ')));
    }
    fuzz::check(!found.files.empty() && found.files[0] == "coord-" + reference_tag(expected),
                "the list begins with the reference geometry");
    text.expect("Begin_vesk_info");
    read_operations(expected, text, found);
    read_correspondence(expected, text, found);
    read_points(expected, text, found);
    text.expect("End_vesk_info");
    text.expect_end();
    return found;
}

/// Checks that a geometry is the input with the atoms in these places.
bool is_geometry(const expectation& expected, const std::vector<vector>& x, const std::string& bytes) {
    output text(bytes);
    for (const std::string& line : expected.head) {
        text.expect(line);
    }
    for (std::size_t i = 0; i < x.size(); ++i) {
        const std::string& line = text.next();
        fuzz::check_equal(line.size(), std::size_t{58}, "an atom line has its width");
        fuzz::check_equal(line.substr(0, 16), "   " + expected.atoms[i].symbol + std::string(11, ' '),
                          "an atom line begins with the symbol");
        for (std::size_t j = 0; j < 3; ++j) {
            if (!same_column(std::string_view(line).substr(16 + 14 * j, 14), x[i][j])) {
                return false;
            }
        }
    }
    for (const std::string& line : expected.tail) {
        text.expect(line);
    }
    text.expect("");
    text.expect_end();
    return true;
}

/// The coordinates of the input, turned by quarter turns about the axes, in every way that gives the reference
/// geometry: where columns hide digits there may be several.
std::vector<std::vector<vector>> reference_places(const expectation& expected, const std::string& bytes) {
    std::vector<std::vector<vector>> places;
    std::vector<vector> x(expected.atoms.size());
    std::array<std::size_t, 3> axes = {0, 1, 2};
    do {
        const bool even = (axes[0] + 1) % 3 == axes[1];
        for (const vector& sign : signs) {
            if ((sign[0] * sign[1] * sign[2] > 0) != even) {
                continue;  // a mirror image is no turn
            }
            for (std::size_t i = 0; i < x.size(); ++i) {
                for (std::size_t j = 0; j < 3; ++j) {
                    x[i][j] = sign[j] * expected.atoms[i].x[axes[j]];
                }
            }
            if (is_geometry(expected, x, bytes)) {
                places.push_back(x);
            }
            if (!expected.settings.symm || !expected.settings.std_orient) {
                return places;  // without a turn, which is the first
            }
        }
    } while (std::next_permutation(axes.begin(), axes.end()));
    return places;
}

double distance(const vector& a, const vector& b) {
    return std::sqrt((a[0] - b[0]) * (a[0] - b[0]) + (a[1] - b[1]) * (a[1] - b[1]) + (a[2] - b[2]) * (a[2] - b[2]));
}

/// Whether no distance is so near to the tolerance that rounding decides.
bool check_operations(const expectation& expected, const std::vector<vector>& x, const list& found) {
    constexpr double margin = 1e-7;
    bool decided = true;
    for (std::size_t operation = 0; operation < 8; ++operation) {
        bool present = true;
        for (std::size_t i = 0; i < x.size(); ++i) {
            const vector at = turned(operation, x[i]);
            bool near = false;
            for (std::size_t j = 0; j < x.size(); ++j) {
                const double d = distance(at, x[j]);
                near = near || (d <= tol - margin && expected.atoms[i].symbol == expected.atoms[j].symbol);
                decided = decided && std::abs(d - tol) > margin;
            }
            present = present && near;
        }
        const auto place = std::find(found.operations.begin(), found.operations.end(), operation);
        fuzz::check(!present || place != found.operations.end(), "no operation is missed");
        if (place != found.operations.end()) {
            const std::vector<std::size_t>& image =
                found.images[static_cast<std::size_t>(place - found.operations.begin())];
            for (std::size_t i = 0; i < x.size(); ++i) {
                fuzz::check(distance(turned(operation, x[i]), x[image[i]]) <= tol * (1.0 + 1e-12),
                            "an image lies where the operation carries its atom");
            }
        }
    }
    return decided;
}

/// The place of the product of two operations, or their number where it is not present.
std::size_t product(const list& found, std::size_t a, std::size_t b) {
    const vector both = turned(found.operations[a], signs[found.operations[b]]);
    for (std::size_t k = 0; k < found.operations.size(); ++k) {
        if (signs[found.operations[k]] == both) {
            return k;
        }
    }
    return found.operations.size();
}

/// Whether the operations are a group, and their correspondence one of permutations that multiply as they do.
bool is_group(const list& found) {
    for (std::size_t a = 0; a < found.operations.size(); ++a) {
        for (std::size_t b = 0; b < found.operations.size(); ++b) {
            const std::size_t ab = product(found, a, b);
            if (ab == found.operations.size()) {
                return false;
            }
            for (std::size_t i = 0; i < found.images[a].size(); ++i) {
                if (found.images[a][found.images[b][i]] != found.images[ab][i]) {
                    return false;
                }
            }
        }
    }
    return true;
}

/// The operations of each group in its standard orientation, or in any.
void check_group(const expectation& expected, const list& found) {
    const auto has = [&](std::size_t operation) {
        return std::find(found.operations.begin(), found.operations.end(), operation) != found.operations.end();
    };
    const bool mirror = has(5) || has(6) || has(7);
    const std::size_t order = found.operations.size();
    const std::string group = order == 1   ? " C1"
                              : order == 8 ? "D2H"
                              : order == 2 ? (has(4)   ? " CI"
                                              : mirror ? " CS"
                                                       : " C2")
                              : has(4)     ? "C2H"
                              : mirror     ? "C2V"
                                           : " D2";
    fuzz::check_equal(found.group, group, "the group is that of its operations");
    if (expected.settings.std_orient) {
        fuzz::check(group != " CS" || has(5), "the mirror of Cs is xy");
        fuzz::check((group != " C2" && group != "C2V" && group != "C2H") || has(1), "the axis is z");
    }
}

/// What an operation makes of a point, given where it carries the atom.
std::size_t carried(std::size_t operation, std::size_t atom_image, std::size_t point) {
    const std::size_t j = point % 6 / 2;
    return 6 * atom_image + 2 * j + (signs[operation][j] > 0 ? point % 2 : 1 - point % 2);
}

void check_relations(const list& found, bool group) {
    const std::size_t ndisp = found.is_calc.size();
    std::vector<std::size_t> orbit(ndisp);
    std::iota(orbit.begin(), orbit.end(), std::size_t{0});
    for (std::size_t n = 0; n < ndisp; ++n) {
        const std::size_t m = found.m[n];
        const std::size_t k = found.place[n];
        fuzz::check(found.is_calc[m], "a point follows from one that is computed");
        fuzz::check(found.is_calc[n] ? m == n && k == 0 : m < n && k > 0,
                    "a point is computed or follows from another");
        if (!found.is_calc[n]) {
            fuzz::check_equal(found.images[k][n / 6], m / 6, "a point follows from one of the atom's image");
            fuzz::check_equal(carried(found.operations[k], n / 6, m), n,
                              "the operation carries the step onto the step");
        }
        for (std::size_t g = 0; g < found.operations.size(); ++g) {
            const std::size_t other = carried(found.operations[g], found.images[g][n / 6], n);
            const std::size_t keep = std::min(orbit[n], orbit[other]);
            const std::size_t drop = std::max(orbit[n], orbit[other]);
            std::replace(orbit.begin(), orbit.end(), drop, keep);
        }
    }
    if (group) {
        std::size_t orbits = 0;
        for (std::size_t n = 0; n < ndisp; ++n) {
            orbits += orbit[n] == n ? std::size_t{1} : std::size_t{0};
        }
        fuzz::check_equal(found.files.size() - 1, orbits, "one point of each orbit is computed");
    }
}

void check_outputs(const expectation& expected, const std::map<std::string, std::string>& outputs) {
    fuzz::check(outputs.contains("files.out"), "there is a list");
    const list found = read_list(expected, outputs.at("files.out"));
    fuzz::check_equal(outputs.size(), found.files.size() + 1, "nothing is there but what is listed");
    for (const std::string& name : found.files) {
        fuzz::check(outputs.contains(name + ".com"), "what is listed is there");
    }
    const std::string& reference = outputs.at(found.files[0] + ".com");
    std::vector<std::vector<vector>> places = reference_places(expected, reference);
    fuzz::check(!places.empty(), "the reference geometry is the input, turned by quarter turns");
    std::size_t listed = 1;
    for (std::size_t n = 0; n < found.is_calc.size(); ++n) {
        if (found.is_calc[n]) {
            const std::string& displaced = outputs.at(found.files[listed++] + ".com");
            std::erase_if(places, [&](std::vector<vector> x) {
                x[n / 6][n % 6 / 2] += n % 2 == 0 ? -expected.settings.dx : expected.settings.dx;
                return !is_geometry(expected, x, displaced);
            });
            fuzz::check(!places.empty(), "a displaced geometry has one coordinate moved by one step");
        }
    }
    const bool group = is_group(found);
    check_relations(found, group);
    if (expected.settings.symm) {
        const bool hidden = std::any_of(expected.atoms.begin(), expected.atoms.end(), [](const atom& a) {
            return std::any_of(a.x.begin(), a.x.end(), [](double x) { return std::abs(x) > 1e4; });
        });
        if (!hidden && check_operations(expected, places.front(), found) && group) {
            check_group(expected, found);
        }
    } else {
        fuzz::check(found.operations.size() == 1 && found.group == " C1", "without symmetry there is the identity");
        fuzz::check_equal(found.files.size(), 6 * expected.atoms.size() + 1,
                          "without symmetry every point is computed");
    }
}

void check_run(const std::string& control_file, const std::string& input) {
    std::optional<expectation> expected = expected_sections(input);
    if (expected && expected->atoms.size() > most_atoms) {
        return;  // larger molecules take longer and show no more
    }
    const bool readable = expected && read_atoms(expected->atoms);
    generator::control settings;
    write_file("control", control_file);
    if (fuzz::stopped([&] { settings = generator::read_control("control"); })) {
        return;
    }
    settings.fxyz = "mol.gjf";
    write_file("mol.gjf", input);
    folders_made = 0;
    const auto error = fuzz::stopped([&] { generator::run(settings); });
    const std::map<std::string, std::string> outputs = take_outputs();
    if (error) {
        fuzz::checked_line(*error, "mol.gjf", 1, std::max(static_cast<int>(fuzz::records(input).size()), 1));
        fuzz::check(!readable, "an input that can be read gives a run");
        fuzz::check(outputs.empty() && folders_made == 0, "an input that cannot be read leaves no trace");
    } else if (readable) {
        expected->settings = settings;
        fuzz::check_equal(folders_made, 1, "the working directory is made once");
        check_outputs(*expected, outputs);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const scratch folder;
    const std::string bytes(data, data + size);
    constexpr std::string_view border = "=====\n";
    const std::size_t at = bytes.find(border);
    folder.enter();
    if (at != std::string::npos) {
        check_run(bytes.substr(0, at), bytes.substr(at + border.size()));
    } else {
        fuzz::draw values(bytes);
        const std::string control_file = drawn_control(values);
        check_run(control_file, drawn_molecule(values));
    }
    folder.leave();
    return 0;
}
