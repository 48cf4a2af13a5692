#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace displacement_generator::file {

/// A file that is being written, every call of the system checked: what fails stops the run with
/// "PATH: cannot open for writing: REASON", "PATH: cannot write: REASON" or "PATH: cannot close: REASON". A file that
/// goes out of use without close() is closed silently.
class output_file {
  public:
    /// Makes the file, or empties it.
    ///   path  in  trailing blanks are not part of it
    explicit output_file(std::string path);
    ~output_file();
    output_file(const output_file&) = delete;
    output_file& operator=(const output_file&) = delete;

    /// Writes all of `bytes`, now, with one call unless the system takes fewer.
    void write(std::string_view bytes);
    /// Writes the last bytes and closes. Where either fails, these bytes are cut off again, so that a file whose end
    /// says that it is complete does not say so; where that fails, too, the file is removed.
    void close(std::string_view last = {});

  private:
    std::string path_;
    int descriptor_ = -1;
    std::size_t size_ = 0;
};

}  // namespace displacement_generator::file
