#include "written_run.hpp"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <stdexcept>

#include "displacement_generator/run.hpp"
#include "support.hpp"

namespace displacement_generator::property {

const std::string_view input_head = "%chk=any.chk\n#p hf/6-31g force\n\na molecule\n\n0 1\n";

namespace {

std::string left_adjusted(std::string_view text) {
    const std::size_t first = text.find_first_not_of(' ');
    return std::string(first == std::string_view::npos ? "" : text.substr(first));
}

std::string without_blanks(std::string_view text) {
    std::string result = left_adjusted(text);
    while (!result.empty() && result.back() == ' ') {
        result.pop_back();
    }
    return result;
}

/// The lines of a text, one after the other.
class line_reader {
  public:
    explicit line_reader(std::string_view text) : rest_(text) {}

    std::string_view next() {
        const std::size_t end = rest_.find('\n');
        if (end == std::string_view::npos) {
            throw std::runtime_error("no more lines");
        }
        const std::string_view line = rest_.substr(0, end);
        rest_.remove_prefix(end + 1);
        return line;
    }
    /// The next line, which must be this one.
    void pass(std::string_view expected) { EXPECT_EQ(next(), expected); }
    /// What follows `label` in the next line, which must be `width` columns.
    std::string_view behind(std::string_view label, std::size_t width) {
        const std::string_view line = next();
        EXPECT_EQ(line.substr(0, label.size()), label);
        EXPECT_EQ(line.size(), label.size() + width) << line;
        return line.substr(label.size());
    }
    [[nodiscard]] bool is_over() const { return rest_.empty(); }

