#pragma once

#include <cstddef>
#include <string>
#include <string_view>

// The system's own calls, each repeated when a signal interrupted it.

namespace displacement_generator::file {

/// Opens a file to read.
///   fname         in  trailing blanks are not part of the name
///   regular_only  in  whether anything but a regular file is refused; only then is it certain that opening cannot wait
///   reason        out why it will not open; unchanged when it does
/// Result: the descriptor, or -1.
int open_to_read(std::string_view fname, bool regular_only, std::string& reason);

/// Opens a file to write, made if it is missing. Never waits.
///   fname    in  trailing blanks are not part of the name
///   reason   out why it will not open; unchanged when it does
///   emptied  in  whether the file loses what it holds
/// Result: the descriptor, or -1.
int open_to_write(std::string_view fname, std::string& reason, bool emptied = true);

/// Locks an open file against other runs, without waiting. The lock goes with the descriptor, so also with the process,
/// however it ends. It is the lock of fcntl on an open file: unlike that of flock it is passed on to the server of
/// every network file system that has locks at all, and unlike the older one of fcntl it is not lost when the process
/// closes another descriptor of the same file. Result: false where another run has the lock. A file system without
/// locks must not stop a run: there, and wherever else the system refuses the lock for another reason, the result is
/// true.
bool lock_file(int descriptor);

/// Makes an open file end after `size` bytes. Result: 0, or errno.
int cut_file(int descriptor, std::size_t size);

/// Reads at most `size` bytes. Result: how many, 0 at the end, -1 with errno set on an error.
long read_some(int descriptor, char* to, std::size_t size);

/// Writes all of `bytes`, in as many calls as it takes. Result: 0, or errno of the call that failed.
int write_all(int descriptor, std::string_view bytes);

/// Closes a descriptor. Result: 0, or errno. It is closed in any case and must not be closed again.
int close_descriptor(int descriptor);

/// Whether an open file is the one with this name.
///   fname  in  trailing blanks are not part of the name
bool is_same_file(int descriptor, std::string_view fname);

/// The system's words for an errno.
std::string system_reason(int error);

}  // namespace displacement_generator::file
