#include "base/error.hpp"
#include "file/descriptor.hpp"
#include "file/unit.hpp"

namespace displacement_generator {

void file::copy_old(std::string_view src, std::string_view dst) {
    const int n = num_file_lines(src);
    if (n < 1) {
        return;
    }
    const connection input(src, action::read);
    input.require();
    record_reader& reader = *reader_of(input.fid());
    if (is_same_file(reader.descriptor, dst)) {
        throw base::run_error(name_of(input.fid()) + ": source and destination are the same file");
    }
    const connection output(dst, action::write);
    output.require();
    for (int i = 1; i <= n; ++i) {
        write_record(output.fid(), base::text<500>(take_record(input.fid(), reader, 500, i, n)));
    }
    output.close();
}

}  // namespace displacement_generator
