#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

#include "harness.hpp"

// Runs a harness on every file of a folder, without the fuzzer: what was once found stays found, with every compiler.

int main(int argc, char** argv) {
    std::vector<std::filesystem::path> inputs;
    for (const auto& entry : std::filesystem::directory_iterator(argc > 1 ? argv[1] : ".")) {
        inputs.push_back(entry.path());
    }
    std::sort(inputs.begin(), inputs.end());
    for (const std::filesystem::path& input : inputs) {
        std::cout << input.string() << std::endl;  // before it runs, so that the last name is that of the culprit
        std::ifstream file(input, std::ios::binary);
        const std::vector<char> bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
        const std::vector<std::uint8_t> data(bytes.begin(), bytes.end());
        LLVMFuzzerTestOneInput(data.data(), data.size());
    }
    return inputs.empty() ? 1 : 0;
}
