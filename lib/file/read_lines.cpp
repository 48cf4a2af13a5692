#include "base/error.hpp"
#include "file/descriptor.hpp"
#include "file/unit.hpp"

void file::read_lines(std::string_view fname, int nline, base::text_view lines) {
    const connection input(fname, action::read);
    input.require();
    record_reader& reader = *reader_of(input.fid());
    for (int i = 1; i <= nline; ++i) {
        std::string_view record;
        if (!next_record(reader, lines.text_length(), record)) {
            throw base::run_error(reader.error != 0
                                      ? name_of(input.fid()) + ": cannot read: " + system_reason(reader.error)
                                      : name_of(input.fid()) + ": found " + std::to_string(i - 1) +
                                            " lines, expected " + std::to_string(nline));
        }
        lines(i).assign(record);
    }
}
