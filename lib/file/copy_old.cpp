#include "base/error.hpp"
#include "file/descriptor.hpp"
#include "file/unit.hpp"

void file::copy_old(std::string_view src, std::string_view dst) {
    const int n = num_file_lines(src);
    if (n < 1) {
        return;
    }
    const connection input(src, action::read);
    input.require();
    if (is_same_file(reader_of(input.fid())->descriptor, dst)) {
        throw base::run_error(name_of(input.fid()) + ": source and destination are the same file");
    }
    const connection output(dst, action::write);
    output.require();
    for (int i = 1; i <= n; ++i) {
        base::text<500> line;
        if (!read_record(input.fid(), line)) {
            throw base::run_error(name_of(input.fid()) + ": found " + std::to_string(i - 1) + " lines, expected " +
                                  std::to_string(n));
        }
        write_record(output.fid(), line);
    }
    output.close();
}
