#pragma once

#include <algorithm>
#include <concepts>
#include <cstddef>
#include <cstring>
#include <iosfwd>
#include <string>
#include <string_view>
#include <type_traits>

#include "array.hpp"

namespace displacement_generator::base {

/// A string that ends with the statement it stands in: no routine gives a part of it, which would outlive the whole.
template <class type>
concept ending_string = std::same_as<std::remove_cv_t<type>, std::string>;

/// `value` without its trailing blanks; only the space character is a blank.
[[nodiscard]] constexpr std::string_view trimmed(std::string_view value) {
    constexpr std::string_view many = "        ";
    while (value.ends_with(many)) {  // a text of fixed length is mostly blanks
        value.remove_suffix(many.size());
    }
    return value.substr(0, value.find_last_not_of(' ') + 1);  // of a blank value npos + 1, that is nothing
}
template <ending_string type>
std::string_view trimmed(type&& value) = delete;

/// `value` without its leading blanks.
[[nodiscard]] constexpr std::string_view left_adjusted(std::string_view value) {
    return value.substr(std::min(value.find_first_not_of(' '), value.size()));
}
template <ending_string type>
std::string_view left_adjusted(type&& value) = delete;

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
    operator std::string() const { return {characters, length}; }
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
    constexpr text(const std::string& value) : text(std::string_view(value)) {}

    /// All n characters, trailing blanks included.
    constexpr operator std::string_view() const { return {characters, n}; }
    operator std::string() const { return {characters, n}; }
    operator text_ref() { return {characters, n}; }
    [[nodiscard]] constexpr std::string_view trimmed() const& { return base::trimmed(*this); }
    /// Of a text that would be gone before what is returned is looked at.
    [[nodiscard]] std::string_view trimmed() const&& = delete;
};

template <class type>
inline constexpr bool has_fixed_length = false;
template <>
inline constexpr bool has_fixed_length<text_ref> = true;
template <std::size_t n>
inline constexpr bool has_fixed_length<text<n>> = true;

/// Whether two texts are equal, at least one of them of fixed length. None is cut to the length of the other, and
/// trailing blanks do not count in either.
template <class fixed, class other>
requires has_fixed_length<fixed> && std::convertible_to<const other&, std::string_view>
[[nodiscard]] constexpr bool operator==(const fixed& a, const other& b) {
    return trimmed(std::string_view(a)) == trimmed(std::string_view(b));
}

/// Writes all characters, trailing blanks included; trimmed() leaves them out.
template <class fixed>
requires has_fixed_length<fixed> std::ostream& operator<<(std::ostream& out, const fixed& value) {
    return out << std::string_view(value);
}

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

    /// One text after the other; what it points to is made as it is asked for.
    class iterator {
      public:
        iterator(char* at, std::size_t length) : at_(at), length_(length) {}
        text_ref operator*() const { return {at_, length_}; }
        iterator& operator++() {
            at_ += length_;
            return *this;
        }
        bool operator==(const iterator& other) const { return at_ == other.at_; }

      private:
        char* at_;
        std::size_t length_;
    };
    [[nodiscard]] iterator begin() const { return {first_, length_}; }
    [[nodiscard]] iterator end() const {
        return {first_ + static_cast<std::size_t>(upper_ - lower_ + 1) * length_, length_};
    }

  private:
    const char* name_;
    char* first_;
    std::size_t length_;
    int lower_;
    int upper_;
};

}  // namespace displacement_generator::base
