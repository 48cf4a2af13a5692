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

std::string byte_order_mark_hint(std::string_view start) {
    const bool marked =
        start.starts_with("\xef\xbb\xbf") || start.starts_with("\xff\xfe") || start.starts_with("\xfe\xff");
    return marked ? "; the file begins with a byte order mark, save it as plain text without one" : "";
}

}  // namespace displacement_generator::base
