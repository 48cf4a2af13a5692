#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "support.hpp"

using namespace displacement_generator;

// Whole runs as data: every folder beside this file is one. README.md there tells how a case is laid out.

namespace {

namespace fs = std::filesystem;

std::vector<std::string> case_names() {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(CASES)) {
        if (entry.is_directory()) {
            names.push_back(entry.path().filename().string());
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::vector<std::string> arguments_of(const fs::path& folder) {
    if (!fs::exists(folder / "args")) {
        return {"control"};
    }
    std::vector<std::string> arguments;
    std::istringstream lines(support::read_file(folder / "args"));
    for (std::string line; std::getline(lines, line);) {
        arguments.push_back(line);
    }
    return arguments;
}

/// What a run prints may name the folder that it runs in, which is a new one each time: "<folder>" stands for it.
std::string with_folder(std::string text) {
    constexpr std::string_view mark = "<folder>";
    for (std::size_t at = 0; (at = text.find(mark, at)) != std::string::npos;) {
        text.replace(at, mark.size(), fs::current_path().string());
    }
    return text;
}

std::string test_name(const testing::TestParamInfo<std::string>& tested) {
    std::string name = tested.param;
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
}

class whole_run : public testing::TestWithParam<std::string> {};

TEST_P(whole_run, gives_the_expected_bytes) {
    const fs::path folder = fs::path(CASES) / GetParam();
    const support::scratch_folder scratch;
    for (const auto& entry : fs::directory_iterator(folder)) {
        const std::string name = entry.path().filename().string();
        if (name != "args" && name != "before" && name != "expected") {
            fs::copy(entry.path(), scratch.path() / name, fs::copy_options::recursive);
        }
    }
    if (fs::exists(folder / "before")) {
        fs::copy(folder / "before", scratch.path(), fs::copy_options::recursive | fs::copy_options::overwrite_existing);
    }
    support::tree expected = support::read_tree(scratch.path());
    for (const auto& [name, bytes] : support::read_tree(folder / "expected" / "tree")) {
        expected[name] = bytes;
    }

    const support::outcome result = support::run_program(support::displacement_generator(), arguments_of(folder));

    EXPECT_EQ(result.standard_output, support::read_file(folder / "expected" / "stdout"));
    EXPECT_EQ(result.standard_error, with_folder(support::read_file(folder / "expected" / "stderr")));
    EXPECT_EQ(std::to_string(result.status) + "\n", support::read_file(folder / "expected" / "status"));
    const support::tree found = support::read_tree(scratch.path());
    for (const auto& [name, bytes] : expected) {
        ASSERT_TRUE(found.contains(name)) << "missing: " << name;
        EXPECT_EQ(found.at(name), bytes) << "differs: " << name;
    }
    for (const auto& [name, bytes] : found) {
        EXPECT_TRUE(expected.contains(name)) << "not expected: " << name;
    }
}

INSTANTIATE_TEST_SUITE_P(cases, whole_run, testing::ValuesIn(case_names()), test_name);

}  // namespace
