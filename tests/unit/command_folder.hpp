#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>

#include "support.hpp"

namespace displacement_generator::support {

/// A folder "commands" in the current one that is the first in PATH for as long as this lives.
class command_folder {
  public:
    command_folder() {
        std::filesystem::create_directory("commands");
        const char* path = std::getenv("PATH");
        path_before_ = path == nullptr ? "/usr/bin:/bin" : path;
        ::setenv("PATH", (std::filesystem::absolute("commands").string() + ':' + path_before_).c_str(), 1);
    }
    ~command_folder() { ::setenv("PATH", path_before_.c_str(), 1); }
    command_folder(const command_folder&) = delete;
    command_folder& operator=(const command_folder&) = delete;

    /// A command that is a script of the shell.
    static void add(const std::string& name, std::string_view script) {
        const std::filesystem::path command = std::filesystem::path("commands") / name;
        write_file(command, "#!/bin/sh\n" + std::string(script));
        std::filesystem::permissions(command, std::filesystem::perms::owner_all);
    }

  private:
    std::string path_before_;
};

}  // namespace displacement_generator::support
