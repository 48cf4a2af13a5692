#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "base/error.hpp"
#include "file/file.hpp"

using namespace displacement_generator;

// One routine of the module `file` as a command, to be measured beside the system's own:
//   file_tool lines FILE          wc -l
//   file_tool word FILE WORD      grep -c
//   file_tool read FILE           cat, into memory
//   file_tool copy SOURCE TARGET  cp

int main(int argc, char** argv) {
    const std::string_view verb = argc > 2 ? argv[1] : "";
    try {
        if (verb == "lines") {
            std::printf("%d\n", file::num_file_lines(argv[2]));
        } else if (verb == "word" && argc > 3) {
            std::printf("%d\n", file::num_file_lines_word(argv[2], argv[3]));
        } else if (verb == "read") {
            const int nline = file::num_file_lines(argv[2]);
            const base::array1<base::text<80>> lines("lines", 1, nline);
            file::read_lines(argv[2], nline, lines);
        } else if (verb == "copy" && argc > 3) {
            file::copy(argv[2], argv[3]);
        } else {
            return 2;
        }
    } catch (const base::run_error& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
    return 0;
}
