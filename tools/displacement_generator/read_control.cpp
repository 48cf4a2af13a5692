#include <cstddef>
#include <string>

#include "base/error.hpp"
#include "base/free_format.hpp"
#include "control.hpp"
#include "control_source.hpp"

namespace displacement_generator::generator {

namespace {

constexpr std::string_view group_opener = "&control";
constexpr int end_of_file = control_source::end_of_file;

bool is_blank(int c) { return c == ' ' || c == '\t' || c == '\n'; }

/// What ends a key, a number or a logical value.
bool is_separator(int c) { return is_blank(c) || c == ',' || c == '/' || c == '!' || c == end_of_file; }

std::string lower_case(std::string word) {
    for (char& c : word) {
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    }
    return word;
}

struct place {
    int line = 0;
    int column = 0;

    friend bool operator==(const place&, const place&) = default;
};

std::string in_words(place at) { return "line " + std::to_string(at.line) + ", column " + std::to_string(at.column); }

/// One group on its way from the file into the settings.
struct group {
    control_source& source;
    control& settings;
    place start = {};       ///< of the group
    place long_text = {};   ///< of the last text that ran over several lines; line 0 without one
    place past_comma = {};  ///< right after a real number and its comma: digits here were meant as decimals

    [[nodiscard]] place here() const { return {source.line(), source.column()}; }

