#include "support.hpp"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace displacement_generator::support {

namespace fs = std::filesystem;

scratch_folder::scratch_folder() : before_(fs::current_path()) {
    std::string name = (fs::temp_directory_path() / "displacement-XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr) {
        throw std::runtime_error("no scratch folder at " + name);
    }
    path_ = name;
    fs::current_path(path_);
}

scratch_folder::~scratch_folder() {
    std::error_code ignored;
    fs::current_path(before_, ignored);
    fs::remove_all(path_, ignored);
}

void write_file(const fs::path& name, std::string_view bytes) {
    std::ofstream(name, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

std::string read_file(const fs::path& name) {
    std::ifstream input(name, std::ios::binary);
    return {std::istreambuf_iterator<char>(input), std::istreambuf_iterator<char>()};
}

tree read_tree(const fs::path& folder) {
    tree result;
    if (!fs::exists(folder)) {
        return result;
    }
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        const std::string name = entry.path().lexically_relative(folder).string();
        if (entry.is_symlink()) {
            result[name + '@'] = fs::read_symlink(entry.path()).string();
        } else if (entry.is_directory()) {
            result[name + '/'] = "";
        } else if (entry.is_regular_file()) {
            result[name] = read_file(entry.path());
        } else {
            result[name + '@'] = "";
        }
    }
    return result;
}

outcome run_program(const fs::path& program, const std::vector<std::string>& arguments,
                    const std::vector<std::string>& environment) {
    std::string out_name = (fs::temp_directory_path() / "displacement-out-XXXXXX").string();
    std::string err_name = (fs::temp_directory_path() / "displacement-err-XXXXXX").string();
    const int out = ::mkstemp(out_name.data());
    const int err = ::mkstemp(err_name.data());
    const pid_t child = ::fork();
    if (child == 0) {
        const int in = ::open("/dev/null", O_RDONLY);
        ::dup2(in, STDIN_FILENO);
        ::dup2(out, STDOUT_FILENO);
        ::dup2(err, STDERR_FILENO);
        ::close_range(STDERR_FILENO + 1, ~0U, 0);  // nor what the one who runs the tests left open
        for (const std::string& setting : environment) {
            ::putenv(const_cast<char*>(setting.c_str()));
        }
        std::vector<char*> argv = {const_cast<char*>(program.c_str())};
        for (const std::string& argument : arguments) {
            argv.push_back(const_cast<char*>(argument.c_str()));
        }
        argv.push_back(nullptr);
        ::execv(program.c_str(), argv.data());
        ::_exit(127);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    outcome result{WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status), read_file(out_name),
                   read_file(err_name)};
    for (const int descriptor : {out, err}) {
        ::close(descriptor);
    }
    fs::remove(out_name);
    fs::remove(err_name);
    return result;
}

fs::path displacement_generator() { return DISPLACEMENT_GENERATOR; }

void log_message(const std::string& text) {
    if (const char* log = std::getenv("STOPPED_WITH_LOG"); log != nullptr) {
        std::ofstream(log, std::ios::binary | std::ios::app) << text << '\0';
    }
}

std::string stopped_with(const std::function<void()>& work) {
    try {
        work();
    } catch (const base::run_error& error) {
        log_message(error.what());
        return std::string(error.what()) +
               (error.stream == base::message_stream::standard_output ? "|standard output|" : "|standard error|") +
               std::to_string(error.exit_status);
    }
    return "no error";
}

std::string standard_output_of(const std::function<void()>& work) {
    std::string name = (fs::temp_directory_path() / "displacement-out-XXXXXX").string();
    const int file = ::mkstemp(name.data());
    const int saved = ::dup(STDOUT_FILENO);
    ::dup2(file, STDOUT_FILENO);
    work();
    ::dup2(saved, STDOUT_FILENO);
    ::close(saved);
    ::close(file);
    std::string result = read_file(name);
    fs::remove(name);
    return result;
}

}  // namespace displacement_generator::support
