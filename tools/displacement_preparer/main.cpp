#include <string>

#include "companion/program.hpp"
#include "options.hpp"
#include "run.hpp"

using namespace displacement_generator;

int main(int argc, char** argv) {
    return companion::run_program(preparer::program_name, [&] {
        preparer::options asked;
        const std::string text = preparer::read_options(argc, argv, asked);
        if (text.empty()) {
            preparer::run(asked);
        } else {
            companion::print(text);
        }
    });
}
