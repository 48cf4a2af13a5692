#include "gaussian/words.hpp"

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

#include "base/free_format.hpp"

namespace displacement_generator::gaussian {

namespace {

bool is_blank(char c) { return c == ' ' || c == '\t'; }

}  // namespace

// Tables of millions of numbers pass through these two: a search of the library for one of two characters calls another
// function for each that it looks at.

std::string_view next_word(std::string_view& rest) {
    const char* const end = rest.data() + rest.size();
    const char* const begin = std::find_if_not(rest.data(), end, is_blank);
    const char* const behind = std::find_if(begin, end, is_blank);
    rest = {behind, static_cast<std::size_t>(end - behind)};
    return {begin, static_cast<std::size_t>(behind - begin)};
}

std::string_view without_blanks(std::string_view line) {
    while (!line.empty() && is_blank(line.front())) {
        line.remove_prefix(1);
    }
    while (!line.empty() && is_blank(line.back())) {
        line.remove_suffix(1);
    }
    return line;
}

bool read_printed_real(std::string_view word, double& value) {
    if (base::read_real(word, value) == base::number_status::ok) {
        return true;
    }
    const std::size_t sign = word.find_last_of("+-");
    if (sign == std::string_view::npos || sign == 0 || word.find_first_of("EeDd") != std::string_view::npos) {
        return false;
    }
    std::string with_letter(word);
    with_letter.insert(sign, 1, 'E');
    return base::read_real(with_letter, value) == base::number_status::ok;
}

bool next_three_reals(std::string_view& rest, double (&values)[3]) {
    return std::all_of(std::begin(values), std::end(values),
                       [&](double& value) { return read_printed_real(next_word(rest), value); });
}

}  // namespace displacement_generator::gaussian
