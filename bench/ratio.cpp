#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

// Runs two commands in turn in the current folder, PES-0 removed before each run, and prints the medians of both and of
// the ratio of each pair. The time is from the start of the process to its end.
//   ratio RUNS COMMAND_A... -- COMMAND_B...

extern char** environ;

namespace {

struct figures {
    double wall = 0.0;  // milliseconds, as all times here
    double user = 0.0;
    double system = 0.0;
    double memory = 0.0;  // peak, in KiB
};

double milliseconds(const timeval& time) {
    return 1e3 * static_cast<double>(time.tv_sec) + 1e-3 * static_cast<double>(time.tv_usec);
}

figures run(std::vector<std::string> command) {
    std::filesystem::remove_all("PES-0");
    std::vector<char*> arguments;
    for (std::string& argument : command) {
        arguments.push_back(argument.data());
    }
    arguments.push_back(nullptr);
    const auto start = std::chrono::steady_clock::now();
    pid_t child = 0;
    int status = 0;
    rusage usage{};
    if (::posix_spawn(&child, arguments[0], nullptr, nullptr, arguments.data(), environ) != 0 ||
        ::wait4(child, &status, 0, &usage) != child || status != 0) {
        std::fprintf(stderr, "ratio: %s failed\n", arguments[0]);
        std::exit(1);
    }
    const std::chrono::duration<double, std::milli> wall = std::chrono::steady_clock::now() - start;
    return {wall.count(), milliseconds(usage.ru_utime), milliseconds(usage.ru_stime),
            static_cast<double>(usage.ru_maxrss)};
}

double median(const std::vector<figures>& runs, const std::function<double(const figures&)>& figure) {
    std::vector<double> values(runs.size());
    std::transform(runs.begin(), runs.end(), values.begin(), figure);
    std::sort(values.begin(), values.end());
    return 0.5 * (values[(values.size() - 1) / 2] + values[values.size() / 2]);
}

void print(const char* name, const std::vector<figures>& runs) {
    std::printf(" %s wall %.2f user %.2f system %.2f ms memory %.0f KiB;", name,
                median(runs, [](const figures& f) { return f.wall; }),
                median(runs, [](const figures& f) { return f.user; }),
                median(runs, [](const figures& f) { return f.system; }),
                median(runs, [](const figures& f) { return f.memory; }));
}

}  // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> words(argv + 1, argv + argc);
    const auto between = std::find(words.begin(), words.end(), "--");
    if (words.size() < 4 || between == words.end()) {
        std::fprintf(stderr, "usage: ratio RUNS COMMAND_A... -- COMMAND_B...\n");
        return 2;
    }
    const std::vector<std::string> a(words.begin() + 1, between);
    const std::vector<std::string> b(between + 1, words.end());
    run(a);  // the first run of each finds nothing in the caches
    run(b);
    std::vector<figures> runs_a;
    std::vector<figures> runs_b;
    std::vector<figures> pairs;
    for (int i = std::atoi(words[0].c_str()); i > 0; --i) {
        runs_a.push_back(run(a));
        runs_b.push_back(run(b));
        pairs.push_back({runs_a.back().wall / runs_b.back().wall});
    }
    std::printf("ratio %.3f;", median(pairs, [](const figures& f) { return f.wall; }));
    print("program", runs_a);
    print("bare loop", runs_b);
    std::printf("\n");
    std::filesystem::remove_all("PES-0");
    return 0;
}
