#include "new_files.hpp"

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <system_error>

#include "base/error.hpp"
#include "options.hpp"

namespace displacement_generator::assembler {

namespace {

using std::filesystem::path;

/// Whether two names are of one file; only names that are there can be two of one.
bool is_same_file(bool is_there, const path& a, const path& b) {
    std::error_code error;
    const auto folder = [](const path& name) { return name.has_parent_path() ? name.parent_path() : path("."); };
    return (is_there && std::filesystem::equivalent(a, b, error)) ||
           (a.filename() == b.filename() && std::filesystem::equivalent(folder(a), folder(b), error));
}

[[noreturn]] void refuse(const std::string& output, const char* expected) {
    throw base::run_error(base::shown(output, 200) + ": expected " + expected);
}

}  // namespace

new_files::new_file::new_file(const std::string& name)
    : replaced(companion::replaced_by(name)), written(program_name, path(replaced).parent_path(), name) {}

void new_files::write(const std::string& name, std::string_view text) { files_.emplace_back(name).written.write(text); }

void new_files::put_in_place() {
    for (new_file& one : files_) {
        one.written.rename_to(one.replaced);
    }
}

void check_outputs(const std::vector<std::string>& outputs, const std::vector<std::string>& inputs) {
    for (std::size_t i = 0; i < outputs.size(); ++i) {
        std::error_code error;
        const bool is_there = std::filesystem::exists(outputs[i], error);
        const auto is_this = [&](const std::string& name) { return is_same_file(is_there, outputs[i], name); };
        const auto before = outputs.begin() + static_cast<std::ptrdiff_t>(i);
        if (std::any_of(outputs.begin(), before, is_this)) {
            refuse(outputs[i], "another file for each output, found the same one twice");
        }
        if (is_there && !std::filesystem::is_regular_file(outputs[i], error)) {
            refuse(outputs[i], "the name of a file to write, found something else of this name");
        }
        if (std::any_of(inputs.begin(), inputs.end(), is_this)) {
            refuse(outputs[i], "another file than an input, which is never overwritten");
        }
    }
}

}  // namespace displacement_generator::assembler
