#include "prepared_file.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <utility>

#include "base/error.hpp"
#include "file/descriptor.hpp"

namespace displacement_generator::preparer {

namespace {

constexpr std::array ending_signals = {SIGHUP, SIGINT, SIGTERM};

/// For the signal handler alone, which may use neither memory nor objects: the file that goes with the process.
std::array<char, 4096> removed_at_signal{};

extern "C" void remove_and_end(int signal_number) {
    ::unlink(removed_at_signal.data());
    static_cast<void>(std::signal(signal_number, SIG_DFL));
    static_cast<void>(std::raise(signal_number));
}

/// Has the signals that end the process remove a file first; signals that are ignored stay so.
void remove_at_signals(const std::string& path) {
    if (path.size() >= removed_at_signal.size()) {
        return;
    }
    removed_at_signal[path.copy(removed_at_signal.data(), removed_at_signal.size() - 1)] = '\0';
    for (const int number : ending_signals) {
        if (std::signal(number, remove_and_end) == SIG_IGN) {
            static_cast<void>(std::signal(number, SIG_IGN));
        }
    }
}

void leave_at_signals() {
    for (const int number : ending_signals) {
        if (std::signal(number, SIG_DFL) == SIG_IGN) {
            static_cast<void>(std::signal(number, SIG_IGN));
        }
    }
}

[[noreturn]] void stop(const std::string& name, const char* what, int error) {
    throw base::run_error(base::shown(name, 200) + ": cannot " + what + ": " + file::system_reason(error));
}

std::string shown_name(const std::string& output) { return output == "-" ? "standard output" : output; }

/// What a new file gets: read and write for everybody, less what the user's mask takes away.
mode_t usual_mode() {
    constexpr mode_t everybody = 0666;
    const mode_t mask = ::umask(0);
    ::umask(mask);
    return everybody & ~mask;
}

/// Makes a new file in a folder. Result: its descriptor, which is none of the three standard ones, even where these are
/// closed: a report must not end in the file.
///   path  out
int make_temporary(const std::filesystem::path& folder, std::string& path, const std::string& output) {
    path = (folder / ".displacement_preparer-XXXXXX").string();
    const int made = ::mkstemp(path.data());
    if (made < 0) {
        const int error = errno;
        path.clear();
        stop(shown_name(output), "open for writing", error);
    }
    remove_at_signals(path);
    const int descriptor = ::fcntl(made, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    const int error = errno;
    file::close_descriptor(made);
    if (descriptor < 0) {
        stop(shown_name(output), "open for writing", error);
    }
    return descriptor;
}

/// The folder of the temporary file: that of OUTPUT, so that a rename is possible.
std::filesystem::path folder_of(const std::string& output, bool is_stream) {
    if (is_stream) {
        const char* named = std::getenv("TMPDIR");
        return named != nullptr && *named != '\0' ? named : "/tmp";
    }
    const std::filesystem::path folder = std::filesystem::path(output).parent_path();
    return folder.empty() ? "." : folder;
}

}  // namespace

file_identity identity_of(int descriptor) {
    struct stat status {};
    if (::fstat(descriptor, &status) != 0) {
        return {};
    }
    return {S_ISREG(status.st_mode), status.st_dev, status.st_ino};
}

bool is_same(const file_identity& a, const file_identity& b) {
    return a.is_regular && b.is_regular && a.device == b.device && a.inode == b.inode;
}

prepared_file::prepared_file(std::string output, const file_identity& source)
    : output_(std::move(output)), replaced_(output_), is_stream_(output_ == "-") {
    struct stat status {};
    const bool exists = is_stream_ ? ::fstat(STDOUT_FILENO, &status) == 0 : ::stat(output_.c_str(), &status) == 0;
    if (exists && is_same(source, {S_ISREG(status.st_mode), status.st_dev, status.st_ino})) {
        throw base::run_error(base::shown(shown_name(output_), 200) +
                              ": expected another file than the source, which is never overwritten");
    }
    if (exists && S_ISDIR(status.st_mode)) {
        stop(output_, "open for writing", EISDIR);
    }
    is_stream_ = is_stream_ || (exists && !S_ISREG(status.st_mode));
    if (exists && !is_stream_) {  // a link stays one, and what it leads to is replaced
        std::error_code error;
        const std::filesystem::path target = std::filesystem::canonical(output_, error);
        replaced_ = error ? output_ : target.string();
    }
}

prepared_file::~prepared_file() {
    if (!temporary_.empty()) {
        ::unlink(temporary_.c_str());
        leave_at_signals();
    }
}

void prepared_file::write(std::string_view text) {
    const int descriptor = make_temporary(folder_of(replaced_, is_stream_), temporary_, output_);
    int error = ::fchmod(descriptor, usual_mode()) == 0 ? 0 : errno;
    error = error != 0 ? error : file::write_all(descriptor, text);
    const int close_error = file::close_descriptor(descriptor);
    if (error != 0 || close_error != 0) {
        stop(shown_name(output_), error != 0 ? "write" : "close", error != 0 ? error : close_error);
    }
}

void prepared_file::put_in_place(std::string_view text) {
    if (!is_stream_) {
        if (::rename(temporary_.c_str(), replaced_.c_str()) != 0) {
            stop(output_, "put in place", errno);
        }
        temporary_.clear();
        leave_at_signals();
        return;
    }
    int descriptor = STDOUT_FILENO;
    if (output_ != "-") {
        std::string reason;
        descriptor = file::open_to_write(output_, reason);
        if (descriptor < 0) {
            throw base::run_error(base::shown(output_, 200) + ": cannot open for writing: " + reason);
        }
    }
    const int error = file::write_all(descriptor, text);
    const int close_error = file::close_descriptor(descriptor);
    if (error != 0 || close_error != 0) {
        stop(shown_name(output_), error != 0 ? "write" : "close", error != 0 ? error : close_error);
    }
}

}  // namespace displacement_generator::preparer
