#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "companion/temporary_file.hpp"
#include "source_molecule.hpp"

namespace displacement_generator::preparer {

/// The prepared input on its way to OUTPUT: first in a temporary file, which takes the name OUTPUT when all is well.
/// The temporary file goes with this object, and with the process where a signal ends it. What fails stops the run with
/// "NAME: cannot write: REASON" and the like; OUTPUT is as it was then.
class prepared_file {
  public:
    /// Refuses an OUTPUT that is SOURCE, by whatever name.
    ///   output  in  a path, or "-" for standard output
    ///   source  in  the file that must not be written to
    prepared_file(std::string output, const file_identity& source);

    /// Writes the text into the temporary file.
    void write(std::string_view text) { temporary_->write(text); }
    /// Name of the temporary file, which can be read from now on.
    [[nodiscard]] const std::string& temporary() const { return temporary_->path(); }
    /// Gives the temporary file the name OUTPUT. Where OUTPUT is a stream or a device its text is written there.
    void put_in_place(std::string_view text);

  private:
    std::string output_;
    std::string replaced_;  ///< the file that gets the name: OUTPUT, or what it leads to where it is a link
    bool is_stream_;        ///< whether there is nothing to be replaced: standard output, a pipe, a device
    std::optional<companion::temporary_file> temporary_;
};

}  // namespace displacement_generator::preparer
