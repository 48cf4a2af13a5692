#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace displacement_generator::companion {

/// A file on its way to its name: written under another one in the same folder, which it loses when all is well. It
/// goes with this object, and with the process where SIGINT, SIGTERM or SIGHUP ends it. Not for several threads.
class temporary_file {
  public:
    /// Makes no file yet.
    ///   program  in  the file is called .PROGRAM-XXXXXX
    ///   folder   in  empty: the current one
    ///   name     in  stands before every message: what the file is for
    temporary_file(const char* program, const std::filesystem::path& folder, std::string name);
    ~temporary_file();
    temporary_file(const temporary_file&) = delete;
    temporary_file& operator=(const temporary_file&) = delete;

    /// Makes the file and writes a text into it; once only. Stops the run with "NAME: cannot write: REASON" and the
    /// like.
    void write(std::string_view text);
    /// Its path, once it is written.
    [[nodiscard]] const std::string& path() const { return path_; }
    /// Gives it its name, in place of what had it before. Stops the run with "NAME: cannot put in place: REASON".
    void rename_to(const std::string& target);

  private:
    int make();

    std::string path_;
    std::string name_;
    bool exists_ = false;
};

/// What a new file of this name replaces: where the name is a link to a file, that file, so that the link stays one;
/// else the name itself.
std::string replaced_by(const std::string& name);

}  // namespace displacement_generator::companion
