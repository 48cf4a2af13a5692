#include <string>

#include "companion/program.hpp"
#include "options.hpp"
#include "run.hpp"

using namespace displacement_generator;

int main(int argc, char** argv) {
    return companion::run_program(assembler::program_name, [&] {
        assembler::options asked;
        const std::string text = assembler::read_options(argc, argv, asked);
        if (text.empty()) {
            assembler::run(asked);
        } else {
            companion::print(text);
        }
    });
}