    [[noreturn]] void stop(place at, std::string message) const {
        if (long_text.line != 0 &&
            !(long_text == at)) {  // a missing mark shows only where its text meets the next mark
            message +=
                "; the text that begins on " + in_words(long_text) + " runs over several lines, is its end missing?";
        }
        throw base::run_error(source.name() + ":" + std::to_string(at.line) + ": " + message);
    }
};

void skip_line(control_source& source) {
    while (source.peek() != '\n' && source.peek() != end_of_file) {
        source.take();
    }
}

/// Blanks, line ends and comments.
void skip_blanks(control_source& source) {
    while (is_blank(source.peek()) || source.peek() == '!') {
        if (source.peek() == '!') {
            skip_line(source);
        } else {
            source.take();
        }
    }
}

std::string take_word(control_source& source) {
    std::string word;
    while (!is_separator(source.peek()) && source.peek() != '=') {
        word += static_cast<char>(source.take());
    }
    return word;
}

/// A word as a message shows it. Where a word should be and is none, only "=" can stand.
std::string shown_word(const std::string& word) { return word.empty() ? "=" : base::shown(word); }

/// Passes over the lines whose first word does not open the group.
void find_group(group& g) {
    control_source& source = g.source;
    std::string hint;
    while (source.peek() != end_of_file) {
        while (source.peek() == ' ' || source.peek() == '\t') {
            source.take();
        }
        g.start = g.here();
        std::string word;
        while (word.size() <= group_opener.size() && !is_separator(source.peek())) {
            word += static_cast<char>(source.take());
        }
        if (lower_case(word) == group_opener) {
            return;
        }
        if (g.start == place{1, 1}) {
            hint = base::byte_order_mark_hint(word);
        }
        skip_line(source);
        source.take();
    }
    g.stop(g.here(), "expected a line whose first word is '&control', found the end of the file" + hint);
}

[[noreturn]] void value_error(const group& g, place at, const std::string& key, const std::string& expected,
                              const std::string& found) {
    g.stop(at, "key '" + key + "': expected " + expected + ", found '" + shown_word(found) + "'");
}

void read_value(group& g, const std::string& key, bool& value) {
    const place at = g.here();
    const std::string found = take_word(g.source);
    const std::string word = lower_case(found);
    if (word == "t" || word == "true" || word == ".t." || word == ".true.") {
        value = true;
    } else if (word == "f" || word == "false" || word == ".f." || word == ".false.") {
        value = false;
    } else {
        value_error(g, at, key, "a logical value (T, F, .true. or .false.)", found);
    }
}

void read_value(group& g, const std::string& key, double& value) {
    const place at = g.here();
    const std::string found = take_word(g.source);
    switch (base::read_real(found, value)) {
        case base::number_status::ok:
            return;
        case base::number_status::out_of_range:
            value_error(g, at, key, "a real number within the range of double precision", found);
        case base::number_status::not_a_number:
            value_error(g, at, key, "a real number", found);
    }
}

void read_value(group& g, const std::string& key, int& value) {
    const place at = g.here();
    const std::string found = take_word(g.source);
    if (base::read_integer(found, value) != base::number_status::ok) {
        value_error(g, at, key, "an integer from -2147483648 to 2147483647", found);
    }
}

/// A text between two equal marks. Two marks in a row stand for one; the end of a line is no part of the text.
void read_value(group& g, const std::string& key, base::text<200>& value) {
    control_source& source = g.source;
    const place start = g.here();
    const int mark = source.peek();
    if (mark != '\'' && mark != '"') {
        value_error(g, start, key, "a text between apostrophes or quotation marks", take_word(source));
    }
    source.take();
    std::string text;
    for (;;) {
        const int c = source.take();
        if (c == end_of_file) {
            g.stop(start, "key '" + key + "': the text that begins on " + in_words(start) + " has no end");
        }
        if (c == '\n') {
            g.long_text = start;
            continue;
        }
        if (c == mark) {
            if (source.peek() != mark) {
                break;
            }
            source.take();
        }
        text += static_cast<char>(c);
    }
    if (!is_separator(source.peek())) {
        const place at = g.here();
        value_error(g, at, key, "a blank, a comma or the end of the line after the text", take_word(source));
    }
    value = std::string_view(text);
}

/// Whether a value follows; where none is written, the variable keeps what it has.
bool has_value(group& g) {
    const int c = g.source.peek();
    return c != ',' && c != '/' && c != end_of_file;
}

template <class variable_type>
void set(group& g, const std::string& key, variable_type& variable) {
    if (has_value(g)) {
        read_value(g, key, variable);
    }
}

void read_assignment(group& g) {
    control_source& source = g.source;
    const place at = g.here();
    const std::string found = take_word(source);
    const std::string key = lower_case(found);
    skip_blanks(source);
    if (found.empty() || source.peek() != '=') {
        const bool decimals = at == g.past_comma && !found.empty() && found.front() >= '0' && found.front() <= '9';
        g.stop(at, "expected 'key = value' or the '/' that ends the group, found '" + shown_word(found) + "'" +
                       (decimals ? "; a real number has a decimal point, not a comma" : ""));
    }
    source.take();
    skip_blanks(source);
    control& settings = g.settings;
    if (key == "symm") {
        set(g, key, settings.symm);
    } else if (key == "qctype") {
        set(g, key, settings.qctype);
    } else if (key == "task") {
        set(g, key, settings.task);
    } else if (key == "fxyz") {
        if (has_value(g) || settings.fxyz.trimmed().empty()) {  // the path in use was read here, or is missed here
            settings.fxyz_place = g.source.name() + ":" + std::to_string(g.source.line());
        }
        set(g, key, settings.fxyz);
    } else if (key == "dx") {
        set(g, key, settings.dx);
        if (g.source.peek() == ',') {
            g.past_comma = {g.source.line(), g.source.column() + 1};
        }
    } else if (key == "std_orient") {
        set(g, key, settings.std_orient);
    } else if (key == "disp_sign") {
        set(g, key, settings.disp_sign);
    } else {
        g.stop(at, "unknown key '" + base::shown(found) +
                       "', expected one of symm, qctype, task, fxyz, dx, std_orient, disp_sign");
    }
}

void read_group(group& g) {
    for (;;) {
        skip_blanks(g.source);
        const int c = g.source.peek();
        if (c == '/') {
            return;
        }
        if (c == end_of_file) {
            g.stop(g.start, "the group that begins on " + in_words(g.start) + " has no '/' at its end");
        }
        if (c == ',') {
            g.source.take();
        } else {
            read_assignment(g);
        }
    }
}

}  // namespace

control read_control(std::string_view path) {
    const base::text<200> name(path);
    if (name.trimmed().empty()) {
        throw base::run_error("expected a control file, found none" + std::string(usage));
    }
    control settings;
    control_source source(name.trimmed());
    settings.fxyz_place = source.name();
    group g{source, settings};
    find_group(g);
    read_group(g);
    return settings;
}

}  // namespace displacement_generator::generator
