#include "gaussian/read_molecule.hpp"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "base/error.hpp"
#include "base/free_format.hpp"
#include "gaussian/atom_label.hpp"
#include "gaussian/fields.hpp"
#include "gaussian/z_matrix.hpp"

namespace displacement_generator::gaussian {

namespace {

/// A number of an atom's line: as written, or a name with a sign before it.
struct quantity {
    double value = 0.0;
    std::string name;  ///< in small letters; empty: a number
};

/// An atom's line as written.
struct written_atom {
    z_line line;
    atom_label label;
    std::array<quantity, 3> quantities;
};

using values_by_name = std::unordered_map<std::string, double>;

/// What was dropped and how often; each kind makes one notice, with the line where it came first.
struct dropped {
    std::string_view what;
    int line = 0;
    int count = 0;

    void add(int at) {
        line = count == 0 ? at : line;
        ++count;
    }
    void tell(std::vector<notice>& notices) const {
        if (count > 0) {
            std::string text = std::string(what) + " dropped";
            if (count > 1) {
                text += ", here and in " + std::to_string(count - 1) + (count == 2 ? " more line" : " more lines");
            }
            notices.push_back({line, std::move(text)});
        }
    }
};

struct reader {
    cursor& here;
    const input_units units;
    input& job;
    std::vector<written_atom> atoms;
    std::unordered_map<std::string, int> labels;  ///< numbers of the atoms; 0: of several
    values_by_name values;
    bool has_values_heading = false;
    bool are_constants = false;  ///< the values that are being read
    int first_fixed_line = 0;    ///< of the first value that is not optimised; 0: none
    std::string first_fixed{};   ///< that line

    dropped names{"label of an atom"};
    dropped types{"molecular-mechanics type of an atom"};
    dropped fragments{"fragment of an atom"};
    dropped residues{"residue of an atom"};
    dropped moments{"nuclear moment of an atom"};
    dropped frozen{"freeze code of an atom"};
    dropped extras{"what stands after the value of a variable"};