  private:
    std::string_view rest_;
};

/// A number that ends in the last column of its field, with nothing but blanks before it.
template <class number, class conversion>
number right_justified(std::string_view field, const conversion& convert) {
    const std::string digits = left_adjusted(field);
    char* end = nullptr;
    const auto value = static_cast<number>(convert(digits.c_str(), &end));
    EXPECT_TRUE(!digits.empty() && *end == '\0') << "not a number: '" << field << "'";
    return value;
}

int integer(std::string_view field) {
    return right_justified<int>(field, [](const char* s, char** end) { return std::strtol(s, end, 10); });
}

double real(std::string_view field) {
    return right_justified<double>(field, [](const char* s, char** end) { return std::strtod(s, end); });
}

void read_operations(line_reader& lines, info_block& info) {
    lines.pass("Operation     matrix:");
    for (int n = 1; n <= info.order; ++n) {
        const std::string_view head = lines.behind("Operation", 20);
        EXPECT_EQ(integer(head.substr(0, 10)), n);
        info_block::operation operation;
        operation.name = without_blanks(head.substr(10, 10));
        for (auto& row : operation.matrix) {
            const std::string_view line = lines.behind("", 45);
            for (std::size_t column = 0; column < 3; ++column) {
                row.at(column) = real(line.substr(15 * column, 15));
            }
        }
        info.operations.push_back(operation);
    }
}

void read_correspondence(line_reader& lines, int natom, info_block& info) {
    lines.pass("Atom correspondance:");
    const std::size_t columns = 3 + info.operations.size();
    const std::string_view head = lines.behind("       n  symbol     nat", 8 * info.operations.size());
    for (std::size_t k = 0; k < info.operations.size(); ++k) {
        EXPECT_EQ(without_blanks(head.substr(8 * k, 8)), info.operations[k].name);
    }
    for (int i = 1; i <= natom; ++i) {
        const std::string_view line = lines.behind("", 8 * columns);
        EXPECT_EQ(integer(line.substr(0, 8)), i);
        info_block::atom_row row;
        EXPECT_EQ(line.substr(8, 6), "      ");
        row.symbol = without_blanks(line.substr(14, 2));
        row.nat = integer(line.substr(16, 8));
        for (std::size_t column = 3; column < columns; ++column) {
            row.images.push_back(integer(line.substr(8 * column, 8)));
        }
        info.atoms.push_back(row);
    }
}

void read_points(line_reader& lines, info_block& info) {
    lines.pass("       n      file is_calc       m num(op)      op");
    for (int n = 0; n <= info.total; ++n) {
        const std::string_view line = lines.behind("", 50);
        EXPECT_EQ(integer(line.substr(0, 8)), n);
        EXPECT_EQ(line.substr(8, 2), "  ");
        info_block::point_row row;
        row.tag = without_blanks(line.substr(10, 8));
        EXPECT_EQ(line.substr(10, row.tag.size()), row.tag);
        EXPECT_EQ(line.substr(18, 7), "       ");
        EXPECT_TRUE(line[25] == 'T' || line[25] == 'F');
        row.is_calc = line[25] == 'T';
        row.m = integer(line.substr(26, 8));
        row.num_op = integer(line.substr(34, 8));
        row.op = without_blanks(line.substr(42, 8));
        info.points.push_back(row);
    }
}

}  // namespace

file_list read_list(const std::string& bytes) {
    line_reader lines(bytes);
    file_list list;
    list.natom = integer(lines.behind("Number of atoms: ", 6));
    list.nfiles = integer(lines.behind("Number of files: ", 6));
    list.dx = real(lines.behind("dx=", 10));
    for (int n = 1; n <= list.nfiles; ++n) {
        list.names.push_back(left_adjusted(lines.behind("", 30)));
    }
    info_block& info = list.info;
    lines.pass("Begin_vesk_info");
    info.group = without_blanks(lines.behind("Point          group:", 10));
    info.order = integer(lines.behind("Number of operations:", 10));
    read_operations(lines, info);
    read_correspondence(lines, list.natom, info);
    info.total = integer(lines.behind("Total         points:", 10));
    info.calculated = integer(lines.behind("Calculated    points:", 10));
    read_points(lines, info);
    lines.pass("End_vesk_info");
    EXPECT_TRUE(lines.is_over());
    return list;
}

molecule read_geometry(const std::string& bytes, std::string_view head, std::size_t natom) {
    EXPECT_EQ(std::string_view(bytes).substr(0, head.size()), head);
    line_reader lines(std::string_view(bytes).substr(head.size()));
    molecule atoms;
    for (std::size_t i = 0; i < natom; ++i) {
        const std::string_view line = lines.behind("   ", 55);
        EXPECT_EQ(line.substr(2, 11), "           ");
        atom read{without_blanks(line.substr(0, 2)), {}};
        for (std::size_t c = 0; c < 3; ++c) {
            read.at.at(c) = real(line.substr(13 + 14 * c, 14));
        }
        atoms.push_back(read);
    }
    lines.pass("");
    lines.pass("");
    EXPECT_TRUE(lines.is_over());
    return atoms;
}

molecule written_run::geometry(int n) const {
    const info_block::point_row& row = list.info.points.at(static_cast<std::size_t>(n));
    return read_geometry(files.at("coord-" + row.tag + ".com"), input_head, static_cast<std::size_t>(list.natom));
}

written_run run(generator::control settings, const molecule& atoms, int decimals) {
    const support::scratch_folder scratch;
    std::string input(input_head);
    for (const atom& each : atoms) {
        input += each.symbol;
        for (const double c : each.at) {
            char digits[64] = {};
            static_cast<void>(decimals < 0 ? std::snprintf(digits, sizeof digits, " %.17g", c)
                                           : std::snprintf(digits, sizeof digits, " %.*f", decimals, c));
            input += digits;
        }
        input += '\n';
    }
    support::write_file("mol.gjf", input + '\n');
    settings.fxyz = "mol.gjf";
    generator::run(settings);
    written_run result;
    result.files = support::read_tree("PES-0");
    result.list = read_list(result.files.at("files.out"));
    return result;
}

displacement displacement_of(int n) {
    const auto zero_based = static_cast<std::size_t>(n - 1);
    return {zero_based / 6, zero_based % 6 / 2, zero_based % 2};
}

}  // namespace displacement_generator::property
