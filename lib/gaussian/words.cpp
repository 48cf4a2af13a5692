#include "gaussian/words.hpp"

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

#include "base/free_format.hpp"

namespace displacement_generator::gaussian {

namespace {

constexpr std::string_view blanks = " \t";

}  // namespace

std::string_view next_word(std::string_view& rest) {
    rest.remove_prefix(std::min(rest.find_first_not_of(blanks), rest.size()));
    const std::string_view word = rest.substr(0, rest.find_first_of(blanks));
    rest.remove_prefix(word.size());
    return word;
}

std::string_view without_blanks(std::string_view line) {
    line.remove_prefix(std::min(line.find_first_not_of(blanks), line.size()));
    return line.substr(0, line.find_last_not_of(blanks) + 1);
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
