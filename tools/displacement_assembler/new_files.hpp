#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace displacement_generator::assembler {

/// Files on their way: each first in a temporary file in its folder, which takes its name when all is well. Temporary
/// files go with this object. What fails stops the run with "NAME: cannot write: REASON" and the like; a file that was
/// there before stays as it was then.
class new_files {
  public:
    new_files() = default;
    ~new_files();
    new_files(const new_files&) = delete;
    new_files& operator=(const new_files&) = delete;

    /// Writes a text for a file of this name.
    void write(const std::string& name, std::string_view text);
    /// Gives all files their names.
    void put_in_place();

  private:
    struct file {
        std::string name;
        std::string replaced;   ///< what gets replaced: the name, or what it leads to where it is a link
        std::string temporary;  ///< empty once it is in place
    };
    std::vector<file> files_;
};

/// Stops the run where an output is one of the inputs or another output, by whatever name, or a folder.
///   outputs  in  names of files to write
///   inputs   in  paths of files that must not be written to
void check_outputs(const std::vector<std::string>& outputs, const std::vector<std::string>& inputs);

}  // namespace displacement_generator::assembler
