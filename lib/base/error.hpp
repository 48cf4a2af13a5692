#pragma once

#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

static_assert(sizeof(int) == 4, "the 4-byte integers of the system are held in int");

namespace displacement_generator::base {

/// The stream of the process that a message belongs on.
enum class message_stream { standard_output, standard_error };

/// The one error that stops a run. The library throws it and never ends the process; `main` turns it into a line of
/// text on its stream and an exit status. what() is the message, whole, without a line end.
struct run_error : std::runtime_error {
    explicit run_error(const std::string& message, message_stream to = message_stream::standard_error, int status = 2,
                       std::string more = {})
        : std::runtime_error(message), stream(to), exit_status(status), detail(std::move(more)) {}

    message_stream stream;
    int exit_status;
    std::string detail;  ///< for standard error, where the message itself belongs on standard output; may be blank
};

/// Text that came from outside, made fit for a message: at most `longest` characters of it, with a note of how many
/// were cut, and every byte outside printable ASCII as \xHH (tab, carriage return and line feed as \t, \r and \n).
///   text     in   any bytes
///   longest  in   how many bytes are shown at the most
[[nodiscard]] std::string shown(std::string_view text, std::size_t longest = 60);

/// The end of a message about a word that was not found, where a byte order mark may be what hides it.
///   start  in  how the file begins
/// Result: blank where the file does not begin with such a mark, of UTF-8 or of UTF-16.
std::string byte_order_mark_hint(std::string_view start);

}  // namespace displacement_generator::base
