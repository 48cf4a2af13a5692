#include "base/error.hpp"
#include "base/free_format.hpp"
#include "file/descriptor.hpp"
#include "file/unit.hpp"

namespace displacement_generator {

namespace {

/// A row of a wide block is as long as it is; but the memory for a line is bounded.
constexpr std::size_t longest_row = 1 << 20;

[[noreturn]] void stop(int fid, long long line_number, const std::string& message) {
    throw base::run_error(file::name_of(fid) + ":" + std::to_string(line_number) + ": " + message);
}

/// The next line, cut to one character more than a row may have.
std::string_view next_line(int fid, file::record_reader& reader, const std::string& expected) {
    std::string_view record;
    if (!file::next_record(reader, longest_row + 1, record)) {
        stop(fid, reader.line_number + 1,
             (reader.error != 0 ? file::system_reason(reader.error) : "the file ends") +
                 " before this line, expected " + expected);
    }
    return record;
}

/// One row of a block: its number and the values of columns first..last.
void read_row(int fid, file::record_reader& reader, int row, int first, int last, base::view2<double> a) {
    const std::string what =
        "row " + std::to_string(row) + " of columns " + std::to_string(first) + " to " + std::to_string(last);
    std::string_view rest = next_line(fid, reader, what);
    if (rest.size() > longest_row) {
        stop(fid, reader.line_number, what + ": expected at most " + std::to_string(longest_row) + " characters");
    }
    for (int column = first - 1; column <= last; ++column) {
        const bool label = column < first;
        std::string_view field;
        const base::field_kind kind = base::next_field(rest, field);
        int number = 0;
        double value = 0.0;
        const base::number_status status = label ? base::read_integer(field, number) : base::read_real(field, value);
        if (kind != base::field_kind::value || status != base::number_status::ok) {
            std::string message = what + ": expected ";
            message += label ? "the number of the row" : "a number for column " + std::to_string(column);
            message += ", found ";
            if (kind == base::field_kind::value) {
                message += '\'';
                message += base::shown(field);
                message += '\'';
            } else {
                message += "none";
            }
            stop(fid, reader.line_number, message);
        }
        if (!label) {
            a(row, column) = value;
        }
    }
}

}  // namespace

void file::read_block_data(int fid, int n, base::view2<double> a, int nb) {
    if (nb < 1) {
        throw base::run_error(name_of(fid) + ": found " + std::to_string(nb) + " columns a block, expected at least 1");
    }
    record_reader* reader = reader_of(fid);
    if (reader == nullptr) {
        throw base::run_error(name_of(fid) + ": not connected for reading");
    }
    for (int first = 1, last = 0; first <= n; first = last + 1) {
        last = nb > n - first ? n : first + nb - 1;
        next_line(fid, *reader, "the heading of columns " + std::to_string(first) + " to " + std::to_string(last));
        for (int row = 1; row <= n; ++row) {
            read_row(fid, *reader, row, first, last, a);
        }
    }
}

}  // namespace displacement_generator
