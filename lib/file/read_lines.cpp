#include "file/unit.hpp"

namespace displacement_generator {

void file::read_lines(std::string_view fname, int nline, base::text_view lines) {
    const connection input(fname, action::read);
    input.require();
    record_reader& reader = *reader_of(input.fid());
    for (int i = 1; i <= nline; ++i) {
        const std::string_view record = take_record(input.fid(), reader, lines.text_length(), i, nline);
        lines(i).assign(record);
    }
}

}  // namespace displacement_generator
