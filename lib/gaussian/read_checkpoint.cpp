#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/error.hpp"
#include "base/free_format.hpp"
#include "gaussian/checkpoint.hpp"
#include "gaussian/constants.hpp"
#include "gaussian/symbols.hpp"
#include "gaussian/words.hpp"

namespace displacement_generator::gaussian {

namespace {

// Columns of a heading, from 0: name 40, type in column 43, "N=" in columns 47-48, then size or value.
constexpr std::size_t name_width = 40;
constexpr std::size_t type_column = 43;
constexpr std::size_t size_column = 47;
constexpr std::size_t value_column = 49;
constexpr int most_atoms = 1000000;  ///< four times what Gaussian takes

struct heading {
    std::string name;
    char type = ' ';
    bool is_array = false;
    int size = 0;
    std::string value;  ///< of what is no array
};

bool is_section_heading(std::string_view line) {
    return line.size() > value_column && line[0] != ' ' &&
           std::string_view("IRCLH").find(line[type_column]) != std::string_view::npos &&
           line.substr(name_width, type_column - name_width) == "   " && line[type_column + 1] == ' ';
}

class reading {
  public:
    explicit reading(source& from) : from_(from) {}
    checkpoint read();

  private:
    void read_top();
    bool next_heading();
    void take_section();
    void skip_values();
    bool take_whole_number(std::string_view name, int& value);
    void take_integers(std::vector<int>& values);
    template <class values_type>
    void take_reals(long long expected, values_type& values);
    void take_route();
    void take_ghosts();
    void take_vectors();
    void check_complete() const;
    [[nodiscard]] long long atoms() const;
    void check_size(char type, long long expected) const;
    /// The next value of the present section, as a word; stops the run where there is none.
    std::string_view next_value();

