#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "../base/error.hpp"

namespace displacement_generator::file {

/// The error of a device, or of a user's share of it, that has no room left.
struct no_room : base::run_error {
    using base::run_error::run_error;
};

/// Whether other runs may write the same file at the same time.
enum class writers { any, one };

/// A file that is being written, every call of the system checked: what fails stops the run with
/// "PATH: cannot open for writing: REASON", "PATH: cannot write: REASON" or "PATH: cannot close: REASON", with the
/// error `no_room` where the reason is that. A file that goes out of use without close() is closed silently.
class output_file {
  public:
    /// Makes the file, or empties it.
    ///   path     in  trailing blanks are not part of it
    ///   allowed  in  with `one` the file is locked before it is emptied, until it is closed; a file that another run
    ///                has locked does not open and stays as it is
    explicit output_file(std::string path, writers allowed = writers::any);
    ~output_file();
    output_file(const output_file&) = delete;
    output_file& operator=(const output_file&) = delete;

    /// Writes all of `bytes`, now, with one call unless the system takes fewer.
    void write(std::string_view bytes);
    /// Writes the last bytes and closes. Where either fails, these bytes are cut off again, so that a file whose end
    /// says that it is complete does not say so; where that fails, too, the file is removed.
    void close(std::string_view last = {});

  private:
    [[noreturn]] void stop(const char* what, const std::string& reason) const;

    std::string path_;
    int descriptor_ = -1;
    std::size_t size_ = 0;
};

}  // namespace displacement_generator::file
