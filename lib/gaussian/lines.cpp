#include "gaussian/lines.hpp"

#include <limits>

#include "base/error.hpp"
#include "gaussian/fields.hpp"

namespace displacement_generator::gaussian {

std::vector<input_line> lines_of(std::string_view text, const std::string& name) {
    constexpr std::string_view byte_order_mark = "\xef\xbb\xbf";
    if (text.starts_with(byte_order_mark)) {
        text.remove_prefix(byte_order_mark.size());
    }
    if (text.size() > static_cast<std::size_t>(std::numeric_limits<int>::max())) {
        throw base::run_error(name + ": found " + std::to_string(text.size()) +
                              " bytes, expected an input of at most " +
                              std::to_string(std::numeric_limits<int>::max()));
    }
    std::vector<input_line> lines;
    while (!text.empty()) {
        const std::string_view record = text.substr(0, text.find('\n'));
        text.remove_prefix(record.size() == text.size() ? record.size() : record.size() + 1);
        lines.push_back({static_cast<int>(lines.size()) + 1, stripped_at_end(record),
                         stripped(record.substr(0, record.find('!')))});
    }
    return lines;
}

std::string place_of(const std::string& name, int line) { return line > 0 ? name + ":" + std::to_string(line) : name; }

void stop_at(const std::string& name, int line, const std::string& what) {
    throw base::run_error(place_of(name, line) + ": " + what);
}

}  // namespace displacement_generator::gaussian
