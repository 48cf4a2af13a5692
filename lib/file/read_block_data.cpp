#include "base/error.hpp"
#include "base/free_format.hpp"
#include "file/descriptor.hpp"
#include "file/unit.hpp"

namespace {

/// Where a message says that a block went wrong.
std::string place(int fid, const file::record_reader* reader) {
    return file::name_of(fid) + ":" + std::to_string(reader == nullptr ? 0 : reader->line_number) + ": ";
}

std::string_view next_line(int fid, const std::string& expected) {
    file::record_reader* reader = file::reader_of(fid);
    std::string_view record;
    if (reader == nullptr) {
        throw base::run_error(file::name_of(fid) + ": not connected for reading");
    }
    // A row of a wide block is as long as it is; no more of it than this is looked at.
    constexpr std::size_t longest = 1 << 20;
    if (!file::next_record(*reader, longest, record)) {
        throw base::run_error(place(fid, reader) +
                              (reader->error != 0 ? file::system_reason(reader->error) : "the file ends") +
                              " behind this line, expected " + expected);
    }
    return record;
}

/// One row of a block: its number and the values of columns first..last.
void read_row(int fid, int row, int first, int last, base::view2<double> a) {
    const std::string what =
        "row " + std::to_string(row) + " of columns " + std::to_string(first) + " to " + std::to_string(last);
    std::string_view rest = next_line(fid, what);
    for (int column = first - 1; column <= last; ++column) {
        const bool label = column < first;
        std::string_view field;
        const base::field_kind kind = base::next_field(rest, field);
        int number = 0;
        double value = 0.0;
        const base::number_status status = label ? base::read_integer(field, number) : base::read_real(field, value);
        if (kind != base::field_kind::value || status != base::number_status::ok) {
            throw base::run_error(
                place(fid, file::reader_of(fid)) + what + ": expected " +
                (label ? std::string("the number of the row") : "a number for column " + std::to_string(column)) +
                ", found " + (kind == base::field_kind::value ? "'" + base::shown(field) + "'" : "none"));
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
    for (int first = 1, last = 0; first <= n; first = last + 1) {
        last = nb > n - first ? n : first + nb - 1;
        next_line(fid, "the heading of columns " + std::to_string(first) + " to " + std::to_string(last));
        for (int row = 1; row <= n; ++row) {
            read_row(fid, row, first, last, a);
        }
    }
}
