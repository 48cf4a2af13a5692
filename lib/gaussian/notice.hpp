#pragma once

#include <string>

namespace displacement_generator::gaussian {

/// Something a reader met that the user should know of, though it stops nothing.
struct notice {
    int line;  ///< 0: of the whole file
    std::string text;
};

}  // namespace displacement_generator::gaussian
