#pragma once

#include <string>

namespace displacement_generator::assembler {

/// Text of up to 511 characters in a layout of printf.
// NOLINTNEXTLINE(cert-dcl50-cpp): the layouts are those of printf
[[gnu::format(printf, 1, 2)]] std::string printed(const char* format, ...);

}  // namespace displacement_generator::assembler
