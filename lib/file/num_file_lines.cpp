#include <algorithm>
#include <cstddef>
#include <limits>

#include "base/error.hpp"
#include "file/descriptor.hpp"
#include "file/unit.hpp"

namespace displacement_generator {

namespace {

/// Counted in runs so short that the count of one fits a byte: then the compiler counts many bytes at a time.
long long count_line_feeds(const char* bytes, std::size_t size) {
    constexpr std::size_t run = 255;
    long long total = 0;
    for (std::size_t start = 0; start < size; start += run) {
        const std::size_t stop = std::min(start + run, size);
        unsigned char feeds = 0;
        for (std::size_t i = start; i < stop; ++i) {
            feeds = static_cast<unsigned char>(feeds + static_cast<unsigned char>(bytes[i] == '\n'));
        }
        total += feeds;
    }
    return total;
}

}  // namespace

int file::num_file_lines(std::string_view fname) {
    const connection input(fname, action::read);
    if (!input.reason().empty()) {
        std::string name(base::trimmed(fname));
        std::replace(name.begin(), name.end(), '\0', '?');  // a message would end there; no file has such a name
        throw base::run_error(" Error in opening file '" + name + "' in function num_file_lines, stop!",
                              base::message_stream::standard_output, 1, input.reason());
    }
    record_reader& reader = *reader_of(input.fid());
    long long lines = 0;
    char last = '\n';
    while (fill_block(reader, 0)) {
        lines += count_line_feeds(reader.block.get(), reader.end);
        last = reader.block[reader.end - 1];
        reader.end = 0;
    }
    if (reader.error != 0) {
        throw base::run_error(name_of(input.fid()) + ": cannot read: " + system_reason(reader.error));
    }
    lines += last == '\n' ? 0 : 1;  // a last record without an end is one, too
    if (lines > std::numeric_limits<int>::max()) {
        throw base::run_error(name_of(input.fid()) + ": " + std::to_string(lines) + " lines, expected at most " +
                              std::to_string(std::numeric_limits<int>::max()));
    }
    return static_cast<int>(lines);
}

}  // namespace displacement_generator