    [[nodiscard]] std::string place() const { return place_of(job.name, here.line().number); }
    [[noreturn]] void stop(const std::string& what) const { throw base::run_error(place() + ": " + what); }
};

bool is_name(std::string_view field) { return !field.empty() && (is_letter(field.front()) || field.front() == '_'); }

bool is_layer(std::string_view field) { return is_one_of(field, {"h", "m", "l", "high", "medium", "low"}); }

bool is_constants_heading(std::string_view text) { return is_one_of(text, {"constants:", "constants"}); }

bool is_values_heading(std::string_view text) {
    return is_one_of(text, {"variables:", "variables"}) || is_constants_heading(text);
}

/// Whether an integer is one of zeros only.
bool is_zero(std::string_view field) { return field.find_first_of("123456789") == std::string_view::npos; }

double real_of(const reader& in, std::string_view field) {
    double value = 0.0;
    switch (base::read_real(field, value)) {
        case base::number_status::ok:
            return value;
        case base::number_status::out_of_range:
            in.stop("expected a number within the range of double precision, found '" + base::shown(field) + "'");
        case base::number_status::not_a_number:
            break;
    }
    in.stop(field.empty() ? std::string("expected a number, found nothing between two commas")
                          : "expected a number or the name of one, found '" + base::shown(field) + "'");
}

quantity quantity_of(const reader& in, std::string_view field) {
    const bool has_sign = !field.empty() && (field.front() == '-' || field.front() == '+');
    const std::string_view name = has_sign ? field.substr(1) : field;
    if (is_name(name)) {
        return {field.front() == '-' ? -1.0 : 1.0, lower(name)};
    }
    return {real_of(in, field), {}};
}

/// The number of the earlier atom that a field of a Z-matrix refers to.
int reference_of(const reader& in, std::string_view field) {
    int number = 0;
    if (is_integer(field) && base::read_integer(field, number) == base::number_status::ok) {
        return number;
    }
    const auto found = in.labels.find(lower(field));
    if (found == in.labels.end()) {
        in.stop("expected the number or the label of an earlier atom, found '" + base::shown(field) + "'");
    }
    if (found->second == 0) {
        in.stop("expected the number of an earlier atom, found '" + base::shown(field) +
                "', the label of more than one");
    }
    return found->second;
}

void refuse_decimal_comma(const reader& in) {
    if (const std::string_view word = decimal_comma(in.here.line().text); !word.empty()) {
        in.stop("expected a decimal point, found a comma in '" + base::shown(word) + "'");
    }
}

/// Whether the fields behind a label are Cartesian coordinates with a freeze code.
bool has_freeze_code(const std::vector<std::string_view>& fields) {
    return fields.size() >= 5 && is_integer(fields[1]) && (fields[1].front() == '-' || is_zero(fields[1])) &&
           !is_layer(fields[4]);
}

/// Whether the fields of a line are Cartesian coordinates, and not references, distances and angles.
bool is_cartesian(const std::vector<std::string_view>& fields) {
    const std::size_t count = fields.size() - 1;
    if (count == 3 || has_freeze_code(fields)) {
        return true;
    }
    if (count < 3) {
        return false;
    }
    const bool may_refer = is_integer(fields[1]) || is_name(fields[1]);
    return !may_refer || is_layer(fields[4]);
}

void read_cartesian(reader& in, const std::vector<std::string_view>& fields, written_atom& atom) {
    const std::size_t first = has_freeze_code(fields) ? 2 : 1;
    if (first == 2 && !is_zero(fields[1])) {
        in.frozen.add(atom.line.line);
    }
    atom.line.cartesian = true;
    for (std::size_t n = 0; n < 3; ++n) {
        atom.quantities[n] = quantity_of(in, fields[first + n]);
    }
    if (fields.size() > first + 3) {
        const std::string_view more = fields[first + 3];
        in.stop(is_layer(more) ? "found the layer '" + base::shown(more) +
                                     "' of an ONIOM model, whose forces cannot be prepared for; take the layers out, "
                                     "and the method of one layer"
                               : "expected the end of the line after x, y and z, found '" + base::shown(more) + "'");
    }
}

/// Reads a line `label`, `label i r`, `label i r j a` or `label i r j a k d [flag]`.
void read_internal(reader& in, const std::vector<std::string_view>& fields, written_atom& atom) {
    const std::size_t expected = std::min<std::size_t>(in.atoms.size(), 3);
    const std::size_t count = fields.size() - 1;
    const bool has_flag = expected == 3 && count == 7;
    if (count != 2 * expected && !has_flag) {
        in.stop("expected x, y and z of atom " + std::to_string(in.atoms.size() + 1) + ", or the " +
                std::to_string(2 * expected) + " fields of its line in a Z-matrix, found " + std::to_string(count) +
                " fields after the label");
    }
    atom.line.references = static_cast<int>(expected);
    for (std::size_t n = 0; n < expected; ++n) {
        atom.line.reference[n] = reference_of(in, fields[2 * n + 1]);
        atom.quantities[n] = quantity_of(in, fields[2 * n + 2]);
    }
    if (has_flag) {
        int flag = 0;
        if (base::read_integer(fields[7], flag) != base::number_status::ok || flag < -1 || flag > 1) {
            in.stop("expected 0, 1 or -1 at the end of a line of a Z-matrix, found '" + base::shown(fields[7]) + "'");
        }
        atom.line.third = flag == 0   ? third_number::dihedral
                          : flag == 1 ? third_number::angle_plus
                                      : third_number::angle_minus;
    }
}

/// Three numbers of which the first may be a reference: in a Z-matrix it is not plain what they are.
void refuse_doubtful(const reader& in, const std::vector<std::string_view>& fields) {
    const bool is_z_matrix = !in.atoms.empty() && !in.atoms.front().line.cartesian;
    if (is_z_matrix && fields.size() == 4 && is_integer(fields[1])) {
        in.stop("expected the " + std::to_string(2 * std::min<std::size_t>(in.atoms.size(), 3)) +
                " fields of this line of a Z-matrix, or x, y and z with a 0 before them, found 3 fields after the "
                "label");
    }
}

void read_atom(reader& in) {
    const input_line& line = in.here.line();
    const std::vector<std::string_view> fields = fields_of(line.text);
    refuse_decimal_comma(in);
    written_atom atom;
    atom.line.line = line.number;
    atom.label = read_label(fields.front(), in.place());
    if (is_cartesian(fields)) {
        refuse_doubtful(in, fields);
        read_cartesian(in, fields, atom);
    } else {
        read_internal(in, fields, atom);
    }
    if (atom.label.has_name) {
        in.names.add(line.number);
    }
    if (atom.label.has_type) {
        in.types.add(line.number);
    }
    if (atom.label.has_fragment) {
        in.fragments.add(line.number);
    }
    if (atom.label.has_residue) {
        in.residues.add(line.number);
    }
    if (atom.label.has_moment) {
        in.moments.add(line.number);
    }
    in.atoms.push_back(std::move(atom));
    const auto [entry, is_new] = in.labels.try_emplace(lower(fields.front()), static_cast<int>(in.atoms.size()));
    if (!is_new) {
        entry->second = 0;
    }
}

/// Remembers the first value that an optimisation keeps or a scan changes.
void add_fixed(reader& in) {
    if (in.first_fixed_line == 0) {
        in.first_fixed_line = in.here.line().number;
        in.first_fixed = in.here.line().text;
    }
}

/// Reads a line `name=value` or `name value`, with what a scan or an optimisation wants of it.
void read_value(reader& in) {
    refuse_decimal_comma(in);
    std::string text(in.here.line().text);
    if (const std::size_t equals = text.find('='); equals != std::string::npos) {
        text[equals] = ' ';
    }
    const std::vector<std::string_view> fields = fields_of(text);
    if (fields.empty() || !is_name(fields[0])) {
        in.stop("expected the name of a variable, found '" + base::shown(in.here.line().text) + "'");
    }
    if (fields.size() < 2) {
        in.stop("expected a value after the name '" + base::shown(fields[0]) + "', found none");
    }
    double value = 0.0;
    if (base::read_real(fields[1], value) != base::number_status::ok) {
        in.stop("expected a value for '" + base::shown(fields[0]) + "', found '" + base::shown(fields[1]) + "'");
    }
    if (const auto [entry, is_new] = in.values.try_emplace(lower(fields[0]), value); entry->second != value) {
        in.stop("expected one value for '" + base::shown(fields[0]) + "', found a second one");
    }
    if (in.are_constants || (fields.size() > 2 && is_one_of(fields[2], {"f", "s"}))) {
        add_fixed(in);
    } else if (fields.size() > 2) {
        in.extras.add(in.here.line().number);
    }
}

/// Reads the lines up to the next blank one: values, with headings among them or none.
///   are_constants  in  what they are where no heading says it
void read_values(reader& in, bool are_constants) {
    in.are_constants = are_constants;
    for (; !in.here.ended() && !in.here.line().is_blank(); ++in.here.at) {
        if (is_values_heading(in.here.line().text)) {
            in.are_constants = is_constants_heading(in.here.line().text);
        } else if (!in.here.line().is_comment()) {
            read_value(in);
        }
    }
}

/// The first number that is a name without a value; null where there is none.
const quantity* first_unknown(const reader& in, int& line) {
    for (const written_atom& atom : in.atoms) {
        for (const quantity& number : atom.quantities) {
            if (!number.name.empty() && !in.values.contains(number.name)) {
                line = atom.line.line;
                return &number;
            }
        }
    }
    return nullptr;
}

void read_blocks_of_values(reader& in) {
    constexpr int most = 2;  // variables and constants
    for (int blocks = in.has_values_heading ? 1 : 0;; ++blocks) {
        int line = 0;
        const quantity* unknown = first_unknown(in, line);
        cursor next = in.here;
        if (!next.ended()) {
            ++next.at;  // the blank line
        }
        while (!next.ended() && next.line().is_comment()) {
            ++next.at;
        }
        const bool has_more = !next.ended() && !next.line().is_blank();
        const bool has_heading = has_more && is_values_heading(next.line().text);
        if (unknown == nullptr && !has_heading) {
            return;
        }
        if (!has_heading && (!has_more || blocks == most || !is_name(next.line().text))) {
            throw base::run_error(place_of(in.job.name, line) + ": expected a value for '" +
                                  base::shown(unknown->name) + "' below the atoms, found none");
        }
        in.here.at = next.at;
        read_values(in, blocks > 0);  // constants stand behind the variables
    }
}

/// Puts the values of names, and the units, into the lines of the atoms.
void put_numbers(reader& in) {
    for (written_atom& atom : in.atoms) {
        for (std::size_t n = 0; n < 3; ++n) {
            const quantity& number = atom.quantities[n];
            const double value = number.name.empty() ? number.value : number.value * in.values.at(number.name);
            const double unit = atom.line.cartesian || n == 0 ? in.units.length : in.units.angle;
            atom.line.number[n] = value * unit;  // both units are below 1, so that no number gets too large
        }
    }
}

/// Takes the real atoms out of all that are placed.
void keep_atoms(reader& in, const std::vector<z_line>& lines) {
    const Eigen::Matrix3Xd placed = cartesian(lines, in.job.name);
    bool all_cartesian = true;
    for (const z_line& line : lines) {
        all_cartesian = all_cartesian && line.cartesian;
    }
    in.job.atoms.positions.resize(3, placed.cols());
    Eigen::Index kept = 0;
    for (std::size_t i = 0; i < in.atoms.size(); ++i) {
        const written_atom& atom = in.atoms[i];
        if (atom.label.number != 0) {
            in.job.atoms.numbers.push_back(atom.label.number);
            in.job.atoms.positions.col(kept++) = placed.col(static_cast<Eigen::Index>(i));
            continue;
        }
        if (all_cartesian) {
            throw base::run_error(place_of(in.job.name, atom.line.line) +
                                  ": found a dummy atom in a molecule of Cartesian coordinates, where it serves "
                                  "nothing; take it out");
        }
        in.job.dummies.push_back(static_cast<int>(i) + 1);
    }
    in.job.atoms.positions.conservativeResize(3, kept);
    if (kept == 0) {
        throw base::run_error(place_of(in.job.name, lines.front().line) + ": expected an atom, found dummy atoms only");
    }
}

}  // namespace

void read_molecule(cursor& here, const input_units& units, input& job, std::vector<notice>& notices) {
    reader in{.here = here, .units = units, .job = job, .atoms = {}, .labels = {}, .values = {}};
    for (; !here.ended() && !here.line().is_blank(); ++here.at) {
        if (here.line().is_comment()) {
            continue;
        }
        if (is_values_heading(here.line().text)) {
            in.has_values_heading = true;
            read_values(in, false);
            break;
        }
        read_atom(in);
    }
    if (in.atoms.empty()) {
        throw base::run_error(place_of(job.name, here.number()) + ": expected the first atom, found none");
    }
    read_blocks_of_values(in);
    put_numbers(in);
    std::vector<z_line> lines;
    lines.reserve(in.atoms.size());
    for (const written_atom& atom : in.atoms) {
        lines.push_back(atom.line);
    }
    keep_atoms(in, lines);
    if (!job.dummies.empty()) {
        notices.push_back({lines[static_cast<std::size_t>(job.dummies.front()) - 1].line,
                           job.dummies.size() == 1 ? "1 dummy atom served the construction and is left out"
                                                   : std::to_string(job.dummies.size()) +
                                                         " dummy atoms served the construction and are left out"});
    }
    for (const dropped* kind :
         {&in.names, &in.types, &in.fragments, &in.residues, &in.moments, &in.frozen, &in.extras}) {
        kind->tell(notices);
    }
    if (in.first_fixed_line != 0) {
        notices.push_back(
            {in.first_fixed_line,
             quoted(in.first_fixed) + " is frozen or scanned: make sure that the geometry is a stationary point"});
    }
    job.first_type_line = in.types.line;
    job.first_fragment_line = in.fragments.line != 0 ? in.fragments.line : job.first_fragment_line;
}

}  // namespace displacement_generator::gaussian
