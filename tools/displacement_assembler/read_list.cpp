#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/array.hpp"
#include "base/error.hpp"
#include "base/free_format.hpp"
#include "base/text.hpp"
#include "displacement_list.hpp"
#include "element/element.hpp"
#include "gaussian/fields.hpp"
#include "gaussian/symbols.hpp"
#include "gaussian/words.hpp"
#include "symmetry/symmetry.hpp"

namespace displacement_generator::assembler {

namespace {

constexpr int operations_at_most = 8;
constexpr int most_atoms = 999999;  // six columns
constexpr std::string_view directions = "xyz";

std::string table_entry(const base::text<3>& entry) { return std::string(gaussian::without_blanks(entry.trimmed())); }

/// A chemical symbol as Gaussian takes the first word of an atom line: also an atomic number, or a symbol with a name
/// after it. Result: 0 where it is none.
int number_of_label(std::string_view label) {
    int number = 0;
    if (base::read_integer(label, number) == base::number_status::ok) {
        return number >= 1 && number <= gaussian::largest_atomic_number ? number : 0;
    }
    number = gaussian::number_of(label);
    const bool has_name = label.size() > 1 && !gaussian::is_letter(label[1]);
    return number == 0 && has_name ? gaussian::number_of(label.substr(0, 1)) : number;
}

/// The atomic number that the generator prints for a symbol.
int printed_number(std::string_view symbol) {
    const base::array1<int> nat("nat", 1, 1);
    const base::array1<base::text<2>> symbols("symbol", 1, 1);
    symbols(1) = symbol;
    nat(1) = 0;
    element::get_element_name(1, nat, symbols, "sym->nat");
    return nat(1);
}

class list_reading {
  public:
    explicit list_reading(gaussian::source& from) : from_(from) {}
    displacement_list read();

  private:
    void next_line(const std::string& expected);
    void expect_line(std::string_view text);
    void expect_end_at(std::size_t width, const std::string& what);
    [[nodiscard]] std::string_view field(std::size_t begin, std::size_t width) const;
    [[nodiscard]] int integer(std::size_t begin, std::size_t width, const std::string& what, int least, int most) const;
    void expect_integer(std::size_t begin, std::size_t width, const std::string& what, int value) const;
    [[noreturn]] void refuse(const std::string& expected, std::string_view found) const;
    int labelled_integer(std::string_view label, std::size_t width, const std::string& what, int least, int most);

    void read_head();
    void read_names();
    void read_group();
    void read_operations();
    void read_operation();
    void read_correspondence();
    void read_atom(int i);
    void read_points();
    void read_point(int n);
    void read_reference();
    void check_source(int n, bool is_computed, int m, int place);
    void check_tag(int n, std::string_view tag, bool is_computed);
    void read_end();

