#include "gaussian/fields.hpp"

#include <algorithm>

#include "base/error.hpp"

namespace displacement_generator::gaussian {

namespace {

/// Takes the word off a line that begins with one: what stands before the next gap.
std::string_view take_word(std::string_view& rest) {
    const auto* const end = std::find_if(rest.begin(), rest.end(), is_gap);
    const std::string_view word = rest.substr(0, static_cast<std::size_t>(end - rest.begin()));
    rest.remove_prefix(word.size());
    return word;
}

bool is_digits(std::string_view text) { return !text.empty() && std::all_of(text.begin(), text.end(), is_digit); }

std::string_view without_sign(std::string_view field) {
    return !field.empty() && (field.front() == '+' || field.front() == '-') ? field.substr(1) : field;
}

}  // namespace

std::string lower(std::string_view text) {
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(), [](char c) { return lower(c); });
    return result;
}

bool equal_words(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) { return lower(x) == lower(y); });
}

bool is_one_of(std::string_view word, std::initializer_list<std::string_view> others) {
    return std::any_of(others.begin(), others.end(), [&](std::string_view other) { return equal_words(word, other); });
}

bool begins_with(std::string_view word, std::string_view beginning) {
    return equal_words(word.substr(0, beginning.size()), beginning);
}

std::string_view stripped_at_end(std::string_view text) {
    while (!text.empty() && is_gap(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

std::string_view stripped(std::string_view text) {
    text = stripped_at_end(text);
    while (!text.empty() && is_gap(text.front())) {
        text.remove_prefix(1);
    }
    return text;
}

std::vector<std::string_view> fields_of(std::string_view line) {
    std::vector<std::string_view> fields;
    line = stripped(line);
    while (!line.empty()) {
        int depth = 0;
        std::size_t size = 0;
        for (; size < line.size(); ++size) {
            const char c = line[size];
            depth += c == '(' ? 1 : (c == ')' && depth > 0 ? -1 : 0);
            if (depth == 0 && (is_gap(c) || c == ',' || c == '/')) {
                break;
            }
        }
        fields.push_back(line.substr(0, size));
        line = stripped(line.substr(size));
        if (!line.empty() && (line.front() == ',' || line.front() == '/')) {
            line = stripped(line.substr(1));
        }
    }
    return fields;
}

std::string quoted(std::string_view text) {
    std::string result("'");
    result.append(base::shown(text)).push_back('\'');
    return result;
}

bool is_integer(std::string_view field) { return is_digits(without_sign(field)); }

std::string_view decimal_comma(std::string_view line) {
    while (!(line = stripped(line)).empty()) {
        const std::string_view word = take_word(line);
        const std::size_t equals = word.find('=');
        const std::string_view number = without_sign(word.substr(equals == std::string_view::npos ? 0 : equals + 1));
        const std::size_t comma = number.find(',');
        if (comma != std::string_view::npos && is_digits(number.substr(0, comma)) &&
            is_digits(number.substr(comma + 1))) {
            return word;
        }
    }
    return {};
}

}  // namespace displacement_generator::gaussian
