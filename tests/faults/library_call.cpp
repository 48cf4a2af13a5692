#include <iostream>
#include <string>
#include <string_view>

#include "base/error.hpp"
#include "file/file.hpp"

using namespace displacement_generator;

// One call of the module `file` as a program, for the calls of the system that the tests count or let go wrong:
//
//   library_call copy|copy_old SOURCE DESTINATION
//   library_call num_file_lines|read_lines|write_records FILE
//   library_call num_file_lines_word FILE WORD
//
// Where the run stops the message goes to standard error and the status is that of the message.

namespace {

constexpr int unit = 100;

void read_all(std::string_view fname) {
    const int nline = file::num_file_lines(fname);
    const base::array1<base::text<500>> lines("lines", 1, nline);
    file::read_lines(fname, nline, lines);
}

void write_records(std::string_view fname) {
    if (const std::string reason = file::open_unit(unit, fname, file::action::write); !reason.empty()) {
        throw base::run_error(reason);
    }
    for (int i = 0; i < 3; ++i) {
        file::write_record(unit, "a record");
    }
    file::close_unit(unit);
}

void call(std::string_view routine, std::string_view first, std::string_view second) {
    if (routine == "copy") {
        file::copy(first, second);
    } else if (routine == "copy_old") {
        file::copy_old(first, second);
    } else if (routine == "num_file_lines") {
        std::cout << file::num_file_lines(first) << '\n';
    } else if (routine == "num_file_lines_word") {
        std::cout << file::num_file_lines_word(first, second) << '\n';
    } else if (routine == "read_lines") {
        read_all(first);
    } else if (routine == "write_records") {
        write_records(first);
    } else {
        throw base::run_error("library_call: no routine '" + std::string(routine) + "'");
    }
}

}  // namespace

int main(int argc, char** argv) {
    try {
        call(argc > 1 ? argv[1] : "", argc > 2 ? argv[2] : "", argc > 3 ? argv[3] : "");
        return 0;
    } catch (const base::run_error& error) {
        std::cerr << error.what() << '\n';
        return error.exit_status;
    }
}
