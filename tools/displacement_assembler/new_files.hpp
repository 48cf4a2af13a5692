#pragma once

#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "companion/temporary_file.hpp"

namespace displacement_generator::assembler {

/// Files on their way to their names: all of them are written first, and get their names when all is well. What fails
/// stops the run with "NAME: cannot write: REASON" and the like; a file that was there before stays as it was then.
class new_files {
  public:
    /// Writes a text for a file of this name.
    void write(const std::string& name, std::string_view text);
    /// Gives all files their names.
    void put_in_place();

  private:
    struct new_file {
        explicit new_file(const std::string& name);
        std::string replaced;
        companion::temporary_file written;
    };
    std::deque<new_file> files_;  // which moves none of them
};

/// Stops the run where an output is one of the inputs or another output, by whatever name, or a folder.
///   outputs  in  names of files to write
///   inputs   in  paths of files that must not be written to, even where they are missing
void check_outputs(const std::vector<std::string>& outputs, const std::vector<std::string>& inputs);

}  // namespace displacement_generator::assembler
