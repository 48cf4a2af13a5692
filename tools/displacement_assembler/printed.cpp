#include "printed.hpp"

#include <array>
#include <cstdarg>
#include <cstdio>

namespace displacement_generator::assembler {

// NOLINTNEXTLINE(cert-dcl50-cpp): the layouts are those of printf
std::string printed(const char* format, ...) {
    std::array<char, 512> text{};
    va_list arguments;
    va_start(arguments, format);
    static_cast<void>(std::vsnprintf(text.data(), text.size(), format, arguments));
    va_end(arguments);
    return text.data();
}

}  // namespace displacement_generator::assembler
