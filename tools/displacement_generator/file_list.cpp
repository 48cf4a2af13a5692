#include "file_list.hpp"

#include <cstdlib>

#include "base/fixed_columns.hpp"

namespace displacement_generator::generator {

namespace {

/// Result: the path of the list. Whether the directory could be made shows when the list is opened.
std::string made_work_dir() {
    [[maybe_unused]] const int status = std::system(("/bin/mkdir -p " + std::string(work_dir)).c_str());
    return std::string(work_dir) + "/files.out";
}

}  // namespace

file_list::file_list(int natom, int ncalc, double dx) : file_(made_work_dir()) {
    lines_.reserve(large_write + 256);
    lines_ += "Number of atoms: ";
    base::append_integer(lines_, 6, natom);
    end_line();
    lines_ += "Number of files: ";
    base::append_integer(lines_, 6, ncalc + 1);
    end_line();
    lines_ += "dx=";
    base::append_real(lines_, 10, 6, dx);
    end_line();
}

void file_list::leave() {
    file_.write(lines_);
    lines_.clear();
}

void file_list::close(std::string_view last_line) {
    file_.write(lines_);
    file_.close(std::string(last_line) + '\n');
}

}  // namespace displacement_generator::generator
