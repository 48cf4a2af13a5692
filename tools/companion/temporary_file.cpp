#include "temporary_file.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <system_error>
#include <utility>

#include "base/error.hpp"
#include "file/descriptor.hpp"

namespace displacement_generator::companion {

namespace {

constexpr std::array ending_signals = {SIGHUP, SIGINT, SIGTERM};

/// For the signal handler, which may use neither memory nor objects: paths of the files that go with the process. The
/// first byte of a place that is free is 0. No program has more files under way than there are places; the system takes
/// no path that is longer than one.
constexpr std::size_t longest_path = 4096;
std::array<std::array<char, longest_path>, 4> removed_at_signals{};

extern "C" void remove_and_end(int signal_number) {
    for (const auto& path : removed_at_signals) {
        if (path[0] != '\0') {
            ::unlink(path.data());
        }
    }
    static_cast<void>(std::signal(signal_number, SIG_DFL));
    static_cast<void>(std::raise(signal_number));
}

/// While it lives the ending signals wait: between a file and its place in the table above nothing may end the process.
class signals_wait {
  public:
    signals_wait() {
        sigset_t set;
        ::sigemptyset(&set);
        for (const int number : ending_signals) {
            ::sigaddset(&set, number);
        }
        ::sigprocmask(SIG_BLOCK, &set, &before_);
    }
    ~signals_wait() { ::sigprocmask(SIG_SETMASK, &before_, nullptr); }
    signals_wait(const signals_wait&) = delete;
    signals_wait& operator=(const signals_wait&) = delete;

  private:
    sigset_t before_{};
};

/// Those that are ignored stay so.
void handle_ending_signals() {
    for (const int number : ending_signals) {
        if (std::signal(number, remove_and_end) == SIG_IGN) {
            static_cast<void>(std::signal(number, SIG_IGN));
        }
    }
}

void remove_at_signals(const std::string& path) {
    for (auto& place : removed_at_signals) {
        if (place[0] == '\0') {
            place[path.copy(place.data(), longest_path - 1)] = '\0';
            handle_ending_signals();
            return;
        }
    }
}

void leave_at_signals(const std::string& path) {
    for (auto& place : removed_at_signals) {
        if (path == place.data()) {
            place.fill('\0');
        }
    }
}

[[noreturn]] void stop(const std::string& name, const char* what, int error) {
    throw base::run_error(base::shown(name, 200) + ": cannot " + what + ": " + file::system_reason(error));
}

/// What a new file gets: read and write for everybody, less what the user's mask takes away.
mode_t usual_mode() {
    constexpr mode_t everybody = 0666;
    const mode_t mask = ::umask(0);
    ::umask(mask);
    return everybody & ~mask;
}

}  // namespace

temporary_file::temporary_file(const char* program, const std::filesystem::path& folder, std::string name)
    : path_(((folder.empty() ? "." : folder) / ("." + std::string(program) + "-XXXXXX")).string()),
      name_(std::move(name)) {}

temporary_file::~temporary_file() {
    if (exists_) {
        const signals_wait meanwhile;
        ::unlink(path_.c_str());
        leave_at_signals(path_);
    }
}

/// Result: the descriptor, which is none of the three standard ones, even where these are closed: a message must not
/// end in the file.
int temporary_file::make() {
    const signals_wait meanwhile;
    const int made = ::mkstemp(path_.data());
    if (made < 0) {
        stop(name_, "open for writing", errno);
    }
    exists_ = true;
    remove_at_signals(path_);
    const int descriptor = ::fcntl(made, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    const int error = errno;
    file::close_descriptor(made);
    if (descriptor < 0) {
        stop(name_, "open for writing", error);
    }
    return descriptor;
}

void temporary_file::write(std::string_view text) {
    const int descriptor = make();
    int error = ::fchmod(descriptor, usual_mode()) == 0 ? 0 : errno;
    error = error != 0 ? error : file::write_all(descriptor, text);
    const int close_error = file::close_descriptor(descriptor);
    if (error != 0 || close_error != 0) {
        stop(name_, error != 0 ? "write" : "close", error != 0 ? error : close_error);
    }
}

void temporary_file::rename_to(const std::string& target) {
    const signals_wait meanwhile;
    if (::rename(path_.c_str(), target.c_str()) != 0) {
        stop(name_, "put in place", errno);
    }
    exists_ = false;
    leave_at_signals(path_);
}

std::string replaced_by(const std::string& name) {
    std::error_code error;
    if (!std::filesystem::is_symlink(name, error)) {
        return name;
    }
    const std::filesystem::path target = std::filesystem::canonical(name, error);
    return error ? name : target.string();
}

}  // namespace displacement_generator::companion
