#include <optional>
#include <string>

#include "displacement_preparer/check_prepared.hpp"
#include "displacement_preparer/run.hpp"
#include "harness.hpp"

using namespace displacement_generator;

// Any bytes as SOURCE of the preparer. A run stops with a message, or what comes out passes the generator's reading
// with the group and the number that the report gives.

namespace {

constexpr std::size_t most_bytes = 20000;  // longer sources take longer and show no more

void check_run(const preparer::options& asked, const fuzz::memory_file& output) {
    preparer::prepared result;
    if (const auto error = fuzz::stopped([&] { result = preparer::prepare(asked); })) {
        fuzz::check(std::string(error->what()).find('\n') == std::string::npos, "a message is one line");
        fuzz::check_equal(error->exit_status, 2, "the status of a run that stops");
        return;
    }
    output.set(result.text);
    const auto error = fuzz::stopped([&] { preparer::check_prepared(output.name(), result.atoms, result.count); });
    fuzz::check(!error, error ? error->what() : "");
    fuzz::check(result.report.find(" displacements to compute (") != std::string::npos, "there is a report");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size > most_bytes) {
        return 0;
    }
    static const fuzz::memory_file source;
    static const fuzz::memory_file output;
    source.set(std::string(data, data + size));
    preparer::options asked;
    asked.source = source.name();
    check_run(asked, output);
    asked.keep_frame = true;
    asked.route = "#p hf/3-21g";
    asked.charge = 0;
    asked.multiplicity = 1;
    check_run(asked, output);
    return 0;
}
