#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string_view>

#include "array.hpp"

namespace displacement_generator::base {

/// `value` without its trailing blanks; only the space character is a blank.
inline std::string_view trimmed(std::string_view value) {
    constexpr std::string_view many = "        ";
    while (value.ends_with(many)) {  // a text of fixed length is mostly blanks
        value.remove_suffix(many.size());
    }
    return value.substr(0, value.find_last_not_of(' ') + 1);  // of a blank value npos + 1, that is nothing
}

/// `value` without its leading blanks.
inline std::string_view left_adjusted(std::string_view value) {
    return value.substr(std::min(value.find_first_not_of(' '), value.size()));
}

/// A fixed-length text of somebody else's, to be written to. The length stays; what is assigned is cut or padded to it.
struct text_ref {
    char* characters;
    std::size_t length;

    void assign(std::string_view value) const {
        const std::size_t kept = std::min(length, value.size());
        if (kept != 0) {
            std::memmove(characters, value.data(), kept);
        }
        std::fill(characters + kept, characters + length, ' ');
    }
    operator std::string_view() const { return {characters, length}; }
};

/// A text of exactly n characters, padded with blanks on the right; a longer value is cut. It starts blank.
template <std::size_t n>
struct text {
    char characters[n];

    constexpr text() { std::fill(characters, characters + n, ' '); }
    constexpr text(std::string_view value) {  // a text is assigned from any value that it can be cut from
        const std::size_t kept = std::min(n, value.size());
        std::copy_n(value.begin(), kept, characters);
        std::fill(characters + kept, characters + n, ' ');
    }
    constexpr text(const char* value) : text(std::string_view(value)) {}

    constexpr operator std::string_view() const { return {characters, n}; }
    operator text_ref() { return {characters, n}; }
    [[nodiscard]] std::string_view trimmed() const { return base::trimmed(*this); }

    friend bool operator==(const text& a, const text& b) { return std::memcmp(a.characters, b.characters, n) == 0; }
};

/// A 1-based array of somebody else's fixed-length texts, all of one length that is known at run time only.
class text_view {
  public:
    template <std::size_t n>
    text_view(view1<text<n>> texts)  // a text<n> is its n characters and nothing else
        : name_(texts.name()),
          first_(reinterpret_cast<char*>(texts.first_of(texts.upper()))),
          length_(n),
          lower_(texts.lower()),
          upper_(texts.upper()) {}

    text_ref operator()(int i) const {
        if (i < lower_ || i > upper_) {
            index_error(name_, i, lower_, upper_);
        }
        return {first_ + static_cast<std::size_t>(i - lower_) * length_, length_};
    }
    [[nodiscard]] std::size_t text_length() const { return length_; }

  private:
    const char* name_;
    char* first_;
    std::size_t length_;
    int lower_;
    int upper_;
};

}  // namespace displacement_generator::base
