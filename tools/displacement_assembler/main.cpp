#include <unistd.h>

#include <csignal>
#include <exception>
#include <new>
#include <string>

#include "base/error.hpp"
#include "file/descriptor.hpp"
#include "options.hpp"
#include "run.hpp"

using namespace displacement_generator;

namespace {

int stopped(const std::string& message, int status) {
    // Where even this fails the status still tells.
    file::write_all(STDERR_FILENO, "displacement_assembler: error: " + message + "\n");
    return status;
}

}  // namespace

int main(int argc, char** argv) {
    // The two signals that would end a write: it fails instead, and the run ends with a message.
    static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
    static_cast<void>(std::signal(SIGXFSZ, SIG_IGN));
    try {
        assembler::options asked;
        const std::string text = assembler::read_options(argc, argv, asked);
        if (text.empty()) {
            assembler::run(asked);
        } else {
            assembler::print(text);
        }
        return 0;
    } catch (const base::run_error& error) {
        return stopped(error.what(), error.exit_status);
    } catch (const std::bad_alloc&) {
        return stopped("an allocation would exceed the memory limit", 2);
    } catch (const std::exception& error) {
        return stopped(error.what(), 2);
    }
}
