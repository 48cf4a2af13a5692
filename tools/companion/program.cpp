#include "program.hpp"

#include <unistd.h>

#include <csignal>
#include <exception>
#include <new>
#include <string>

#include "base/error.hpp"
#include "file/descriptor.hpp"

namespace displacement_generator::companion {

namespace {

int stopped(const char* program, const std::string& message, int status) {
    // Where even this fails the status still tells.
    file::write_all(STDERR_FILENO, std::string(program) + ": error: " + message + "\n");
    return status;
}

void check(const char* stream, const char* what, int error) {
    if (error != 0) {
        throw base::run_error(std::string(stream) + ": cannot " + what + ": " + file::system_reason(error));
    }
}

}  // namespace

int run_program(const char* program, const std::function<void()>& run) {
    // The two signals that would end a write: it fails instead, and the run ends with a message.
    static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
    static_cast<void>(std::signal(SIGXFSZ, SIG_IGN));
    try {
        run();
        return 0;
    } catch (const base::run_error& error) {
        return stopped(program, error.what(), error.exit_status);
    } catch (const std::bad_alloc&) {
        return stopped(program, "an allocation would exceed the memory limit", 2);
    } catch (const std::exception& error) {
        return stopped(program, error.what(), 2);
    }
}

void print(std::string_view text) {
    check("standard output", "write", file::write_all(STDOUT_FILENO, text));
    check("standard output", "close", file::close_descriptor(STDOUT_FILENO));
}

void print_to_standard_error(std::string_view text) {
    check("standard error", "write", file::write_all(STDERR_FILENO, text));
}

}  // namespace displacement_generator::companion
