#include "base/error.hpp"

#include <string_view>

namespace displacement_generator::base {

std::string shown(std::string_view text, std::size_t longest) {
    constexpr char hexadecimal[] = "0123456789abcdef";
    std::string result;
    for (const char c : text.substr(0, longest)) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '\t') {
            result += "\\t";
        } else if (c == '\r') {
            result += "\\r";
        } else if (c == '\n') {
            result += "\\n";
        } else if (byte < 0x20 || byte > 0x7e) {
            result += "\\x";
            result += hexadecimal[byte >> 4];
            result += hexadecimal[byte & 15];
        } else {
            result += c;
        }
    }
    if (text.size() > longest) {
        result += "... (" + std::to_string(text.size() - longest) + " more characters)";
    }
    return result;
}

}  // namespace displacement_generator::base