    gaussian::source& from_;
    displacement_list list_;
    std::string_view line_;
    int natom_ = 0;
    int nfile_ = 0;
    std::vector<bool> is_computed_;   ///< of each displacement, from 1
    std::vector<int> table_numbers_;  ///< of the operations, 1..8
    std::size_t next_file_ = 1;
    char first_sign_ = '-';  ///< in the names of the lowered coordinates
};

void list_reading::next_line(const std::string& expected) {
    if (!from_.next_line(line_)) {
        throw base::run_error(
            from_.name() + ":" + std::to_string(std::max(from_.line_number(), 1LL)) + ": expected " + expected +
            ", found the end of the list; displacement_generator did not finish, or the list was cut");
    }
}

void list_reading::refuse(const std::string& expected, std::string_view found) const {
    from_.refuse("expected " + expected + ", found '" + base::shown(found) + "'");
}

/// A field without its blanks; blanks at the end of the line may be missing.
std::string_view list_reading::field(std::size_t begin, std::size_t width) const {
    return begin >= line_.size() ? std::string_view() : gaussian::without_blanks(line_.substr(begin, width));
}

int list_reading::integer(std::size_t begin, std::size_t width, const std::string& what, int least, int most) const {
    int value = 0;
    const std::string_view text = field(begin, width);
    if (base::read_integer(text, value) != base::number_status::ok || value < least || value > most) {
        const std::string range = least == most
                                      ? std::to_string(least)
                                      : "a number from " + std::to_string(least) + " to " + std::to_string(most);
        refuse(range + " as " + what, text);
    }
    return value;
}

void list_reading::expect_integer(std::size_t begin, std::size_t width, const std::string& what, int value) const {
    static_cast<void>(integer(begin, width, what, value, value));
}

void list_reading::expect_line(std::string_view text) {
    next_line(gaussian::quoted(text));
    if (line_ != text) {
        refuse(gaussian::quoted(text), line_);
    }
}

void list_reading::expect_end_at(std::size_t width, const std::string& what) {
    if (line_.size() > width && !gaussian::without_blanks(line_.substr(width)).empty()) {
        refuse(what + " to end at column " + std::to_string(width), line_.substr(width));
    }
}

int list_reading::labelled_integer(std::string_view label, std::size_t width, const std::string& what, int least,
                                   int most) {
    next_line(gaussian::quoted(label));
    if (!line_.starts_with(label)) {
        refuse(gaussian::quoted(label), line_);
    }
    const int value = integer(label.size(), width, what, least, most);
    expect_end_at(label.size() + width, "this line");
    return value;
}

void list_reading::read_head() {
    natom_ = labelled_integer("Number of atoms: ", 6, "the number of atoms", 1, most_atoms);
    const int most_files = std::min(6 * natom_ + 1, most_atoms);
    nfile_ = labelled_integer("Number of files: ", 6, "the number of files", 1, most_files);
    constexpr std::string_view label = "dx=";
    next_line("'dx='");
    const std::string_view text = field(label.size(), 10);
    if (!line_.starts_with(label) || !gaussian::read_printed_real(text, list_.dx)) {
        refuse("'dx=' and the step", line_);
    }
    expect_end_at(label.size() + 10, "this line");
}

void list_reading::read_names() {
    constexpr std::size_t width = 30;
    for (int i = 0; i < nfile_; ++i) {
        next_line("the name of a geometry file");
        const std::string_view name = field(0, width);
        if (!name.starts_with("coord-") || name.find_first_of("/ \t") != std::string_view::npos) {
            refuse("the name of a geometry file, coord-...", line_);
        }
        expect_end_at(width, "the name");
        list_.files.push_back({std::string(name), -1});
    }
    const std::string reference = "coord-" + std::string(std::to_string(natom_).size(), '0') + "-00";
    if (list_.files.front().name != reference) {
        throw base::run_error(from_.name() + ":4: expected the name of the reference, '" + reference + "', found '" +
                              base::shown(list_.files.front().name) + "'");
    }
}

void list_reading::read_group() {
    expect_line("Begin_vesk_info");
    constexpr std::string_view label = "Point          group:";
    next_line(gaussian::quoted(label));
    const std::string_view name = field(label.size(), 10);
    int group = 0;
    for (int k = 1; k <= operations_at_most; ++k) {
        group = table_entry(symmetry::pg_name(k)) == name ? k : group;
    }
    if (!line_.starts_with(label) || group == 0) {
        refuse(gaussian::quoted(label) + " and one of the eight groups", line_);
    }
    expect_end_at(label.size() + 10, "this line");
    list_.group = name;
    const int order = symmetry::nrep(group);
    labelled_integer("Number of operations:", 10, "the order of " + list_.group, order, order);
    expect_line("Operation     matrix:");
}

/// The name line of an operation is in `line_`.
void list_reading::read_operation() {
    const int place = static_cast<int>(list_.operation_names.size()) + 1;
    expect_integer(9, 10, "the place of the operation", place);
    const std::string_view name = field(19, 10);
    expect_end_at(29, "this line");
    const int lowest = table_numbers_.empty() ? 1 : table_numbers_.back() + 1;
    int number = 0;
    for (int k = lowest; k <= operations_at_most; ++k) {
        number = table_entry(symmetry::op_name(k)) == name ? k : number;
    }
    if (number == 0 || (place == 1 && number != 1)) {
        refuse(place == 1 ? "the operation E first" : "operations in the order E, C2z, C2y, C2x, I, Sxy, Szx, Syz",
               name);
    }
    table_numbers_.push_back(number);
    list_.operation_names.emplace_back(name);
    vibration::operation operation;
    constexpr std::size_t width = 15;
    for (int row = 0; row < 3; ++row) {
        next_line("a row of a matrix");
        for (int column = 0; column < 3; ++column) {
            const std::string_view text = field(static_cast<std::size_t>(column) * width, width);
            double value = 0.0;
            const double expected = symmetry::symm_op(row + 1, column + 1, number);
            if (!gaussian::read_printed_real(text, value) || value != expected) {
                refuse(std::to_string(static_cast<int>(expected)) + " in row " + std::to_string(row + 1) + ", column " +
                           std::to_string(column + 1) + " of the matrix of " + list_.operation_names.back(),
                       text);
            }
            operation.matrix(row, column) = value;
        }
        expect_end_at(3 * width, "the row");
    }
    list_.relations.symmetry.push_back(std::move(operation));
}

void list_reading::read_operations() {
    for (;;) {
        next_line("an operation or 'Atom correspondance:'");
        if (!line_.starts_with("Operation")) {
            break;
        }
        read_operation();
    }
    if (line_ != "Atom correspondance:" || list_.operation_names.empty()) {
        refuse(list_.operation_names.empty() ? "the operation E" : "an operation or 'Atom correspondance:'", line_);
    }
}

void list_reading::read_atom(int i) {
    constexpr std::size_t width = 8;
    next_line("atom " + std::to_string(i) + " of the correspondence table");
    expect_integer(0, width, "the atom's number", i);
    const std::string_view symbol = field(width, width);
    const int number = number_of_label(symbol);
    if (number == 0) {
        refuse("a chemical symbol", symbol);
    }
    const int nat = printed_number(symbol);
    expect_integer(2 * width, width, "the atomic number of this symbol", nat);
    for (std::size_t k = 0; k < list_.operation_names.size(); ++k) {
        const int image = integer((3 + k) * width, width, "an image", 1, natom_);
        if (k == 0 && image != i) {
            refuse("atom " + std::to_string(i) + " as its own image under E", field(3 * width, width));
        }
        Eigen::VectorXi& images = list_.relations.symmetry[k].images;
        images(i - 1) = image - 1;
    }
    expect_end_at((3 + list_.operation_names.size()) * width, "the row");
    list_.symbols.emplace_back(symbol);
    list_.numbers.push_back(number);
}

void list_reading::read_correspondence() {
    constexpr std::size_t width = 8;
    next_line("the heading of the correspondence table");
    if (field(0, width) != "n" || field(width, width) != "symbol" || field(2 * width, width) != "nat") {
        refuse("the heading of the correspondence table", line_);
    }
    for (std::size_t k = 0; k < list_.operation_names.size(); ++k) {
        if (field((3 + k) * width, width) != list_.operation_names[k]) {
            refuse("the column of " + list_.operation_names[k], field((3 + k) * width, width));
        }
    }
    expect_end_at((3 + list_.operation_names.size()) * width, "the heading");
    for (vibration::operation& operation : list_.relations.symmetry) {
        operation.images.resize(natom_);
    }
    for (int i = 1; i <= natom_; ++i) {
        read_atom(i);
    }
    for (std::size_t k = 0; k < list_.operation_names.size(); ++k) {
        const Eigen::VectorXi& images = list_.relations.symmetry[k].images;
        std::vector<int> reached(static_cast<std::size_t>(natom_), 0);
        for (int i = 0; i < natom_; ++i) {
            const int image = images(i);
            if (std::exchange(reached[static_cast<std::size_t>(image)], i + 1) != 0) {
                from_.refuse("expected " + list_.operation_names[k] +
                             " to carry the atoms onto different ones, found two that go to atom " +
                             std::to_string(image + 1));
            }
            if (list_.numbers[static_cast<std::size_t>(i)] != list_.numbers[static_cast<std::size_t>(image)]) {
                from_.refuse("expected " + list_.operation_names[k] +
                             " to carry atoms onto those of the same element, found atom " + std::to_string(i + 1) +
                             " carried onto atom " + std::to_string(image + 1));
            }
        }
    }
}

/// The name that point n has is known but for its sign, which disp_sign chose.
void list_reading::check_tag(int n, std::string_view tag, bool is_computed) {
    const int atom = (n - 1) / 6 + 1;
    const char direction = directions[static_cast<std::size_t>((n - 1) % 6 / 2)];
    std::string number = std::to_string(atom);
    number.insert(0, std::to_string(natom_).size() - number.size(), '0');
    const auto name_with = [&](char sign) { return number + sign + 'd' + direction; };
    constexpr std::size_t tag_width = 8;
    if (n == 1) {
        first_sign_ = tag.find('+') == std::string_view::npos ? '-' : '+';
    }
    const char sign = (n % 2 == 1) == (first_sign_ == '-') ? '-' : '+';
    const std::string expected = name_with(sign);
    if (tag != std::string_view(expected).substr(0, tag_width)) {
        refuse("the name " + expected, tag);
    }
    if (!is_computed) {
        return;
    }
    if (next_file_ == list_.files.size() || list_.files[next_file_].name != "coord-" + expected) {
        from_.refuse("expected coord-" + expected + " as name " + std::to_string(next_file_ + 1) +
                     " at the top of the list, found " +
                     (next_file_ == list_.files.size() ? "no more names" : base::shown(list_.files[next_file_].name)));
    }
    list_.files[next_file_].point = n - 1;
    ++next_file_;
}

/// A point that is not computed follows from a computed one, whose coordinate the operation carries onto its own.
void list_reading::check_source(int n, bool is_computed, int m, int place) {
    if (is_computed) {
        if (m != n || place != 1) {
            refuse("point " + std::to_string(n) + ", which is computed, to follow from itself by E", line_);
        }
        return;
    }
    if (m == n) {
        refuse("another point than " + std::to_string(n) + ", which is not computed, as m", line_);
    }
    const vibration::operation& by = list_.relations.symmetry[static_cast<std::size_t>(place - 1)];
    const int from_axis = (m - 1) % 6 / 2;
    const int to_atom = by.images((m - 1) / 6) + 1;
    const bool turns_round = by.matrix(from_axis, from_axis) < 0.0;  // the matrices are diagonal
    const int carried = 6 * (to_atom - 1) + 2 * from_axis + ((m % 2 == 1) != turns_round ? 1 : 2);
    if (carried != n) {
        from_.refuse("expected an operation that carries point " + std::to_string(m) + " onto point " +
                     std::to_string(n) + ", found " + list_.operation_names[static_cast<std::size_t>(place - 1)] +
                     ", which carries it onto point " + std::to_string(carried));
    }
}

void list_reading::read_reference() {
    next_line("row 0 of the point table");
    expect_integer(0, 8, "the number of the point", 0);
    const std::string tag = list_.files.front().name.substr(6, 8);
    if (field(10, 8) != tag || field(18, 8) != "T" || field(42, 8) != "E") {
        refuse("the reference, " + tag + ", as row 0", line_);
    }
    expect_integer(26, 8, "m", 0);
    expect_integer(34, 8, "num(op)", 1);
    expect_end_at(50, "the row");
}

/// Columns: 1-8 n, 11-18 file, 19-26 is_calc, 27-34 m, 35-42 num(op), 43-50 op.
void list_reading::read_point(int n) {
    next_line("row " + std::to_string(n) + " of the point table");
    expect_integer(0, 8, "the number of the point", n);
    const std::string_view computed = field(18, 8);
    if (computed != "T" && computed != "F") {
        refuse("T or F as is_calc", computed);
    }
    const bool is_computed = computed == "T";
    check_tag(n, field(10, 8), is_computed);
    const int m = integer(26, 8, "m", 1, 6 * natom_);
    const int place = integer(34, 8, "num(op)", 1, static_cast<int>(list_.operation_names.size()));
    if (field(42, 8) != list_.operation_names[static_cast<std::size_t>(place - 1)]) {
        refuse(list_.operation_names[static_cast<std::size_t>(place - 1)] + " as operation " + std::to_string(place),
               field(42, 8));
    }
    expect_end_at(50, "the row");
    check_source(n, is_computed, m, place);
    is_computed_.push_back(is_computed);
    list_.relations.sources(n - 1) = m - 1;
    list_.relations.operations(n - 1) = place - 1;
}

void list_reading::read_points() {
    const int ndisp = 6 * natom_;
    labelled_integer("Total         points:", 10, "6 N", ndisp, ndisp);
    labelled_integer("Calculated    points:", 10, "the number of files less one", nfile_ - 1, nfile_ - 1);
    expect_line("       n      file is_calc       m num(op)      op");
    read_reference();
    list_.relations.sources.resize(ndisp);
    list_.relations.operations.resize(ndisp);
    is_computed_.assign(1, true);
    for (int n = 1; n <= ndisp; ++n) {
        read_point(n);
    }
    for (int n = 1; n <= ndisp; ++n) {
        const int m = list_.relations.sources(n - 1) + 1;
        if (!is_computed_[static_cast<std::size_t>(m)]) {
            from_.refuse("expected computed points as m, found point " + std::to_string(m) + " for point " +
                         std::to_string(n));
        }
    }
    if (next_file_ != list_.files.size()) {
        from_.refuse("expected a computed point for each name, found none for " +
                     base::shown(list_.files[next_file_].name));
    }
}

void list_reading::read_end() {
    expect_line("End_vesk_info");
    if (from_.next_line(line_)) {
        refuse("'End_vesk_info' as the last line", line_);
    }
}

displacement_list list_reading::read() {
    read_head();
    read_names();
    read_group();
    read_operations();
    read_correspondence();
    read_points();
    read_end();
    return std::move(list_);
}

}  // namespace

displacement_list read_list(gaussian::source& from) { return list_reading(from).read(); }

}  // namespace displacement_generator::assembler
