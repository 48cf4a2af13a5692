#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

// The route of a Gaussian job, taken apart: keywords that are separated by blanks or commas, each with its options as
// key=value, key=(a,b) or key(a,b), and several joined by slashes, as method/basis is.

namespace displacement_generator::gaussian {

/// An option: its own text as written, and its name, that is what stands before a "=" or a bracket, in small letters.
struct route_option {
    std::string text;
    std::string name;
};

/// One of the pieces of a keyword between slashes.
struct route_part {
    std::string text;  ///< as written
    std::string name;  ///< in small letters, without options
    std::vector<route_option> options;
};

struct route_keyword {
    std::string text;               ///< as written, without blanks around "=", "/" and brackets
    std::vector<route_part> parts;  ///< at least one
    std::string stray_options{};    ///< of a job type: options that followed it as words of their own, in `text` too

    [[nodiscard]] const std::string& name() const { return parts.front().name; }
};

struct route {
    std::string head;  ///< "#", "#p", "#n" or "#t", in the user's letter case
    std::vector<route_keyword> keywords;
};

/// Goes through the text of a route or of a part of one, from one character to the next, over quotations as a whole.
struct route_walk {
    std::string_view text;
    std::size_t at = 0;
    int depth = 0;  ///< of brackets, before the character

    [[nodiscard]] bool ended() const { return at >= text.size(); }
    void step();
};

/// How long the head of a route line is: "#", with the letter after it if that stands by itself; 0 where there is none.
std::size_t head_size(std::string_view line);

/// Takes a route apart. Words after a job type that are no keywords but options of one, as in `opt=calcfc,tight,ts`,
/// are options of that job type.
///   text   in  from its "#" on, its lines joined by a blank each
///   place  in  what a message begins with, "mol.gjf:3" for example
/// A route that does not begin with "#", a bracket or a quotation mark that has no other one stop the run. Nothing is
/// taken apart between quotation marks.
route parse_route(std::string_view text, const std::string& place);

/// The text of a route, keywords as written, with one blank between them.
std::string text_of(const route& job);

}  // namespace displacement_generator::gaussian
