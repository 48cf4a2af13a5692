#pragma once

#include <cstddef>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

// Words and fields of Gaussian's input, in which letter case does not count. For this room's own use.

namespace displacement_generator::gaussian {

inline bool is_digit(char c) { return c >= '0' && c <= '9'; }
inline bool is_letter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
inline bool is_gap(char c) { return c == ' ' || c == '\t' || c == '\r'; }
inline char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

/// A text in small letters.
std::string lower(std::string_view text);

/// Whether two words differ in letter case at the most.
bool equal_words(std::string_view a, std::string_view b);

/// Whether a word is one of some others, in any letter case.
bool is_one_of(std::string_view word, std::initializer_list<std::string_view> others);

/// Whether a word begins with another one that is given in small letters.
bool begins_with(std::string_view word, std::string_view beginning);

/// A text without the blanks, tabs and carriage returns at its two ends.
std::string_view stripped(std::string_view text);
std::string_view stripped_at_end(std::string_view text);

/// The fields of a line, which are separated by blanks, tabs, a comma or a slash. What stands in brackets is never
/// separated. Two commas with nothing between them have an empty field there.
std::vector<std::string_view> fields_of(std::string_view line);

/// A text from outside in quotation marks, fit for a message.
std::string quoted(std::string_view text);

/// Whether a field is an integer to look at, however large.
bool is_integer(std::string_view field);

/// Where among the words of a line, which are separated by blanks, one is a number with a decimal comma, such as 0,757:
/// that word. Empty where there is none. Fields that are joined by commas alone are no such word.
std::string_view decimal_comma(std::string_view line);

}  // namespace displacement_generator::gaussian