    source& from_;
    checkpoint found_;
    heading heading_;
    std::string_view line_;  ///< what is left of the line last taken
    int atoms_ = 0;
    bool has_charge_ = false;
    bool has_multiplicity_ = false;
};

void reading::read_top() {
    constexpr std::size_t method_column = 10;
    constexpr std::size_t basis_column = 40;
    std::string_view line;
    if (!from_.next_line(line)) {
        throw base::run_error(from_.name() + ": expected the title of a formatted checkpoint, found no text");
    }
    found_.title = without_blanks(line);
    if (!from_.next_line(line)) {
        from_.refuse("expected job type, method and basis in a second line, found no more text");
    }
    const auto part = [&](std::size_t begin, std::size_t end) {
        return std::string(without_blanks(line.substr(std::min(begin, line.size()), end - begin)));
    };
    found_.job = part(0, method_column);
    found_.method = part(method_column, basis_column);
    found_.basis = part(basis_column, line.size());
}

bool reading::next_heading() {
    while (from_.next_line(line_)) {
        if (!is_section_heading(line_)) {
            if (without_blanks(line_).empty() || line_[0] == ' ') {
                continue;  // values of a section that holds more than it should be asked for, or an empty line
            }
            from_.refuse("expected the heading of a section, found '" + base::shown(without_blanks(line_)) + "'");
        }
        heading_ = {};
        heading_.name = without_blanks(line_.substr(0, name_width));
        heading_.type = line_[type_column];
        heading_.is_array = line_.substr(size_column, 2) == "N=";
        const std::string_view value = without_blanks(line_.substr(value_column));
        if (!heading_.is_array) {
            heading_.value = value;
        } else if (base::read_integer(value, heading_.size) != base::number_status::ok || heading_.size < 0) {
            from_.refuse("expected the size of the section '" + base::shown(heading_.name) + "', found '" +
                         base::shown(value) + "'");
        }
        line_ = {};
        return true;
    }
    return false;
}

std::string_view reading::next_value() {
    std::string_view word = next_word(line_);
    while (word.empty()) {
        if (!from_.next_line(line_) || is_section_heading(line_)) {
            from_.refuse("expected " + std::to_string(heading_.size) + " values in the section '" +
                         base::shown(heading_.name) + "', found fewer");
        }
        word = next_word(line_);
    }
    return word;
}

long long reading::atoms() const {
    if (atoms_ == 0) {
        from_.refuse("expected the section 'Number of atoms' before '" + base::shown(heading_.name) + "', found none");
    }
    return atoms_;
}

void reading::check_size(char type, long long expected) const {
    if (!heading_.is_array || heading_.type != type || heading_.size != expected) {
        from_.refuse("expected the section '" + heading_.name + "' with " + std::to_string(expected) +
                     " values of type " + type + ", found " +
                     (heading_.is_array ? std::to_string(heading_.size) : "one value") + " of type " + heading_.type);
    }
}

bool reading::take_whole_number(std::string_view name, int& value) {
    if (heading_.name != name) {
        return false;
    }
    if (heading_.is_array || heading_.type != 'I' ||
        base::read_integer(heading_.value, value) != base::number_status::ok) {
        from_.refuse("expected an integer in the section '" + heading_.name + "', found '" +
                     base::shown(heading_.value) + "'");
    }
    return true;
}

void reading::take_integers(std::vector<int>& values) {
    check_size('I', atoms());
    values.clear();
    for (int i = 0; i < heading_.size; ++i) {
        const std::string_view word = next_value();
        int value = 0;
        if (base::read_integer(word, value) != base::number_status::ok) {
            from_.refuse("expected an integer in the section '" + heading_.name + "', found '" + base::shown(word) +
                         "'");
        }
        values.push_back(value);
    }
}

/// Values are gathered as they come, so that a size alone takes no memory.
template <class values_type>
void reading::take_reals(long long expected, values_type& values) {
    check_size('R', expected);
    std::vector<double> gathered;
    for (int i = 0; i < heading_.size; ++i) {
        const std::string_view word = next_value();
        double value = 0.0;
        if (!read_printed_real(word, value)) {
            from_.refuse("expected a number in the section '" + heading_.name + "', found '" + base::shown(word) + "'");
        }
        gathered.push_back(value);
    }
    constexpr auto rows = static_cast<Eigen::Index>(values_type::RowsAtCompileTime);
    const auto count = static_cast<Eigen::Index>(gathered.size());
    values = Eigen::Map<const values_type>(gathered.data(), rows > 0 ? rows : count, rows > 0 ? count / rows : 1);
}

/// Five texts of twelve characters a line; blanks at the end of a line may be lost.
void reading::take_route() {
    constexpr int texts_per_line = 5;
    constexpr std::size_t width = 60;
    constexpr std::size_t longest = 65536;
    const int lines = heading_.size / texts_per_line + (heading_.size % texts_per_line != 0 ? 1 : 0);
    std::string route;
    for (int i = 0; i < lines; ++i) {
        if (!from_.next_line(line_)) {
            from_.refuse("expected " + std::to_string(lines) + " lines of the section 'Route', found fewer");
        }
        route += line_;
        route.append(width - std::min(width, line_.size()), ' ');
        if (route.size() > longest) {
            from_.refuse("expected a route of at most " + std::to_string(longest) + " characters, found more");
        }
    }
    line_ = {};
    found_.route = without_blanks(route);
}

/// Without a nuclear charge an atom holds basis functions and nothing else.
void reading::take_ghosts() {
    Eigen::VectorXd charges;
    take_reals(atoms(), charges);
    found_.ghosts.clear();
    for (Eigen::Index i = 0; i < charges.size(); ++i) {
        if (charges(i) == 0.0) {
            found_.ghosts.push_back(static_cast<int>(i) + 1);
        }
    }
}

/// A periodic system has up to three.
void reading::take_vectors() {
    constexpr int most_numbers = 9;
    if (!heading_.is_array || heading_.size % 3 != 0 || heading_.size > most_numbers) {
        from_.refuse("expected up to three vectors in the section '" + heading_.name + "', found other values");
    }
    Eigen::Matrix3Xd vectors;
    take_reals(heading_.size, vectors);
    found_.vectors = static_cast<int>((vectors.array() != 0.0).colwise().any().count());
}

/// The lines of a section of texts can look like anything, so they are counted; those of numbers begin with a blank,
/// and are passed over on the way to the next heading.
void reading::skip_values() {
    if (!heading_.is_array || heading_.type == 'I' || heading_.type == 'R') {
        return;
    }
    const int per_line = heading_.type == 'C' ? 5 : heading_.type == 'H' ? 9 : 72;
    const int lines = heading_.size / per_line + (heading_.size % per_line != 0 ? 1 : 0);
    for (int i = 0; i < lines && from_.next_line(line_); ++i) {
    }
    line_ = {};
}

void reading::take_section() {
    const std::string& name = heading_.name;
    if (int count = 0; take_whole_number("Number of atoms", count)) {
        if (count < 1 || count > most_atoms || (atoms_ != 0 && count != atoms_)) {
            from_.refuse("expected one number of atoms from 1 to " + std::to_string(most_atoms) + ", found " +
                         std::to_string(count));
        }
        atoms_ = count;
    } else if (take_whole_number("Charge", found_.charge)) {
        has_charge_ = true;
    } else if (take_whole_number("Multiplicity", found_.multiplicity)) {
        has_multiplicity_ = true;
    } else if (name == "Atomic numbers") {
        take_integers(found_.numbers);
    } else if (name == "Nuclear charges") {
        take_ghosts();
    } else if (name == "Translation vectors") {
        take_vectors();
    } else if (name == "Total Energy") {
        double energy = 0.0;
        if (heading_.is_array || heading_.type != 'R' || !read_printed_real(heading_.value, energy)) {
            from_.refuse("expected a number in the section 'Total Energy', found '" + base::shown(heading_.value) +
                         "'");
        }
        found_.energy = energy;
    } else if (name == "Route" && heading_.is_array && heading_.type == 'C') {
        take_route();
    } else if (name == "Current cartesian coordinates") {
        take_reals(3 * atoms(), found_.coordinates);
    } else if (name == "Real atomic weights") {
        take_reals(atoms(), found_.weights);
    } else if (name == "Cartesian Gradient") {
        take_reals(3 * atoms(), found_.gradient);
    } else if (name == "Dipole Moment") {
        found_.dipole.emplace();
        take_reals(3, *found_.dipole);
    } else if (name == "Cartesian Force Constants") {
        take_reals(3 * atoms() * (3 * atoms() + 1) / 2, found_.force_constants);
    } else if (name == "Dipole Derivatives") {
        take_reals(9 * atoms(), found_.dipole_derivatives);
    } else {
        skip_values();
    }
}

void reading::check_complete() const {
    const char* missing = atoms_ == 0                      ? "Number of atoms"
                          : !has_charge_                   ? "Charge"
                          : !has_multiplicity_             ? "Multiplicity"
                          : found_.numbers.empty()         ? "Atomic numbers"
                          : found_.coordinates.cols() == 0 ? "Current cartesian coordinates"
                                                           : nullptr;
    if (missing != nullptr) {
        throw base::run_error(from_.name() + ": expected a section '" + missing + "', found none");
    }
    for (std::size_t i = 0; i < found_.numbers.size(); ++i) {
        if (found_.numbers[i] < 1 || found_.numbers[i] > largest_atomic_number) {
            throw base::run_error(from_.name() + ": expected atomic numbers from 1 to 118, found " +
                                  std::to_string(found_.numbers[i]) + " for atom " + std::to_string(i + 1));
        }
    }
}

checkpoint reading::read() {
    read_top();
    while (next_heading()) {
        take_section();
    }
    check_complete();
    return std::move(found_);
}

}  // namespace

checkpoint read_checkpoint(source& from) { return reading(from).read(); }

molecule molecule_of(const checkpoint& from) {
    molecule result;
    result.charge = from.charge;
    result.multiplicity = from.multiplicity;
    result.numbers = from.numbers;
    result.positions = from.coordinates * bohr_in_angstrom;
    return result;
}

}  // namespace displacement_generator::gaussian
