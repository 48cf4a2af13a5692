#include <unistd.h>

#include <csignal>
#include <exception>
#include <new>
#include <string>
#include <string_view>

#include "base/error.hpp"
#include "control.hpp"
#include "file/descriptor.hpp"
#include "run.hpp"

#if __has_include(<malloc.h>)
#include <malloc.h>
#endif

using namespace displacement_generator;

namespace {

int stopped(int descriptor, const std::string& line, int exit_status) {
    file::write_all(descriptor, line + '\n');  // if even this fails, the status still says it
    return exit_status;
}

int stopped(const std::string& message) {
    return stopped(STDERR_FILENO, "displacement_generator: error: " + message, 2);
}

}  // namespace

int main(int argc, char** argv) {
    // The two signals that would end a write: it fails instead, and the run ends with a message.
    static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
    static_cast<void>(std::signal(SIGXFSZ, SIG_IGN));
#ifdef M_MMAP_THRESHOLD
    // Memory that one routine gives back stays with the process, as the next one wants it: up to the largest size for
    // which the library can.
    ::mallopt(M_MMAP_THRESHOLD, 1 << 25);
    ::mallopt(M_TRIM_THRESHOLD, 1 << 26);
#endif
    try {
        generator::run(generator::read_control(argc > 1 ? argv[1] : ""));
        return 0;
    } catch (const base::run_error& error) {
        if (error.stream == base::message_stream::standard_output) {
            static_cast<void>(stopped(STDOUT_FILENO, error.what(), error.exit_status));
            if (!error.detail.empty()) {
                static_cast<void>(stopped(error.detail));
            }
            return error.exit_status;
        }
        return stopped(error.what());
    } catch (const std::bad_alloc&) {
        return stopped("an allocation would exceed the memory limit");
    } catch (const std::exception& error) {
        return stopped(error.what());
    }
}
