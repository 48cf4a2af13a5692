#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "base/error.hpp"

// What the tests share.

namespace displacement_generator::support {

/// Whether tests and programs carry the address sanitizer, which needs more memory than some tests leave.
#if defined(__SANITIZE_ADDRESS__)
constexpr bool sanitized = true;
#elif defined(__has_feature)
constexpr bool sanitized = __has_feature(address_sanitizer);
#else
constexpr bool sanitized = false;
#endif

/// A new empty folder that is the current one for as long as this lives, and is then removed with all that is in it.
class scratch_folder {
  public:
    scratch_folder();
    ~scratch_folder();
    scratch_folder(const scratch_folder&) = delete;
    scratch_folder& operator=(const scratch_folder&) = delete;

    [[nodiscard]] const std::filesystem::path& path() const { return path_; }

  private:
    std::filesystem::path path_;
    std::filesystem::path before_;
};

void write_file(const std::filesystem::path& name, std::string_view bytes);
std::string read_file(const std::filesystem::path& name);

/// Every file below a folder and its bytes, by its name relative to the folder; a folder has the name "NAME/" and no
/// bytes, a link or anything else "NAME@" and what it points to.
using tree = std::map<std::string, std::string>;
tree read_tree(const std::filesystem::path& folder);

/// How a program ended and what it wrote.
struct outcome {
    int status;  ///< exit status, or minus the number of the signal that ended it
    std::string standard_output;
    std::string standard_error;
};

/// Runs a program in the current folder, its standard input closed to it (/dev/null), and waits for it to end.
///   environment  "NAME=VALUE" texts that are added to this process's environment
outcome run_program(const std::filesystem::path& program, const std::vector<std::string>& arguments,
                    const std::vector<std::string>& environment = {});

/// The program that is tested.
std::filesystem::path displacement_generator();

/// Puts a text at the end of the file that the environment's STOPPED_WITH_LOG names, with a NUL after it. Tests of
/// documents find there what the programs said.
void log_message(const std::string& text);

/// The text with which `work` stopped the run, as "MESSAGE|STREAM|STATUS"; "no error" where it did not. The message is
/// also logged.
std::string stopped_with(const std::function<void()>& work);

/// What `work` writes on standard output, at the level of the system.
std::string standard_output_of(const std::function<void()>& work);

}  // namespace displacement_generator::support
