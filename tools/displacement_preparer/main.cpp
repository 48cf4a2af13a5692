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

int stopped(const std::string& message) {
    // Where even this fails the status still tells.
    file::write_all(STDERR_FILENO, "displacement_preparer: error: " + message + "\n");
    return 2;
}

void print(const std::string& text) {
    const int error = file::write_all(STDOUT_FILENO, text);
    if (error != 0) {
        throw base::run_error("standard output: cannot write: " + file::system_reason(error));
    }
}

}  // namespace

int main(int argc, char** argv) {
    // The two signals that would end a write: it fails instead, and the run ends with a message.
    static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
    static_cast<void>(std::signal(SIGXFSZ, SIG_IGN));
    try {
        preparer::options asked;
        const std::string text = preparer::read_options(argc, argv, asked);
        if (text.empty()) {
            preparer::run(asked);
        } else {
            print(text);
        }
        return 0;
    } catch (const base::run_error& error) {
        return stopped(error.what());
    } catch (const std::bad_alloc&) {
        return stopped("an allocation would exceed the memory limit");
    } catch (const std::exception& error) {
        return stopped(error.what());
    }
}
