#include "gaussian/log.hpp"

#include <algorithm>

#include "gaussian/source.hpp"
#include "harness.hpp"

using namespace displacement_generator;

// The input is a log, or what a log could become.

namespace {

struct outcome {
    gaussian::log_contents log;
    std::vector<gaussian::notice> notices;
    std::string message;  ///< of the error that stopped the reading
};

outcome read(gaussian::source& from, int lines) {
    outcome result;
    if (const auto error = fuzz::stopped([&] { result.log = gaussian::read_log(from, result.notices); })) {
        result.message = error->what();
        fuzz::checked_line(*error, from.name(), 1, lines);
    } else {
        fuzz::check_equal(from.line_number(), static_cast<long long>(lines), "every line is taken");
    }
    return result;
}

void check_log(const gaussian::log_contents& log, int lines) {
    const gaussian::log_job& job = log.job;
    fuzz::check(log.jobs >= 0 && log.ended_normally >= 0 && log.ended_normally <= log.jobs && job.number <= log.jobs,
                "jobs that ended normally are jobs");
    const auto atoms = static_cast<Eigen::Index>(job.molecule.numbers.size());
    fuzz::check((job.number == 0) == (atoms == 0) && job.molecule.positions.cols() == atoms,
                "a job has a geometry where there is one");
    fuzz::check(std::all_of(job.molecule.numbers.begin(), job.molecule.numbers.end(),
                            [](int number) { return number >= 1 && number <= 118; }),
                "atoms have atomic numbers");
    fuzz::check(job.molecule.positions.allFinite(), "positions are numbers");
    fuzz::check(job.forces.cols() == 0 || job.forces.cols() == atoms, "every atom has a force");
    fuzz::check(job.forces.cols() == job.force_positions.cols(), "forces have their geometry");
    fuzz::check(job.number == 0 || (job.forces.cols() == 0) == !job.forces_problem.empty(),
                "where there are no forces it is told why");
    fuzz::check(job.forces.allFinite() && job.force_positions.allFinite(), "forces are numbers");
    fuzz::check(!job.dipole || (job.dipole->allFinite() && job.forces.cols() != 0), "a dipole belongs to forces");
    fuzz::check(!job.forces_of_last || job.in == gaussian::frame::input || job.forces.cols() == 0,
                "forces have the frame of the input");
    fuzz::check(job.line <= lines && job.geometry_line <= lines && job.forces_line <= lines, "lines exist");
}

/// The same bytes through a file, in blocks, give the same.
void check_blocks(std::string_view text, const outcome& expected, int lines) {
    static const fuzz::memory_file file;
    file.set(text);
    gaussian::source from(file.name());
    const outcome found = read(from, lines);
    fuzz::check_equal(found.message.empty(), expected.message.empty(), "a file is read as the bytes in memory are");
    fuzz::check_equal(found.log.jobs, expected.log.jobs, "the same jobs");
    fuzz::check_equal(found.log.job.route, expected.log.job.route, "the same route");
    fuzz::check(found.log.job.molecule.numbers == expected.log.job.molecule.numbers &&
                    found.log.job.molecule.positions == expected.log.job.molecule.positions,
                "the same geometry");
    fuzz::check(found.log.job.forces.cols() == expected.log.job.forces.cols() &&
                    found.log.job.forces == expected.log.job.forces,
                "the same forces");
    fuzz::check_equal(found.notices.size(), expected.notices.size(), "the same notices");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(data, data + size);
    const int lines = static_cast<int>(fuzz::records(text).size());
    gaussian::source from("log", text);
    const gaussian::source_kind kind = gaussian::kind_of(from);
    fuzz::check(from.line_number() == 0, "telling the kind takes nothing");
    const outcome found = read(from, lines);
    fuzz::check(found.log.ended_normally == 0 || kind != gaussian::source_kind::unknown, "a log is told to be one");
    if (found.message.empty()) {
        check_log(found.log, lines);
    }
    for (const gaussian::notice& notice : found.notices) {
        fuzz::check(notice.line >= 0 && notice.line <= lines, "a notice names a line that exists");
        fuzz::check(std::all_of(notice.text.begin(), notice.text.end(), [](char c) { return c >= ' ' && c <= '~'; }),
                    "a notice is printable");
    }
    if (size % 8 == 3) {
        check_blocks(text, found, lines);
    }
    return 0;
}
