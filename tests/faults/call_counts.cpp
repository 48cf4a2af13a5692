#include <gtest/gtest.h>

#include <cerrno>
#include <cstddef>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "faults.hpp"

using namespace displacement_generator;

// Work that is not done twice: how often the system is called, exactly. Where a limit here must grow, the run does more
// than it did, and somebody has to want that.

namespace {

/// "CALL FILE" -> how often.
using counts = std::map<std::string, int>;

counts calls_of(const std::string& program, const std::vector<std::string>& arguments,
                std::vector<std::string> environment = {}) {
    const std::string log = std::filesystem::current_path().string() + "-log";
    std::filesystem::remove(log);
    environment.insert(environment.end(), {std::string("LD_PRELOAD=") + FAILING_CALLS,
                                           "ASAN_OPTIONS=verify_asan_link_order=0", "FAILING_LOG=" + log});
    const support::outcome result = support::run_program(program, arguments, environment);
    EXPECT_EQ(result.status, 0) << result.standard_error;
    counts calls;
    std::istringstream lines(support::read_file(log));
    for (std::string line; std::getline(lines, line);) {
        ++calls[line];
    }
    std::filesystem::remove(log);
    return calls;
}

counts calls_of_run() { return calls_of(support::displacement_generator(), {"control"}); }

counts calls_of_routine(const std::vector<std::string>& arguments) { return calls_of(LIBRARY_CALL, arguments); }

/// An input of more than one block and less than two, the block being 64 KiB.
constexpr std::size_t two_blocks = 100000;

void write_long_input() {
    faults::write_inputs();
    std::string input = support::read_file("mol.gjf");
    while (input.size() < two_blocks) {
        input += std::string(399, '!') + "\n";
    }
    support::write_file("mol.gjf", input);
}

/// The run reads the input once for itself, and four times for the sections and the coordinates, each time to count the
/// lines and then to take them.
TEST(call_counts, of_a_run) {
    const support::scratch_folder scratch;
    write_long_input();
    counts expected = {
        {"open control", 1},
        {"read control", 1},
        {"close control", 1},
        {"open mol.gjf", 10},
        {"close mol.gjf", 10},
        {"read mol.gjf", 5 * 3 + 5 * 2},  // two blocks and the end to count, two blocks to take
        {"system /bin/mkdir -p PES-0", 1},
        {"lock PES-0/files.out", 1},
        {"empty PES-0/files.out", 1},
    };
    for (const std::string& name : faults::output_names()) {
        const bool list = name == "PES-0/files.out";
        expected["open " + name] = 1;
        expected["write " + name] = list ? 2 : 1;  // its last line leaves by itself
        expected["close " + name] = 1;
    }
    EXPECT_EQ(calls_of_run(), expected);
}

/// A list leaves in writes of 64 KiB. Atoms in all octants need few files for so long a list.
TEST(call_counts, of_a_long_list) {
    const support::scratch_folder scratch;
    support::write_file("control", "&control fxyz = 'mol.gjf' /\n");
    std::string input = "#\n\nlarge\n\n0 1\n";
    for (int i = 1; i <= 48; ++i) {
        for (const std::string x : {" ", " -"}) {
            for (const std::string y : {" ", " -"}) {
                for (const std::string z : {" 0.5", " -0.5"}) {
                    input += "C" + x + std::to_string(i) + y + std::to_string(i * i % 17 + 1) + z + "\n";
                }
            }
        }
    }
    support::write_file("mol.gjf", input);
    const counts calls = calls_of_run();
    const auto size = static_cast<int>(std::filesystem::file_size("PES-0/files.out"));
    EXPECT_GT(size, 2 * 65536);
    EXPECT_EQ(calls.at("write PES-0/files.out"), size / 65536 + 2);
    EXPECT_EQ(calls.at("write PES-0/coord-001-dx.com"), 1);
}

TEST(call_counts, of_reading) {
    const support::scratch_folder scratch;
    write_long_input();
    EXPECT_EQ(calls_of_routine({"num_file_lines", "mol.gjf"}),
              (counts{{"open mol.gjf", 1}, {"read mol.gjf", 3}, {"close mol.gjf", 1}}));
    EXPECT_EQ(calls_of_routine({"num_file_lines_word", "mol.gjf", "!"}),
              (counts{{"open mol.gjf", 1}, {"read mol.gjf", 3}, {"close mol.gjf", 1}}));
    EXPECT_EQ(calls_of_routine({"read_lines", "mol.gjf"}),
              (counts{{"open mol.gjf", 2}, {"read mol.gjf", 5}, {"close mol.gjf", 2}}));
}

/// A record and its end leave together.
TEST(call_counts, of_writing_records) {
    const support::scratch_folder scratch;
    EXPECT_EQ(calls_of_routine({"write_records", "new"}),
              (counts{{"open new", 1}, {"write new", 3}, {"close new", 1}}));
    EXPECT_EQ(support::read_file("new"), "a record\na record\na record\n");
    support::write_file("source", "one\ntwo\n");
    const counts calls = calls_of_routine({"copy_old", "source", "copied"});
    EXPECT_EQ(calls.at("write copied"), 2);
    EXPECT_EQ(calls.at("read source"), 3);  // a block and the end to count, a block to take
}

/// The kernel copies; where it cannot, a block of 256 KiB goes at a time.
TEST(call_counts, of_copying) {
    const support::scratch_folder scratch;
    support::write_file("source", std::string(600000, 'x'));
    EXPECT_EQ(calls_of_routine({"copy", "source", "copied"}), (counts{{"open source", 1},
                                                                      {"stat copied", 1},
                                                                      {"open copied", 1},
                                                                      {"copy_file_range source", 2},
                                                                      {"close source", 1},
                                                                      {"close copied", 1}}));
    const counts calls = calls_of(LIBRARY_CALL, {"copy", "source", "copied"},
                                  {"FAILING_CALL=copy_file_range", "FAILING_WAY=" + std::to_string(EXDEV)});
    EXPECT_EQ(calls.at("copy_file_range source"), 1);
    EXPECT_EQ(calls.at("read source"), 4);  // the last one finds the end
    EXPECT_EQ(calls.at("write copied"), 3);
}

}  // namespace
